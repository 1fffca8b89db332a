"""The facts without which a time means nothing."""
import datetime
import os
import platform
import re
import subprocess
from pathlib import Path


def first_line(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()[0]


def file_system(path):
    return first_line("findmnt", "--noheadings", "--output", "FSTYPE", "--target", str(path))


def processor():
    found = re.search(r"^model name\s*:\s*(.+)$", Path("/proc/cpuinfo").read_text(), re.MULTILINE)
    return found[1] if found else platform.machine()


def facts(drivers, inputs, scratch):
    """Pairs of what and how."""
    yield "Processor", f"{processor()}, {os.cpu_count()} cores"
    yield "Kernel", f"{platform.system()} {platform.release()}"
    yield "Compiler", first_line("c++", "--version")
    yield "Libraries", ", ".join(f"{name} {drivers.version(library)}" for library, name in (
        ("vel", "libvel"), ("gmime", "GMime"), ("etpan", "libetpan"), ("macutils", "macutils"), ("python", "Python")))
    yield "Inputs read from", f"{file_system(inputs)}, in the page cache"
    yield "Files written to", file_system(scratch)
    yield "Date", datetime.date.today().isoformat()
