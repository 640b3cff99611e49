#!/usr/bin/env python3
"""clip_colours.py SHOT.png X Y W H: prints the share (0..1) of the rectangle
in the test clip's colours (magenta, blue; the interface uses neither) and
how many pixels outside it have them."""
import sys

from PIL import Image, ImageChops

LOW, HIGH = 40, 255 - 40


def clip_mask(image):
    """255 where a pixel is magenta or blue: no green, full blue, red full or none."""
    red, green, blue = image.convert("RGB").split()
    no_green = green.point(lambda v: 255 if v <= LOW else 0)
    full_blue = blue.point(lambda v: 255 if v >= HIGH else 0)
    red_full_or_none = red.point(lambda v: 255 if v >= HIGH or v <= LOW else 0)
    return ImageChops.multiply(ImageChops.multiply(no_green, full_blue), red_full_or_none)


def main():
    shot, x, y, w, h = sys.argv[1], *map(int, sys.argv[2:6])
    mask = clip_mask(Image.open(shot))
    total = mask.histogram()[255]
    inside = mask.crop((x, y, x + w, y + h)).histogram()[255]
    print(f"{inside / max(1, w * h):.3f} {total - inside}")


if __name__ == "__main__":
    main()
