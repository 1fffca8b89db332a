"""The results as tables in Markdown."""
from dataclasses import dataclass
from statistics import median

BEGIN = "<!-- Written by scripts/compare from here ... -->"
END = "<!-- ... to here. -->"
NAMES = {"vel": "libvel", "gmime": "GMime", "etpan": "libetpan"}
PEERS = ("gmime", "etpan")
OTHERS = {"macutils": "macutils", "python": "Python's email package"}  # each for a work or two


@dataclass(frozen=True)
class Row:
    """One work's results; what a library cannot do it is not in."""
    work: object
    size: int  # bytes or lines
    runs: dict  # by library, and "floor": what every round measured
    instructions: dict  # by library

    def ratio(self, *peers, clock="seconds"):
        """How many times as fast as the fastest of these peers libvel is; None when none of them can.

        The median of each round's own ratio: what slows a machine for seconds slows both sides of it.
        """
        def of(library):
            return [getattr(run, clock) for run in self.runs[library]]

        return min((median(their / our for their, our in zip(of(peer), of("vel"))) for peer in peers
                    if peer in self.runs), default=None)

    def seconds(self, library):
        return median(run.seconds for run in self.runs[library])

    def kib(self, library):
        return max(run.kib for run in self.runs[library])

    def rate(self, library):
        per_second = self.size / self.seconds(library)
        return f"{digits(per_second / 1e6)} MB/s" if self.work.counts == "bytes" else f"{digits(per_second / 1e3)} k/s"


def row_of(work, size, measured, instructions):
    return Row(work, size, {library: runs for (of, library), runs in measured.items() if of == work},
               {library: count for (of, library), count in instructions.items() if of == work})


def digits(number):
    """Three digits that count, and all before the point."""
    return f"{number:,.{max(0, 3 - len(str(int(number))))}f}" if number >= 1 else f"{number:.3g}"


def milliseconds(seconds):
    return f"{digits(seconds * 1e3)} ms"


def table(head, rows):
    """Lines of a table; all columns but the first are numbers."""
    yield "| " + " | ".join(head) + " |"
    yield "|---|" + "---:|" * (len(head) - 1)
    for row in rows:
        yield "| " + " | ".join(row) + " |"


def times(rows):
    def cell(row, library):
        return f"{milliseconds(row.seconds(library))}, {row.rate(library)}" if library in row.runs else "-"

    def ratio(*peers, **how):
        return lambda row: f"{found:.2f}" if (found := row.ratio(*peers, **how)) else "-"

    def floor(row):
        return milliseconds(row.seconds("floor")) if "floor" in row.runs else ""

    columns = (("faster peer = 1", ratio(*PEERS)), ("by processor", ratio(*PEERS, clock="processor")),
               ("GMime = 1", ratio("gmime")), ("by processor", ratio("gmime", clock="processor")),
               ("system alone", floor))
    yield from table(("Work", *NAMES.values(), *(head for head, _ in columns)),
                     ((row.work.name, *(cell(row, library) for library in NAMES),
                       *(column(row) for _, column in columns)) for row in rows))


def others(rows):
    found = ((row, library) for row in rows for library in OTHERS if library in row.runs)
    yield from table(("Work", "beside", "libvel", "the other", "other = 1", "by processor"),
                     ((row.work.name, OTHERS[library], milliseconds(row.seconds("vel")),
                       milliseconds(row.seconds(library)), f"{row.ratio(library):.2f}",
                       f"{row.ratio(library, clock='processor'):.2f}") for row, library in found))


def costs(rows):
    def kib(row, library):
        return f"{row.kib(library):,}" if library in row.runs else "-"

    def millions(row, library):
        return f"{row.instructions[library] / 1e6:,.2f}" if library in row.instructions else "-"

    head = ("Work", *(f"{name}, KiB" for name in NAMES.values()), *(f"{name}, M instr." for name in NAMES.values()))
    yield from table(head, ((row.work.name, *(kib(row, library) for library in NAMES),
                             *(millions(row, library) for library in NAMES)) for row in rows))


def agreement_lines(agreement):
    for rule, count in sorted(agreement.counts.items()):
        yield f"- {rule}: {count:,}"
    if not agreement.differences:
        yield "- No other difference."
    for difference in agreement.differences:
        yield f"- **Differs:** {difference}"


def region(rows, facts, agreement, rounds, scale):
    """What stands between the marks."""
    parts = [[f"- {what}: {how}" for what, how in facts],
             [f"Medians of {rounds} rounds. A ratio is the median of the rounds' own ratios, above 1 where libvel is",
              "faster: by elapsed time, and by processor time, which other work on the machine hardly changes."],
             list(times(rows)),
             list(others(rows)),
             ["Peak memory above that of the started driver; instructions counted by valgrind on inputs of "
              f"{scale:.0%} of the size."],
             list(costs(rows)),
             ["What was compared of the results:"],
             list(agreement_lines(agreement))]
    return "\n\n".join("\n".join(part) for part in parts)


def put_into(path, text):
    """Replaces what stands between the marks; a file that has none is written anew."""
    old = path.read_text("ascii") if path.exists() else f"{BEGIN}\n{END}\n"
    before, found, rest = old.partition(BEGIN)
    _, closed, after = rest.partition(END)
    if not found or not closed:
        raise SystemExit(f"{path}: the marks of the generated part are missing")
    path.write_text(f"{before}{BEGIN}\n\n{text}\n\n{END}{after}", "ascii")
