#!/usr/bin/env python3
"""Writes docs/report.md and its plots (docs/*.svg): the accuracy of every family
against a long-double reference beside FFTW's, and the speed of every family as
a ratio to FFTW's (the DCT-IV's also to FFmpeg's MDCT, where the benchmark was
built with libavutil).

    python3 docs/make_report.py build/release

runs BUILD/bin/zamgen-accuracy (its TSV is kept as docs/accuracy.tsv) and
BUILD/bin/zamgen-bench (its JSON is kept as BUILD/report-bench.json, with a
record of the machine).  To rebuild the report from saved runs instead:

    python3 docs/make_report.py build/release --accuracy docs/accuracy.tsv --bench build/release/report-bench.json

Python 3 standard library only.
"""
import argparse
import datetime
import json
import math
import os
import platform
import re
import subprocess
import sys
from collections import defaultdict

DOCS = os.path.dirname(os.path.abspath(__file__))
sys.dont_write_bytecode = True  # no __pycache__ left in bench/
sys.path.insert(0, os.path.join(DOCS, "..", "bench"))
import ratios  # noqa: E402  (best_times, pairs, ffmpeg_times, geometric_mean)

BENCH_ARGS = ["--benchmark_format=json", "--benchmark_min_time=0.05", "--benchmark_repetitions=3"]

# Accuracy rows of zamgen-accuracy, in report order, with their titles.
ACCURACY_FAMILIES = [
    ("complex_fwd", "Complex DFT, forward"),
    ("complex_inv", "Complex DFT, inverse"),
    ("real_fwd_ccs", "Real DFT, forward to CCS"),
    ("real_inv_ccs", "Real DFT, inverse from CCS"),
    ("hartley", "Hartley"),
    ("wht", "Walsh–Hadamard"),
    ("dct4", "DCT-IV"),
]
# Benchmark families of zamgen-bench; the Walsh-Hadamard sizes there are orders.
SPEED_FAMILIES = [
    ("complex_fwd", "Complex DFT, forward"),
    ("complex_inv", "Complex DFT, inverse"),
    ("real_fwd_ccs", "Real DFT, forward to CCS"),
    ("real_fwd_pack", "Real DFT, forward to Pack"),
    ("real_fwd_perm", "Real DFT, forward to Perm"),
    ("real_inv_ccs", "Real DFT, inverse from CCS"),
    ("real_inv_pack", "Real DFT, inverse from Pack"),
    ("real_inv_perm", "Real DFT, inverse from Perm"),
    ("hartley", "Hartley"),
    ("wht", "Walsh–Hadamard"),
    ("dct4", "DCT-IV"),
]
SHORT_NAMES = {"complex_fwd": "forward complex DFT", "complex_inv": "inverse complex DFT",
               "real_fwd_ccs": "forward real DFT to CCS", "real_fwd_pack": "forward real DFT to Pack",
               "real_fwd_perm": "forward real DFT to Perm", "real_inv_ccs": "inverse real DFT from CCS",
               "real_inv_pack": "inverse real DFT from Pack", "real_inv_perm": "inverse real DFT from Perm",
               "hartley": "Hartley transform", "wht": "Walsh–Hadamard transform", "dct4": "DCT-IV"}
PRECISIONS = ["32f", "64f"]
PRECISION_NAMES = {"32f": "single", "64f": "double"}
OURS_COLOUR, FFTW_COLOUR = "#1f5fa8", "#d9620b"
PRECISION_COLOURS = {"32f": "#1f5fa8", "64f": "#1b8a5a"}


# ---- Inputs -----------------------------------------------------------------

def run(cmd):
    print("make_report: " + " ".join(cmd), file=sys.stderr)
    done = subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    sys.stderr.write(done.stderr)
    if done.returncode != 0:
        sys.exit(f"make_report: {cmd[0]} failed with status {done.returncode}")
    return done.stdout, done.stderr


def read_accuracy(text):
    """{(family, precision): [(n, ours_rms, fftw_rms, ours_max, fftw_max)]}; None where no peer."""
    rows = defaultdict(list)
    lines = text.strip().splitlines()
    if not lines or not lines[0].startswith("family\t"):
        sys.exit("make_report: the accuracy input is not zamgen-accuracy's TSV")
    for line in lines[1:]:
        family, prec, n, *values = line.split("\t")
        values = [float(v) if v else None for v in values]
        rows[(family, prec)].append((int(n), *values))
    return rows


def first_line(cmd):
    try:
        return subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout.splitlines()[0]
    except (OSError, IndexError):
        return "unknown"


def code_sizes(build):
    """Bytes of machine code in the shared library per path: the functions of
    namespace zam::scalar, zam::sse2, zam::avx2, ... and the rest (exports,
    dispatchers, the Walsh-Hadamard and DCT-IV drivers); empty without nm."""
    lib = os.path.join(build, "lib", "libzamgenmx.so")
    try:
        out = subprocess.run(["nm", "-S", "-C", "--defined-only", lib], capture_output=True, text=True,
                             check=True).stdout
    except (OSError, subprocess.CalledProcessError):
        return {}
    sizes = defaultdict(int)
    for line in out.splitlines():
        parts = line.split(" ", 3)
        if len(parts) == 4 and parts[2] in "tT":
            m = re.match(r"zam::(scalar|sse2|avx2|avx512)::", parts[3])
            sizes[m.group(1) if m else "other"] += int(parts[1], 16)
    return dict(sizes)


def describe_machine(build, accuracy_log):
    """What the numbers were measured on, gathered now."""
    cpu, cpus, flags = "unknown", 0, set()
    try:
        for line in open("/proc/cpuinfo"):
            if line.startswith("model name") and cpu == "unknown":
                cpu = line.split(":", 1)[1].strip()
            if line.startswith("flags") and not flags:
                flags = set(line.split(":", 1)[1].split())
            if line.startswith("processor"):
                cpus += 1
    except OSError:
        pass
    cache = {}
    try:
        for line in open(os.path.join(build, "CMakeCache.txt")):
            m = re.match(r"(CMAKE_CXX_COMPILER|CMAKE_BUILD_TYPE):\w+=(.*)", line)
            if m:
                cache[m.group(1)] = m.group(2).strip()
    except OSError:
        pass
    m = re.search(r"peer (\S+)", accuracy_log or "")
    fftw = m.group(1).rstrip(",") if m else "FFTW " + first_line(["pkg-config", "--modversion", "fftw3"])
    return {
        "sizes": code_sizes(build),
        "cpu": cpu,
        "cpus": cpus,
        # The widest vector path of the codelets that runs here.
        "vectors": "AVX-512" if {"avx512f", "avx512dq", "avx512bw", "avx512vl"} <= flags
                   else "AVX2, no AVX-512" if "avx2" in flags else "SSE2",
        "system": f"{platform.system()} {platform.release()}",
        "compiler": first_line([cache.get("CMAKE_CXX_COMPILER", "c++"), "--version"]),
        "build": cache.get("CMAKE_BUILD_TYPE", "unknown"),
        "fftw": fftw,
        "avutil": first_line(["pkg-config", "--modversion", "libavutil"]),
        "python": platform.python_version(),
    }


# ---- SVG --------------------------------------------------------------------

def esc(s):
    return s.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")


def sup(base, exponent):
    return f'{base}<tspan dy="-5" font-size="8">{exponent}</tspan>'


class Axis:
    """A linear or logarithmic axis over [lo, hi] with labelled ticks
    [(value, svg text)] and unlabelled minor ticks."""

    def __init__(self, lo, hi, log, ticks, minor=(), label=""):
        self.lo, self.hi, self.log, self.ticks, self.minor, self.label = lo, hi, log, ticks, list(minor), label

    def frac(self, v):
        if self.log:
            return (math.log(v) - math.log(self.lo)) / (math.log(self.hi) - math.log(self.lo))
        return (v - self.lo) / (self.hi - self.lo)


def linear_n_axis(label="N"):
    return Axis(0, 66, False, [(v, str(v)) for v in (2, 8, 16, 24, 32, 40, 48, 56, 64)], label=label)


def power_of_two_axis(lo, hi, label="N"):
    ticks = [(2.0 ** k, sup("2", k)) for k in range(int(math.log2(lo)), int(math.log2(hi)) + 1)]
    return Axis(lo / 1.3, hi * 1.3, True, ticks, label=label)


def decade_axis(values, label):
    """Logarithmic, from the largest 1, 2 or 5 times a power of ten below the
    values to the smallest above; labels at those steps, minor ticks between."""
    values = [v for v in values if v > 0]
    steps = [m * 10.0 ** k for k in range(-25, 5) for m in (1, 2, 5)]
    lo = max(v for v in steps if v <= min(values) * (1 + 1e-9))
    hi = min(v for v in steps if v >= max(values) * (1 - 1e-9))
    if hi <= lo:
        hi = steps[steps.index(lo) + 1]

    def text(v):
        k = math.floor(math.log10(v) + 1e-9)
        m = round(v / 10.0 ** k)
        power = sup("10", "−" + str(-k) if k < 0 else str(k))
        return power if m == 1 else f"{m}·{power}"
    ticks = [(v, text(v)) for v in steps if lo * (1 - 1e-9) <= v <= hi * (1 + 1e-9)]
    minor = [m * 10.0 ** k for k in range(-25, 5) for m in (3, 4, 6, 7, 8, 9) if lo < m * 10.0 ** k < hi]
    return Axis(lo, hi, True, ticks, minor, label)


def ratio_axis(values, label):
    lo = min(math.floor(math.log2(min(values))), -1)
    hi = max(math.ceil(math.log2(max(values))), 1)
    ticks = [(2.0 ** e, f"{2.0 ** e:g}") for e in range(lo, hi + 1)]
    return Axis(2.0 ** lo, 2.0 ** hi, True, ticks, label=label)


def panel(x0, y0, w, h, title, xaxis, yaxis, series, hline=None):
    """One plot area at (x0, y0) of w by h pixels: title, legend, axes, series
    [(label, colour, dashed, [(x, y)])] and an optional horizontal line."""
    X = lambda v: x0 + w * xaxis.frac(v)  # noqa: E731
    Y = lambda v: y0 + h * (1 - yaxis.frac(v))  # noqa: E731
    out = [f'<text x="{x0 + w / 2}" y="{y0 - 30}" text-anchor="middle" font-size="13" font-weight="bold">{esc(title)}</text>']
    # Legend, in a row above the plot area.
    lx = x0
    for label, colour, dashed, _ in series:
        dash = ' stroke-dasharray="5 3"' if dashed else ""
        out.append(f'<line x1="{lx}" y1="{y0 - 12}" x2="{lx + 22}" y2="{y0 - 12}" stroke="{colour}" stroke-width="2"{dash}/>')
        out.append(f'<circle cx="{lx + 11}" cy="{y0 - 12}" r="2.5" fill="{colour}"/>')
        out.append(f'<text x="{lx + 27}" y="{y0 - 8}" font-size="11">{esc(label)}</text>')
        lx += 34 + 6.5 * len(label)
    # Grid and ticks.
    for v, text in xaxis.ticks:
        out.append(f'<line x1="{X(v):.1f}" y1="{y0}" x2="{X(v):.1f}" y2="{y0 + h}" stroke="#e4e4e4"/>')
        out.append(f'<line x1="{X(v):.1f}" y1="{y0 + h}" x2="{X(v):.1f}" y2="{y0 + h + 5}" stroke="black"/>')
        out.append(f'<text x="{X(v):.1f}" y="{y0 + h + 18}" text-anchor="middle" font-size="11">{text}</text>')
    for v, text in yaxis.ticks:
        out.append(f'<line x1="{x0}" y1="{Y(v):.1f}" x2="{x0 + w}" y2="{Y(v):.1f}" stroke="#e4e4e4"/>')
        out.append(f'<line x1="{x0 - 5}" y1="{Y(v):.1f}" x2="{x0}" y2="{Y(v):.1f}" stroke="black"/>')
        out.append(f'<text x="{x0 - 8}" y="{Y(v) + 4:.1f}" text-anchor="end" font-size="11">{text}</text>')
    for v in yaxis.minor:
        out.append(f'<line x1="{x0 - 3}" y1="{Y(v):.1f}" x2="{x0}" y2="{Y(v):.1f}" stroke="black"/>')
    out.append(f'<rect x="{x0}" y="{y0}" width="{w}" height="{h}" fill="none" stroke="black"/>')
    out.append(f'<text x="{x0 + w / 2}" y="{y0 + h + 38}" text-anchor="middle" font-size="12">{esc(xaxis.label)}</text>')
    out.append(f'<text transform="translate({x0 - 52},{y0 + h / 2}) rotate(-90)" text-anchor="middle" '
               f'font-size="12">{esc(yaxis.label)}</text>')
    if hline is not None:
        value, text = hline
        out.append(f'<line x1="{x0}" y1="{Y(value):.1f}" x2="{x0 + w}" y2="{Y(value):.1f}" stroke="black" '
                   f'stroke-width="1.2" stroke-dasharray="2 2"/>')
        out.append(f'<text x="{x0 + w - 4}" y="{Y(value) - 4:.1f}" text-anchor="end" font-size="11" stroke="white" '
                   f'stroke-width="3" paint-order="stroke">{esc(text)}</text>')
    for _, colour, dashed, points in series:
        dash = ' stroke-dasharray="5 3"' if dashed else ""
        path = " ".join(f"{X(x):.1f},{Y(y):.1f}" for x, y in points)
        out.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="1.5"{dash}/>')
        out += [f'<circle cx="{X(x):.1f}" cy="{Y(y):.1f}" r="2" fill="{colour}"/>' for x, y in points]
    return out


def write_svg(path, width, height, body):
    with open(path, "w") as f:
        f.write(f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
                f'viewBox="0 0 {width} {height}" font-family="sans-serif">\n')
        f.write(f'<rect width="{width}" height="{height}" fill="white"/>\n')
        f.write("\n".join(body) + "\n</svg>\n")


def accuracy_plot(path, title, rows):
    """Relative RMS error against N, ours and FFTW's, one panel per precision;
    exact results (error 0) have no place on the logarithmic axis."""
    body = []
    for i, prec in enumerate(PRECISIONS):
        data = rows[prec]
        ns = [r[0] for r in data]
        xaxis = linear_n_axis() if max(ns) <= 64 else power_of_two_axis(min(ns), max(ns))
        series = [("zamgen", OURS_COLOUR, False, [(r[0], r[1]) for r in data if r[1] > 0])]
        if data[0][2] is not None:
            series.append(("FFTW", FFTW_COLOUR, True, [(r[0], r[2]) for r in data if r[2] > 0]))
        yaxis = decade_axis([y for s in series for _, y in s[3]], "relative RMS error")
        body += panel(90 + i * 460, 60, 360, 250, f"{title}, {PRECISION_NAMES[prec]} precision ({prec})",
                      xaxis, yaxis, series)
    write_svg(path, 920, 360, body)


def speed_plot(path, title, rows, orders):
    """ours / FFTW against N, one series per precision, a line at 1."""
    series = []
    for prec in PRECISIONS:
        pts = [(2 ** n if orders else n, ours / fftw) for p, n, ours, fftw in rows if p == prec]
        series.append((f"{PRECISION_NAMES[prec]} ({prec})", PRECISION_COLOURS[prec], prec == "64f", pts))
    ns = [x for s in series for x, _ in s[3]]
    xaxis = linear_n_axis() if max(ns) <= 64 else power_of_two_axis(min(ns), max(ns))
    yaxis = ratio_axis([y for s in series for _, y in s[3]], "time, zamgen / FFTW")
    write_svg(path, 640, 360, panel(90, 60, 520, 250, f"{title}: time relative to FFTW", xaxis, yaxis, series,
                                     hline=(1.0, "as fast as FFTW")))


# ---- Report -----------------------------------------------------------------

def e(v):
    return "—" if v is None else "0" if v == 0 else f"{v:.1e}"


def gmean_positive(values):
    values = [v for v in values if v]
    return ratios.geometric_mean(values) if values else 0.0


def accuracy_summary(acc):
    """Per family and precision: lengths, geometric mean and worst of ours and
    FFTW's relative RMS error, lengths where ours is no larger."""
    out = {}
    for family, _ in ACCURACY_FAMILIES:
        for prec in PRECISIONS:
            rows = acc[(family, prec)]
            ours = [r[1] for r in rows]
            peer = [r[2] for r in rows] if rows[0][2] is not None else None
            out[(family, prec)] = {
                "lengths": f"{rows[0][0]}–{rows[-1][0]}",
                "ours": (gmean_positive(ours), max(ours)),
                "worst_n": rows[ours.index(max(ours))][0],
                "fftw": (gmean_positive(peer), max(peer)) if peer else None,
                "no_larger": sum(o <= f for o, f in zip(ours, peer)) if peer else None,
                "count": len(rows),
                "ratio": gmean_positive([o / f for o, f in zip(ours, peer) if o and f]) if peer else None,
            }
    return out


def speed_summary(speed):
    out = {}
    for family, _ in SPEED_FAMILIES:
        for prec in PRECISIONS:
            rows = [(n, o / f) for p, n, o, f in speed.get(family, []) if p == prec]
            if not rows:
                continue
            if family == "wht":
                rows = [(2 ** n, r) for n, r in rows]
            out[(family, prec)] = {
                "gmean": ratios.geometric_mean(r for _, r in rows),
                "faster": sum(r < 1 for _, r in rows),
                "count": len(rows),
                "best": min(rows, key=lambda t: t[1]),
                "worst": max(rows, key=lambda t: t[1]),
                "slowest": sorted(rows, key=lambda t: -t[1])[:5],
            }
    return out


def report(acc, speed, ffmpeg, machine, context):
    A = accuracy_summary(acc)
    S = speed_summary(speed)
    fixed = ["complex_fwd", "complex_inv", "real_fwd_ccs", "real_inv_ccs", "hartley"]
    L = []
    w = L.append
    w("# zamgen: accuracy and speed\n")
    w("This report is generated; regenerate it (after `cmake --preset release && cmake --build --preset release`) with\n")
    w("```sh\npython3 docs/make_report.py build/release\n```\n")
    w("which runs `zamgen-accuracy` (a few seconds) and `zamgen-bench` (several minutes), or rebuild it from the saved "
      "runs with `--accuracy docs/accuracy.tsv --bench build/release/report-bench.json`.\n")
    w("## Machine\n")
    load = context.get("load_avg")
    w(f"- Date: {context.get('date') or datetime.date.today().isoformat()}")
    w(f"- CPU: {machine['cpu']}, {machine['cpus']} logical CPUs"
      + (f" (shared; load average {load[0]:.1f} when the benchmark started)" if load else "")
      + (f"; vector code: {machine['vectors']}" if machine.get("vectors") else ""))
    w(f"- System: {machine['system']}")
    w(f"- Compiler: {machine['compiler']}, build type {machine['build']}")
    w(f"- Peer: {machine['fftw']} (Debian's `libfftw3-dev`)")
    if ffmpeg:
        w(f"- DCT-IV peer: FFmpeg's libavutil {machine.get('avutil', 'unknown')} (Debian's `libavutil-dev`)")
    w(f"- Google Benchmark: library built as {context.get('library_build_type', 'unknown')}\n")

    sizes = machine.get("sizes")
    if sizes:
        w("## Library size\n")
        w("Machine code of `libzamgenmx.so` per path (the functions each path's bodies compile to; the rest are the "
          "exported entries, the dispatchers and the drivers of the Walsh–Hadamard transform and the DCT-IV):\n")
        w("| code | MB |\n|---|---|")
        for name, size in sorted(sizes.items(), key=lambda t: -t[1]):
            w(f"| {name} | {size / 1e6:.1f} |")
        w(f"| total | {sum(sizes.values()) / 1e6:.1f} |\n")

    # Headline.
    w("## In short\n")
    for prec in PRECISIONS:
        ours = max(A[(f, prec)]["ours"][1] for f in fixed)
        peer = max(A[(f, prec)]["fftw"][1] for f in fixed)
        same = sum(A[(f, prec)]["no_larger"] for f in fixed)
        total = sum(A[(f, prec)]["count"] for f in fixed)
        w(f"- Accuracy, {PRECISION_NAMES[prec]} precision, the DFT and Hartley families (N = 2..64): the worst relative "
          f"RMS error is {e(ours)} (FFTW: {e(peer)}); ours is no larger than FFTW's in {same} of {total} cases.")
    for prec in PRECISIONS:
        d = acc[("dct4", prec)][-1]
        w(f"- DCT-IV, {PRECISION_NAMES[prec]} precision, N = {d[0]}: {e(d[1])} (FFTW: {e(d[2])}); Walsh–Hadamard, "
          f"N = {acc[('wht', prec)][-1][0]}: {e(acc[('wht', prec)][-1][1])}.")
    means = ", ".join(f"{SHORT_NAMES[fam]} {S[(fam, '32f')]['gmean']:.2f} / {S[(fam, '64f')]['gmean']:.2f}"
                      for fam, _ in SPEED_FAMILIES if (fam, "32f") in S and (fam, "64f") in S)
    w(f"- Speed, geometric mean of time(zamgen) / time(FFTW) over the lengths, single / double precision: {means} "
      "(below 1: faster than FFTW).\n")

    # Accuracy.
    w("## Accuracy\n")
    w("`zamgen-accuracy` feeds four random inputs, uniform in [−1, 1) from a fixed seed and exact in the element type, "
      "to our transform and to FFTW's plan for the same transform (`FFTW_ESTIMATE`, so the plan does not depend on "
      "timings) in the same precision, and compares both with a long-double reference: direct sums with twiddles "
      "cos/sin(2πm/L) of integer m, and above 4096 points (Walsh–Hadamard, DCT-IV) the long-double butterflies and "
      "an FFT of N/2 points, which agree with the direct sums at 4096 points to about 1e-18 (the program checks it "
      "and fails otherwise). All transforms run unscaled; FFTW's REDFT11 is twice our DCT-IV and is halved. The error "
      "is ‖y − y_ref‖₂ / ‖y_ref‖₂ over the four inputs (relative RMS); the TSV also has the largest "
      "max|y − y_ref| / max|y_ref| of one input. FFTW has no Walsh–Hadamard transform, so that row has no peer.\n")
    w("The real transforms are measured in the CCS layout. The Pack and Perm codelets give the same values in other "
      "places, bit for bit (the program checks every length and precision and fails otherwise), so their errors are "
      "those of CCS. The full table is [accuracy.tsv](accuracy.tsv).\n")
    w("| family | precision | N | zamgen: geometric mean | zamgen: worst (at N) | FFTW: geometric mean | FFTW: worst "
      "| zamgen no larger than FFTW |")
    w("|---|---|---|---|---|---|---|---|")
    for family, title in ACCURACY_FAMILIES:
        for prec in PRECISIONS:
            a = A[(family, prec)]
            peer = a["fftw"]
            w(f"| {title} | {prec} | {a['lengths']} | {e(a['ours'][0])} | {e(a['ours'][1])} ({a['worst_n']}) | "
              f"{e(peer[0]) if peer else '—'} | {e(peer[1]) if peer else '—'} | "
              f"{str(a['no_larger']) + ' of ' + str(a['count']) if peer else '—'} |")
    w("\nExact results (error 0, e.g. N = 2 where only sums of two inputs occur) count as no larger, and are left out "
      "of the geometric means and the plots.\n")
    for family, title in ACCURACY_FAMILIES:
        w(f"### {title}\n")
        w(f"![{title}: relative RMS error against N](accuracy_{family}.svg)\n")
        peer = acc[(family, "32f")][0][2] is not None
        w("<details><summary>Relative RMS error per length</summary>\n")
        if peer:
            w("| N | 32f zamgen | 32f FFTW | 64f zamgen | 64f FFTW |\n|---|---|---|---|---|")
            for r32, r64 in zip(acc[(family, "32f")], acc[(family, "64f")]):
                w(f"| {r32[0]} | {e(r32[1])} | {e(r32[2])} | {e(r64[1])} | {e(r64[2])} |")
        else:
            w("| N | 32f zamgen | 64f zamgen |\n|---|---|---|")
            for r32, r64 in zip(acc[(family, "32f")], acc[(family, "64f")]):
                w(f"| {r32[0]} | {e(r32[1])} | {e(r64[1])} |")
        w("\n</details>\n")

    # Speed.
    w("## Speed\n")
    w("`zamgen-bench` times each transform, ours by calling each codelet's exported entry (as a caller who knows the length does) and FFTW's plan made with "
      "`FFTW_MEASURE`, on the same aligned buffers in one process, unscaled (`--benchmark_min_time=0.05 "
      "--benchmark_repetitions=3`, the best of the three). The Walsh–Hadamard peer is FFTW's rank-k real-to-halfcomplex "
      "transform with every axis of length 2; the DCT-IV peer is REDFT11. The time per call is in ns; a ratio below 1 "
      "means we are faster.\n")
    if ffmpeg:
        means = []
        for prec in PRECISIONS:
            r = [o / ffmpeg[("dct4", p, n)] for p, n, o, _ in speed.get("dct4", [])
                 if p == prec and ("dct4", p, n) in ffmpeg]
            if r:
                means.append(f"{ratios.geometric_mean(r):.2f} in {prec}")
        w("The DCT-IV also runs against FFmpeg's forward MDCT of the same N (`av_tx`, `AV_TX_FLOAT_MDCT` / "
          "`AV_TX_DOUBLE_MDCT`, unscaled) on buffers of its own: N outputs from 2N inputs, a DCT-IV of N after a "
          "folding. Its folding and twiddles are C around an FFT of N/2 points, which runs SIMD code (AVX, FMA3, AVX2) "
          "in single precision and C in double precision (libavutil 57). Geometric mean of time(zamgen) / "
          f"time(FFmpeg): {', '.join(means)}.\n")
    w("| family | precision | geometric mean | faster than FFTW | best (N) | worst (N) |\n|---|---|---|---|---|---|")
    for family, title in SPEED_FAMILIES:
        for prec in PRECISIONS:
            s = S.get((family, prec))
            if s:
                w(f"| {title} | {prec} | **{s['gmean']:.2f}** | {s['faster']} of {s['count']} | "
                  f"{s['best'][1]:.2f} ({s['best'][0]}) | {s['worst'][1]:.2f} ({s['worst'][0]}) |")
    w("")
    for family, title in SPEED_FAMILIES:
        if family not in speed:
            continue
        w(f"### {title}\n")
        w(f"![{title}: time relative to FFTW against N](speed_{family}.svg)\n")
        w("<details><summary>ns per call and ratio per length</summary>\n")
        extra = any(k[0] == family for k in ffmpeg)
        heads = ["zamgen", "FFTW", "ratio"] + (["FFmpeg", "ratio to FFmpeg"] if extra else [])
        w("| N | " + " | ".join(f"{prec} {h}" for prec in PRECISIONS for h in heads) + " |\n|---"
          + "|---" * len(heads) * len(PRECISIONS) + "|")
        by = {(p, n): (o, f) for p, n, o, f in speed[family]}
        for n in sorted({n for _, n, _, _ in speed[family]}):
            cells = []
            for prec in PRECISIONS:
                o, f = by.get((prec, n), (None, None))
                cells += ["—"] * 3 if o is None else [f"{o:.1f}", f"{f:.1f}", f"{o / f:.2f}"]
                if extra:
                    t = ffmpeg.get((family, prec, n))
                    cells += ["—"] * 2 if o is None or t is None else [f"{t:.1f}", f"{o / t:.2f}"]
            w(f"| {2 ** n if family == 'wht' else n} | " + " | ".join(cells) + " |")
        w("\n</details>\n")

    # Reading.
    w("## Reading\n")
    ratio = {p: ratios.geometric_mean(A[(f, p)]["ratio"] for f in fixed) for p in PRECISIONS}
    dct = {p: A[("dct4", p)]["ratio"] for p in PRECISIONS}
    text = (f"**Accuracy.** Over the DFT and Hartley families our error is on geometric average {ratio['32f']:.2f} "
            f"times FFTW's in single precision and {ratio['64f']:.2f} times in double precision; for the DCT-IV "
            f"{dct['32f']:.2f} and {dct['64f']:.2f} times. ")
    if ratio["32f"] < 0.95:
        text += ("The single-precision DFT and Hartley codelets compute every product by a constant, and every "
                 "combination of such products, in double and round once, which is where their lead in single "
                 "precision comes from; the DCT-IV computes single precision in float throughout. ")
    text += ("Every constant is the double-double value rounded once, and the results are the same bits on every "
             "machine, so these errors are the ones a user gets anywhere. The Walsh–Hadamard transform only adds and "
             "subtracts; its error grows slowly with the order.")
    w(text + "\n")

    small_ratios = [o / f for fam in speed for p, n, o, f in speed[fam] if (2 ** n if fam == "wht" else n) <= 8]
    text = (f"**Speed.** For the short lengths (N ≤ 8) we take on geometric average "
            f"{ratios.geometric_mean(small_ratios):.2f} of FFTW's time: a codelet is one call of straight-line code, "
            "while FFTW's call goes through its plan. ")
    slow = []
    for family, _ in SPEED_FAMILIES:
        if (family, "32f") not in S or (family, "64f") not in S or family in ("wht", "dct4"):
            continue
        s32, s64 = S[(family, "32f")], S[(family, "64f")]
        per_n = defaultdict(list)
        for p, n, o, f in speed[family]:
            per_n[n].append(o / f)
        # A length counts as slower where either precision is.
        worst = [n for n in sorted(per_n, key=lambda n: -max(per_n[n])) if max(per_n[n]) > 1][:5]
        slower = sum(max(r) > 1 for r in per_n.values())
        if not slower:
            continue
        slow.append(f"the {SHORT_NAMES[family]} at {slower} of {len(per_n)} lengths (up to {s32['worst'][1]:.1f}× "
                    f"in 32f and {s64['worst'][1]:.1f}× in 64f; slowest at N = {', '.join(map(str, worst))})")
    if slow:
        text += ("We are slower on " + "; ".join(slow) + ". Our codelets run on vectors (SSE2, AVX2, and "
                 "AVX-512 where it was measured faster) whose lanes are operations of the scalar code that the "
                 "codelet compiler finds side by side, so that every result has the same bits on every CPU, under Linux and Windows and whatever flags a user adds; where a "
                 "length is slower, too few of its operations fill whole vectors, or they need shuffles between "
                 f"stages, while FFTW ({machine['fftw']}) runs codelets written for vectors from the start. ")
        wider = [SHORT_NAMES[f] for f, _ in SPEED_FAMILIES
                 if f not in ("wht", "dct4") and (f, "32f") in S and (f, "64f") in S
                 and S[(f, "32f")]["gmean"] > 1.1 * S[(f, "64f")]["gmean"]]
        if wider:
            text += (f"In single precision the gap is wider ({', '.join(wider)}): our codelets compute their products by "
                     "constants in double and convert, for the accuracy above, so a vector of products holds half as "
                     "many values as a vector of floats. ")
    reasons = {"dct4": ("REDFT11", "FFTW reaches it through general reductions to other transforms, ours has kernels "
                                   "of its own"),
               "wht": ("rank-k transform of 2-point axes", "FFTW solves it as a general multi-dimensional problem, "
                       "ours runs straight-line blocks")}
    for family, (peer, why) in reasons.items():
        rows = [((2 ** n if family == "wht" else n), o / f) for p, n, o, f in speed.get(family, [])]
        if not rows:
            continue
        g = ratios.geometric_mean(r for _, r in rows)
        first = ratios.geometric_mean(r for n, r in rows if n == min(n for n, _ in rows))
        last = ratios.geometric_mean(r for n, r in rows if n == max(n for n, _ in rows))
        text += (f"Our {SHORT_NAMES[family]} takes {g:.2f} of the time of FFTW's {peer} on geometric average "
                 f"({first:.2f} at N = {min(n for n, _ in rows)}, {last:.2f} at N = {max(n for n, _ in rows)})")
        text += f": {why}. " if g < 1 else ". "
    w(text.rstrip() + "\n")
    w("The machine is shared with other work: ratios within about 10 % of 1 are within the noise of a run.\n")
    return "\n".join(L)


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("build", nargs="?", default="build/release", help="the build directory (default build/release)")
    ap.add_argument("--accuracy", help="zamgen-accuracy's TSV, instead of running it")
    ap.add_argument("--bench", help="zamgen-bench's JSON, instead of running it")
    args = ap.parse_args()

    accuracy_log = None
    if args.accuracy:
        accuracy_text = open(args.accuracy).read()
    else:
        accuracy_text, accuracy_log = run([os.path.join(args.build, "bin", "zamgen-accuracy")])
        with open(os.path.join(DOCS, "accuracy.tsv"), "w") as f:
            f.write(accuracy_text)
    acc = read_accuracy(accuracy_text)

    if args.bench:
        bench = json.load(open(args.bench))
    else:
        out, _ = run([os.path.join(args.build, "bin", "zamgen-bench")] + BENCH_ARGS)
        bench = json.loads(out)
        bench["context"]["zamgen_report"] = describe_machine(args.build, accuracy_log)
        with open(os.path.join(args.build, "report-bench.json"), "w") as f:
            json.dump(bench, f, indent=1)
    context = bench.get("context", {})
    machine = context.get("zamgen_report") or describe_machine(args.build, accuracy_log)
    ns = ratios.best_times(bench["benchmarks"])
    speed, ffmpeg = ratios.pairs(ns), ratios.ffmpeg_times(ns)

    for family, title in ACCURACY_FAMILIES:
        accuracy_plot(os.path.join(DOCS, f"accuracy_{family}.svg"), title,
                      {p: acc[(family, p)] for p in PRECISIONS})
    for family, title in SPEED_FAMILIES:
        if family in speed:
            speed_plot(os.path.join(DOCS, f"speed_{family}.svg"), title, speed[family], orders=family == "wht")
    with open(os.path.join(DOCS, "report.md"), "w") as f:
        f.write(report(acc, speed, ffmpeg, machine, context))
    print(f"make_report: wrote {os.path.join(DOCS, 'report.md')} and its plots", file=sys.stderr)


if __name__ == "__main__":
    main()
