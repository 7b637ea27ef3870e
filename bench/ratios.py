#!/usr/bin/env python3
"""Turns zamgen-bench's JSON (--benchmark_format=json or --benchmark_out) into a
table of ns per call, ours and FFTW's, and their ratio, per family, precision
and size (the best of --benchmark_repetitions); the last line per family gives
the geometric mean of the ratios.  A family that also ran against FFmpeg (the
DCT-IV against av_tx's MDCT, avtx/... rows) gets FFmpeg's time and ours / FFmpeg
beside them.

    zamgen-bench --benchmark_format=json > run.json && bench/ratios.py run.json

docs/make_report.py imports best_times, pairs, ffmpeg_times and geometric_mean
from here.
"""
import json
import math
import sys
from collections import defaultdict


def best_times(runs):
    """{(library, family, precision, size): ns} from the "benchmarks" list, the
    best of the repetitions of each name.  The time is the thread's CPU time:
    on a shared machine the wall-clock time also counts the spells in which
    the process was not running at all."""
    ns = {}
    for r in runs:
        if r.get("run_type", "iteration") != "iteration":
            continue
        lib, family, prec, size = r["name"].split("/")[:4]
        scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[r.get("time_unit", "ns")]
        key = (lib, family, prec, int(size))
        ns[key] = min(ns.get(key, float("inf")), r["cpu_time"] * scale)
    return ns


def pairs(ns):
    """{family: [(precision, size, ours_ns, fftw_ns)]}, sorted, where both ran."""
    rows = defaultdict(list)
    for (lib, family, prec, size), t in sorted(ns.items()):
        if lib == "zamgen" and ("fftw", family, prec, size) in ns:
            rows[family].append((prec, size, t, ns[("fftw", family, prec, size)]))
    return rows


def ffmpeg_times(ns):
    """{(family, precision, size): ns} of FFmpeg's rows; empty when none ran."""
    return {(family, prec, size): t for (lib, family, prec, size), t in ns.items() if lib == "avtx"}


def geometric_mean(values):
    values = list(values)
    return math.exp(sum(math.log(v) for v in values) / len(values))


def main(path):
    ns = best_times(json.load(open(path))["benchmarks"])
    ffmpeg = ffmpeg_times(ns)
    for family, items in pairs(ns).items():
        extra = any((family, prec, size) in ffmpeg for prec, size, _, _ in items)
        head = "| precision | size | ours (ns) | FFTW (ns) | ours / FFTW |"
        rule = "|---|---|---|---|---|"
        if extra:
            head += " FFmpeg (ns) | ours / FFmpeg |"
            rule += "---|---|"
        print(f"\n### {family}\n\n{head}\n{rule}")
        ratios, to_ffmpeg = defaultdict(list), defaultdict(list)
        for prec, size, ours, fftw in items:
            row = f"| {prec} | {size} | {ours:.1f} | {fftw:.1f} | {ours / fftw:.2f} |"
            ratios[prec].append(ours / fftw)
            if extra:
                peer = ffmpeg.get((family, prec, size))
                row += " — | — |" if peer is None else f" {peer:.1f} | {ours / peer:.2f} |"
                if peer is not None:
                    to_ffmpeg[prec].append(ours / peer)
            print(row)
        for prec, r in ratios.items():
            row = f"| {prec} | geometric mean | | | {geometric_mean(r):.2f} |"
            if extra:
                row += f" | {geometric_mean(to_ffmpeg[prec]):.2f} |" if to_ffmpeg[prec] else " | — |"
            print(row)


if __name__ == "__main__":
    main(sys.argv[1])
