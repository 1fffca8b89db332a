"""Checks that the libraries find the same. Where their rules differ, the rule is stated and checked instead."""
import re
from collections import Counter

from works import CODECS

CRLF = b"\r\n"
BINHEX_BANNER = b"(This file must be converted with BinHex 4.0)"

# What a date that libetpan reads otherwise is off by, in seconds.
CENTURIES = 59958144000  # from the year 0 to 1900
ETPAN_DATES = ((re.compile(r"(?:^|, )\d+ [A-Z][a-z]{2} \d\d "), -CENTURIES, "two-digit years stay as they are"),
               (re.compile(r" UT\b"), -60, "UT is one minute east"))
CHARSET = re.compile(rb"=\?([^?]+)\?[QqBb]\?")
Q_WORD = re.compile(rb"=\?[^?]+\?[Qq]\?[^?]*\?=")
PADDED_BEFORE_ANOTHER = re.compile(rb"=\?= =\?[^?]+\?[Bb]\?")
BETWEEN_WORDS = re.compile(rb"(\?=) (?==\?)")
EMPTY_GROUP = re.compile(r": ?;")
SOURCE_ROUTE = "<@"


def charset_of(line):
    """The charset of the line's words; one has them all."""
    found = CHARSET.search(line)
    return found[1].decode() if found else "ascii"


def as_libvel_reads(line):
    """The line as it would have to be for libvel to find in it what the others find."""
    words = Q_WORD.sub(lambda word: word[0].replace(b"_", b"=20"), line)
    return BETWEEN_WORDS.sub(rb"\1", words)


class Agreement:
    """Collects what was compared, by rule, and what differs against all rules."""

    def __init__(self, drivers, inputs):
        self._drivers = drivers
        self._inputs = inputs
        self.counts = Counter()
        self.differences = []

    def check(self, works):
        for work in works:
            if work.output == "folder" and not work.logs:
                self._leaves(work)
            elif work.verb == "addresses":
                self._addresses(work)
            elif work.verb == "dates":
                self._dates(work)
            elif work.verb == "words":
                self._words(work)
        for encoding, *rest in CODECS:
            if any(work.verb.startswith(encoding) for work in works):
                self._codec(encoding, *rest)

    def _note(self, rule, where, same):
        if same:
            self.counts[rule] += 1
        else:
            self.differences.append(f"{where} ({rule})")

    # Leaves, decoded into files.

    def _leaves(self, work):
        ours = self._files_of("vel", work)
        if work.verb == "extract-uuencoded":
            ours = ours[1:2]  # between the texts before and behind it, which only libvel writes
            self._note("file out of a uuencoded mail: its content", work.name, ours == [self._read("uuencoded.bin")])
        for library in work.libraries[1:]:
            theirs = self._files_of(library, work)
            self._note("message: as many leaves", f"{work.name}: {library}", len(ours) == len(theirs))
            for number, (our, their) in enumerate(zip(ours, theirs)):
                self._leaf(f"{work.input}, leaf {number}: {library}", our, their)

    def _leaf(self, where, ours, theirs):
        if ours == theirs + CRLF:
            self.counts["leaf: libvel has the line end before the delimiter too"] += 1
        elif ours + CRLF == theirs:
            self.counts["leaf: libvel drops the last line break of quoted-printable"] += 1
        else:
            self._note("leaf: the same bytes", where, ours == theirs)

    def _files_of(self, library, work):
        self._drivers.run(library, work, self._inputs)
        files = sorted(file for file in self._drivers.folder.iterdir() if file.name[-1].isdigit())
        return [file.read_bytes() for file in files]

    # Codecs: what each decodes, and what each decodes from what each has encoded.

    def _codec(self, encoding, content, encoded, libraries):
        want = self._read(content)
        for reader in libraries:
            got = self._converted(reader, f"{encoding}-decode", self._inputs / encoded)
            self._decoded(f"{encoded}: {reader}", encoding, got, want)
        for writer in libraries:
            text = self._drivers.file.with_name("encoded")
            self._drivers.convert(writer, f"{encoding}-encode", self._inputs / content, text)
            if writer == "gmime":
                self._as_in_mail(encoding, text)
            elif writer == "macutils":
                self._with_banner(text)
            for reader in libraries:
                got = self._converted(reader, f"{encoding}-decode", text)
                self._decoded(f"{content}: {writer} to {reader}", encoding, got, want)

    def _as_in_mail(self, encoding, text):
        """GMime leaves to its caller what stands around the data of a uuencoded file, and CR LF."""
        if encoding == "uuencode":
            text.write_bytes(b"begin 644 content\r\n" + text.read_bytes() + b"end\r\n")
            self.counts["codec: GMime writes no begin and end line; they are added"] += 1
        elif encoding == "quoted-printable":
            text.write_bytes(text.read_bytes().replace(b"\n", CRLF))
            self.counts["codec: GMime ends quoted-printable lines in LF; they are made CR LF"] += 1

    def _with_banner(self, text):
        """The first line that binhex writes is its own."""
        text.write_bytes(BINHEX_BANNER + text.read_bytes().partition(b")")[2])
        self.counts["codec: binhex writes a banner that only hexbin knows; it is replaced"] += 1

    def _decoded(self, where, encoding, got, want):
        if encoding == "quoted-printable" and got == want + CRLF:
            self.counts["codec: the encoded text's last line break is read as text"] += 1
        else:
            self._note("codec: the same bytes", where, got == want)

    def _converted(self, library, verb, source):
        self._drivers.convert(library, verb, source, self._drivers.file)
        return self._drivers.file.read_bytes()

    def _read(self, name):
        return (self._inputs / name).read_bytes()

    # Lines: addresses and dates.

    def _addresses(self, work):
        for line, (ours, gmime, etpan) in self._lines(work):
            empty_groups = len(EMPTY_GROUP.findall(line))
            rule = "addresses: an empty group is none for libvel" if empty_groups else "addresses: the same number"
            self._note(rule, f"GMime, {line}", ours + empty_groups == gmime)
            if SOURCE_ROUTE in line:
                self.counts["addresses: libetpan does not read source routes, not compared"] += 1
            else:
                self._note(rule, f"libetpan, {line}", ours + empty_groups == etpan)

    def _dates(self, work):
        for line, (ours, gmime, etpan) in self._lines(work):
            self._note("dates: the same second", f"GMime, {line}", ours == gmime)
            rules = [(offset, rule) for pattern, offset, rule in ETPAN_DATES if pattern.search(line)]
            name = f"for libetpan {' and '.join(rule for _, rule in rules)}" if rules else "the same second"
            self._note(f"dates: {name}", f"libetpan, {line}", etpan - ours == sum(offset for offset, _ in rules))

    # Header texts. libvel gives the bytes of the words' charset, the others UTF-8.

    def _words(self, work):
        lines = self._read(work.input).splitlines()
        source = self._drivers.file.with_name("words")
        source.write_bytes(b"".join(as_libvel_reads(line) + b"\n" for line in lines))
        ours = self._converted("vel", work.verb, source).split(b"\n")
        for library in work.libraries[1:]:
            theirs = self._converted(library, work.verb, self._inputs / work.input).decode().split("\n")
            self._note("lines: as many results", f"{work.name}: {library}", len(theirs) == len(lines) + 1 == len(ours))
            for line, our, their in zip(lines, ours, theirs):
                self._header_text(library, line, our.decode(charset_of(line)), their)

    def _header_text(self, library, line, ours, theirs):
        where = f"{library}, {line.decode()}"
        if library == "gmime" and PADDED_BEFORE_ANOTHER.search(line):
            self._note("header texts: GMime drops the words behind padded base64", where, ours.startswith(theirs))
        elif line != as_libvel_reads(line):
            self._note('header texts: libvel leaves "_" and the blank between two words', where, ours == theirs)
        else:
            self._note("header texts: the same", where, ours == theirs)

    def _lines(self, work):
        results = []
        for library in work.libraries:
            self._drivers.run(library, work, self._inputs, output=self._drivers.file)
            results.append([int(number) for number in self._drivers.file.read_text("ascii").split()])
        lines = self._read(work.input).decode("ascii").splitlines()
        self._note("lines: as many results", work.name, all(len(result) == len(lines) for result in results))
        return zip(lines, zip(*results))
