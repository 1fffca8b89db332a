"""Messages for the measurements, as lists of byte strings or whole."""
from inputs.encode import base64_lines, quoted_printable, uuencoded

SIMPLE_HEADER = (b"Return-Path: <sender@example.com>\r\nReceived: from a.example.com by b.example.org;"
                 b" Mon, 1 Feb 1999 10:20:30 +0100\r\nFrom: Sender <sender@example.com>\r\nTo: receiver@example.org\r\n"
                 b"Subject: a message for measuring\r\nDate: Mon, 1 Feb 1999 10:20:30 +0100\r\n"
                 b"Message-ID: <1999.02.01@example.com>\r\n")
MIME = b"MIME-Version: 1.0\r\n"


def entity(content_type, body, encoding=None, **fields):
    """One entity: its fields, a blank line, its body. A field's name is given with "_" for "-"."""
    lines = [f"Content-Type: {content_type}"]
    if encoding:
        lines.append(f"Content-Transfer-Encoding: {encoding}")
    lines += [f"Content-{name.title()}: {value}" for name, value in fields.items()]
    return "".join(line + "\r\n" for line in lines).encode() + b"\r\n" + body


def multipart(subtype, boundary, entities):
    """A container's fields and body, which ends with its closing delimiter's line."""
    mark = b"--" + boundary.encode()
    body = b"".join(mark + b"\r\n" + each + b"\r\n" for each in entities)
    return entity(f'multipart/{subtype};\r\n\tboundary="{boundary}"', body + mark + b"--\r\n")


def attached(name, data):
    return entity(f'application/octet-stream;\r\n\tname="{name}"', base64_lines(data), "base64",
                  disposition=f'attachment;\r\n\tfilename="{name}"')


def attachment(data):
    text = entity('text/plain; charset="us-ascii"', b"See the attached file.\r\n", "7bit")
    return SIMPLE_HEADER + MIME + multipart("mixed", "=_attachment_0001", [text, attached("attachment.bin", data)])


def small_part(dice, prose, number):
    """One of the three kinds in turn; small enough that the records matter and not the bodies."""
    size = dice.between(200, 3000)
    identifier = f"<{number}.{dice.token(8)}@example.com>"
    kind = number % 3
    if kind == 0:
        return entity('text/plain; charset="us-ascii"', prose.ascii_text(size), "7bit", id=identifier)
    if kind == 1:
        return entity(f'text/html; charset="utf-8"; name="page-{number}.html"', quoted_printable(prose.html(size)),
                      "quoted-printable", disposition=f'inline; filename="page-{number}.html"; size={size}')
    return entity(f'image/png;\r\n\tname="picture {number}.png"', base64_lines(dice.data(size)), "base64",
                  id=identifier, description=f"picture {number}",
                  disposition=f'attachment;\r\n\tfilename="picture {number}.png"')


def parts(dice, prose, count):
    small = (small_part(dice, prose, number) for number in range(count))
    return SIMPLE_HEADER + MIME + multipart("mixed", "=_parts_0001", small)


def nested(prose, depth):
    """Multiparts inside one another, a text before each inner one. Built outwards as two halves, in linear time."""
    opening, closing = [], []
    for level in range(depth):
        boundary = f"=_level_{level:06}"
        opening.append(f'Content-Type: multipart/mixed;\r\n\tboundary="{boundary}"\r\n\r\n--{boundary}\r\n'.encode())
        opening.append(entity('text/plain; charset="us-ascii"', prose.ascii_text(60), "7bit"))
        opening.append(f"\r\n--{boundary}\r\n".encode() if level + 1 < depth else b"")
        closing.append(f"\r\n--{boundary}--\r\n".encode())
    return SIMPLE_HEADER + MIME + b"".join(opening + closing[::-1])


def quoted(text):
    return SIMPLE_HEADER + MIME + entity('text/plain; charset="utf-8"', quoted_printable(text) + b"\r\n",
                                         "quoted-printable")


def uuencoded_mail(data):
    return SIMPLE_HEADER + b"\r\nHere is the file.\r\n\r\n" + uuencoded(data, "uuencoded.bin") + b"\r\nRegards\r\n"


def everyday_mail(dice, prose, headers):
    """Plain, plain with HTML, or with a small attachment; 2 to 12 KiB in all."""
    size = dice.between(1000, 4800)
    block = headers.block()
    kind = dice.below(10)
    if kind < 3:
        return block + b"\r\n" + prose.ascii_text(size)
    if kind < 4:
        return block + MIME + entity("text/plain; charset=utf-8; format=flowed",
                                     quoted_printable(prose.text(size)) + b"\r\n", "quoted-printable")
    boundary = f"=_{dice.token(24)}"
    plain = entity('text/plain; charset="us-ascii"', prose.ascii_text(size // 3), "7bit")
    html = entity('text/html; charset="utf-8"', quoted_printable(prose.html(size // 2)), "quoted-printable")
    alternative = multipart("alternative", boundary, [plain, html])
    if kind < 8:
        return block + MIME + alternative
    return block + MIME + multipart("mixed", f"=_{dice.token(20)}",
                                    [alternative, attached(f"{dice.token(6)}.pdf", dice.data(size // 2))])
