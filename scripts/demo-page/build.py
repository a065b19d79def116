#!/usr/bin/env python3
"""build.py FOLDER PICTURE...: makes the demo's pictures and its page.

Every section of sections.json is one experiment on each photograph: a command that harms a copy ("before") and one that
repairs it ("after"); "{in}" and "{out}" stand for file names. A new section is a new entry there and nothing here.
"""

import base64
import html
import json
import math
import pathlib
import string
import subprocess
import sys

HERE = pathlib.Path(__file__).parent
PAGE_SIDE = 1600  # pixels; larger pictures are shown reduced, and stand beside the page at full size


def run(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout.strip()


def apply(step, source, target):
    run(*(part.format_map({"in": source, "out": target}) for part in step["command"]))


def psnr(picture, reference):
    """Peak signal-to-noise ratio in dB, over all samples: 10 log10(255^2 / mean squared difference)."""
    scratch = [picture.with_name(f"{picture.stem}.{name}.v") for name in ("difference", "square")]
    run("vips", "subtract", picture, reference, scratch[0])
    run("vips", "multiply", scratch[0], scratch[0], scratch[1])
    mean = float(run("vips", "avg", scratch[1]))
    for file in scratch:
        file.unlink()
    return math.inf if mean == 0 else 10 * math.log10(255**2 / mean)


def data_uri(picture):
    shown = picture.with_name(f"{picture.stem}.page.jpg")
    run("vipsthumbnail", picture, "--size", f"{PAGE_SIDE}x{PAGE_SIDE}>", "-o", f"{shown}[Q=92]")
    encoded = base64.b64encode(shown.read_bytes()).decode("ascii")
    shown.unlink()
    return f"data:image/jpeg;base64,{encoded}"


def distinct_names(photographs):
    """The file names without folder and ending, numbered where one comes up again."""
    names = []
    for photograph in photographs:
        stem = pathlib.Path(photograph).stem
        name, number = stem, 1
        while name in names:
            number += 1
            name = f"{stem}-{number}"
        names.append(name)
    return names


def card(section, photograph, name, folder, template):
    stem = f"{name}-{section['name']}"
    original = folder / f"{name}-original.png"
    before = folder / f"{stem}-{section['before']['label']}.png"
    after = folder / f"{stem}-{section['after']['label']}.png"
    run("vips", "autorot", photograph, original)
    apply(section["before"], original, before)
    apply(section["after"], before, after)
    gain = {"before": psnr(before, original), "after": psnr(after, original)}
    print(f"{section['name']}: {name}: {gain['before']:.2f} dB before, {gain['after']:.2f} dB after")
    return template.substitute(
        name=html.escape(name),
        width=run("vipsheader", "-f", "width", original),
        height=run("vipsheader", "-f", "height", original),
        original=data_uri(original),
        before=data_uri(before),
        after=data_uri(after),
        before_label=section["before"]["label"],
        after_label=section["after"]["label"],
        before_psnr=f"{gain['before']:.1f}",
        after_psnr=f"{gain['after']:.1f}",
    )


def main(folder, *photographs):
    folder = pathlib.Path(folder).resolve()
    folder.mkdir(exist_ok=True)
    templates = {name: string.Template((HERE / f"{name}.html").read_text()) for name in ("page", "section", "card")}
    sections = []
    for section in json.loads((HERE / "sections.json").read_text()):
        cards = [
            card(section, photograph, name, folder, templates["card"])
            for photograph, name in zip(photographs, distinct_names(photographs))
        ]
        sections.append(templates["section"].substitute(section, cards="".join(cards)))
    (folder / "index.html").write_text(templates["page"].substitute(sections="".join(sections)))


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
