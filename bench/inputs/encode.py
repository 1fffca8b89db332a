"""Transfer encodings as mail programs write them, line by line with CR LF."""
import binascii
import re
import string
import struct

BASE64_LINE = 57  # bytes that give 76 characters
UU_LINE = 45
QP_LINE = 76
BINHEX_LINE = 64  # characters

NOT_PLAIN = re.compile(rb"[^\t -<>-~]")
RUN_OR_MARKER = re.compile(rb"\x90|([^\x90])\1{2,254}", re.DOTALL)
TO_BINHEX = bytes.maketrans(
    (string.ascii_uppercase + string.ascii_lowercase + string.digits + "+/").encode(),
    b"!\"#$%&'()*+,-012345689@ABCDEFGHIJKLMNPQRSTUVXYZ[`abcdefhijklmpqr")


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


def binhex(file):
    """The text of a MacFile."""
    lengths = struct.pack(">HII", 0, len(file.data), len(file.resource))
    header = bytes([len(file.name)]) + file.name + b"\0" + file.kind + lengths
    parts = (header, file.data, file.resource)
    stream = b"".join(part + struct.pack(">H", binascii.crc_hqx(part, 0)) for part in parts)
    packed = RUN_OR_MARKER.sub(lambda run: bytes([run[0][0], 0x90, len(run[0])]) if run[1] else b"\x90\0", stream)
    packed += b"\xff" * (-len(packed) % 3)
    text = b":" + binascii.b2a_base64(packed, newline=False).translate(TO_BINHEX) + b":"
    lines = (text[at:at + BINHEX_LINE] + b"\r\n" for at in range(0, len(text), BINHEX_LINE))
    return b"(This file must be converted with BinHex 4.0)\r\n" + b"".join(lines) + b"\r\n"
