#!/usr/bin/env python3
"""Runs every example of the help of tallyctl and tallymon, and every line of theirs in README.md and docs/, each in a
demo exchange of its own. An example must end with status 0. Inline `tallyctl ...` in the documents is run too where it
has options; the name of a command alone must be one that there is. The site files of `tallymon` that they show must be
in order.

Usage: examples.py PROGRAMS_FOLDER SOURCE_FOLDER
"""

import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
from pathlib import Path

import monitor_examples

# Folders that the examples name, below the test's own.
FOLDERS = ("/srv/", "/mnt/", "/var/")

# By the beginning of an example: what must be there first.
BUDGET = ["tallyctl alarm set Budget --kind budget --subject extension --measure cost --per month --limit 50"]
PRICES = [r"printf 'prefix;name;price\n0040264;Cluj;0.05\n004021;Bucuresti;0.04\n' > prices.csv"]
ANA = ["TALLYBOOK_NEW_PASSWORD=a tallyctl user add ana --groups Operators"]
CONTACT = ["tallyctl contact add --name 'Ana Pop' --phones 0722123456"]
EXTENSION = ["tallyctl extension set 201 --description 'Ana Pop'"]
YESTERDAY = ["tallyctl schedule set Yesterday --folder 100 --days workdays --at 07:30 --to ana@example.com"]
TABLES = ["tallyctl export-tables tables"]
BACKUPS = ["mkdir -p mnt/backup"]
ONE_BACKUP = BACKUPS + ["tallyctl backup mnt/backup", "mv mnt/backup/tallybook-* mnt/backup/tallybook-20261125-023000"]
PREPARATION = {
    "tallyctl --store site.ini init": [],
    "tallyctl import --file": ["tallyctl sample-calls 5 --out demo/monitor/monitor.data.bk.1 --seed 3"],
    "tallyctl setting delete OutFile": ["tallyctl setting set OutFile out.txt --where machine"],
    "tallyctl report 106 --summary --out /srv/reports": ["mkdir -p srv/reports"],
    "tallyctl alarm delete Budget": BUDGET,
    "tallyctl alarm try Budget": BUDGET,
    "tallyctl alarm set --file rules.csv": BUDGET + ["tallyctl alarm list --format csv > rules.csv"],
    "tallyctl contact import": CONTACT + ["tallyctl contact export contacts.vcf"],
    "tallyctl extension set 201": ["tallyctl extension set 202 --department Sales"],
    "tallyctl extension delete 201": EXTENSION,
    "tallyctl account set": ["tallyctl extension set 202 --department Sales"],
    "tallyctl account delete": ["tallyctl account set '12??' --description Projects"],
    "tallyctl trunk delete 9": ["tallyctl trunk set 9 --label x --provider 1 --profile Standard"],
    "tallyctl client delete": ["tallyctl client set '41??' --name Mills"],
    "tallyctl provider delete 4": ["tallyctl provider set 4 --name Northline"],
    "tallyctl tariff import prices.csv --provider Northline": PRICES + ["tallyctl provider set 4 --name Northline"],
    "tallyctl tariff import": PRICES,
    "tallyctl currency delete": ["tallyctl currency set USD --rate 4.2"],
    "tallyctl mail show": ["tallyctl mail set localhost --port 25 --encryption none --from tallybook@example.com"],
    "tallyctl user add ana": [],
    "tallyctl user set ana": ANA,
    "tallyctl user delete ana": ANA,
    "tallyctl group set Managers": ["tallyctl group add Managers --rights view-calls"],
    "tallyctl group delete Managers": ["tallyctl group add Managers --rights view-calls"],
    "tallyctl forget": CONTACT,
    "tallyctl recalc --from 2026-11-24 --to 2026-11-24 --provider Northline": ["tallyctl provider set 4 --name Northline"],
    "tallyctl schedule delete Yesterday": YESTERDAY,
    "tallyctl schedule set Sales": ["TALLYBOOK_NEW_PASSWORD=s tallyctl user add sales --groups Operators"],
    "tallyctl import-tables": TABLES,
    "tallyctl backup": BACKUPS,
    "tallyctl restore": ONE_BACKUP,
    "tallyctl --user service": ["TALLYBOOK_NEW_PASSWORD=demo tallyctl user add service --groups Operators"],
}

# By the beginning of an example: why it cannot run here.
SKIPPED = {
    "tallyctl init /var/lib/tallybook --empty": "the demo's machine store points to the demo",
    "tallyctl init demo --sample": "every example begins with it",
    "tallyctl contact edit 17": "the number of a contact is the office's own",
    "tallyctl contact delete 17": "the same",
    "tallyctl alarm acknowledge 17": "the number of an alarm is the office's own",
    "tallyctl --store site.ini init postgresql:": "needs a server; the suite on a server makes the exchange there",
    "tallyctl init 'postgresql:": "the same",
    "tallyctl restore /mnt/backup/tallybook-20261125-023000 'postgresql:": "the same",
    "tallyctl move-database": "needs a server; the suite on a server moves databases there and back",
    "tallyctl convert": "needs an old database; tests/convert has them",
    "tallyctl mail test": "needs a mail server; tests/ctl/schedule_test.cpp has one",
    "tallyctl schedule run": "the same",
    "tallyctl send": "needs the service that runs beside it; tests/server and ./run send to one",
    "tallyctl passwd": "asks at a terminal",
    "tallyctl sample-calls 1000000": "takes minutes under the sanitizers",
}
# Prose names an option without its value.
COMPLETED = {"tallyctl import --file": " demo/monitor/monitor.data.bk.1"}
EXAMPLE_ENVIRONMENT = {"TALLYBOOK_PASSWORD": "demo", "TALLYBOOK_NEW_PASSWORD": "new", "TALLYBOOK_MAIL_PASSWORD": "mail"}


def entry(table, line):
    """The value of the longest key with which the line begins."""
    keys = [key for key in table if line.startswith(key)]
    return table[max(keys, key=len)] if keys else None


class Demo:
    """A demo exchange that is put back to its first state before each example."""

    def __init__(self, programs):
        self.root = Path(tempfile.mkdtemp(prefix="tallybook-examples-"))
        self.work = self.root / "work"
        self.work.mkdir()
        self.environment = dict(os.environ, **EXAMPLE_ENVIRONMENT)
        self.environment["PATH"] = f"{programs}:{self.root}:{self.environment['PATH']}"
        self.environment["TALLYBOOK_MACHINE_STORE"] = str(self.work / "machine.ini")
        self.environment["RUNTIME_DIRECTORY"] = str(self.root)  # of the live channel
        viewer = self.root / "xdg-open"
        viewer.write_text("#!/bin/sh\nexit 0\n", encoding="utf-8")
        viewer.chmod(0o755)
        # A new administrator without a password logs in by himself.
        for line in ("TALLYBOOK_PASSWORD= tallyctl init demo --sample",
                     "tallyctl sample-calls 300 --out demo/monitor/monitor.data --seed 5 --until 2026-11-25",
                     "tallyctl import"):
            self.run(line)
        shutil.copytree(self.work, self.root / "first")

    def reset(self):
        shutil.rmtree(self.work)
        shutil.copytree(self.root / "first", self.work)

    def local(self, line):
        for folder in FOLDERS:
            line = re.sub(rf"(?<=[ ='\"]){folder}", f"{self.work}{folder}", line)
        return line

    def run(self, line):
        result = subprocess.run(["bash", "-c", self.local(line)], cwd=self.work, env=self.environment,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                timeout=120, check=False)
        if result.returncode != 0:
            raise RuntimeError(f"status {result.returncode}\n{result.stdout.decode(errors='replace')}")

    def serve(self, line):
        """Runs the service until it says that it is there, and ends it."""
        with subprocess.Popen(["bash", "-c", "exec " + line.rstrip("& ")], cwd=self.work, env=self.environment,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True) as service:
            for said in service.stdout:
                if "live calls on" in said:
                    service.send_signal(signal.SIGTERM)
            if service.wait() != 0:
                raise RuntimeError(f"status {service.returncode}")

    def try_example(self, line):
        self.reset()
        for preparation in entry(PREPARATION, line) or []:
            self.run(preparation)
        if " serve" in line:
            self.serve(line)
        else:
            self.run(line)


def man_page(programs, program):
    page = subprocess.run([f"{programs}/{program}", "man-page"], stdout=subprocess.PIPE, text=True, check=True).stdout
    for escaped, plain in (("\\-", "-"), ("\\(aq", "'"), ("\\(ga", "`"), ("\\(ti", "~"), ("\\(ha", "^"), ("\\e", "\\")):
        page = page.replace(escaped, plain)
    return page


def commands(page):
    return set(re.findall(r"^\.SS (.*)$", page, re.MULTILINE))


def site_faults(programs, text):
    """The site files that a document shows, each as `tallymon run --check` sees it."""
    blocks = re.findall(r"^```toml\n(.*?)^```", text, re.M | re.S) + re.findall(r"<<'SITE'\n(.*?)^SITE$", text, re.M | re.S)
    for block in blocks:
        if "[deliver]" not in block:
            continue
        with tempfile.NamedTemporaryFile("w", suffix=".toml", encoding="utf-8") as site:
            site.write(block)
            site.flush()
            check = [f"{programs}/tallymon", "run", "--check", "--config", site.name]
            result = subprocess.run(check, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
            if result.returncode != 0:
                yield f"a site file is refused: {result.stdout}"


def documents(source):
    return [source / "README.md", source / "CONTRIBUTING.md", source / "SECURITY.md", *sorted((source / "docs").rglob("*.md"))]


def document_examples(text):
    """The tallyctl lines of the blocks; comments at their end go."""
    for block in re.findall(r"^```[a-z]*\n(.*?)^```", text, re.MULTILINE | re.DOTALL):
        for line in block.splitlines():
            if line.startswith("tallyctl "):
                yield re.sub(r"\s+#.*$", "", line).strip()


def inline_code(text, program):
    """What follows the program's name in inline code, on one line."""
    prose = re.sub(r"^```.*?^```", "", text, flags=re.MULTILINE | re.DOTALL)
    return [" ".join(code.split()) for code in re.findall(rf"`{program} ([^`]+)`", prose)]


def inline_examples(text):
    for code in inline_code(text, "tallyctl"):
        line = f"tallyctl {code}"
        if " --" in line:
            yield line + COMPLETED.get(line, "")


def unknown_words(text, program, words):
    """Inline code that names no command of the program."""
    for code in inline_code(text, program):
        plain = re.sub(r"^(--\w+ \S+ )*", "", code)
        first_words = plain.split()
        if plain.startswith("-") or first_words[0].isupper() or any(" ".join(first_words[:n]) in words for n in (1, 2, 3)):
            continue
        yield code


def main(programs, source):
    page = man_page(programs, "tallyctl")
    examples = [line.strip() for line in page.splitlines() if line.startswith("  tallyctl ")]
    faults = []
    texts = {document: document.read_text(encoding="utf-8") for document in documents(source)}
    for document, text in texts.items():
        examples += [*document_examples(text), *inline_examples(text)]
        unknown = unknown_words(text, "tallyctl", commands(page))
        faults += [f"{document}: there is no command `tallyctl {code}`" for code in unknown]
        faults += [f"{document}: {fault}" for fault in site_faults(programs, text)]
    demo = Demo(programs)
    ran = 0
    for line in dict.fromkeys(examples):
        if entry(SKIPPED, line):
            continue
        ran += 1
        try:
            demo.try_example(line)
        except (RuntimeError, subprocess.TimeoutExpired) as fault:
            faults.append(f"{line}\n  {fault}")
    stale = [key for key in list(SKIPPED) + list(PREPARATION) if not any(line.startswith(key) for line in examples)]
    faults += [f"no example begins with: {key}" for key in stale]
    shutil.rmtree(demo.root)
    monitor_page = man_page(programs, "tallymon")
    monitor = dict.fromkeys(monitor_examples.examples(monitor_page, texts.values()))
    ran += len(monitor)
    faults += monitor_examples.Exchange(programs, monitor_page).faults(monitor)
    print("\n".join(faults))
    print(f"{ran} examples ran, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], Path(sys.argv[2])))
