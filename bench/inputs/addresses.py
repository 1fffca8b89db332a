"""Address lists in all the forms of RFC 822 section 6.1."""

FIRST = "Anna Bernd Chiara David Elena Fritz Grace Henri Ingrid Jose Karin Luc Maria Nils Olga Peter Ruth Tom".split()
LAST = "Adams Berger Costa Dubois Engel Fischer Garcia Huber Ito Jansen Keller Lopez Meyer Novak Olsen Price".split()
LOCAL = "info sales postmaster j.smith m_keller first.last+list office-2 a.b.c x400 root".split()
TOP = "example.com example.org example.net test.example mail.corp.example a.b.c.d.example".split()
WORDS = ("Sales, Europe", "Smith, John", "The Board (old)", "R&D", "Help @ Desk", "a.b; c", "Fifth: Avenue")
COMMENTS = ("Munich office", "at home", "do not (really) reply", "room 2.17", "on leave until May")
GROUPS = "board staff Undisclosed-Recipients friends".split()

MAX_MEMBERS = 4  # A group's whole text has to stay below 255 characters.


class Addresses:
    def __init__(self, dice):
        self._dice = dice

    def mailbox(self):
        """The bare address."""
        dice = self._dice
        local = dice.pick(LOCAL)
        if dice.chance(5):
            local = f'"{dice.pick(FIRST)} {dice.pick(LAST)}"'
        return f"{local}{dice.below(1000)}@{self.domain()}" if local[0] != '"' else f"{local}@{self.domain()}"

    def domain(self):
        dice = self._dice
        if dice.chance(2):
            return f"[192.0.2.{dice.below(255)}]"
        return f"{dice.token(dice.between(2, 8))}.{dice.pick(TOP)}"

    def name(self):
        return f"{self._dice.pick(FIRST)} {self._dice.pick(LAST)}"

    def route_address(self):
        route = ",".join("@" + self._dice.pick(TOP) for _ in range(self._dice.between(1, 3)))
        return f"{self.name()} <{route}:{self.mailbox()}>"

    def group(self):
        members = ", ".join(self.mailbox() for _ in range(self._dice.below(MAX_MEMBERS + 1)))
        return f"{self._dice.pick(GROUPS)}: {members};"

    def named(self):
        return f"{self.name()} <{self.mailbox()}>"

    def quoted(self):
        return f'"{self._dice.pick(WORDS)}" <{self.mailbox()}>'

    def commented(self):
        return f"{self.mailbox()} ({self._dice.pick(COMMENTS)})"

    def address(self):
        forms = ((45, self.named), (65, self.mailbox), (80, self.quoted), (90, self.commented), (95, self.group),
                 (100, self.route_address))
        at = self._dice.below(100)
        return next(form for below, form in forms if at < below)()

    def list(self):
        count = self._dice.between(1, 8)
        return ", ".join(self.address() for _ in range(count))
