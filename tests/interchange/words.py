"""Encoded words in header texts."""
import email
import email.charset
import email.header
import email.policy
import json
import re

from interchange.pairs import Meant, dice, pair, vel

fold = Meant("a text in Q may be cut between the = of an escape and its digits",
             lambda words: re.sub(rb"=\?=\r\n =\?[^?]*\?Q\?", b"=", words))
blanks = Meant("two blanks stand before a comment, and the one before a fold stays",
               lambda words: re.sub(rb" (?= \(|\r\n )", b"", words))
gap = Meant("blanks between encoded words are text", lambda words: re.sub(rb"\?=\s+=\?", b"?==?", words))
underscore = Meant("an underscore in an encoded word stands for itself", lambda words: words.replace(b"_", b"=20"))

BYTES = re.compile("([\uf780-\uf7ff])")  # what the command writes for bytes that are not UTF-8


def headers():
    """Charset, method, and texts. None begins with a comment: an address has it behind."""
    words = ["and", "so", "on", "long" * 12, "Gr\u00fc\u00dfe", "\u00e4\u00f6\u00fc\u00c4\u00d6\u00dc", "a_b", "=", "?"]
    for charset, more in (("iso-8859-1", "\u00a4"), ("utf-8", "\u65e5\u672c\u8a9e")):
        for method in "BQ":
            pieces = [*words, more, f"({more})"]
            yield charset, method, [" ".join(dice.choices(words) + dice.choices(pieces, k=length))
                                    for length in [*range(20)] * 4]


def by_vel(action, charset, *options, values):
    told = vel("word", action, "--json", "--charset", charset, *options, *values)
    for line in told.splitlines():
        parts = BYTES.split(json.loads(line)["result"])
        yield b"".join(bytes([ord(part) - 0xF700]) if BYTES.match(part) else part.encode() for part in parts)


def written_by_python(text, charset, method):
    kind = email.charset.Charset(charset)
    kind.header_encoding = {"B": email.charset.BASE64, "Q": email.charset.QP}[method]
    return email.header.Header(text, kind).encode(linesep="\r\n").encode()


def read_by_python(words):
    return email.message_from_bytes(b"Subject: " + words + b"\r\n\r\n", policy=email.policy.default)["Subject"]


@pair("encoded words, Python's email", headers)
def words(group):
    charset, method, texts = group
    values = [text.encode(charset) for text in texts]
    for text, written in zip(texts, by_vel("encode", charset, "--method", method, values=values)):
        yield "read by Python", read_by_python(blanks(fold(written))), text
    written = [underscore(gap(written_by_python(text, charset, method))) for text in texts]
    for value, read in zip(values, by_vel("decode", charset, "--force", values=written)):
        yield "read by vel", read, value
