#!/usr/bin/env python3
"""Checks that a folder includes only from folders below it, QtWidgets only in windows, and that time comes from the clock."""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

FLOORS = {
    "platform": 0, "core": 1, "widgets": 1, "link": 2, "tickets": 2, "hubs": 3, "database": 4, "printers": 5, "station": 6,
    "commissioning": 7, "console": 7, "designer": 7, "utilities": 7, "setup": 8, "operator": 8, "app": 9, "ctl": 9,
}
# Folders that need less of the house than all that lies below them; those beside the house may include only these.
NEEDS = {
    "widgets": {"platform"},
    "tickets": {"platform"},
    "database": {"platform", "core"},
    "ctl": {"platform", "core", "tickets", "station"},
    "simulator": {"platform", "core", "link", "tickets"},
    "jetimport": {"platform", "core", "database"},
    "tools": {"platform", "core", "database", "tickets"},
    "benchmarks": {*FLOORS, "simulator", "jetimport", "tests"},
    "fuzz": {*FLOORS, "simulator", "jetimport"},
}
BESIDE = [folder for folder in NEEDS if folder not in FLOORS]
# What the simulator may use of the link: encodings, frames and the dictionary, not the master's side.
SIMULATOR_LINK = {"link/CommandNames.h", "link/Encodings.h", "link/Frames.h", "link/FrameReader.h"}
# Folders with windows, the only ones that see the widgets.
WINDOWS = {"commissioning", "console", "designer", "utilities", "setup", "operator", "app", "benchmarks"}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
WIDGETS = re.compile(r"^(QtWidgets($|/)|Q(Application|Widget|Dialog|MainWindow|TableView|MessageBox|FileDialog|StyledItemDelegate)$)")


# What the logic takes from `Clock` instead. Windows may have timers of their own.
TIME = re.compile(r"\b(steady_clock|system_clock|high_resolution_clock|QTimer|QElapsedTimer|QDeadlineTimer|currentDateTime\w*|"
                  r"currentMSecsSinceEpoch|QTime::currentTime|QDate::currentDate)\b")
HAS_TIME = {"platform", "simulator", "jetimport", "benchmarks", "fuzz", "tools", "ctl"}


def window_sources(folder: pathlib.Path) -> set[str]:
    """Names of the files that stand in a WINDOWS target of the folder's CMakeLists.txt."""
    lists = folder / "CMakeLists.txt"
    names: set[str] = set()
    if lists.exists():
        for call in re.findall(r"orvex_(?:library|program)\(([^)]*)\)", lists.read_text()):
            if "WINDOWS" in call.split():
                names.update(call.split())
    return names


def check(path: pathlib.Path, problems: list[str]) -> None:
    relative = path.relative_to(ROOT)
    folder = relative.parts[0]
    windows = window_sources(ROOT / folder)
    is_logic = folder not in HAS_TIME and str(pathlib.Path(*relative.parts[1:])) not in windows
    for number, line in enumerate(path.read_text(errors="replace").splitlines(), 1):
        if is_logic and TIME.search(line.split("//")[0]):
            problems.append(f"{relative}:{number}: time and timers come from Clock")
        found = INCLUDE.match(line)
        if not found:
            continue
        name = found.group(2)
        where = f"{relative}:{number}"
        if WIDGETS.match(name) and str(pathlib.Path(*relative.parts[1:])) not in windows:
            problems.append(f"{where}: includes {name}, but is not in a WINDOWS target")
        target = name.split("/")[0]
        if "/" not in name or target == folder or target not in {*FLOORS, *BESIDE, "tests"}:
            continue
        if not may_include(folder, target) or (folder == "simulator" and target == "link" and name not in SIMULATOR_LINK):
            problems.append(f"{where}: {folder} must not include {name}")


def may_include(folder: str, target: str) -> bool:
    if target == "widgets" and folder not in WINDOWS:
        return False
    if folder in NEEDS:
        return target in NEEDS[folder]
    return target in FLOORS and FLOORS[target] < FLOORS[folder]


def main() -> int:
    problems: list[str] = []
    files = [path for folder in (*FLOORS, *BESIDE) for path in (ROOT / folder).rglob("*")
             if path.suffix in {".h", ".cpp"}]
    for path in files:
        check(path, problems)
    print("\n".join(problems) if problems else f"{len(files)} files keep to their floors")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
