"""Writes docs/screens.md, which shows every reference picture on one page.

usage: page.py ROOT-OF-THE-REPOSITORY
"""

import pathlib
import sys

VARIANTS = (("390", "390 × 844"), ("320", "320 × 480"), ("900", "900 × 800"), ("text200", "text at 200 %"))


def main():
    root = pathlib.Path(sys.argv[1])
    pictures = root / "tests" / "pictures" / "reference"
    scenes = sorted({p.stem.rsplit("-", 1)[0] for p in pictures.glob("*.png")})
    lines = ["# The screens", "",
             "Every screen in its states, as `tests/pictures` compares it. `tests/pictures/renew` makes the pictures and this",
             "page anew.", "", "| | " + " | ".join(title for _, title in VARIANTS) + " |", "|---" * (len(VARIANTS) + 1) + "|"]
    for scene in scenes:
        cells = [f"<img src=\"../tests/pictures/reference/{scene}-{variant}.png\" width=\"195\">" for variant, _ in VARIANTS]
        lines.append(f"| {scene} | " + " | ".join(cells) + " |")
    (root / "docs" / "screens.md").write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
