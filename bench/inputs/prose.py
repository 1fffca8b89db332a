"""Sentences in three languages: mostly ASCII, with the accented letters that quoted-printable has to escape."""

WORDS = {
    "english": """the a of and to in that it for on with as this we by from at not are or an which be our all will more
        new other some time these two may then do first any my now such like over year men must before state world
        still between life being under last never place same another while work report figures quarter meeting minutes
        delivery attached invoice contract schedule question answer regards customer network server message""",
    "german": """der die und in den von zu das mit sich des auf f\u00fcr ist im dem nicht ein eine als auch es an werden
        aus er hat da\u00df sie nach wird bei einer um am sind noch wie einem \u00fcber einen so zum war haben nur oder
        aber vor zur bis mehr durch man sein wurde sei Pr\u00fcfung gem\u00e4\u00df M\u00fcnchen Stra\u00dfe gr\u00f6\u00dfer \u00c4nderung
        schlie\u00dflich \u00dcbersicht k\u00f6nnen m\u00fcssen w\u00e4hrend Gru\u00df""",
    "french": """de la le et les des en un du une que est pour qui dans a par plus pas au sur ne se ce il sont la mais
        comme ou si leur y dont elle deux \u00e9t\u00e9 aux \u00eatre cette son apr\u00e8s fait m\u00eame tr\u00e8s d\u00e9j\u00e0 d\u00e9cision \u00e0
        voil\u00e0 fa\u00e7on fran\u00e7ais r\u00e9union pr\u00e9c\u00e9dent o\u00f9 h\u00f4tel re\u00e7u d\u00e9p\u00eache \u0153uvre""",
}

SENTENCES = 3000
LANGUAGES = ("english", "english", "german", "french")


class Prose:
    """Texts put together from sentences that are made once."""

    def __init__(self, dice):
        self._dice = dice
        words = {language: text.split() for language, text in WORDS.items()}
        self._sentences = [self._sentence(words[LANGUAGES[i % len(LANGUAGES)]]) for i in range(SENTENCES)]
        self._ascii = [self._sentence(words["english"]) for _ in range(SENTENCES)]

    def _sentence(self, words):
        picked = self._dice.picks(words, self._dice.between(4, 18))
        if self._dice.chance(30):
            picked[len(picked) // 2] += ","
        text = " ".join(picked) + self._dice.pick((".", ".", ".", "?", ": 3 = 2 + 1."))
        return text[0].upper() + text[1:]

    def paragraph(self, ascii_only=False):
        return " ".join(self._dice.picks(self._ascii if ascii_only else self._sentences, self._dice.between(1, 6)))

    def subject(self):
        return " ".join(self._dice.pick(self._ascii).rstrip(".?").split()[:self._dice.between(3, 9)])

    def text(self, size):
        """UTF-8 in CR LF lines, a line a paragraph as word processors write it; no line end at the end."""
        return self._lines(size, lambda: self.paragraph().encode("utf-8"), b"\r\n\r\n")

    def ascii_text(self, size):
        """ASCII, broken into lines of at most 72 characters; ends with a line end."""
        return self._lines(size, lambda: folded(self.paragraph(ascii_only=True)), b"\r\n") + b"\r\n"

    def html(self, size):
        def element():
            style = self._dice.pick(('style="margin:0cm;font-size:11.0pt"', 'class="x-body"', 'align="left"'))
            return f"<p {style}>{self.paragraph()}</p>".encode("utf-8")
        return b"<html><body>\r\n" + self._lines(size, element, b"\r\n") + b"\r\n</body></html>"

    @staticmethod
    def _lines(size, make, separator):
        pieces, length = [], 0
        while length < size:
            pieces.append(make())
            length += len(pieces[-1]) + len(separator)
        return separator.join(pieces)


def folded(text, width=72):
    lines, line = [], ""
    for word in text.split(" "):
        if len(line) + len(word) >= width:
            lines.append(line)
            line = ""
        line += (" " if line else "") + word
    return "\r\n".join(lines + [line]).encode("ascii")
