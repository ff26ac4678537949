#!/usr/bin/env python3
"""Prints the registration resources of a build, as tools/read_registration.py does out of a Windows module.

Usage: registration.py READ_REGISTRATION RESOURCES
"""

import runpy
import subprocess
import sys
from pathlib import Path

script, resources = map(Path, sys.argv[1:])


def contents(command, **_):
    """In place of wrestool."""
    kind = command[command.index("--type") + 1].lower()
    return subprocess.CompletedProcess(command, 0, stdout=(resources / f"{kind}.bin").read_bytes())


subprocess.run = contents
sys.argv = [str(script), str(resources)]
registration = runpy.run_path(str(script))

# Whether a length counts its padding is left to hosts, so no property may need any.
reader = registration["Reader"]((resources / "pipl.bin").read_bytes())
reader.take(6)
for _ in range(reader.int(4)):
    reader.take(12)
    if len(reader.take(reader.int(4))) % 4:
        sys.exit("a property needs padding")
