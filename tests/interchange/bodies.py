"""Base64, uuencode and quoted-printable."""
import email
import email.message
import email.policy

from interchange.pairs import Meant, binaries, dice, pair, run, vel

crlf = Meant("lines end in CR LF, as in mail", lambda text: text.replace(b"\n", b"\r\n"))
full_line = Meant("an empty line follows base64 whose last line is full",
                  lambda text: text + b"\r\n" if len(text) % 74 == 0 else text)
uu_lines = Meant("a blank stands behind the name of a uuencoded file, and an empty line behind its end",
                 lambda text: text.replace(b"\r", b" \r", 1) + b"\r\n")
line_break = Meant("quoted-printable ends in a line break that is none of the text", lambda text: text + b"\r\n")


@pair("base64, coreutils", binaries, "base64")
def base64(data):
    written = vel("encode", "base64", data=data)
    yield "written", written, full_line(crlf(run("base64", "-w72", data=data)))
    yield "read by base64", run("base64", "-di", data=written), data
    yield "read by vel", vel("decode", "base64", data=run("base64", f"-w{len(data) % 80}", data=data)), data


@pair("uuencode, sharutils", binaries, "uuencode", "uudecode")
def uuencode(data):
    written, lines = vel("encode", "uu", "--name", "a name", data=data), run("uuencode", "a name", data=data)
    if len(data) % 3 == 0:  # Pad bytes are meant to be those of the line before, which nobody else writes.
        yield "written", written, uu_lines(crlf(lines))
    yield "read by uudecode", run("uudecode", "-o", "/dev/stdout", data=written), data
    yield "read by vel", vel("decode", "uu", data=lines), data


def read_by_python(body):
    message = email.message_from_bytes(b"Content-Transfer-Encoding: quoted-printable\r\n\r\n" + body)
    return message.get_payload(decode=True)


def written_by_python(content, *kind):
    message = email.message.EmailMessage(policy=email.policy.SMTP)
    message.set_content(content, *kind, cte="quoted-printable")
    return message.as_bytes().partition(b"\r\n\r\n")[2]


def texts():
    pieces = ["\r\n", " ", "\t", "=", "=41", ".", "From ", "caf\u00e9", "\u20ac", "word", "a" * 75, "_", "\x00"]
    yield from ("".join(dice.choices(pieces, k=length)) for length in [*range(12), *[60] * 10])


@pair("quoted-printable text, Python's email", texts)
def quoted_printable(text):
    data = text.encode()
    yield "read by Python", read_by_python(vel("encode", "qp", data=data)), line_break(data)
    if text.endswith("\r\n"):  # Python gives other texts a line end.
        yield "read by vel", line_break(vel("decode", "qp", data=written_by_python(text))), data


@pair("quoted-printable of any bytes, Python's email", binaries)
def quoted_printable_binary(data):
    yield "read by Python", read_by_python(vel("encode", "qp-binary", data=data)), line_break(data)
    written = written_by_python(data, "application", "octet-stream")
    yield "read by vel", vel("decode", "qp-binary", data=written), data
