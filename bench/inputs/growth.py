"""Messages that grow in one respect only, for measuring how the cost grows with it. Each takes one number."""
from inputs import messages
from inputs.dice import Dice
from inputs.encode import quoted_printable
from inputs.messages import MIME, SIMPLE_HEADER, entity
from inputs.prose import Prose

# As many levels as the dash lines are compared with; what they share with a delimiter is most of it.
OPEN_LEVELS = 1000
SHARED_PREFIX = "=_a_boundary_of_which_most_is_the_same_on_every_level_"

BODY = b"Content-Type: text/plain\r\n\r\nThe body.\r\n"


def _prose():
    return Prose(Dice("growth"))


def parts(count):
    return messages.parts(Dice("growth"), _prose(), count)


def depth(levels):
    return messages.nested(_prose(), levels)


def attachment(size):
    return messages.attachment(Dice("growth").data(size))


def quoted(size):
    return messages.quoted(_prose().text(size))


def uuencoded(size):
    return messages.uuencoded_mail(Dice("growth").data(size))


def embedded(count):
    """A text with many small uuencoded files in it."""
    file = b"begin 644 a.txt\r\n#0V%T\r\n`\r\nend\r\ntext\r\n"
    return SIMPLE_HEADER + MIME + entity("text/plain", file * count)


def line(length):
    """A body of one line."""
    return SIMPLE_HEADER + MIME + entity("text/plain", b"x" * length + b"\r\n", "7bit")


def quoted_line(length):
    """A quoted-printable body of one line without soft breaks."""
    text = b"gr\xc3\xbcn " * (length // 6)
    body = quoted_printable(text).replace(b"=\r\n", b"") + b"\r\n"
    return SIMPLE_HEADER + MIME + entity("text/plain; charset=utf-8", body[-length:], "quoted-printable")


def header_line(length):
    """A header block with one field of one line."""
    return SIMPLE_HEADER + MIME + b"X-Long: " + b"x" * length + b"\r\n" + BODY


def header_folds(length):
    """A header block with one field folded over many lines."""
    return SIMPLE_HEADER + MIME + b"X-Long: x\r\n" + b"\tfolded and folded\r\n" * (length // 20) + BODY


def header_fields(length):
    """A header block of many fields, traces and others."""
    return SIMPLE_HEADER + MIME + b"Received: by a; x\r\nX-Field: a value\r\n" * (length // 37) + BODY


def header_comment(length):
    """A MIME field whose comment goes on and on."""
    comment = b"\r\n\t((a comment) in another)" * (length // 28)
    return SIMPLE_HEADER + MIME + b"Content-Type: text/plain (" + comment + b")\r\n\r\nThe body.\r\n"


def header_parameters(length):
    """A MIME field with many parameters."""
    parameters = b"".join(b";\r\n\tname%07d=value" % number for number in range(length // 21))
    return SIMPLE_HEADER + MIME + b"Content-Type: text/plain" + parameters + b"\r\n\r\nThe body.\r\n"


def _dashes(levels, lines):
    """Multiparts inside one another that stay open, then lines that begin as delimiters do."""
    opening = []
    for level in range(levels):
        boundary = f"{SHARED_PREFIX}{level:06}"
        opening.append(f'Content-Type: multipart/mixed; boundary="{boundary}"\r\n\r\n--{boundary}\r\n'.encode())
    text = entity("text/plain", f"--{SHARED_PREFIX}\r\n".encode() * lines)
    return SIMPLE_HEADER + MIME + b"".join(opening) + text


def dash_lines(count):
    return _dashes(OPEN_LEVELS, count)


def open_levels(count):
    return _dashes(count, 10 * count)


FROM_MAILER = b"From: MAILER-DAEMON@example.com\r\nSubject: Undelivered\r\n"


def report_fields(recipients):
    """A delivery report with fields for each recipient."""
    groups = b"".join(b"Final-Recipient: rfc822; a%d@example.com\r\nAction: failed\r\nStatus: 5.1.1\r\n\r\n" % number
                      for number in range(recipients))
    return FROM_MAILER + MIME + entity("message/delivery-status", b"Reporting-MTA: dns; mx\r\n\r\n" + groups)


def report_text(recipients):
    """The same for people, with the phrase once more in each reason."""
    lines = b"".join(b"<a%d@example.com>:\r\n    550 could not be delivered to <b@example.com>\r\n\r\n" % number
                     for number in range(recipients))
    return FROM_MAILER + b"\r\nYour message could not be delivered to:\r\n\r\n" + lines


def report_line(length):
    """A reason that goes on and on."""
    return report_text(1) + b"<a@example.com>: " + b"a <b@example.com> could not be " * (length // 31) + b"\r\n"


def report_html(length):
    """The same in HTML, all of it in one line."""
    text = b"<p>could not be delivered to:<br><a href=mailto:a@example.com>a@example.com</a><br>"
    return FROM_MAILER + MIME + entity("text/html", text + b"&lt;a&#64;b> <!-- > -- > --> no<br" * (length // 35) + b">")


def report_depth(levels):
    """Reports that return reports, of which only the innermost tells anything."""
    opening = b"".join(FROM_MAILER + MIME + b"Content-Type: message/rfc822\r\n\r\n" for _ in range(levels))
    return opening + report_text(1)


KINDS = {kind.__name__.strip("_").replace("_", "-"): kind for kind in (
    parts, depth, attachment, quoted, uuencoded, embedded, line, quoted_line, header_line, header_folds, header_fields,
    header_comment, header_parameters, dash_lines, open_levels, report_fields, report_text, report_line, report_html,
    report_depth)}
