#!/usr/bin/env python3
"""restore_guessed.py IN OUT ORIGINAL LENGTH: undoes motion of known length along the line that is guessed.

A guess names a line, but it can be either of its ends. Who restores a picture sees which one is right; here the one that
comes nearer to the original is taken. Says what was guessed and taken.
"""

import json
import pathlib
import sys
import tempfile

from vips import psnr, run


def main(source, target, original, length):
    guess = json.loads(run("claribox", "guess-motion", "--json", source))["degree"]
    with tempfile.TemporaryDirectory() as folder:
        restored = {degree: pathlib.Path(folder) / f"{degree}.png" for degree in (guess, (guess + 180) % 360)}
        for degree, picture in restored.items():
            run("claribox", "demotion-blur", source, "-o", picture, "--length", length, "--degree", degree)
        taken = max(restored, key=lambda degree: psnr(restored[degree], original))
        pathlib.Path(target).write_bytes(restored[taken].read_bytes())
    print(f"guessed {guess}°" + ("" if taken == guess else f", its other end {taken}° taken"))


if __name__ == "__main__":
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    main(*sys.argv[1:])
