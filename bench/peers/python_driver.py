#!/usr/bin/env python3
"""The driver of Python's email package, which decodes header texts: the command line and the results of the others."""
import platform
import re
import sys
import time
from email.header import decode_header, make_header
from pathlib import Path


def peak_memory(reset):
    """The peak of the resident memory in KiB; reset first, it is what is resident now."""
    if reset:
        Path("/proc/self/clear_refs").write_text("5")
    return int(re.search(r"VmHWM:\s*(\d+)", Path("/proc/self/status").read_text())[1])


def decoded(values):
    return [str(make_header(decode_header(value))) for value in values]


def main(work, times, path, output=None):
    if work == "version":
        print(platform.python_version())
        return
    values = Path(path).read_text("ascii").splitlines()
    before = peak_memory(True)
    elapsed, processor = time.monotonic(), time.process_time()
    for _ in range(int(times)):
        texts = decoded(values)
    processor, elapsed = time.process_time() - processor, time.monotonic() - elapsed
    print(f"{elapsed:.9f} {processor:.9f} {sum(map(len, texts))} {peak_memory(False) - before}")
    if output:
        Path(output).write_text("".join(text + "\n" for text in texts), "utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
