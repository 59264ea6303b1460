#!/usr/bin/env python3
"""The documents against the tree: the map of ARCHITECTURE.md has every folder of src/ in the order in which they may
include each other; every path, link, preset, test program, benchmark and fuzz target that a document names is there;
the table of dependencies and the packages that are installed name the same things.

Usage: documents.py SOURCE_FOLDER
"""

import json
import re
import sys
from pathlib import Path

# Packages that are there for another one, or whose name in the table is another.
PART_OF = {
    "libfmt-dev": "spdlog",
    "libglib2.0-dev": "libmdb",
    "libgl-dev": "qt",
    "tzdata": "date",
    "libhowardhinnant-date-dev": "date",
    "libtomlplusplus-dev": "toml++",
    "librsvg2-bin": "librsvg",
    "libgtest-dev": "googletest",
    "libbenchmark-dev": "benchmark",
    "libre2-dev": "re2",
    "libcli11-dev": "cli11",
}


def documents(source):
    found = sorted(source.glob("*.md")) + sorted(source.glob("docs/**/*.md"))
    return {path: path.read_text(encoding="utf-8") for path in found}


def map_faults(source):
    """The folders of the map's block, with their depth by the blanks before them."""
    block = re.search(r"## The map\n\n```\n(.*?)```", (source / "ARCHITECTURE.md").read_text(encoding="utf-8"), re.DOTALL)
    named, parents = [], {0: "src"}
    for line in block.group(1).splitlines()[1:]:
        depth = (len(line) - len(line.lstrip())) // 2
        for name in re.findall(r"([\w-]+)/(?=\s|$)", re.split(r"\s{2,}(?=[^\s/]+ )", line.strip())[0] + " "):
            parents[depth] = f"{parents[depth - 1]}/{name}"
            named.append(parents[depth])
    faults = [f"ARCHITECTURE.md: the map's {folder}/ is not there" for folder in named if not (source / folder).is_dir()]
    top = [folder.split("/")[1] for folder in named if folder.count("/") == 1]
    folders = {path.name for path in (source / "src").iterdir() if path.is_dir()}
    faults += [f"ARCHITECTURE.md: src/{name}/ is not in the map" for name in sorted(folders - set(top))]
    layers = re.findall(r"^tallybook_layer\((\w+)", (source / "src/CMakeLists.txt").read_text(), re.M)
    if [name for name in top if name in layers] != [name for name in layers if name in top]:
        faults.append(f"ARCHITECTURE.md: the map's order is not that of src/CMakeLists.txt: {' '.join(layers)}")
    return faults


def path_faults(source, document, text):
    faults = []
    roots = {path.name for path in source.iterdir()} | {path.name for path in (source / "src").iterdir()}
    for name in re.findall(r"`([\w.*{}-]+(?:/[\w.*{}-]+)+/?)`", text):
        first = name.split("/")[0]
        if first not in roots or first == "build" or re.search(r"\b[A-Z]{3,}\b", name.replace("README", "")):
            continue
        if not any(list(folder.glob(name.rstrip("/") + end)) for end in ("", ".*") for folder in (source, source / "src")):
            faults.append(f"{document}: there is no {name}")
    for link in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", text):
        if not (document.parent / link).exists():
            faults.append(f"{document}: the link {link} leads nowhere")
    return faults


def program_faults(source, document, text):
    presets = {preset["name"] for preset in json.loads((source / "CMakePresets.json").read_text())["configurePresets"]}
    faults = [f"{document}: there is no preset {name}" for name in re.findall(r"--preset (\w+)", text) if name not in presets]
    there = {
        r"\b(\w+)_tests\b": lambda name: (source / "tests" / name).is_dir(),
        r"\b(\w+_bench)\b": lambda name: (source / "bench" / f"{name}.cpp").exists(),
        r"\b(\w+_fuzzer)\b": lambda name: name.isupper() or (source / "fuzz" / f"{name}.cpp").exists(),
    }
    for pattern, exists in there.items():
        for name in set(re.findall(pattern, text)):
            if not name.isupper() and not exists(name):
                faults.append(f"{document}: there is no {name}")
    return faults


def dependency_faults(source):
    text = (source / "ARCHITECTURE.md").read_text(encoding="utf-8").split("## Dependencies")[1].lower()
    rows = [row.split("|")[1] for row in text.splitlines() if row.startswith("| ")]
    installed = (source / "tools/install-dependencies").read_text()
    faults, plain_names = [], {"cairo"}  # which Pango needs
    for group in ("build", "test", "package"):
        for package in re.search(rf'^{group}="(.*?)"', installed, re.M | re.DOTALL).group(1).split():
            plain = PART_OF.get(package, re.split(r"[\d-]", re.sub("^lib", "", package))[0])
            plain_names.add(plain)
            library = group != "package" and (package.endswith("-dev") or package in PART_OF)
            if library and not any(plain in row for row in rows):
                faults.append(f"ARCHITECTURE.md: {package} ({plain}) is installed and not in the table of dependencies")
    names = [name for row in rows[1:] for name in row.strip().split(", ")]
    return faults + [f"ARCHITECTURE.md: {name} is in the table of dependencies and not installed"
                     for name in names if not any(plain in name for plain in plain_names)]


def rows_of(text, header):
    """The cells of the rows below a table's header."""
    table = re.search(rf"^{re.escape(header)}.*\n\|[-|]+\n((?:\|.*\n)+)", text, re.M).group(1)
    return [[cell.strip() for cell in row.split("|")[1:]] for row in table.splitlines()]


def table_faults(source):
    """Tables that repeat what the code has."""
    def code(file):
        return (source / "src" / file).read_text(encoding="utf-8")

    kinds = (source / "docs/exchanges.md").read_text(encoding="utf-8")
    architecture = (source / "ARCHITECTURE.md").read_text(encoding="utf-8")
    named = lambda header: {row[0].strip("`") for row in rows_of(kinds, header)}
    settings = code("capture/format/source_settings.cpp")
    numbers = {word: set(re.findall(r"= (\d+)", re.search(rf"enum {word}Number[^}}]*", code("security/rights.h"))[0]))
               for word in ("Object", "Right")}
    tables = {
        "docs/exchanges.md: formats": (named("| format |"), {path.stem for path in (source / "formats").glob("*.toml")}),
        "docs/exchanges.md: ways": (named("| way |"), set(re.findall(r'\{"(\w+)", *readAs', code("capture/site/transport_keys.cpp")))),
        "docs/exchanges.md: settings": (named("| key | values |"), set(re.findall(r'\{"(\w+)", &SourceSettings', settings))),
        "ARCHITECTURE.md: rights": ({tuple(re.findall(r"\d+", cell)[0] for cell in row[:2])
                                     for row in rows_of(architecture, "| object |")},
                                    {(o, r) for o in numbers["Object"] for r in numbers["Right"]}),
    }
    return [f"{name}: only in the table {sorted(table - there)}, only in the code {sorted(there - table)}"
            for name, (table, there) in tables.items() if table != there]


def main():
    source = Path(sys.argv[1])
    faults = map_faults(source) + dependency_faults(source) + table_faults(source)
    for document, text in documents(source).items():
        faults += path_faults(source, document, text) + program_faults(source, document, text)
    print("\n".join(faults) or "in order")
    sys.exit(1 if faults else 0)


main()
