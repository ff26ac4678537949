#!/usr/bin/env python3
"""Holds that the parts of this project use each other in one direction only.

Usage: arrows.py NM OBJECT...

Fails for an #include that the table below doesn't have, and for an object file (of those given, the library's) that
uses what a part defines that the table doesn't have either: a member of KivImage is declared on image/, but its body
may stand on a higher floor. tests/, bench/ and docs/ may use everything.
"""

import re
import subprocess
import sys
from pathlib import Path

# A part, and what it may use beside itself: other parts, or single headers of them. Lowest first.
may_use = {
    "primitives": [],
    "image": ["primitives"],
    "tone": ["primitives", "image"],
    "filters": ["primitives", "image", "tone"],
    "equalizer": ["primitives", "image", "tone", "filters"],
    "api": ["primitives", "image", "tone", "filters", "equalizer"],
    "host": ["primitives", "image", "tone", "filters", "equalizer"],
    # The rooms of tools/.
    "files": [],
    "settings": ["files", "api/orbel.h", "host/script_keys.h"],
    "pictures": ["files", "api/orbel.h"],
    "plugin": ["files", "api/orbel.h", "host/host_interface.h", "host/script_keys.h"],
    "batch": ["files", "settings", "pictures", "plugin", "api/orbel.h"],
    "cli": ["files", "settings", "pictures", "plugin", "batch", "api/orbel.h"],
    "fronts": ["api/orbel.h"],
}

# Libraries that one room alone has.
has_alone = {"vips": "pictures", "tiffio.h": "pictures", "CLI": "cli", "toml++": "settings"}

root = Path(__file__).resolve().parent.parent


def allows(part, used, header):
    own = may_use.get(part, [])
    if used == part or used in own:
        return True
    if header is not None:
        return header in own
    return any(entry.startswith(used + "/") for entry in own)


def includes():
    for path in sorted(path for folder in ("src", "tools", "fronts") for path in (root / folder).rglob("*.*")):
        if path.suffix not in (".h", ".c", ".cpp", ".inc", ".in", ".rc"):
            continue
        name = path.relative_to(root)
        part = name.parts[0] if name.parts[0] == "fronts" else name.parts[1]
        for header in re.findall(r'^[ \t]*#[ \t]*include[ \t]*["<]([^">]+)', path.read_text(), re.M):
            used = header.partition("/")[0]
            if part != has_alone.get(used, part):
                yield part, "nobody's", header, f"{name} includes {header}, which {has_alone[used]}/ has alone"
            beside = (path.parent / header).exists()
            if not beside and (used in may_use or (root / "src" / header).exists()):
                yield part, used, header, f"{name} includes {header}"


def symbols(nm, objects):
    """Uses of what another part's objects define; weak symbols, which are everybody's, are left out."""
    definer = {}
    uses = []
    for listed in subprocess.run([nm, "-A", *objects], check=True, capture_output=True, text=True).stdout.splitlines():
        at = re.match(r".*\.dir/(?:\./)?(\w+)/(\S+?\.cpp)\.\w+:.*? ([A-Za-z]) (\S+)$", listed)
        if at is None:
            continue
        part, file, kind, symbol = at.groups()
        if kind == "U":
            uses.append((part, file, symbol))
        elif kind in "TDBR":
            definer[symbol] = part
    for part, file, symbol in uses:
        if symbol in definer:
            yield part, definer[symbol], None, f"src/{part}/{file} uses {symbol} of {definer[symbol]}/"


def main(nm, *objects):
    linked = list(symbols(nm, objects))
    if not linked:
        sys.exit("none of the objects given uses another part of the library")
    uses = list(includes()) + linked
    wrong = [text for part, used, header, text in uses if not allows(part, used, header)]
    for text in wrong:
        print(text, file=sys.stderr)
    if wrong:
        sys.exit(f"{len(wrong)} against the table in {Path(__file__).relative_to(root)}")
    print(f"{len(uses)} uses, all of them in the table")


main(*sys.argv[1:])
