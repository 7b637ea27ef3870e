#!/usr/bin/env python3
"""Turns zamgen-bench's JSON (--benchmark_format=json or --benchmark_out) into a
table of ns per call, ours and FFTW's, and their ratio, per family, precision
and size (the best of --benchmark_repetitions); the last line per family gives
the geometric mean of the ratios.

    zamgen-bench --benchmark_format=json > run.json && bench/ratios.py run.json

docs/make_report.py imports best_times, pairs and geometric_mean from here.
"""
import json
import math
import sys
from collections import defaultdict


def best_times(runs):
    """{(library, family, precision, size): ns} from the "benchmarks" list, the
    best of the repetitions of each name."""
    ns = {}
    for r in runs:
        if r.get("run_type", "iteration") != "iteration":
            continue
        lib, family, prec, size = r["name"].split("/")[:4]
        scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[r.get("time_unit", "ns")]
        key = (lib, family, prec, int(size))
        ns[key] = min(ns.get(key, float("inf")), r["real_time"] * scale)
    return ns


def pairs(ns):
    """{family: [(precision, size, ours_ns, fftw_ns)]}, sorted, where both ran."""
    rows = defaultdict(list)
    for (lib, family, prec, size), t in sorted(ns.items()):
        if lib == "zamgen" and ("fftw", family, prec, size) in ns:
            rows[family].append((prec, size, t, ns[("fftw", family, prec, size)]))
    return rows


def geometric_mean(values):
    values = list(values)
    return math.exp(sum(math.log(v) for v in values) / len(values))


def main(path):
    rows = pairs(best_times(json.load(open(path))["benchmarks"]))
    for family, items in rows.items():
        print(f"\n### {family}\n\n| precision | size | ours (ns) | FFTW (ns) | ours / FFTW |\n|---|---|---|---|---|")
        ratios = defaultdict(list)
        for prec, size, ours, fftw in items:
            print(f"| {prec} | {size} | {ours:.1f} | {fftw:.1f} | {ours / fftw:.2f} |")
            ratios[prec].append(ours / fftw)
        for prec, r in ratios.items():
            print(f"| {prec} | geometric mean | | | {geometric_mean(r):.2f} |")


if __name__ == "__main__":
    main(sys.argv[1])
