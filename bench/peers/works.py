"""What is compared: the works of the drivers, their inputs, and who can do them."""
from dataclasses import dataclass
from pathlib import Path

from inputs.macintosh import MacFile

LIBRARIES = ("vel", "gmime", "etpan")
WITHOUT_UUENCODE = ("vel", "gmime")
BINHEX = ("vel", "macutils")
DECODE_WORDS = ("vel", "gmime", "python")


@dataclass(frozen=True)
class Work:
    """One row of the table."""
    name: str
    verb: str  # the driver's name for it
    input: str
    times: int = 1  # so often in one run that the clock sees tens of milliseconds
    libraries: tuple = LIBRARIES
    counts: str = "bytes"  # what goes by in a second: bytes of input, or its lines
    output: str = "none"  # folder: a file for each leaf; file: one
    result: str = ""  # of a codec: a file with what it writes
    logs: bool = False  # libvel writes its log lines into a file

    def size(self, inputs):
        """Bytes or lines of the input."""
        path = inputs / self.input
        files = sorted(path.iterdir()) if path.is_dir() else [path]
        if self.counts == "lines":
            return sum(file.read_bytes().count(b"\n") for file in files)
        return sum(file.stat().st_size for file in files)


def message_works():
    for name, file, times in (("one big attachment", "attachment.eml", 1), ("2,000 parts", "parts.eml", 2),
                              ("50 levels", "nested.eml", 50), ("8 MiB quoted-printable", "quoted.eml", 3),
                              ("5,000 small mails", "mails", 1)):
        yield Work(f"parse: {name}", "parse", file, times)
        yield Work(f"parse and write: {name}", "extract", file, times, output="folder")
    yield Work("parse and write: 5,000 small mails, libvel logging all", "extract", "mails", output="folder", logs=True)
    yield Work("parse: 8 MiB uuencoded", "parse", "uuencoded.eml", 5)
    yield Work("parse and write: 8 MiB uuencoded", "extract-uuencoded", "uuencoded.eml", 3, WITHOUT_UUENCODE,
               output="folder")


# Encoding, the content, its encoded form, who knows it.
CODECS = (("base64", "attachment.bin", "attachment.b64", LIBRARIES),
          ("quoted-printable", "quoted.txt", "quoted.qp", LIBRARIES),
          ("uuencode", "uuencoded.bin", "uuencoded.uu", WITHOUT_UUENCODE),
          ("binhex", "macintosh.as", "macintosh.hqx", BINHEX))


def codec_works():
    for encoding, content, encoded, libraries in CODECS:
        yield Work(f"encode {encoding}", f"{encoding}-encode", content, 2, libraries, output="file", result=encoded)
        yield Work(f"decode {encoding}", f"{encoding}-decode", encoded, 2, libraries, output="file", result=content)


def all_works():
    yield from message_works()
    yield from codec_works()
    yield Work("address lists", "addresses", "addresses.txt", counts="lines")
    yield Work("dates", "dates", "dates.txt", 2, counts="lines")
    yield Work("header texts with encoded words", "words", "words.txt", libraries=DECODE_WORDS, counts="lines")


def write_encoded(inputs, encode):
    """The contents in each encoding, by the generator's own encoders, which are none of the compared ones."""
    mac = MacFile(b"content", b"BINAmdos", *(Path(inputs, fork).read_bytes() for fork in ("uuencoded.bin", "quoted.txt")))
    Path(inputs, "macintosh.as").write_bytes(mac.apple_single())
    writers = {"base64": encode.base64_lines, "uuencode": lambda data: encode.uuencoded(data, "content.bin"),
               "quoted-printable": lambda text: encode.quoted_printable(text) + b"\r\n",
               "binhex": lambda file: encode.binhex(MacFile.from_apple_single(file))}
    for encoding, content, encoded, _ in CODECS:
        Path(inputs, encoded).write_bytes(writers[encoding](Path(inputs, content).read_bytes()))
