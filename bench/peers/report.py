"""The results as tables in Markdown."""
from dataclasses import dataclass
from statistics import median

BEGIN = "<!-- Written by scripts/compare from here ... -->"
END = "<!-- ... to here. -->"
NAMES = {"vel": "libvel", "gmime": "GMime", "etpan": "libetpan"}
PEERS = ("gmime", "etpan")


@dataclass(frozen=True)
class Row:
    """One work's results; what a library cannot do it is not in."""
    work: object
    size: int  # bytes or lines
    seconds: dict  # by library: of every round
    kib: dict
    instructions: dict

    def ratio(self, *peers):
        """How many times as fast as the fastest of these peers libvel is; None when none of them can.

        The median of each round's own ratio: what slows a machine for seconds slows both sides of it.
        """
        ours = self.seconds["vel"]
        return min((median(their / our for their, our in zip(self.seconds[peer], ours))
                    for peer in peers if peer in self.seconds), default=None)

    def middle(self, library):
        return median(self.seconds[library])

    def rate(self, library):
        per_second = self.size / self.middle(library)
        return f"{digits(per_second / 1e6)} MB/s" if self.work.counts == "bytes" else f"{digits(per_second / 1e3)} k/s"


def row_of(work, size, measured, instructions):
    runs = {library: measured[work, library] for library in (*work.libraries, "floor") if (work, library) in measured}
    return Row(work, size,
               {library: [run.seconds for run in each] for library, each in runs.items()},
               {library: max(run.kib for run in each) for library, each in runs.items()},
               {library: instructions[work, library] for library in runs if (work, library) in instructions})


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
        if library not in row.seconds:
            return "-"
        return f"{milliseconds(row.middle(library))}, {row.rate(library)}"

    def ratio(row, *peers):
        found = row.ratio(*peers)
        return f"{found:.2f}" if found else "-"

    def floor(row):
        return milliseconds(row.middle("floor")) if "floor" in row.seconds else ""

    head = ("Work", *NAMES.values(), "faster peer = 1", "GMime = 1", "system alone")
    yield from table(head, ((row.work.name, *(cell(row, library) for library in NAMES), ratio(row, *PEERS),
                             ratio(row, "gmime"), floor(row)) for row in rows))


def costs(rows):
    def kib(row, library):
        return f"{row.kib[library]:,}" if library in row.kib else "-"

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
             [f"Medians of {rounds} rounds; a ratio is the median of the rounds' own ratios, above 1 where libvel is faster."],
             list(times(rows)),
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
