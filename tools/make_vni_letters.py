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
row 6, a capital in row 7; above a dot, which stands in row 7, both have it in row 5. A letter with a circumflex or
breve and a dot below has no room for all its blank rows, so it is drawn as a whole.
"""

import pathlib
import sys
import unicodedata

ROOT = pathlib.Path(__file__).resolve().parent.parent
LETTERS = 134
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
        """The columns, with a blank one at the end that keeps the letter from the next, as long as there is room."""
        width = 1 + max(x for _, x in self.dots)
        if any(not 0 <= y < ROWS for y, _ in self.dots):
            sys.exit(f"a letter reaches beyond its {ROWS} rows")
        if width < MOST_COLUMNS:
            width += 1
        return bytes(sum(0x80 >> y for y in range(ROWS) if (y, x) in self.dots) for x in range(width))


def marks_above(shape: str | None, tone: str | None, drawings: dict[str, list[str]]) -> list[str]:
    """The mark above a letter, or two of them side by side with a blank column between."""
    if shape is None or tone is None:
        mark = shape or tone
        return drawings[mark] if mark else []
    left = drawings[shape]
    right = drawings.get(f"{tone} narrow", drawings[tone])
    if len(left[0]) + 1 + len(right[0]) >= MOST_COLUMNS:
        left = drawings.get(f"{shape} narrow", left)
    return [f"{one}.{other}" for one, other in zip(left, right, strict=True)]


def compose(letter: str, drawings: dict[str, list[str]]) -> bytes:
    canvas = Canvas()
    if letter in drawings:
        canvas.put(drawings[letter], 0, 0)
        return canvas.columns()
    base, *marks = unicodedata.normalize("NFD", letter)
    tone = next((TONES[mark] for mark in marks if mark in TONES), None)
    shape = next((SHAPES[mark] for mark in marks if mark in SHAPES), None)
    has_dot = DOT in marks
    name = f"{base} horn" if HORN in marks else base
    body = drawings[name]
    foot = 6 if base.islower() and base != "y" else 7
    if has_dot:
        body = drawings.get(f"{name} dot", body)
        foot = 5

    # Marks stand over the middle of the letter without its horn; the wider one of the two begins in column 0.
    above = marks_above(shape, tone, drawings)
    width = len(drawings[base][0])
    spare = width - len(above[0]) if above else 0
    left = max(-spare // 2, 0)
    # A tone alone has its lower end over the middle. That is the right end of a grave and the left one of an acute.
    rounding = 1 if shape is None and tone != "grave" else 0
    canvas.put(body, foot - len(body) + 1, left)
    canvas.put(above, 0, max((spare + rounding) // 2, 0))
    if has_dot:
        canvas.put(["#"], 7, width // 2)
        if base == "i":
            canvas.put(["#"], 0, width // 2)
    return canvas.columns()


def check(records: list[tuple[str, bytes, bytes]]) -> None:
    if len(records) != LETTERS:
        sys.exit(f"there are {len(records)} letters instead of {LETTERS}")
    letter_of: dict[tuple[str, bytes], str] = {}
    for letter, key, columns in records:
        if len(key) != 2 or key[1] == 0:
            sys.exit(f"the key of {letter} is not one or two bytes")
        if not 1 <= len(columns) <= MOST_COLUMNS:
            sys.exit(f"{letter} has {len(columns)} columns")
        for one in (("key", key), ("drawing", columns.rstrip(b"\0"))):
            if one in letter_of:
                sys.exit(f"{letter} has the {one[0]} of {letter_of[one]}")
            letter_of[one] = letter


def main() -> None:
    drawings = read_drawings(ROOT / "data/vni-letters.txt")
    table = (ROOT / "data/vni-table.tsv").read_text(encoding="utf-8").splitlines()[1:]
    records = []
    for line in table:
        _, letter, _, key, _ = line.split("\t")
        records.append((letter, bytes.fromhex(key).rjust(2, b"\0"), compose(letter, drawings)))
    check(records)
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
