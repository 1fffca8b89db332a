"""Header values with encoded words as mail programs write them."""
import base64
import re

from inputs.addresses import Addresses

CHARSETS = ("utf-8", "UTF-8", "utf-8", "iso-8859-1", "ISO-8859-1", "iso-8859-15", "windows-1252")
FAMILIES = ("M\u00fcller", "Gar\u00e7\u00e3o", "\u00c5str\u00f6m", "\u0141\u00f3d\u017a", "\u00de\u00f3rr")
WORD = 45          # bytes of text that go into one word, so that it has at most 75 characters in "B"
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
        data = text.encode(charset, "replace")
        encode = self._dice.pick((self._b, self._b, self._q))
        return " ".join(encode(charset, data[at:at + WORD]) for at in range(0, len(data), WORD))

    def _b(self, charset, data):
        return f"=?{charset}?{self._dice.pick('BBBb')}?{base64.b64encode(data).decode()}?="

    def _q(self, charset, data):
        text = NOT_PLAIN.sub(lambda match: b"_" if match[0] == b" " else b"=%02X" % match[0][0], data).decode()
        return f"=?{charset}?{self._dice.pick('QQQq')}?{text}?="
