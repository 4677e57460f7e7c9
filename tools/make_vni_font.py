#!/usr/bin/env python3
"""Makes data/fonts/OrvexVNI.ttf and OrvexVNI-Bold.ttf from DejaVu Sans.

A VNI letter is one or two characters of Windows-1252. In these fonts a one-character letter is the glyph of that
character, and a two-character letter is a ligature of the always-on feature `ccmp`, so that text in VNI reads as
Vietnamese wherever a toolkit shapes its text. Vietnamese letters outside Windows-1252 keep their own code points.

Usage: tools/make_vni_font.py [FOLDER OF DejaVuSans.ttf]       (Debian: python3-fonttools, fonts-dejavu-core)
"""

import csv
import pathlib
import sys

from fontTools import subset
from fontTools.feaLib.builder import addOpenTypeFeaturesFromString
from fontTools.ttLib import TTFont

ROOT = pathlib.Path(__file__).resolve().parent.parent
FAMILY = "Orvex VNI"
# Seconds since 1904; fixed, so that the same input gives the same file.
STAMP = 3_786_912_000


def windows_1252():
    """Code points of the printable characters of the code page."""
    codes = set()
    for byte in range(0x20, 0x100):
        try:
            codes.add(ord(bytes([byte]).decode("cp1252")))
        except UnicodeDecodeError:
            pass
    return codes - {0x7F}


def read_letters():
    """[(code point, VNI text)] of all 134 letters."""
    with open(ROOT / "data" / "vni-table.tsv", encoding="utf-8") as file:
        rows = csv.DictReader(file, delimiter="\t")
        return [(ord(row["letter"]), bytes.fromhex(row["vni_bytes"]).decode("cp1252")) for row in rows]


def rename(font, style):
    full = FAMILY if style == "Regular" else f"{FAMILY} {style}"
    postscript = "OrvexVNI" if style == "Regular" else f"OrvexVNI-{style}"
    names = font["name"]
    licence = [record for record in names.names if record.nameID in (0, 13, 14)]
    names.names = licence
    for name_id, text in ((1, FAMILY), (2, style), (3, postscript), (4, full), (5, "Version 1.0"), (6, postscript)):
        names.setName(text, name_id, 3, 1, 0x409)
        names.setName(text, name_id, 1, 0, 0)


def make(source, target, style):
    letters = read_letters()
    font = TTFont(source, recalcTimestamp=False)
    original = font.getBestCmap()

    options = subset.Options()
    options.layout_features = []
    options.drop_tables += ["GPOS", "GSUB", "GDEF", "kern", "MATH", "FFTM", "GlyphOrder"]
    options.glyph_names = True
    options.hinting = True
    options.name_IDs = ["*"]
    subsetter = subset.Subsetter(options)
    subsetter.populate(unicodes=windows_1252() | {code for code, _ in letters})
    subsetter.subset(font)

    # The ligatures take glyphs, so the one-character letters are put in place first.
    glyph_of = dict(original)
    singles = {ord(vni): original[code] for code, vni in letters if len(vni) == 1}
    glyph_of.update(singles)
    for table in font["cmap"].tables:
        if table.isUnicode():
            table.cmap.update(singles)
    rules = [f"    sub {glyph_of[ord(vni[0])]} {glyph_of[ord(vni[1])]} by {original[code]};"
             for code, vni in letters if len(vni) == 2]
    addOpenTypeFeaturesFromString(font, "\n".join(
        ["languagesystem DFLT dflt;", "languagesystem latn dflt;", "feature ccmp {", *rules, "} ccmp;"]))

    rename(font, style)
    font["head"].created = font["head"].modified = STAMP
    font.save(target)
    print(f"{target.relative_to(ROOT)}: {target.stat().st_size} bytes, {len(font.getGlyphOrder())} glyphs")


def main():
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "/usr/share/fonts/truetype/dejavu")
    target = ROOT / "data" / "fonts"
    target.mkdir(exist_ok=True)
    make(folder / "DejaVuSans.ttf", target / "OrvexVNI.ttf", "Regular")
    make(folder / "DejaVuSans-Bold.ttf", target / "OrvexVNI-Bold.ttf", "Bold")


if __name__ == "__main__":
    main()
