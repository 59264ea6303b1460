#!/usr/bin/env python3
"""Where the code names a setting in full, its type, store and default are those of the table of settings
(foundation/settings_catalogue.cpp), so that a reader, the settings pages and `tallyctl setting` cannot disagree.

Usage: settings.py SOURCE_FOLDER
"""

import re
import sys
from pathlib import Path

ROW = re.compile(r'^    (?P<made>\w*)[({](?P<words>.*)[)}],$', re.M)
READ = re.compile(r'ReadConfig(Int|String)\(\s*"([^"]+)",\s*([\w:]+|"[^"]*"),\s*([\w:]+),\s*([^;]*?)\)(?=[\s;.),])', re.S)
# The folder's icon in the tree asks the database's store, where the filter's own keys are the machine's.
ELSEWHERE = {("LogFilt_Enabled", "StoreDatabase")}


def table(source):
    """(section, key) in small letters -> (type, store, default)."""
    text = (source / "src/foundation/settings_catalogue.cpp").read_text(encoding="utf-8")
    rows = {}
    for row in ROW.finditer(text[text.index("constexpr Setting kSettings[]"):]):
        words = [word.strip() for word in row["words"].split(",")]
        made = row["made"]
        if made == "folder":
            words = ['"general"', words[0], "M", "S", words[1]]
        elif made == "formed":
            words = words[:3] + ["S", words[3]]
        elif made in ("ranged", "onOff"):
            words = words[:3] + ["I", words[3]]
        if len(words) >= 5 and words[0].startswith('"'):
            section, key, store, kind, default = words[:5]
            rows[section.strip('"').lower(), key.strip('"').lower()] = (kind, store, default.strip('"'))
    return rows


def faults(source, rows):
    known_keys = {key for _, key in rows}
    sections = {"kGeneral": "general", "foundation::kGeneral": "general", "kCalls": "calls"}
    for file in sorted((source / "src").rglob("*.cpp")):
        text = file.read_text(encoding="utf-8")
        for kind, key, section, store, default in READ.findall(text):
            section = sections.get(section, section.strip('"')).lower()
            row = rows.get((section, key.lower()))
            place = f"{file.relative_to(source)}: {key}"
            if row is None:
                # A section that is worked out, as "Provider_%d", is not looked up.
                if section in {known for known, _ in rows} or key.lower() not in known_keys:
                    yield f"{place} is not in the table"
                continue
            if row[0] != kind[0]:
                yield f"{place} is read as {kind}"
            if row[1] != store.split("::")[-1].removeprefix("Store")[0] and (key, store.split("::")[-1]) not in ELSEWHERE:
                yield f"{place} is read from {store}"
            plain = default.strip().strip('"')
            # A named constant says what the reader does without the setting; the table then has the same or nothing.
            if re.fullmatch(r'-?\d+|"[^"]*"', default.strip()) and plain != row[2] and (plain, row[2]) not in {("0", ""), ("", "0")}:
                yield f"{place} has the default {default.strip()}, the table has {row[2]!r}"


def main():
    source = Path(sys.argv[1])
    rows = table(source)
    found = list(faults(source, rows))
    print("\n".join(found) or f"in order, {len(rows)} settings")
    sys.exit(1 if found or len(rows) < 100 else 0)


main()
