"""JIS and Shift-JIS."""
from interchange.pairs import Meant, dice, pair, run, vel

closer = Meant("double-byte text is closed with ESC ( J, JIS X 0201; others write ESC ( B",
               lambda text: text.replace(b"\x1b(B", b"\x1b(J"))


def characters():
    """All of JIS X 0208, in Shift-JIS."""
    for row in range(0x21, 0x7F):
        for cell in range(0x21, 0x7F):
            try:
                yield (b"\x1b$B%c%c\x1b(B" % (row, cell)).decode("iso2022_jp").encode("shift_jis")
            except UnicodeError:
                pass  # no character stands there


def mixtures(pieces):
    ascii = [b"a", b"mail ", b"\r\n"]
    for length in (0, 1, 2, 10, 100, 5000):
        yield b"".join(dice.choice(dice.choice((pieces, ascii))) for _ in range(length))


def texts():
    known = list(characters())
    yield b"".join(known)
    yield from mixtures(known)


def texts_with_half_width():
    katakana = [bytes([byte]) for byte in range(0xA1, 0xE0)]
    katakana += [letter + mark for letter in katakana for mark in (b"\xde", b"\xdf")]
    yield from texts()
    yield b"\n".join(katakana)
    yield from mixtures(katakana)
    yield from mixtures(katakana + dice.choices(list(characters()), k=len(katakana)))


@pair("Japanese, iconv", texts, "iconv")
def iconv(sjis):
    written, by_iconv = vel("japanese", "to-jis", data=sjis), run("iconv", "-f", "SJIS", "-t", "ISO-2022-JP", data=sjis)
    yield "written", written, closer(by_iconv)
    yield "read by iconv", run("iconv", "-f", "ISO-2022-JP", "-t", "SJIS", data=written), sjis
    yield "read by vel", vel("japanese", "to-sjis", data=by_iconv), sjis


@pair("Japanese with half-width katakana, nkf", texts_with_half_width, "nkf")
def nkf(sjis):
    written, by_nkf = vel("japanese", "to-jis", data=sjis), run("nkf", "-S", "-j", "-m0", "--no-cp932", data=sjis)
    yield "written", written, closer(by_nkf)
    read = run("nkf", "-J", "-s", "-x", "-m0", "--no-cp932", data=written)
    yield "read by nkf and vel", vel("japanese", "to-sjis", data=by_nkf), read
    yield "repaired", vel("japanese", "to-sjis", "--repair", data=written.replace(b"\x1b", b"")), read
