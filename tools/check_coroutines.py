#!/usr/bin/env python3
"""Finds the forms of co_await that g++ 12 miscompiles.

- `if (co_await f(...))`, `while (co_await f(...))`, also with a declaration inside: what the call was given is destroyed
  twice. Name the result first.
- `co_await f(c ? a : b)`: both sides are destroyed. Name the argument first.
- `co_await f([x] { ... })`: a closure with captures beyond `this` that is made within the awaited call is destroyed twice.
  Name it first.

Plain statements and initialisers with other temporaries are fine.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LEAVE_OUT = {"build", "docs", "help", "data"}

COMMENT_OR_TEXT = re.compile(r'//[^\n]*|/\*.*?\*/|R"\((?:.|\n)*?\)"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'', re.S)


def blank(match: re.Match) -> str:
    return re.sub(r"[^\n]", " ", match.group(0))


def closing(text: str, start: int) -> int:
    """Place of the bracket that closes the one at `start`; the end of the text if there is none."""
    depth = 0
    for place in range(start, len(text)):
        if text[place] in "([{":
            depth += 1
        elif text[place] in ")]}":
            depth -= 1
            if depth == 0:
                return place
    return len(text)


def faults(text: str) -> list[tuple[int, str]]:
    found = []
    for match in re.finditer(r"\b(?:if|while|switch|for)\s*(?:constexpr\s*)?\(", text):
        end = closing(text, match.end() - 1)
        head = text[match.end():end]
        if "co_await" in re.sub(r"\[[^\]]*\]\s*(\([^)]*\))?\s*(->[^{]*)?\{.*\}", "", head, flags=re.S):
            found.append((match.start(), "co_await in a condition: name the result first"))
    for match in re.finditer(r"\bco_await\b", text):
        # The awaited expression goes to the end of the statement, or to the bracket that encloses it.
        depth = 0
        place = match.end()
        while place < len(text) and (depth > 0 or text[place] not in ";,)]}"):
            depth += text[place] in "([{"
            depth -= text[place] in ")]}"
            place += 1
        awaited = text[match.end():place]
        opening = awaited.find("(")
        if opening < 0:
            continue
        arguments = awaited[opening:]
        closure = re.search(r"\[([^\]\[]*)\]\s*(?:\([^)]*\)\s*)?(?:mutable\s*)?(?:->[^{;]*)?\{", arguments)
        if closure and closure.group(1).strip() not in ("", "this"):
            found.append((match.start(), "a closure within co_await: name it first"))
        if re.search(r"\?[^:?]*:(?!:)", re.sub(r"\{[^{}]*\}", "", arguments).replace("::", "  ")):
            found.append((match.start(), "?: within co_await: name the argument first"))
    return found


def main() -> int:
    problems = []
    files = [path for path in sorted(ROOT.rglob("*"))
             if path.suffix in {".h", ".cpp"} and path.relative_to(ROOT).parts[0] not in LEAVE_OUT]
    for path in files:
        text = COMMENT_OR_TEXT.sub(blank, path.read_text(errors="replace"))
        problems += [f"{path.relative_to(ROOT)}:{text.count(chr(10), 0, place) + 1}: {what}" for place, what in faults(text)]
    print("\n".join(problems) if problems else f"{len(files)} files await in forms that are compiled well")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
