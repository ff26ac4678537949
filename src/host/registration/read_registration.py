#!/usr/bin/env python3
"""Reads the registration and terminology resources out of a Windows module, as a host does, and prints what they say.

Usage: read_registration.py MODULE | FOLDER. A module needs wrestool, of the package icoutils; a folder is that of a
build, which has the resources as pipl.bin and aete.bin.
"""

import struct
import subprocess
import sys
from pathlib import Path

MODES = {3: "RGB, 8 bits", 11: "RGB, 16 bits", 16: "RGB, 32 bits"}
LAYERS = (
    "flat image",
    "flat image, selection",
    "floating selection",
    "layer, editable transparency",
    "layer, editable transparency, selection",
    "layer, protected transparency",
    "layer, protected transparency, selection",
)


class Reader:
    def __init__(self, data):
        self.data = data
        self.at = 0

    def take(self, size):
        taken = self.data[self.at : self.at + size]
        if len(taken) != size:
            raise ValueError("the resource ends too early")
        self.at += size
        return taken

    def int(self, size):
        return int.from_bytes(self.take(size), "little")

    def code(self):
        return self.take(4)[::-1].decode("ascii")

    def pascal(self):
        return self.take(self.int(1)).decode("ascii")

    def expect(self, size, value, what):
        found = self.int(size)
        if found != value:
            raise ValueError(f"{what}: {found} where {value} is expected")

    def finish(self):
        if self.at != len(self.data):
            raise ValueError(f"{len(self.data) - self.at} bytes too many")


def c_string(data):
    text, zero, rest = data.partition(b"\0")
    if not zero or rest.strip(b"\0"):
        raise ValueError(f"no text that ends with zeros: {data!r}")
    return text.decode("ascii")


def pascal_string(data):
    size = data[0]
    if size >= len(data) or data[1 + size :].strip(b"\0"):
        raise ValueError(f"no counted text: {data!r}")
    return data[1 : 1 + size].decode("ascii")


def modes(data):
    found = [n for n in range(8 * len(data)) if data[n // 8] & 0x80 >> n % 8]
    return "; ".join(MODES.get(n, f"mode {n}") for n in found)


def cases(data):
    if len(data) != 4 * len(LAYERS):
        raise ValueError("not seven kinds of layer")
    lines = []
    for layer, (read, write, flags, _) in zip(LAYERS, struct.iter_unpack("4B", data)):
        lines.append(f"    {layer}: in {read}, out {write}, flags {flags}")
    return "straight is 1\n" + "\n".join(lines)


def scripting(data):
    version, = struct.unpack_from("<I", data)
    codes = [data[i : i + 4][::-1].decode("ascii") for i in (4, 8)]
    terminology, = struct.unpack_from("<H", data, 12)
    return f"version {version}, class {codes[0]}, event {codes[1]}, terminology {terminology}, scope {c_string(data[14:])}"


PROPERTIES = {
    "kind": ("kind", lambda data: data[::-1].decode("ascii")),
    "vers": ("version", lambda data: "{1}.{0}".format(*struct.unpack("<HH", data))),
    "catg": ("menu", pascal_string),
    "name": ("name", pascal_string),
    "8664": ("x86-64 code", c_string),
    "mode": ("modes", modes),
    "enbl": ("enabled", c_string),
    "fici": ("layers", cases),
    "hstm": ("scripting", scripting),
}


def print_properties(data):
    reader = Reader(data)
    reader.expect(2, 1, "prelude")
    reader.expect(4, 0, "version")
    for _ in range(reader.int(4)):
        vendor, key = reader.code(), reader.code()
        reader.expect(4, 0, "id")
        content = reader.take(reader.int(4))
        name, decode = PROPERTIES.get(key, (key, bytes.hex))
        print(f"{vendor} {key}  {name}: {decode(content)}")
        if len(content) % 4:
            raise ValueError(f"{key} needs padding, and whether a length counts it is left to hosts")
    reader.finish()


def print_terminology(data):
    reader = Reader(data)
    reader.expect(2, 1, "prelude")
    print("version {}.{}, language {}, script {}".format(*(reader.int(size) for size in (1, 1, 2, 2))))
    reader.expect(2, 1, "suites")
    print(f'suite "{reader.pascal()}" "{reader.pascal()}" {reader.code()}, level {reader.int(2)}, version {reader.int(2)}')
    reader.expect(2, 1, "events")
    print(f'event "{reader.pascal()}" "{reader.pascal()}", class {reader.code()}, id {reader.code()}')
    for what in ("reply", "direct parameter"):
        print(f'{what}: {reader.code()} "{reader.pascal()}", flags {reader.int(2):#x}')
    for _ in range(reader.int(2)):
        name, key, kind = reader.pascal(), reader.code(), reader.code()
        print(f'{key} {kind} "{name}" "{reader.pascal()}", flags {reader.int(2):#x}')
    for what in ("classes", "comparisons", "enumerations"):
        reader.expect(2, 0, what)
    reader.finish()


def resource(source, kind):
    if Path(source).is_dir():
        return Path(source, f"{kind.lower()}.bin").read_bytes()
    run = subprocess.run(["wrestool", "--extract", "--raw", "--type", kind, source], stdout=subprocess.PIPE, check=True)
    if not run.stdout:
        raise ValueError(f"no resource {kind}")
    return run.stdout


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__.strip())
    try:
        for kind, show in (("PIPL", print_properties), ("AETE", print_terminology)):
            print(f"== {kind}")
            show(resource(sys.argv[1], kind))
    except (ValueError, KeyError, struct.error, OSError, subprocess.CalledProcessError) as error:
        sys.stdout.flush()
        sys.exit(f"{sys.argv[1]}: {error}")


main()
