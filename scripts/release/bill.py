#!/usr/bin/env python3
"""bill.py TITLE BUILD FOLDER OUTPUT...: writes what OUTPUTs of the build folder BUILD hold besides our own code into
FOLDER: bill-of-materials.txt, with packages, versions and licences, and licences.txt, the texts for what is compiled or
linked in. Ninja says which headers were read, the linker, which is asked once more, what it took, the object file, what
it wants from the system, and dpkg, whose that is. ROOT in the environment is the root of another architecture."""

import os
import re
import subprocess
import sys
from pathlib import Path

title, build, folder, *outputs = sys.argv[1:]
build = os.path.abspath(build)
root = os.environ.get('ROOT', '')
objdump = os.environ.get('OBJDUMP', 'objdump')
source = Path(__file__).resolve().parents[2]

# Of packages, by their names or their sources', whose file names no licence that a program could read, or not that of
# the parts that are taken.
known = {
    'linux-libc-dev.*': 'GPL-2 with the Linux syscall note',
    'gcc-(12.*|mingw-w64)': 'GPL-3+ with the GCC Runtime Library Exception',
    'glibc|cross-toolchain-base.*': 'LGPL-2.1+, linked-in parts with an exception',
    'python3.11': 'PSF-2.0',
    'emscripten': 'Expat (musl), Apache-2.0 with LLVM exception (libc++, compiler-rt), public domain (dlmalloc)',
    'mingw-w64': 'ZPL-2.1, Expat (winpthreads) and public domain',
}


def said(*command: str) -> str:
    return subprocess.run(command, check=True, capture_output=True, text=True, cwd=build).stdout


def ours(path: str) -> bool:
    return Path(path).is_relative_to(source)


def stanzas_of_runtime(text: str) -> str:
    """Of Emscripten's copyright file, which is mostly about its compiler, what is about the libraries it links in."""
    all_of_it = re.split(r'\n\n+', text)
    libraries = re.compile(r'^ system/lib/(libc|libcxx|compiler-rt|dlmalloc|libunwind)', re.MULTILINE)
    parts = [part for part in all_of_it if libraries.search(part)]
    named = {name for part in parts for name in re.findall(r'^License:\s*(\S.*)$', part, re.M)}
    named = {word for name in named for word in re.split(r' (?:and|or) ', name)}
    parts += [part for part in all_of_it if (head := re.match(r'License:\s*(\S.*)', part)) and head[1] in named]
    return '\n\n'.join(parts)


def dpkg(below: str, *arguments: str) -> str:
    place = {'DPKG_ADMINDIR': f'{below}/var/lib/dpkg'}
    return subprocess.run(['dpkg-query', *arguments], capture_output=True, text=True, env=os.environ | place).stdout


class Package:
    """One that is installed here, or in ROOT."""

    def __init__(self, below: str, package: str):
        self.name, self.version, origin = dpkg(
            below, '-W', '-f', '${Package} ${Version} ${source:Package}', package).split()
        self.files: set[str] = set()
        self.text = Path(f'{below}/usr/share/doc/{self.name}/copyright').read_text(errors='replace')
        for names, terms in known.items():
            if re.fullmatch(names, self.name) or re.fullmatch(names, origin):
                self.licence = terms
                break
        else:
            first = re.search(r'^License:\s*(\S.*)$', self.text, re.MULTILINE)
            if not first or not self.text.startswith('Format:'):
                sys.exit(f'bill.py: {title}: {self.name} of {origin} names no licence: look at its copyright file, and '
                         'add a line to `known`')
            self.licence = first[1]
        if origin == 'emscripten':
            self.text = stanzas_of_runtime(self.text)


def packages(paths: set[str]) -> list[Package]:
    """The packages that the files belong to, each with the names of its files."""
    found: dict[tuple[str, str], Package] = {}
    lost = set(paths)
    for below in {root, ''}:
        names: dict[str, str] = {}
        for path in paths:
            if path.startswith(root + '/') == (below != '') or not root:
                names[os.path.normpath(path)] = path
                names[re.sub('^/usr/lib', '/lib', os.path.normpath(path))] = path
                names[os.path.realpath(path)] = path
        for line in dpkg(below, '-S', *sorted(names)).splitlines() if names else []:
            owner, path = line.rsplit(': ', 1)
            owner = owner.split(',')[0]
            if (below, owner) not in found:
                found[below, owner] = Package(below, owner)
            found[below, owner].files.add(os.path.basename(names[path]))
            lost.discard(names[path])
    if lost:
        sys.exit(f'bill.py: {title}: no package has {", ".join(sorted(lost))}')
    return sorted(found.values(), key=lambda package: package.name)


headers: set[str] = set()
linked: set[str] = set()
wanted: set[str] = set()
for output in outputs:
    objects = [name for name in said('ninja', '-t', 'inputs', output).split('\n') if re.search(r'\.o(bj)?$', name)]
    for line in said('ninja', '-t', 'deps', *objects).splitlines():
        path = os.path.normpath(os.path.join(build, line.strip()))
        if line.startswith(' ') and not ours(path):
            headers.add(path)
    if output.endswith('.a'):
        continue
    command = said('ninja', '-t', 'commands', output).splitlines()[-1]
    again = said('sh', '-c', re.sub(r' && :$', ' -Wl,--trace && :', command))
    files = {line for line in again.splitlines() if line.startswith('/') and not ours(line)}
    # wasm-ld names archives with their members.
    files = {re.sub(r'\(.*', '', line) for line in files}
    linked |= {path for path in files if re.search(r'\.(a|o|obj)$', path)}
    # The other architecture's own come before those of the cross-compiler.
    folders = [str(path) for path in Path(root).glob('usr/lib/*-linux-gnu')] if root else []
    folders += sorted({os.path.dirname(path) for path in files})
    if not output.endswith('.wasm'):
        for name in re.findall(r'(?:NEEDED|DLL Name:)\s+(\S+)', said(objdump, '-p', output)):
            paths = [f'{there}/{name}' for there in folders if os.path.exists(f'{there}/{name}')]
            wanted.add(paths[0] if paths else name)

lines = [f'What {title} holds besides its own code, which is under the MIT licence', '']
lines += ['Compiled or linked in (the texts are in licences.txt):', '']
texts: dict[str, list[str]] = {}
for package in packages(headers | linked):
    what = ', '.join(sorted(name for name in package.files if re.search(r'\.(a|o|obj)$', name))) or 'headers'
    lines.append(f'  {package.name} {package.version}\n    licence: {package.licence}\n    what: {what}')
    texts.setdefault(package.text, []).append(f'{package.name} {package.version}')
lines += ['', 'Used from the system when it runs:', '']
system = {path for path in wanted if path.startswith('/')}
for package in packages(system):
    what = ', '.join(sorted(package.files))
    lines.append(f'  {package.name} {package.version}\n    licence: {package.licence}\n    what: {what}')
lines += [f'  {name}, a part of the system' for name in sorted(wanted - system)]
if not wanted:
    lines.append('  nothing')

target = Path(folder)
target.mkdir(parents=True, exist_ok=True)
(target / 'bill-of-materials.txt').write_text('\n'.join(lines) + '\n')
with (target / 'licences.txt').open('w') as file:
    for text, names in sorted(texts.items(), key=lambda item: item[1]):
        file.write(f'{"=" * 78}\n{chr(10).join(names)}\n{"=" * 78}\n\n{text.strip()}\n\n')
