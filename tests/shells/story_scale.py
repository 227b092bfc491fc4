"""Pictures are drawn for the screen's scale, not enlarged."""

import subprocess

from stage import story
from sway import SwayCustomer


def size_of(picture):
    return tuple(map(int, subprocess.run(["identify", "-format", "%w %h", str(picture)], check=True, capture_output=True,
                                         text=True).stdout.split()))


def enlarge(picture, width, height, way, result):
    """Ways to do that: "point" repeats pixels, "triangle" blends them."""
    subprocess.run(["convert", str(picture), "-filter", way, "-resize", f"{width}x{height}!", str(result)], check=True)


def detail(picture, folder):
    """How much of a picture is lost where it is reduced to the logical size and enlarged again, the way that loses less:
    the root of the mean square, of 1."""
    lost = []
    for reduced, enlarged in (("point", "point"), ("box", "triangle")):
        enlarge(picture, 360, 720, reduced, folder / "reduced.png")
        enlarge(folder / "reduced.png", *size_of(picture), enlarged, folder / "again.png")
        compared = subprocess.run(["compare", "-metric", "RMSE", str(picture), str(folder / "again.png"), "null:"],
                                  check=False, capture_output=True, text=True)
        lost.append(float(compared.stderr.split("(")[1].rstrip(")")))
    return min(lost)


@story
def crisp_at_every_scale(stage):
    with stage.alone(kind=SwayCustomer) as phone:
        picture, enlarged = phone.home / "picture.png", phone.home / "enlarged.png"
        phone.wait_still()
        plain = phone.home / "plain.png"
        phone.picture(plain)
        for scale in (1.5, 2, 3):
            phone.close()
            phone.output("mode", f"{round(360 * scale)}x{round(720 * scale)}")
            phone.output("scale", str(scale))
            phone.open_at_login(stage.app)
            phone.wait_window(360, 720)
            phone.wait_still()
            phone.picture(picture)
            assert size_of(picture) == (360 * scale, 720 * scale), size_of(picture)
            own = detail(picture, phone.home)
            for way in ("point", "triangle"):
                enlarge(plain, *size_of(picture), way, enlarged)
                other = detail(enlarged, phone.home)
                print(f"scale {scale}: {own:.4f}, where {other:.4f} is enlarged by {way}")
                assert own > 1.5 * other, f"at scale {scale} the picture has no more detail than an enlarged one"
