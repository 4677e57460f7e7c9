#!/usr/bin/env python3
"""Composes the 134 Vietnamese letters that ticket printers are sent as dots, and writes them into a file.

usage: make_vni_letters.py [--show]
  --show  print the letters instead of writing them

Reads data/vni-table.tsv (the letters in order, with their keys) and data/vni-letters.txt (the drawings), and writes
data/VNIl.dat: 134 records of 11 bytes.

  1        first byte of a key of two bytes, or 0
  2        second byte of the key, or the only one
  3        number of dot columns, 1 to 8
  4 to 11  the columns from left to right, highest bit topmost; 0 behind the last one

A letter has eight rows, counted from 0 at the top. Marks above stand in rows 0 and 1. A small letter has its foot in
row 6, a capital in row 7; above a dot, which stands in row 7, both have it in row 5.
"""

import pathlib
import sys
import unicodedata

ROOT = pathlib.Path(__file__).resolve().parent.parent
ROWS = 8
MOST_COLUMNS = 8
TONES = {"\u0301": "acute", "\u0300": "grave", "\u0309": "hook", "\u0303": "tilde"}
SHAPES = {"\u0302": "circumflex", "\u0306": "breve"}
HORN = "\u031b"
DOT = "\u0323"


def read_drawings(path: pathlib.Path) -> dict[str, list[str]]:
    drawings: dict[str, list[str]] = {}
    lines: list[str] | None = None
    for line in path.read_text(encoding="utf-8").splitlines():
        if not line:
            lines = None
        elif lines is not None:
            lines.append(line)
        elif not line.startswith("# ") and line != "#":
            lines = drawings[line] = []
    for name, drawing in drawings.items():
        if not drawing or len({len(row) for row in drawing}) != 1 or set("".join(drawing)) - set("#."):
            sys.exit(f"{path}: the drawing of {name} is not a block of # and .")
    return drawings


class Canvas:
    """Dots by row and column."""

    def __init__(self) -> None:
        self.dots: set[tuple[int, int]] = set()

    def put(self, drawing: list[str], top: int, left: int) -> None:
        for y, row in enumerate(drawing):
            self.dots |= {(top + y, left + x) for x, dot in enumerate(row) if dot == "#"}

    def columns(self) -> bytes:
        width = 1 + max(x for _, x in self.dots)
        return bytes(sum(0x80 >> y for y in range(ROWS) if (y, x) in self.dots) for x in range(width))


def compose(letter: str, drawings: dict[str, list[str]]) -> bytes:
    base, *marks = unicodedata.normalize("NFD", letter)
    has_dot = DOT in marks
    tone = next((TONES[mark] for mark in marks if mark in TONES), None)
    shape = next((SHAPES[mark] for mark in marks if mark in SHAPES), None)
    # Between a shape and a dot below there is only room for the low form, which has its dot.
    is_low = has_dot and shape is not None
    name = f"{base} low" if is_low else f"{base} horn" if HORN in marks else base
    if has_dot and f"{name} dot" in drawings:
        name += " dot"
    body = drawings[name]
    if is_low:
        foot = 7
    elif has_dot:
        foot = 5
    else:
        foot = 6 if base.islower() and base != "y" else 7
    canvas = Canvas()
    canvas.put(body, foot - len(body) + 1, 0)
    width = len(drawings[base][0])

    def centred(mark: str) -> None:
        drawing = drawings[mark]
        canvas.put(drawing, 0, max((width - len(drawing[0])) // 2, 0))

    if shape and tone:
        canvas.put(drawings[shape], 0, 0)
        canvas.put(drawings[tone], 0, 4)
    elif shape or tone:
        centred(shape or tone)
    if has_dot and not is_low:
        canvas.dots.add((7, width // 2))
        if base == "i":
            canvas.dots.add((0, 1))
    columns = canvas.columns()
    # A blank column keeps it from the next letter, as long as there is one.
    return columns + b"\0" if len(columns) < MOST_COLUMNS else columns


def main() -> None:
    drawings = read_drawings(ROOT / "data/vni-letters.txt")
    table = (ROOT / "data/vni-table.tsv").read_text(encoding="utf-8").splitlines()[1:]
    records = []
    for line in table:
        _, letter, _, key, _ = line.split("\t")
        columns = compose(letter, drawings)
        if len(columns) > MOST_COLUMNS:
            sys.exit(f"{letter} has {len(columns)} columns")
        records.append((letter, bytes.fromhex(key).rjust(2, b"\0"), columns))
    if len(records) != 134 or len({columns for _, _, columns in records}) != 134:
        sys.exit("there must be 134 letters, no two alike")
    if "--show" in sys.argv:
        for letter, _, columns in records:
            print(letter)
            for y in range(ROWS):
                print("".join("#" if column & 0x80 >> y else "." for column in columns))
        return
    content = b"".join(key + bytes([len(columns)]) + columns.ljust(MOST_COLUMNS, b"\0") for _, key, columns in records)
    (ROOT / "data/VNIl.dat").write_bytes(content)


if __name__ == "__main__":
    main()
