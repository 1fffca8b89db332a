#!/usr/bin/env python3
"""The driver of macutils' programs hexbin and binhex: the command line and the results of the other drivers.

They have the two forks in a MacBinary file, libvel in an AppleSingle file. Making one of the other is not timed;
starting the program is.
"""
import os
import subprocess
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent.parent))

from inputs.macintosh import MacFile


def version():
    return subprocess.run(["hexbin", "-V"], capture_output=True, text=True).stderr.split()[1]


def timed(command, **where):
    """Elapsed and processor seconds. The program tells of pad bytes; what it writes is compared elsewhere."""
    started = time.monotonic()
    program = subprocess.Popen(command, stderr=subprocess.DEVNULL, **where)
    _, program.returncode, usage = os.wait4(program.pid, 0)
    elapsed = time.monotonic() - started
    if program.returncode:
        sys.exit(f"{command[0]}: status {program.returncode}")
    return elapsed, usage.ru_utime + usage.ru_stime


def decode(text, output):
    folder = output.with_name("hexbin")  # where it makes a file of the name in the text
    folder.mkdir()
    measured = timed(["hexbin", text.resolve()], cwd=folder)
    [made] = folder.iterdir()
    output.write_bytes(MacFile.from_mac_binary(made.read_bytes()).apple_single())
    made.unlink()
    folder.rmdir()
    return measured


def encode(apple_single, output):
    source = output.with_name("macbinary")
    source.write_bytes(MacFile.from_apple_single(apple_single.read_bytes()).mac_binary())
    with output.open("wb") as text:
        measured = timed(["binhex", source], stdout=text)
    source.unlink()
    return measured


def main(work, times, source, output=None):
    if work == "version":
        print(version())
        return
    convert = {"binhex-decode": decode, "binhex-encode": encode}[work]
    elapsed, processor = zip(*(convert(Path(source), Path(output)) for _ in range(int(times))))
    print(f"{sum(elapsed):.9f} {sum(processor):.9f} 0 0")  # its memory is not looked at


if __name__ == "__main__":
    main(*sys.argv[1:])
