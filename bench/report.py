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

With --markdown FILE the same tables are also written as Markdown, headed by
the machine (CPU, cores, OS, compiler), the date, the load before and after the
run, and the installed versions of the peer packages; `make bench` writes
BENCHMARKS.md this way. --json-dir DIR keeps each binary's raw results.
"""
import argparse
import datetime
import json
import os
import platform
import re
import shutil
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


def build_table(rows):
    """The rows of one Family's table (header first) and the cases left without a counterpart."""
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
    alone = [(key, b) for key, b in rows.items() if key not in paired]
    return table, alone


def describe_alone(case, impl, b):
    rate = b.get("items_per_second")
    extra = "  %.2fM items/s" % (rate / 1e6) if rate else ""
    return "%s/%s  %s%s" % (case, impl, fmt_time(ns(b)), extra)


def report(title, table, alone):
    print("== %s" % title)
    if len(table) > 1:
        print_table(table)
    else:
        print("(no pairs)")
    if alone:
        print("without a counterpart:")
        for (case, impl), b in alone:
            print("  " + describe_alone(case, impl, b))
    print()


# ---- Markdown ----------------------------------------------------------------

PEER_PACKAGES = ["lib2geom-dev", "libagg-dev", "libcairo2-dev", "libeigen3-dev", "libtbb-dev",
                 "libboost-dev", "libbenchmark-dev"]


def command(*cmd):
    """The command's stripped output, or None when it cannot run or fails."""
    try:
        out = subprocess.run(cmd, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                             universal_newlines=True).stdout
    except (OSError, subprocess.CalledProcessError):
        return None
    return out.strip()


def uptime():
    return command("uptime") or "load average: %.2f, %.2f, %.2f" % os.getloadavg()


def cmake_cache(source):
    """The CMakeCache.txt entries of the build tree that holds source, with its
    directory as "build_dir"; empty when there is none."""
    d = os.path.dirname(os.path.abspath(source))
    while True:
        path = os.path.join(d, "CMakeCache.txt")
        if os.path.isfile(path):
            entries = {"build_dir": d}
            with open(path) as f:
                for line in f:
                    m = re.match(r"^([A-Za-z_0-9]+):[A-Z]+=(.*)$", line.rstrip("\n"))
                    if m:
                        entries[m.group(1)] = m.group(2)
            return entries
        parent = os.path.dirname(d)
        if parent == d:
            return {}
        d = parent


def library_flags(cache):
    """The library's compile flags as the build used them (Makefile generators),
    warnings left out; None when they cannot be read."""
    path = os.path.join(cache.get("build_dir", ""), "CMakeFiles", "qormath_objects.dir", "flags.make")
    try:
        with open(path) as f:
            for line in f:
                if line.startswith("CXX_FLAGS = "):
                    return " ".join(w for w in line[12:].split() if not w.startswith("-W"))
    except OSError:
        pass
    return None


def machine(sources):
    """(label, value) rows describing where and how the benchmarks were built and run."""
    lscpu = {}
    for line in (command("lscpu") or "").splitlines():
        key, _, value = line.partition(":")
        lscpu[key.strip()] = value.strip()
    cpu = lscpu.get("Model name") or platform.processor() or "unknown"
    if lscpu.get("Hypervisor vendor"):
        cpu += " (virtual machine, %s)" % lscpu["Hypervisor vendor"]
    cores = "%s logical CPUs" % (lscpu.get("CPU(s)") or os.cpu_count())
    if lscpu.get("Core(s) per socket"):
        cores += " (sockets: %s, cores per socket: %s, threads per core: %s)" % (
            lscpu.get("Socket(s)", "?"), lscpu["Core(s) per socket"], lscpu.get("Thread(s) per core", "?"))
    osname = platform.system()
    try:
        with open("/etc/os-release") as f:
            osname = dict(l.rstrip("\n").split("=", 1) for l in f if "=" in l).get("PRETTY_NAME", osname).strip('"')
    except OSError:
        pass
    osname += ", kernel %s" % platform.release()

    cache = cmake_cache(sources[0])
    cxx = cache.get("CMAKE_CXX_COMPILER") or shutil.which("c++") or "c++"
    compiler = (command(cxx, "--version") or cxx).splitlines()[0]
    build_type = cache.get("CMAKE_BUILD_TYPE", "")
    if build_type:
        flags = library_flags(cache) or " ".join(
            f for f in (cache.get("CMAKE_CXX_FLAGS", ""), cache.get("CMAKE_CXX_FLAGS_" + build_type.upper(), "")) if f)
        compiler += "; %s build, library compiled with `%s`" % (build_type, flags or "no extra flags")
    return [("CPU", cpu), ("Cores", cores), ("OS", osname), ("Compiler", compiler)]


def peer_versions():
    rows = []
    for pkg in PEER_PACKAGES:
        v = command("dpkg-query", "-W", "-f=${Version}", pkg)
        rows.append((pkg, v if v else "not installed (its cases are left out)"))
    return rows


def md_table(table, left=3):
    def cell(c):
        return c.replace("|", "\\|")
    lines = ["| " + " | ".join(cell(c) for c in table[0]) + " |",
             "|" + "|".join(":--" if i < left else "--:" for i in range(len(table[0]))) + "|"]
    lines += ["| " + " | ".join(cell(c) for c in r) + " |" for r in table[1:]]
    return lines


MD_HEAD = """# Benchmarks

QorMath's bulk paths timed against peer libraries on the same data in the same
run. Written by `bench/report.py --markdown`: run `make bench` to measure again
and rewrite this file. What each case measures, the data sets and each peer's
settings are described at the top of `bench/<binary>.cpp`.

**time o/p** is our time divided by the peer's: below 1 QorMath is faster.
Times are CPU time for one pass over the case's data set (wall-clock time for
the multi-threaded vector field calls). A peer named *Serial* is our own call on
one thread, and *speed-up* is its time over ours; implementations named
`QorMath_…` are a second method of ours. Counters, defined in each benchmark's
source: `lines` and `pieces` per curve (with their ratio o/p); `max_dev`,
`over_d`, `over_tol`, `unmet`: how far the output strays from the true curve and
how many curves exceed the tolerance; `roots`, `found`, `ref`, `missed`,
`extra`, `end_miss`, `other_miss`, `agree`, `pair`: agreement with a
high-precision reference; `max_err`, `mean_err`, `med_err`: error against that
reference; `tol`: the tolerance a peer was given to match our accuracy; `sq_*`:
squared distances of a fit; `per_item`: time per curve, pair or line;
`*_per_s`: rates.
"""


def write_markdown(path, sections, sources, args, load_before, load_after, when):
    out = [MD_HEAD.rstrip("\n"), "", "## Machine and run", "", "| | |", "|:--|:--|"]
    out += ["| %s | %s |" % row for row in machine(sources)]
    out += ["| Date | %s |" % when,
            "| Load before | `%s` |" % load_before,
            "| Load after | `%s` |" % load_after]
    if not all(s.endswith(".json") for s in sources):
        out.append("| Run | `--benchmark_min_time=%g`%s |" % (
            args.min_time, ", `--benchmark_filter=%s`" % args.filter if args.filter else ""))
    out += ["", "Other processes may share the machine, as the load lines show: a load above its",
            "core count makes the times, and to a lesser degree the ratios, noisier.",
            "", "## Peers (Debian packages)", "", "| Package | Version |", "|:--|:--|"]
    out += ["| %s | %s |" % row for row in peer_versions()]
    for title, table, alone in sections:
        out += ["", "## %s" % title, ""]
        out += md_table(table) if len(table) > 1 else ["(no pairs)"]
        if alone:
            out += ["", "Without a counterpart:", ""]
            out += ["- `%s`" % describe_alone(case, impl, b) for (case, impl), b in alone]
    with open(path, "w") as f:
        f.write("\n".join(out) + "\n")


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("sources", nargs="+", help="benchmark binaries, or JSON files they wrote")
    ap.add_argument("--min-time", type=float, default=0.2, help="seconds per case (default 0.2)")
    ap.add_argument("--filter", help="--benchmark_filter passed to the binaries")
    ap.add_argument("--markdown", metavar="FILE", help="also write the tables as Markdown to FILE")
    ap.add_argument("--json-dir", metavar="DIR", help="keep each binary's JSON results in DIR")
    args = ap.parse_args()

    load_before = uptime()
    when = datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M UTC")
    sections = []
    for source in args.sources:
        data = load(source, args)
        name = os.path.splitext(os.path.basename(source))[0]
        if args.json_dir and not source.endswith(".json"):
            os.makedirs(args.json_dir, exist_ok=True)
            with open(os.path.join(args.json_dir, name + ".json"), "w") as f:
                json.dump(data, f, indent=1)
        # One table per Family, so that each shows only the counters it carries.
        families = OrderedDict()
        for (case, impl), b in per_case(data).items():
            families.setdefault(case.split("/")[0], OrderedDict())[(case, impl)] = b
        for family, rows in families.items():
            table, alone = build_table(rows)
            report("%s: %s" % (os.path.basename(source), family), table, alone)
            sections.append(("%s: %s" % (name, family), table, alone))
    if args.markdown:
        if all(s.endswith(".json") for s in args.sources):
            # Results read back: the run's own date and load, where the JSON has them.
            ctx = load(args.sources[0], args).get("context", {})
            when = ctx.get("date", when)
            load_before = load_after = "load average: %s (from the results)" % ", ".join(
                "%.2f" % v for v in ctx.get("load_avg", [])) if ctx.get("load_avg") else "unknown"
        else:
            load_after = uptime()
        write_markdown(args.markdown, sections, args.sources, args, load_before, load_after, when)
        print("wrote %s" % args.markdown)
    return 0


if __name__ == "__main__":
    sys.exit(main())
