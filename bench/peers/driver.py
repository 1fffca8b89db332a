"""Runs the drivers: in turn for their times, and under valgrind for their instructions."""
import os
import re
import subprocess
import time
from collections import defaultdict
from dataclasses import dataclass
from pathlib import Path

INSTRUCTIONS = re.compile(rb"I +refs: +([\d,]+)")
SETTLED = 3.5  # seconds after which libvel trusts that its settings file will not change unseen
SETTINGS = "[Gateway]\nTimeZone=UTC0\nTemporaryDirectory={output}\n[Options]\nForce1522Decoding=YES\n"
SCRIPTS = {name: Path(__file__).with_name(f"{name}_driver.py") for name in ("macutils", "python")}  # not compiled
LOG_TO_FILE = "[Log]\nTarget={log}\nLevels=all\n"


class Failed(Exception):
    """A driver that did not do its work."""


@dataclass(frozen=True)
class Measured:
    seconds: float  # elapsed while doing the work once
    processor: float  # of them on a processor, in the program or in the system
    items: int
    kib: int


class Drivers:
    """The drivers, with a folder for what they write; libvel's settings stand in two more."""

    def __init__(self, programs, scratch):
        self._programs = programs.resolve()
        self.folder = scratch / "leaves"
        self.file = scratch / "converted"
        self.log = scratch / "log"
        self.folder.mkdir()
        self._settings = {False: scratch / "settings", True: scratch / "settings-log"}
        for logs, folder in self._settings.items():
            folder.mkdir()
            text = SETTINGS + (LOG_TO_FILE if logs else "")
            (folder / "ostra.ini").write_text(text.format(output=self.folder, log=self.log))
        time.sleep(SETTLED)

    def version(self, library):
        return self._call(self._command(library, "version", 1, "-")).stdout.decode().strip()

    def run(self, library, work, inputs, output=None):
        self.log.unlink(missing_ok=True)
        output = output or {"folder": self.folder, "file": self.file, "none": None}[work.output]
        return self._measure(self._command(library, work.verb, work.times, inputs / work.input, output), work)

    def floor(self, work, inputs, files):
        """What the system calls alone cost of a work that writes: names and files of leaves, or copying a result."""
        if work.output == "folder":
            return self._measure(self._command("vel", "names", 1, files, self.folder))
        return self._measure(self._command("vel", "copy", work.times, inputs / work.result, self.file))

    def convert(self, library, verb, source, target):
        self._call(self._command(library, verb, 1, source, target))

    def instructions(self, library, work, inputs):
        """What the work executes, less what starting and ending does."""
        output = {"folder": self.folder, "file": self.file, "none": None}[work.output]
        done = self._counted(self._command(library, work.verb, 1, inputs / work.input, output), work)
        return done - self._counted(self._command(library, "nothing", 1, "-"), work)

    def _command(self, library, verb, times, source, target=None):
        program = SCRIPTS.get(library, self._programs / f"{library}_driver")
        return [program, verb, str(times), str(source), *([target] if target else [])]

    def _call(self, command, work=None):
        logs = bool(work and work.logs)
        environment = {"PATH": os.environ["PATH"], "LC_ALL": "C", "OSTRA_CONFIG_DIR": str(self._settings[logs])}
        if logs:
            environment["VEL_DRIVER_LOG"] = "1"
        done = subprocess.run(command, capture_output=True, env=environment)
        if done.returncode:
            raise Failed(f"{' '.join(map(str, command))}: exit code {done.returncode}: {done.stderr[-500:]!r}")
        return done

    def _measure(self, command, work=None):
        done = self._call(command, work)
        if done.stderr:
            raise Failed(f"{' '.join(map(str, command))}: {done.stderr[-500:]!r}")
        seconds, processor, items, kib = done.stdout.split()
        times = int(command[2])
        return Measured(float(seconds) / times, float(processor) / times, int(items), int(kib))

    def _counted(self, command, work):
        valgrind = ["valgrind", "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null"]
        found = INSTRUCTIONS.search(self._call(valgrind + command, work).stderr)
        if not found:
            raise Failed(f"valgrind tells no instructions: {' '.join(map(str, command))}")
        return int(found[1].replace(b",", b""))


def run_rounds(drivers, works, inputs, rounds, tell):
    """Measurements by (work, library), "floor" being one; each round begins with another library."""
    measured = defaultdict(list)
    for number in range(rounds):
        tell(f"round {number + 1} of {rounds}")
        for work in works:
            first = number % len(work.libraries)
            for library in work.libraries[first:] + work.libraries[:first]:
                measured[work, library].append(drivers.run(library, work, inputs))
            if work.output != "none":
                files = measured[work, "vel"][0].items
                measured[work, "floor"].append(drivers.floor(work, inputs, files))
    return measured
