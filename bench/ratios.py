#!/usr/bin/env python3
"""Turns zamgen-bench's JSON (--benchmark_format=json or --benchmark_out) into a
table of ns per call, ours and FFTW's, and their ratio, per family, precision
and size (the best of --benchmark_repetitions); the last line per family gives
the geometric mean of the ratios.

    zamgen-bench --benchmark_format=json > run.json && bench/ratios.py run.json
"""
import json
import math
import sys
from collections import defaultdict


def main(path):
    runs = json.load(open(path))["benchmarks"]
    ns = {}
    for r in runs:
        if r.get("run_type", "iteration") != "iteration":
            continue
        lib, family, prec, size = r["name"].split("/")[:4]
        scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[r.get("time_unit", "ns")]
        key = (lib, family, prec, int(size))
        ns[key] = min(ns.get(key, float("inf")), r["real_time"] * scale)  # the best of repetitions
    rows = defaultdict(list)
    for (lib, family, prec, size), t in sorted(ns.items()):
        if lib == "zamgen" and ("fftw", family, prec, size) in ns:
            rows[family].append((prec, size, t, ns[("fftw", family, prec, size)]))
    for family, items in rows.items():
        print(f"\n### {family}\n\n| precision | size | ours (ns) | FFTW (ns) | ours / FFTW |\n|---|---|---|---|---|")
        logs = defaultdict(list)
        for prec, size, ours, fftw in items:
            print(f"| {prec} | {size} | {ours:.1f} | {fftw:.1f} | {ours / fftw:.2f} |")
            logs[prec].append(math.log(ours / fftw))
        for prec, l in logs.items():
            print(f"| {prec} | geometric mean | | | {math.exp(sum(l) / len(l)):.2f} |")


if __name__ == "__main__":
    main(sys.argv[1])
