"""Header values with encoded words as mail programs write them."""
import base64
import re

from inputs.addresses import Addresses

CHARSETS = ("utf-8", "UTF-8", "utf-8", "iso-8859-1", "ISO-8859-1", "iso-8859-15", "windows-1252")
FAMILIES = ("M\u00fcller", "Gar\u00e7\u00e3o", "\u00c5str\u00f6m", "\u0141\u00f3d\u017a", "\u00de\u00f3rr")
LONGEST = 75  # characters of a word (RFC 2047 section 2)
NOT_PLAIN = re.compile(rb"[^!*+\-/0-9A-Za-z]")


class Words:
    def __init__(self, dice, prose):
        self._dice = dice
        self._prose = prose
        self._addresses = Addresses(dice)

    def value(self):
        """One value on one line: in a third of them nothing is encoded."""
        dice = self._dice
        if dice.chance(35):
            return self._prose.subject() if dice.chance(50) else self._addresses.address()
        if dice.chance(40):
            return f"{self._encoded(self._name())} <{self._addresses.mailbox()}>"
        if dice.chance(50):
            return f"{dice.pick(('Re', 'Fwd', 'AW'))}: {self._encoded(self._subject())}"
        return self._encoded(self._subject())

    def _name(self):
        return f"{self._addresses.name()} {self._dice.pick(FAMILIES)}"

    def _subject(self):
        return self._prose.paragraph()[:self._dice.between(8, 120)]

    def _encoded(self, text):
        charset = self._dice.pick(CHARSETS)
        letter = self._dice.pick("BBBBBbQQQq")
        prefix = f"=?{charset}?{letter}?"
        room = LONGEST - len(prefix + "?=")
        if letter in "Bb":
            encode, pieces = in_base64, pieces_of(text, charset, room // 4 * 3, len)
        else:
            encode, pieces = quoted, pieces_of(text, charset, room, lambda data: len(quoted(data)))
        return " ".join(f"{prefix}{encode(piece)}?=" for piece in pieces)


def in_base64(data):
    return base64.b64encode(data).decode()


def quoted(data):
    return NOT_PLAIN.sub(lambda match: b"_" if match[0] == b" " else b"=%02X" % match[0][0], data).decode()


def pieces_of(text, charset, room, size):
    """The text's characters in that charset, in pieces that fit into a word each, and none of them cut."""
    piece, used = b"", 0
    for data in (character.encode(charset, "replace") for character in text):
        if used + size(data) > room:
            yield piece
            piece, used = b"", 0
        piece += data
        used += size(data)
    yield piece
