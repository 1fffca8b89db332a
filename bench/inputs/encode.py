"""Transfer encodings as mail programs write them, line by line with CR LF."""
import binascii
import re

BASE64_LINE = 57  # bytes that give 76 characters
UU_LINE = 45
QP_LINE = 76

NOT_PLAIN = re.compile(rb"[^\t -<>-~]")


def base64_lines(data):
    text = binascii.b2a_base64(data, newline=False)
    width = BASE64_LINE // 3 * 4
    return b"".join(text[at:at + width] + b"\r\n" for at in range(0, len(text), width))


def uuencoded(data, name):
    lines = [b"begin 644 %s\r\n" % name.encode()]
    for at in range(0, len(data), UU_LINE):
        lines.append(binascii.b2a_uu(data[at:at + UU_LINE], backtick=True)[:-1] + b"\r\n")
    return b"".join(lines) + b"`\r\nend\r\n"


def quoted_printable(text):
    """Encodes a text of CR LF lines; the last line needs none and gets none."""
    return b"\r\n".join(quoted_line(line) for line in text.split(b"\r\n"))


def quoted_line(line):
    line = NOT_PLAIN.sub(lambda match: b"=%02X" % match[0][0], line)
    if line.endswith((b" ", b"\t")):
        line = line[:-1] + b"=%02X" % line[-1]
    pieces, at = [], 0
    while len(line) - at > QP_LINE:
        end = at + QP_LINE - 1
        escape = line.find(b"=", end - 2, end)  # An escape is not parted.
        end = end if escape < 0 else escape
        pieces.append(line[at:end] + b"=\r\n")
        at = end
    return b"".join(pieces) + line[at:]
