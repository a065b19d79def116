#!/usr/bin/env python3
"""build.py FOLDER PICTURE...: makes the demo's pictures and its page.

Every section of sections.json is one experiment on each photograph: a command that harms a copy ("before") and one that
repairs it ("after"); "{in}", "{out}" and "{original}" stand for file names. What the commands print goes into the caption.
A section with a "photograph" is on that one alone, which no other section takes; without a command "before" it is the
photograph itself that is repaired. A new section is a new entry there and nothing here.
"""

import base64
import html
import json
import pathlib
import string
import sys

from vips import header, psnr, run

HERE = pathlib.Path(__file__).parent
PAGE_SIDE = 1600  # pixels; larger pictures are shown reduced, and stand beside the page at full size


def apply(step, source, target, original):
    names = {"in": source, "out": target, "original": original}
    return run(*(part.format_map(names) for part in step["command"]))


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
    harm = section["before"]
    before = folder / f"{stem}-{harm['label']}.png" if "command" in harm else original
    after = folder / f"{stem}-{section['after']['label']}.png"
    run("vips", "autorot", photograph, original)
    notes = []
    if before != original:
        notes.append(apply(harm, original, before, original))
    notes.append(apply(section["after"], before, after, original))
    if before != original:
        gain = [psnr(picture, original) for picture in (before, after)]
        print(f"{section['name']}: {name}: {gain[0]:.2f} dB before, {gain[1]:.2f} dB after")
        notes.append(f"{harm['label']} {gain[0]:.1f} dB, {section['after']['label']} {gain[1]:.1f} dB")
    return template.substitute(
        name=html.escape(name),
        width=header(original, "width"),
        height=header(original, "height"),
        original=data_uri(original),
        before=data_uri(before),
        after=data_uri(after),
        before_label=harm["label"],
        after_label=section["after"]["label"],
        notes=html.escape(" · ".join(filter(None, notes))),
        hidden="hidden" if before == original else "",
    )


def main(folder, *photographs):
    folder = pathlib.Path(folder).resolve()
    folder.mkdir(exist_ok=True)
    templates = {name: string.Template((HERE / f"{name}.html").read_text()) for name in ("page", "section", "card")}
    sections = []
    experiments = json.loads((HERE / "sections.json").read_text())
    alone = {section.get("photograph") for section in experiments}
    for section in experiments:
        cards = [
            card(section, photograph, name, folder, templates["card"])
            for photograph, name in zip(photographs, distinct_names(photographs))
            if name == section.get("photograph") or not (section.get("photograph") or name in alone)
        ]
        if cards:
            sections.append(templates["section"].substitute(section, cards="".join(cards)))
    (folder / "index.html").write_text(templates["page"].substitute(sections="".join(sections)))


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
