"""What the pairs of encoders and decoders share: their list, the differences that are meant, running programs."""
import random
import subprocess

VEL = ["vel"]  # the command; the driver names it
dice = random.Random(1)
pairs = []  # name, inputs, programs, compare
differences = []  # those that are meant


def pair(name, inputs, *programs):
    """Lists a function that yields, for one input, what was done, what vel made of it and what is right."""
    return lambda compare: pairs.append((name, inputs, programs, compare))


class Meant:
    """A difference that is meant: takes it out of a text, and counts how often it was there."""

    def __init__(self, reason, take_out):
        self.reason, self.take_out, self.seen = reason, take_out, 0
        differences.append(self)

    def __call__(self, text):
        without = self.take_out(text)
        self.seen += without != text
        return without


def run(*command, data=b""):
    done = subprocess.run(command, input=data, capture_output=True)
    if done.returncode != 0:
        raise OSError(f"{command[:4]}: exit code {done.returncode}: {done.stderr[:200]!r}")
    return done.stdout


def vel(*arguments, data=b""):
    return run(*VEL, *arguments, data=data)


def binaries():
    """Around the sizes of groups, lines and blocks, and runs."""
    lengths = [*range(8), 44, 45, 46, 53, 54, 55, 57, 108, 4095, 4096, 4097, 100_000]
    yield from (dice.randbytes(length) for length in lengths)
    yield bytes(range(256)) * 3
    yield from (bytes([byte]) * length for byte in (0, 13, 144, 255) for length in (1, 2, 3, 254, 255, 256, 700))
