#!/usr/bin/env python3
"""The manual against the program: every label in bold is one of the language file's texts in the page's language, every
link leads to a page, the languages have the same pages with the same commands, and Romanian has its comma letters.

Usage: manual.py SOURCE_FOLDER
"""

import re
import sys
from pathlib import Path

LANGUAGES = ("en", "ro")


def labels(source, language):
    """The texts of a language as they are seen: without the mark of the key and the dots at the end."""
    seen = set()
    for line in (source / "data/Tallybook.lng.utf8").read_text(encoding="utf-8").splitlines():
        words = line.split(" ", 2)
        if len(words) == 3 and words[0] == language.upper():
            seen.add(words[2].replace("&", "").replace("...", "").strip().lower())
    return seen


def blocks(text):
    return re.findall(r"^```.*?^```", text, re.MULTILINE | re.DOTALL)


def without_comments(block):
    return re.sub(r"\s+#.*$", "", block, flags=re.MULTILINE)


def faults_of(page, known, pages):
    text = page.read_text(encoding="utf-8")
    prose = re.sub(r"^```.*?^```", "", text, flags=re.MULTILINE | re.DOTALL)
    for bold in re.findall(r"\*\*(.+?)\*\*", prose):
        if bold.endswith((".", '."')):  # the first sentence of an answer
            continue
        for label in bold.split(" > "):
            if label.lower() not in known:
                yield f"no window says: {label}"
    for link in re.findall(r"\]\(([^)]+)\)", text):
        if not (page.parent / link).is_file():
            yield f"a link to nothing: {link}"
        pages.discard(Path(link).name)
    if re.search("[şŞţŢ]", text):
        yield "letters with a cedilla"


def main(source):
    faults = []
    folders = {language: source / "docs/manual" / language for language in LANGUAGES}
    names = {language: {page.name for page in folder.glob("*.md")} for language, folder in folders.items()}
    for language, folder in folders.items():
        unlinked = names[language] - {"index.md"}
        for name in sorted(names[language]):
            faults += [f"{language}/{name}: {fault}" for fault in faults_of(folder / name, labels(source, language), unlinked)]
        faults += [f"{language}: no page leads to {name}" for name in unlinked]
    for name in sorted(names["en"] ^ names["ro"]):
        faults.append(f"{name} is there in one language only")
    for name in sorted(names["en"] & names["ro"]):
        commands = [[without_comments(block) for block in blocks((folder / name).read_text(encoding="utf-8"))]
                    for folder in folders.values()]
        if commands[0] != commands[1]:
            faults.append(f"{name}: the languages show different commands")
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1])))
