#!/usr/bin/env python3
"""Counts the test clip's colours in a screenshot.

    clip_colours.py SHOT.png X Y W H

Prints two numbers: the share (0..1) of the pixels inside the rectangle that
have one of the clip's colours, and how many pixels outside it have one.
The clip is magenta on its left half and blue on its right; the interface
uses neither, so any such pixel is the video showing through.
"""
import sys

from PIL import Image, ImageChops

TOLERANCE = 40


def clip_mask(image):
    """255 where a pixel is magenta or blue within the tolerance, else 0."""
    red, green, blue = image.convert("RGB").split()
    low, high = TOLERANCE, 255 - TOLERANCE
    # Both colours: no green, full blue; red either full or none.
    masks = (
        green.point(lambda v: 255 if v <= low else 0),
        blue.point(lambda v: 255 if v >= high else 0),
        red.point(lambda v: 255 if v >= high or v <= low else 0),
    )
    return ImageChops.multiply(ImageChops.multiply(masks[0], masks[1]), masks[2])


def main():
    shot, x, y, w, h = sys.argv[1], *map(int, sys.argv[2:6])
    mask = clip_mask(Image.open(shot))
    total = mask.histogram()[255]
    inside = mask.crop((x, y, x + w, y + h)).histogram()[255]
    print(f"{inside / max(1, w * h):.3f} {total - inside}")


if __name__ == "__main__":
    main()
