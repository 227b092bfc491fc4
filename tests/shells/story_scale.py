"""Pictures are drawn for the screen's scale, not enlarged."""

import subprocess

from stage import story
from sway import SwayCustomer


def size_of(picture):
    return tuple(map(int, subprocess.run(["identify", "-format", "%w %h", str(picture)], check=True, capture_output=True,
                                         text=True).stdout.split()))


def detail(picture, width, height, folder):
    """How much of a picture is lost where it is reduced to the logical size: the root of the mean square, of 1."""
    size = "x".join(map(str, size_of(picture)))
    subprocess.run(["convert", str(picture), "-filter", "box", "-resize", f"{width}x{height}!", "-filter", "triangle",
                    "-resize", f"{size}!", str(folder / "reduced.png")], check=True)
    compared = subprocess.run(["compare", "-metric", "RMSE", str(picture), str(folder / "reduced.png"), "null:"],
                              capture_output=True, text=True)
    return float(compared.stderr.split("(")[1].rstrip(")"))


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
            subprocess.run(["convert", str(plain), "-filter", "triangle", "-resize", f"{360 * scale}x{720 * scale}!",
                            str(enlarged)], check=True)
            own, other = (detail(each, 360, 720, phone.home) for each in (picture, enlarged))
            print(f"scale {scale}: {own:.4f}, {other:.4f} if it were enlarged")
            assert own > 1.5 * other, f"at scale {scale} the picture has no more detail than an enlarged one"
