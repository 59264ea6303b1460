"""The capture program's examples, run in an exchange of their own: each `tallymon ...` of its help, README.md and docs/."""

import re
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

SITE = """[deliver]
folder = "{folder}/monitor"
[data]
folder = "{folder}/data"
[[source]]
id = "main"
format = "hicom"
file = {{ path = "{folder}/calls.log" }}
[[source]]
id = "annex"
format = "hicom"
file = {{ path = "{folder}/annex.log" }}
"""
LINE = "24.11.2609:17:02  7   214     00:02:310755550142                         5 2\r\n"
PANASONIC = "11/12/26 09:14AM  1201 03 90755550142                    00:02'31 4410\r\n"

# What the documents write for a thing of the reader's own, and what is here; longer ones first.
NAMES = (
    (r"\./hicom-mended\.toml", "mended.toml"),
    (r"check (?:FILE|FORMAT)", "check mended.toml"),
    (r"test FORMAT FILE", "test hicom lines.txt"),
    (r"test panasonic lines\.txt", "test panasonic panasonic.txt"),
    (r"\bFILE\b", "lines.txt"),
    (r"\bNUMBER\b", "0755550142"),
    (r"\b(?:SOURCE|office)\b", "main"),
    (r"^tallymon COMMAND", "tallymon run"),
    (r"site remove main", "site remove annex"),
)
# Prose names a command without what it needs.
COMPLETED = {
    "tallymon listen": " main",
    "tallymon guess": " lines.txt",
    "tallymon test": " hicom lines.txt",
    "tallymon check": " mended.toml",
    "tallymon replay": " main --from 2026-11-24",
    "tallymon trunks": " main",
    "tallymon forget": " 0755550142",
    "tallymon site set": " <change.json",
    "tallymon completion": " bash",
}


def examples(page, texts):
    """Those of the man page, the blocks' lines and the inline code, without what follows in a pipe or a list."""
    found = re.findall(r"^(?:Example: | {2})(tallymon .*)$", page, re.MULTILINE)
    for text in texts:
        prose = text
        for block in re.findall(r"^```[a-z]*\n(.*?)^```", text, re.MULTILINE | re.DOTALL):
            found += [re.sub(r"\s+#.*$", "", line) for line in block.splitlines() if line.startswith("tallymon ")]
            prose = prose.replace(block, "")
        found += re.findall(r"`(tallymon [a-z C][^`]+)`", prose)
    return [re.split(r" (?:&&|\|) ", line)[0].strip() for line in found]


class Exchange:
    """An exchange whose site file, service and files are made anew before each example."""

    def __init__(self, programs, page):
        self.program = f"{programs}/tallymon"
        self.folder = Path(tempfile.mkdtemp(prefix="tallymon-examples-"))
        self.with_site = {name for name, text in re.findall(r"^\.SS (.*)\n((?:(?!^\.SS).*\n)*)", page, re.MULTILINE)
                          if "--config" in text}

    def begin(self):
        shutil.rmtree(self.folder)
        (self.folder / "monitor").mkdir(parents=True)
        for name, text in (("tallymon.toml", SITE.format(folder=self.folder)), ("calls.log", LINE), ("lines.txt", LINE),
                           ("panasonic.txt", PANASONIC), ("mended.toml", 'extends = "hicom"\n'),
                           ("change.json", '{"data": {"keep_days": 40}}')):
            (self.folder / name).write_text(text, encoding="utf-8", newline="")

    def line(self, example):
        for pattern, name in NAMES:
            example = re.sub(pattern, name, example)
        example += COMPLETED.get(example, "")
        example = re.sub(r"--config \S+", "--config tallymon.toml", example)
        command = max((name for name in self.with_site if example.startswith(f"tallymon {name}")), key=len, default=None)
        if command and "--config" not in example and "--help" not in example:
            example = example.replace(f"tallymon {command}", f"tallymon {command} --config tallymon.toml", 1)
        return example.replace("tallymon", self.program, 1)

    def start(self, line):
        return subprocess.Popen(["bash", "-c", "exec " + line], cwd=self.folder, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def wait_until_it_runs(self):
        for _ in range(600):
            asked = subprocess.run([self.program, "status", "--config", "tallymon.toml"], cwd=self.folder,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
            if asked.returncode == 0:
                return
            time.sleep(0.1)
        raise RuntimeError("the service does not start")

    def run(self, line):
        result = subprocess.run(["bash", "-c", line], cwd=self.folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, timeout=120, check=False)
        if result.returncode != 0:
            raise RuntimeError(f"status {result.returncode}\n{result.stdout.decode(errors='replace')}")

    def watch(self, line):
        """A command that goes on until it is ended: it is, when it has said something."""
        with self.start(line) as watching:
            said = watching.stdout.readline()
            watching.send_signal(signal.SIGTERM)
            rest = watching.communicate()[0]
        if not said or "Run with --help" in said + rest:
            raise RuntimeError(said + rest)

    def try_example(self, example):
        self.begin()
        line = self.line(example)
        if re.match(r"tallymon (?:reload|stop|status|listen|trunks)\b", example):
            with self.start(f"{self.program} run --config tallymon.toml") as service:
                try:
                    self.wait_until_it_runs()
                    if " listen " in line:
                        self.watch(line + ("" if "--help" in line else " --last 1"))
                    else:
                        self.run(line)
                finally:
                    service.send_signal(signal.SIGTERM)
                    service.communicate()
        elif line.startswith(f"{self.program} run") and "--check" not in line and "--help" not in line:
            self.watch(line)
        else:
            self.run(line)

    def faults(self, lines):
        for example in dict.fromkeys(lines):
            try:
                self.try_example(example)
            except (RuntimeError, subprocess.TimeoutExpired) as fault:
                yield f"{example}\n  {fault}"
        shutil.rmtree(self.folder)
