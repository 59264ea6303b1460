#!/usr/bin/env python3
"""Every setting is declared once, as a key of foundation/setting_keys.h: all of them are in the list that the command
line and doctor read (foundation/settings_catalogue.cpp), and code names none by a text of its own.

Usage: settings.py SOURCE_FOLDER
"""

import re
import sys
from pathlib import Path

NAMESPACE = re.compile(r'^namespace (\w+) \{$|^(\})  // namespace', re.M)
DECLARED = re.compile(r'^inline constexpr (?:TextKey|NumberKey|TextSeries|NumberSeries|Setting) (\w+)\b(.*?);$', re.M | re.S)
LISTED = re.compile(r'^    &keys::([\w:]+?)(?:\.pattern)?,$', re.M)
CALL = re.compile(r'\b(ReadConfig|WriteConfig|takeNumber)\w*\(')
# Another store than the setting's own: a key, but no setting.
NOT_LISTED = {"LogFilt_EnabledForIcon"}
# Where a user or a user's data name the setting.
BY_NAME = {"ctl/setting_commands.cpp", "filter/saved_filters.cpp", "folders/bill.cpp"}


def declared_keys(text):
    """(name with its namespace, key as it is stored), in order."""
    marks = [(m.start(), m) for pattern in (NAMESPACE, DECLARED) for m in pattern.finditer(text)]
    space = ""
    for _, mark in sorted(marks, key=lambda each: each[0]):
        if mark.re is NAMESPACE:
            space = "" if mark[2] or mark[1] in ("foundation", "keys") else mark[1] + "::"
        else:
            texts = re.findall(r'"((?:[^"\\]|\\.)*)"', mark[2])
            yield space + mark[1], texts[0] if "kGeneral" in mark[2] or "= " in mark[2][:3] and not space else texts[1] if len(texts) > 1 else texts[0]


def arguments(text, at):
    """The arguments of the call whose parenthesis was opened before `at`."""
    depth, start, found, quoted = 0, at, [], False
    for i in range(at, len(text)):
        c = text[i]
        if c == '"' and text[i - 1] != "\\":
            quoted = not quoted
        elif quoted:
            continue
        elif c in "([{":
            depth += 1
        elif c in ")]}" and depth == 0:
            return found + [text[start:i].strip()]
        elif c in ")]}":
            depth -= 1
        elif c == "," and depth == 0:
            found.append(text[start:i].strip())
            start = i + 1
    return found


def faults(source):
    keys = list(declared_keys((source / "src/foundation/setting_keys.h").read_text(encoding="utf-8")))
    listed = LISTED.findall((source / "src/foundation/settings_catalogue.cpp").read_text(encoding="utf-8"))
    names = [name for name, _ in keys if name not in NOT_LISTED]
    for name in names:
        if listed.count(name) != 1:
            yield f"{name} is {listed.count(name)} times in the list of settings"
    if len(names) < 100:
        yield f"only {len(names)} keys were found"
    own = re.compile("|".join(f'"{re.escape(key)}"' for _, key in keys if re.match(r"[A-Z]\w+(?:_|[a-z][A-Z])\w", key) or key.startswith("iface_")))
    for file in sorted((source / "src").rglob("*.cpp")) + sorted((source / "src").rglob("*.h")):
        place = file.relative_to(source / "src").as_posix()
        if place.startswith(("foundation/", "base/", "capture/")):
            continue
        text = re.sub(r"//.*", "", file.read_text(encoding="utf-8"))
        for call in CALL.finditer(text):
            given = arguments(text, call.end())
            most = {"ReadConfig": 2, "WriteConfig": 2, "takeNumber": 1}[call[1]]
            if len(given) > most and place not in BY_NAME:
                yield f"{place}: a setting is named by {given[0]}, not by its key"
        for literal in own.findall(text):
            yield f"{place}: {literal} is a key of foundation/setting_keys.h"


def main():
    found = list(faults(Path(sys.argv[1])))
    print("\n".join(found) or "in order")
    sys.exit(1 if found else 0)


main()
