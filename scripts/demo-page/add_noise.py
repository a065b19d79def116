#!/usr/bin/env python3
"""add_noise.py IN OUT DEVIATION: adds Gaussian noise to each colour of a picture, the same on every run; alpha stays."""

import pathlib
import sys
import tempfile

from vips import header, run


def main(source, target, deviation):
    bands = int(header(source, "bands"))
    size = header(source, "width"), header(source, "height")
    colours = bands - 1 if bands in (2, 4) else bands
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        noises = [scratch / f"{band}.v" for band in range(bands)]
        for band, noise in enumerate(noises):
            strength = deviation if band < colours else 0
            run("vips", "gaussnoise", noise, *size, "--mean", 0, "--sigma", strength, "--seed", band + 1)
        run("vips", "bandjoin", " ".join(map(str, noises)), scratch / "noise.v")
        run("vips", "add", source, scratch / "noise.v", scratch / "sum.v")
        run("vips", "round", scratch / "sum.v", scratch / "rounded.v", "rint")
        run("vips", "cast", scratch / "rounded.v", target, "uchar")


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
