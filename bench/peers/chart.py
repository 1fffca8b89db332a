"""The ratios as a bar chart, drawn by gnuplot."""
import subprocess

from report import NAMES, PEERS

MOST = 8  # ratios beyond this, or its inverse, are cut
ROW_HEIGHT = 26  # pixels
COLOURS = {"gmime": "#1f6f8b", "etpan": "#e07b39"}

SCRIPT = """set terminal svg size 900,{height} font 'sans-serif,12' background 'white'
set output '{output}'
set logscale x 2
set xrange [{least}:{most}]
set yrange [{rows}:-1]
set xtics ({ticks})
set ytics ({labels}) scale 0
set grid xtics linecolor '#dddddd'
set arrow from 1, graph 0 to 1, graph 1 nohead linewidth 2
set xlabel 'times as fast as the peer (right of 1: libvel is faster); cut at {most}'
set lmargin 48
set key outside top center horizontal
set style fill solid noborder
plot {plots}
"""


def bars(rows, peer, offset):
    """Lines "x y left right bottom top" of one peer's bars, which begin at 1."""
    for number, row in enumerate(rows):
        ratio = row.ratio(peer)
        if ratio:
            end = min(max(ratio, 1 / MOST), MOST)
            at = number + offset
            yield f"{end:.4f} {at} {min(1, end):.4f} {max(1, end):.4f} {at - 0.18} {at + 0.18}"


def draw(rows, path):
    series = list(zip(PEERS, (-0.2, 0.2)))
    plots = ", ".join(f"'-' using 1:2:3:4:5:6 with boxxyerror linecolor '{COLOURS[peer]}' title 'beside {NAMES[peer]}'"
                      for peer, _ in series)
    ticks, at = [], 1 / MOST
    while at <= MOST:
        ticks.append(f"'{at:g}' {at:g}")
        at *= 2
    labels = ", ".join(f"'{row.work.name}' {number}" for number, row in enumerate(rows))
    script = SCRIPT.format(height=120 + ROW_HEIGHT * len(rows), output=path, least=1 / MOST, most=MOST, rows=len(rows),
                           ticks=", ".join(ticks), labels=labels, plots=plots)
    data = "".join("\n".join(bars(rows, peer, offset)) + "\ne\n" for peer, offset in series)
    subprocess.run(["gnuplot"], input=script + data, text=True, check=True)
