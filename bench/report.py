#!/usr/bin/env python3
"""Side-by-side ratios for the QorMath benchmarks.

Benchmarks are named Family/type/Impl; every case whose Impl is QorMath, or
starts with QorMath_ (a second method of ours), is set against the other Impls
of the same Family/type. A time ratio ours/peer below 1 means QorMath is faster
than that peer (column "time o/p"). Counters that the cases carry are shown for
both sides: lines (lines per curve, with its ratio ours/peer, "lines o/p"),
max_dev and over_d (deviation from the curve), and the root-finding agreement
(roots per polynomial, missed, extra, max_err), the analysis accuracy (mean_err, med_err,
max_err, the peer's matched tol; closest-point agree, end_miss, other_miss,
pair), the intersection agreement (found, ref, missed, extra, end_miss,
max_err), the fit errors (sq_mean, sq_med, sq_max: squared distances) and the
offsets (pieces per curve with its ratio, max_dev, over_tol, unmet), with the time of
one item (per_item: a pair, a line, a fit or a curve), and the vector field's rates
(cells_per_s, rows_per_s, samples_per_s). A peer named Serial is our own call run
on one thread: its row also shows the speed-up, serial time over ours. Cases
measured on wall-clock time (UseRealTime, for the multi-threaded calls) are
compared by that time, all others by CPU time. One table per Family; cases
without a counterpart are listed after it.

  report.py build/bench/bench_matrix build/bench/bench_flatten ... [--min-time 0.2] [--filter REGEX]
  report.py results.json          (the output of --benchmark_format=json)
"""
import argparse
import json
import os
import subprocess
import sys
from collections import OrderedDict

OURS = "QorMath"
SERIAL = "Serial"

# (counter, format, with a ratio ours/peer, or None for a value both sides
# share, shown once); "time" is a counter in seconds.
COUNTERS = [
    ("per_item", "time", False),
    ("lines", "%.1f", True),
    ("max_dev", "%.3f", False),
    ("over_d", "%d", False),
    ("roots", "%.3f", False),
    ("found", "%d", False),
    ("ref", "%d", None),
    ("missed", "%d", False),
    ("extra", "%d", False),
    ("max_err", "%.1e", False),
    ("mean_err", "%.1e", False),
    ("med_err", "%.1e", False),
    ("tol", "%.3g", False),
    ("agree", "%.4f", False),
    ("end_miss", "%d", False),
    ("other_miss", "%d", False),
    ("pair", "%.4f", False),
    ("pieces", "%.2f", True),
    ("over_tol", "%d", False),
    ("unmet", "%d", False),
    ("sq_mean", "%.2e", False),
    ("sq_med", "%.2e", False),
    ("sq_max", "%.2e", False),
    ("cells_per_s", "rate", False),
    ("rows_per_s", "rate", False),
    ("samples_per_s", "rate", False),
]

NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def is_ours(impl):
    return impl == OURS or impl.startswith(OURS + "_")


def load(source, args):
    if source.endswith(".json"):
        with open(source) as f:
            return json.load(f)
    cmd = [source, "--benchmark_format=json", "--benchmark_min_time=%g" % args.min_time]
    if args.filter:
        cmd.append("--benchmark_filter=" + args.filter)
    out = subprocess.run(cmd, check=True, stdout=subprocess.PIPE, universal_newlines=True).stdout
    return json.loads(out)


def per_case(data):
    """{(family/type, impl): benchmark}; the median when repetitions were run."""
    rows = OrderedDict()
    for b in data.get("benchmarks", []):
        if b.get("error_occurred"):
            print("skipped %s: %s" % (b["name"], b.get("error_message", "")), file=sys.stderr)
            continue
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        parts = b.get("run_name", b["name"]).split("/")
        if len(parts) < 3:
            continue
        key = ("/".join(parts[:2]), parts[2])
        if key not in rows or b.get("run_type") == "aggregate":
            rows[key] = b
    return rows


def ns(b):
    # A multi-threaded case's CPU time is the calling thread's alone: use the wall clock it asked for.
    wall = b.get("run_name", b["name"]).endswith("/real_time")
    return b["real_time" if wall else "cpu_time"] * NS[b.get("time_unit", "ns")]


def fmt_rate(v):
    for unit, scale in (("G", 1e9), ("M", 1e6), ("k", 1e3)):
        if v >= scale:
            return "%.2f%s/s" % (v / scale, unit)
    return "%.1f/s" % v


def fmt_time(t):
    for unit, scale in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if t >= scale:
            return "%.3f %s" % (t / scale, unit)
    return "%.1f ns" % t


def fmt_counter(fmt, b, name):
    v = b.get(name)
    if v is None:
        return "-"
    if fmt == "time":
        return fmt_time(v * 1e9)
    if fmt == "rate":
        return fmt_rate(v)
    return fmt % (int(round(v)) if fmt == "%d" else v)


def print_table(table):
    widths = [max(len(r[i]) for r in table) for i in range(len(table[0]))]
    for n, r in enumerate(table):
        cells = [c.ljust(w) if i < 3 else c.rjust(w) for i, (c, w) in enumerate(zip(r, widths))]
        print("  ".join(cells).rstrip())
        if n == 0:
            print("  ".join("-" * w for w in widths))


def report(title, rows):
    print("== %s" % title)
    ours_rows = [b for (case, impl), b in rows.items() if is_ours(impl)]
    counters = [c for c in COUNTERS if any(c[0] in b for b in rows.values())]
    gbs = any("bytes_per_second" in b for b in ours_rows)
    serial = any(impl == SERIAL for (_, impl) in rows)

    head = ["case", "ours", "peer", "time ours", "time peer", "time o/p"] + (["speed-up"] if serial else [])
    for name, _, ratio in counters:
        if ratio is None:
            head.append(name)
            continue
        head += [name + " ours", name + " peer"] + ([name + " o/p"] if ratio else [])
    if gbs:
        head.append("ours GB/s")
    table = [head]

    paired = set()
    for (case, mine), ours in rows.items():
        if not is_ours(mine):
            continue
        for (case2, impl), peer in rows.items():
            if case2 != case or is_ours(impl):
                continue
            paired.update([(case, mine), (case, impl)])
            r = [case, mine, impl, fmt_time(ns(ours)), fmt_time(ns(peer)), "%.2f" % (ns(ours) / ns(peer))]
            if serial:
                r.append("%.2fx" % (ns(peer) / ns(ours)) if impl == SERIAL else "-")
            for name, f, ratio in counters:
                if ratio is None:
                    r.append(fmt_counter(f, ours, name))
                    continue
                r += [fmt_counter(f, ours, name), fmt_counter(f, peer, name)]
                if ratio:
                    a, b = ours.get(name), peer.get(name)
                    r.append("%.2f" % (a / b) if a is not None and b else "-")
            if gbs:
                r.append("%.2f" % (ours.get("bytes_per_second", 0.0) / 1e9))
            table.append(r)
    if len(table) > 1:
        print_table(table)
    else:
        print("(no pairs)")

    alone = [(key, b) for key, b in rows.items() if key not in paired]
    if alone:
        print("without a counterpart:")
        for (case, impl), b in alone:
            rate = b.get("items_per_second")
            extra = "  %.2fM items/s" % (rate / 1e6) if rate else ""
            print("  %s/%s  %s%s" % (case, impl, fmt_time(ns(b)), extra))
    print()


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("sources", nargs="+", help="benchmark binaries, or JSON files they wrote")
    ap.add_argument("--min-time", type=float, default=0.2, help="seconds per case (default 0.2)")
    ap.add_argument("--filter", help="--benchmark_filter passed to the binaries")
    args = ap.parse_args()

    for source in args.sources:
        # One table per Family, so that each shows only the counters it carries.
        families = OrderedDict()
        for (case, impl), b in per_case(load(source, args)).items():
            families.setdefault(case.split("/")[0], OrderedDict())[(case, impl)] = b
        for family, rows in families.items():
            report("%s: %s" % (os.path.basename(source), family), rows)
    return 0


if __name__ == "__main__":
    sys.exit(main())
