#!/usr/bin/env python3
"""Side-by-side ratios for the QorMath benchmarks.

Benchmarks are named Family/type/Impl; every case whose Impl is QorMath is set
against the other Impls of the same Family/type. A ratio ours/peer below 1 means
QorMath is faster than that peer.

  report.py build/bench/bench_matrix [--min-time 0.2] [--filter REGEX]
  report.py results.json          (the output of --benchmark_format=json)
"""
import argparse
import json
import subprocess
import sys
from collections import OrderedDict

OURS = "QorMath"


def load(args):
    if args.source.endswith(".json"):
        with open(args.source) as f:
            return json.load(f)
    cmd = [args.source, "--benchmark_format=json", "--benchmark_min_time=%g" % args.min_time]
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


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("source", help="benchmark binary, or a JSON file it wrote")
    ap.add_argument("--min-time", type=float, default=0.2, help="seconds per case (default 0.2)")
    ap.add_argument("--filter", help="--benchmark_filter passed to the binary")
    args = ap.parse_args()

    rows = per_case(load(args))
    fmt = "%-30s %-10s %12s %12s %10s %13s"
    print(fmt % ("case", "peer", "ours (ms)", "peer (ms)", "ours/peer", "ours GB/s"))
    missing = 0
    for (case, impl), peer in rows.items():
        if impl == OURS:
            continue
        ours = rows.get((case, OURS))
        if ours is None:
            missing += 1
            continue
        scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}
        t_ours = ours["cpu_time"] * scale[ours.get("time_unit", "ns")]
        t_peer = peer["cpu_time"] * scale[peer.get("time_unit", "ns")]
        gbs = ours.get("bytes_per_second", 0.0) / 1e9
        print(fmt % (case, impl, "%.3f" % t_ours, "%.3f" % t_peer, "%.2f" % (t_ours / t_peer), "%.2f" % gbs))
    if missing:
        print("%d peer case(s) had no %s counterpart" % (missing, OURS), file=sys.stderr)
    return 0


if __name__ == "__main__":
    sys.exit(main())
