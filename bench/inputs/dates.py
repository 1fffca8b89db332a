"""Dates of RFC 822 section 5 as mail programs write them; the library reads all of them."""

DAYS = "Mon Tue Wed Thu Fri Sat Sun".split()
MONTHS = "Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec".split()
NAMES = "GMT UT EST EDT CST CDT MST MDT PST PDT Z".split()
OFFSETS = "+0000 -0000 +0100 +0200 -0500 -0800 +0530 +0930 +1200 -0330".split()
LAST_COMMON_DAY = 28  # every month has it


class Dates:
    def __init__(self, dice):
        self._dice = dice

    def date(self, offset=None):
        """A date in the usual layout: what Date and Received fields hold."""
        return f"{self._dice.pick(DAYS)}, {self._day()} {self._dice.between(1996, 2030)} {self._clock()} " + (
            offset or self._dice.pick(OFFSETS))

    def varied(self):
        dice = self._dice
        weekday = f"{dice.pick(DAYS)}, " if dice.chance(75) else ""
        year = dice.between(1981, 2036) if dice.chance(80) else f"{dice.between(81, 99)}"
        clock = self._clock(seconds=dice.chance(85))
        zone = dice.pick(OFFSETS) if dice.chance(70) else dice.pick(NAMES)
        comment = " (local time)" if dice.chance(15) else ""
        return f"{weekday}{self._day()} {year} {clock} {zone}{comment}"

    def _day(self):
        day = self._dice.between(1, LAST_COMMON_DAY)
        return (f"{day:02}" if self._dice.chance(50) else f"{day}") + " " + self._dice.pick(MONTHS)

    def _clock(self, seconds=True):
        dice = self._dice
        clock = f"{dice.below(24):02}:{dice.below(60):02}"
        return f"{clock}:{dice.below(60):02}" if seconds else clock
