#!/usr/bin/env python3
"""Holds docs/operations.md against the headers and the tests.

Fails when a public name has no row, when a row names what its header doesn't declare or a test file that isn't there,
and when none of a row's test files mentions a name, or the one that the row says it is tested through. A name without a
row is shown with the header it belongs under and the test files that mention it, for a row to be made from.

Public are the functions, types and variables at global scope of every header that is installed, and the public members
of KivImage. Named constants and enumerators are not listed: their headers do that.
"""

import re
import sys
from pathlib import Path

root = Path(__file__).resolve().parent.parent
table = root / "docs" / "operations.md"

# The headers for other programs are the public ones: src/CMakeLists.txt installs them.
public = sorted(re.findall(r"\b\w+/\w+\.h\b", (root / "src" / "CMakeLists.txt").read_text()))


def without_comments(text):
    text = re.sub(r"//[^\n]*|/\*.*?\*/", " ", text, flags=re.S)
    text = re.sub(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", " ", text, flags=re.M)
    return re.sub(r"__attribute__\s*\(\(.*?\)\)", " ", text)


def declarations(text):
    """Pairs of what stands before a semicolon or brace, and the content of the braces (None without)."""
    start = i = 0
    while i < len(text):
        if text[i] == ";":
            yield text[start:i].strip(), None
        elif text[i] == "{":
            opening, depth = i, 1
            while depth:
                i += 1
                depth += {"{": 1, "}": -1}.get(text[i], 0)
            yield text[start:opening].strip(), text[opening + 1 : i]
        else:
            i += 1
            continue
        i += 1
        start = i


def names(text, in_class=False):
    for head, body in declarations(text):
        head = re.sub(r"^(public|protected)\s*:\s*", "", head)
        if head.startswith('extern "C"') and body is not None:
            yield from names(body)
            continue
        kind = re.match(r"(?:struct|class|union|enum(?:\s+class)?)\s+(\w+)\s*(?::.*)?$", head, re.S)
        if kind:
            if body is not None:
                yield kind[1]
                if kind[1] == "KivImage":
                    public = re.split(r"\bprivate\s*:", body.partition("public:")[2])[0]
                    yield from (name for name in names(public, True) if name != "KivImage")
            continue
        if not head or re.match(r"(using|static_assert|enum|template|namespace|friend|typedef|\w+\()", head):
            continue
        head = head if "operator" in head else head.partition("=")[0].strip()
        call = re.search(r"(operator\s*(?:\(\)|[^\s\w(]+)|~?\w+)\s*\(", head)
        if call:
            if not call[1].startswith("~"):
                yield call[1].replace(" ", "")
        elif in_class or head.startswith("extern"):
            # Several variables may stand behind one type.
            for variable in head.split(","):
                yield re.search(r"(\w+)\s*(?:\[[^]]*\]\s*)*$", variable)[1]


def declared():
    result = {}
    for header in public:
        found = set(names(without_comments((root / "src" / header).read_text())))
        if found:
            result[header] = found
    return result


def expanded(item):
    """`ippiAdd_32f_C1R/C1IR` is ippiAdd_32f_C1R and ippiAdd_32f_C1IR."""
    if item.startswith("operator"):
        return [item]
    first, *others = item.split("/")
    stem = first[: first.rfind("_") + 1]
    return [first] + [stem + other for other in others]


def mentions(text, name):
    """An operator counts as mentioned where its sign stands between blanks, or before an operand."""
    if name.startswith("operator"):
        return re.search(r"\s" + re.escape(name[len("operator") :]) + r"[\s\w]", text) is not None
    return re.search(r"\b" + name + r"\b", text) is not None


def main():
    errors = []
    headers = declared()
    missing = {header: set(found) for header, found in headers.items()}
    tests = {
        path.relative_to(root / "tests").as_posix(): path.read_text()
        for path in sorted((root / "tests").rglob("*"))
        if path.suffix in (".c", ".cpp", ".h", ".sh")
    }

    header = None
    for number, line in enumerate(table.read_text().splitlines(), 1):
        where = f"{table.relative_to(root)}:{number}"
        if line.startswith("#"):
            header = next(iter(re.findall(r"`(\S+\.h)`", line)), header)
            if header and header not in headers:
                errors.append(f"{where}: {header} is no public header")
                header = None
        if not line.startswith("| `"):
            continue
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if header is None or len(cells) != 3 or not all(cells):
            errors.append(f"{where}: a row has names, a description and tests, under a heading with its header")
            continue
        marked = re.findall(r"`([^`]+)`", cells[2])
        files = [item for item in marked if "." in item]
        through = [item for item in marked if "." not in item]
        absent = [file for file in files if file not in tests]
        errors += [f"{where}: there is no tests/{file}" for file in absent]
        for name in (name for item in re.findall(r"`([^`]+)`", cells[0]) for name in expanded(item)):
            if name not in headers[header]:
                errors.append(f"{where}: {header} doesn't declare {name}")
            elif name not in missing[header]:
                errors.append(f"{where}: a second row for {name}")
            elif not absent and not any(mentions(tests[file], n) for file in files for n in [name, *through]):
                errors.append(f"{where}: {name} isn't mentioned in {' or '.join(files)}")
            missing[header].discard(name)

    for header, absent in missing.items():
        for name in sorted(absent):
            candidates = [file for file, text in tests.items() if mentions(text, name)]
            errors.append(
                f"docs/operations.md has no row for {name}. Under `{header}`:\n"
                f"    | `{name}` | ... | {', '.join(f'`{file}`' for file in candidates) or 'no test mentions it'} |"
            )

    for error in errors:
        print(error, file=sys.stderr)
    if errors:
        sys.exit(f"{len(errors)} to put right, see {Path(__file__).relative_to(root)}")
    print(f"{sum(map(len, headers.values()))} names in {len(headers)} headers")


main()
