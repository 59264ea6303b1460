#!/usr/bin/env python3
"""What the reader of format files and site files refuses has a text in the language file, by which the desktop says it
in its operator's language: a key IDS_SAID_... (foundation/retold_text.h). Messages are found in the code, as what is
given to the functions that refuse.

Usage: said.py SOURCE_FOLDER
"""

import re
import sys
from pathlib import Path

FOLDERS = ["src/capture/format", "src/capture/site", "src/capture/framing"]
# What refuses, and which of its arguments is the message; by `fail` a message follows the key that it is about.
REFUSES = re.compile(r'\b(failAt|fail|throw (?:FormatError|SettingError|SiteError|std::invalid_argument))\(')
MESSAGE = {"failAt": 1, "fail": 1}
STRING = re.compile(r'"((?:[^"\\]|\\.)*)"')


def arguments(text, at):
    """The arguments of the call whose parenthesis was opened before `at`."""
    depth, start, found, i = 0, at, [], at
    while True:
        quoted = STRING.match(text, i)
        if quoted:
            i = quoted.end()
            continue
        if re.match(r"'(?:[^'\\]|\\.)'", text[i:i + 4]):
            i = text.index("'", i + 2 if text[i + 1] == "\\" else i + 1) + 1
            continue
        c = text[i]
        if c in "([{":
            depth += 1
        elif c in ")]}":
            if depth == 0:
                return found + [text[start:i].strip()]
            depth -= 1
        elif c == "," and depth == 0:
            found.append(text[start:i].strip())
            start = i + 1
        i += 1


def terms(expression):
    """What `+` joins, outside of parentheses."""
    parts, depth, i, start = [], 0, 0, 0
    while i < len(expression):
        quoted = STRING.match(expression, i)
        if quoted:
            i = quoted.end()
            continue
        c = expression[i]
        depth += c in "([{"
        depth -= c in ")]}"
        if c == "+" and depth == 0:
            parts.append(expression[start:i].strip())
            start = i + 1
        i += 1
    return parts + [expression[start:].strip()]


def said(expression):
    """The message with % where a value is filled in; nothing when all of it is a value."""
    text = ""
    for term in terms(expression):
        literal = re.fullmatch(r'(?:std::string\()?((?:"(?:[^"\\]|\\.)*"\s*)+)\)?', term)
        if literal:
            text += "".join(re.sub(r'\\(.)', r'\1', one) for one in STRING.findall(literal[1])).replace("%", "%%")
        elif not text.endswith("\0"):
            text += "\0"
    return "" if not re.search(r'[A-Za-z]{2}', text) else text


def refused(source):
    for folder in FOLDERS:
        for file in sorted((source / folder).glob("*.cpp")):
            text = file.read_text()
            for call in REFUSES.finditer(text):
                # A declaration or definition of the function itself is no call.
                if re.search(r'\bvoid (?:Section::)?$', text[:call.start()]):
                    continue
                given = arguments(text, call.end())
                place = MESSAGE.get(call[1], 0)
                message = said(given[place]) if place < len(given) else ""
                if not message:
                    continue
                about = call[1] == "fail" and given[0] != "{}"
                line = text.count("\n", 0, call.start()) + 1
                yield f"{file.relative_to(source)}:{line}", ('"\0" ' if about else "") + message


def known_texts(source):
    texts = set()
    for line in (source / "data/Tallybook.lng.utf8").read_text().splitlines():
        if line.startswith("EN IDS_SAID_"):
            pieces = re.split(r'%[sd]', line.split(" ", 2)[2])
            # One that is nothing but values and a colon between them takes any message apart, and tells none.
            if re.search(r'[A-Za-z]{2}', "".join(pieces)):
                texts.add("(.+)".join(re.escape(piece) for piece in pieces))
    return [re.compile(text, re.S) for text in texts]


def is_told(message, texts):
    """Whether a text tells the message, or each of its parts, which a colon takes apart."""
    if any(text.fullmatch(message) for text in texts):
        return True
    parts = [part for part in message.split(": ") if re.search(r'[a-z]{2}.* ', part)]  # others are names and places
    return len(message.split(": ")) > 1 and all(any(text.fullmatch(part) for text in texts) for part in parts)


def main():
    source = Path(sys.argv[1])
    texts = known_texts(source)
    missing = []
    count = 0
    for place, message in refused(source):
        count += 1
        if not is_told(message, texts):
            missing.append(f"{place}: {message}".replace("\0", "%s"))
    for each in missing:
        print(f"no text IDS_SAID_... for {each}")
    if count < 100:
        print(f"only {count} messages were found in the code")
        return 1
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
