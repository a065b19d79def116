"""Commands, and libvips' among them, on pictures by file name."""

import math
import subprocess


def run(*command):
    return subprocess.run(list(map(str, command)), check=True, stdout=subprocess.PIPE, text=True).stdout.strip()


def header(picture, field):
    return run("vipsheader", "-f", field, picture)


def psnr(picture, reference):
    """Peak signal-to-noise ratio in dB, over all samples: 10 log10(255^2 / mean squared difference)."""
    scratch = [picture.with_name(f"{picture.stem}.{name}.v") for name in ("difference", "square")]
    run("vips", "subtract", picture, reference, scratch[0])
    run("vips", "multiply", scratch[0], scratch[0], scratch[1])
    mean = float(run("vips", "avg", scratch[1]))
    for file in scratch:
        file.unlink()
    return math.inf if mean == 0 else 10 * math.log10(255**2 / mean)
