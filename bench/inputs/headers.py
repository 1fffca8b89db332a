"""Header blocks as mail has them after a few hops: traces, signatures, long folded fields."""
import base64

from inputs.addresses import Addresses
from inputs.dates import Dates

AGENTS = ("Example Mailer 7.2 (X11; build 2210)", "gateway-web/4.1", "list-agent 2.1.39")


class Headers:
    def __init__(self, dice, prose):
        self._dice = dice
        self._prose = prose
        self._addresses = Addresses(dice)
        self._dates = Dates(dice)

    def block(self):
        """The fields of a message but for those that tell its content's type; ends with a line end."""
        dice = self._dice
        lines = [f"Return-Path: <{self._addresses.mailbox()}>"]
        lines += [self._received() for _ in range(dice.between(1, 6))]
        if dice.chance(70):
            lines += [self._signature(), self._results()]
        lines += [f"From: {self._addresses.named()}", f"To: {self._recipients(1, 4)}"]
        if dice.chance(30):
            lines.append(f"Cc: {self._recipients(1, 12)}")
        lines += [f"Subject: {self._subject()}", f"Date: {self._dates.date()}", f"Message-ID: {self._identifier()}"]
        if dice.chance(50):
            lines += self._thread()
        if dice.chance(30):
            lines += self._list()
        lines.append(f"X-Mailer: {dice.pick(AGENTS)}")
        return "".join(line + "\r\n" for line in lines).encode("ascii")

    def _identifier(self):
        return f"<{self._dice.token(12)}.{self._dice.token(8)}@{self._dice.token(5)}.example.com>"

    def _received(self):
        dice = self._dice
        host = f"mx{dice.below(100)}.{dice.token(6)}.example.net"
        return (f"Received: from {host} ({host} [198.51.100.{dice.below(255)}])\r\n"
                f"\t(using TLSv1.3 with cipher TLS_AES_256_GCM_SHA384 (256/256 bits))\r\n"
                f"\tby relay.{dice.token(5)}.example.com (gateway) with ESMTPS id {dice.token(11)}\r\n"
                f"\tfor <{self._addresses.mailbox()}>; {self._dates.date()}")

    def _signature(self):
        digest = base64.b64encode(self._dice.data(32)).decode()
        value = base64.b64encode(self._dice.data(256)).decode()
        folds = "\r\n\t ".join(value[at:at + 68] for at in range(0, len(value), 68))
        return ("DKIM-Signature: v=1; a=rsa-sha256; c=relaxed/relaxed; d=example.com; s=s2048;\r\n"
                "\th=from:to:cc:subject:date:message-id:mime-version:content-type;\r\n"
                f"\tbh={digest};\r\n\tb={folds}")

    def _results(self):
        return ("Authentication-Results: mx.example.org;\r\n\tdkim=pass header.i=@example.com header.s=s2048;\r\n"
                f"\tspf=pass smtp.mailfrom={self._addresses.mailbox()};\r\n\tdmarc=pass (p=NONE) header.from=example.com")

    def _recipients(self, least, most):
        return ",\r\n\t".join(self._addresses.address() for _ in range(self._dice.between(least, most)))

    def _subject(self):
        if self._dice.chance(25):
            text = self._prose.paragraph()[:30].encode("utf-8", "ignore")
            return f"=?utf-8?B?{base64.b64encode(text).decode()}?="
        return self._prose.subject()

    def _thread(self):
        identifiers = [self._identifier() for _ in range(self._dice.between(1, 8))]
        return ["References: " + "\r\n ".join(identifiers), f"In-Reply-To: {identifiers[-1]}"]

    def _list(self):
        name = self._dice.token(7)
        return [f"List-Id: <{name}.lists.example.org>", "Precedence: list",
                f"List-Unsubscribe: <https://lists.example.org/{name}/{self._dice.token(24)}>,\r\n"
                f"\t<mailto:{name}-request@lists.example.org?subject=unsubscribe>"]
