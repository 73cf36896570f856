#!/usr/bin/env python3
"""Turns the results of the benches into a report and a chart.

Usage: report.py RESULTS_DIR (*.json as Google Benchmark writes them); jobs.json beside this script
says which of them belong together. Writes report.md and report.svg into RESULTS_DIR. Exit status 1:
a job has not been run.
"""

import json
import math
import os
import pathlib
import platform
import subprocess
import sys
from xml.sax.saxutils import escape

NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
PEERS = ["libdcmtk17", "libgdcm3.0", "libopencv-core406", "libjpeg62-turbo", "libopenjp2-7"]


def medians(folder):
    """Name of a job: its median in nanoseconds of CPU time (wall time for whole processes)."""
    times = {}
    for path in sorted(folder.glob("*.json")):
        for run in json.loads(path.read_text())["benchmarks"]:
            if run.get("aggregate_name") == "median" and not run.get("error_occurred"):
                times[run["run_name"]] = run["cpu_time"] * NANOSECONDS[run["time_unit"]]
    return times


def shown(nanoseconds):
    if nanoseconds is None:
        return "-"
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def measure(job, times):
    ours, peer = times.get(job["ours"]), times.get(job.get("peer"))
    ratio = peer / ours if ours and peer else None
    if "at_most_us" in job:
        met = None if ours is None else ours <= job["at_most_us"] * 1e3
        target = f"at most {job['at_most_us']} us"
    elif "target" in job:
        met = None if ratio is None else ratio >= job["target"]
        target = f"{job['target']:g} x"
    else:
        met, target = None, ""
    floor = times.get(job.get("floor"))
    is_run = ours is not None and ("peer" not in job or peer is not None)
    return {**job, "time": ours, "peer_time": peer, "ratio": ratio, "met": met,
            "target_text": target, "floor_time": floor, "is_run": is_run}


def machine():
    cpu = platform.processor() or platform.machine()
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            cpu = line.split(":", 1)[1].strip()
            break
    versions = subprocess.run(["dpkg-query", "-W", "-f=${Package} ${Version}, ", *PEERS],
                              capture_output=True, text=True, check=False).stdout.rstrip(", ")
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True,
                              check=False).stdout.splitlines()[0]
    return f"{cpu}, {os.cpu_count()} cores; {compiler}; {versions}."


def job_rows(rows):
    lines = ["| Job | Ours | Peer | Its time | Ours over peer | Target | Met | Limit |",
             "|---|---|---|---|---|---|---|---|"]
    for row in rows:
        ratio = f"{row['ratio']:.2f} x" if row["ratio"] else "-"
        met = {True: "yes", False: "**no**", None: ""}[row["met"]] if row["is_run"] else "**not run**"
        limit = f"{row['floor_name']} {shown(row['floor_time'])}" if row["floor_time"] else ""
        lines.append(f"| {row['job']} | {shown(row['time'])} | {row.get('peer_name', '')} | "
                     f"{shown(row['peer_time'])} | {ratio} | {row['target_text']} | {met} | {limit} |")
    return lines


def growth_rows(series, times):
    lines = ["| What grows | " + " | ".join(["smallest", "", "", "largest"]) + " |", "|---|---|---|---|---|"]
    for one in series:
        cells = [f"{size}: {shown(times.get(one['bench'] + '/' + str(size)))}" for size in one["sizes"]]
        lines.append(f"| {one['what']} | " + " | ".join(cells + [""] * (4 - len(cells))) + " |")
    return lines


def chart(rows):
    """Horizontal bars on a logarithmic scale: how many times as fast as the peer; a tick where the
    target lies."""
    rows = [row for row in rows if row["ratio"]]
    left, width, line = 470, 430, 20
    low, high = math.log10(0.25), math.log10(250)

    def x(ratio):
        place = (math.log10(min(max(ratio, 0.25), 250)) - low) / (high - low)
        return left + place * width

    height = 50 + line * len(rows)
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="1000" height="{height}" '
             'font-family="DejaVu Sans, sans-serif" font-size="11">',
             f'<rect width="1000" height="{height}" fill="white"/>']
    for mark in (0.5, 1, 2, 5, 10, 20, 50, 100, 200):
        parts.append(f'<line x1="{x(mark):.1f}" x2="{x(mark):.1f}" y1="24" y2="{height - 12}" '
                     f'stroke="{"#444" if mark == 1 else "#ddd"}"/>'
                     f'<text x="{x(mark):.1f}" y="16" text-anchor="middle">{mark:g} x</text>')
    for index, row in enumerate(rows):
        y = 30 + line * index
        start, end = sorted((x(1), x(row["ratio"])))
        colour = "#c0504d" if row["met"] is False else "#4f81bd"
        parts.append(f'<text x="{left - 8}" y="{y + 11}" text-anchor="end">{escape(row["job"])}</text>'
                     f'<rect x="{start:.1f}" y="{y}" width="{max(end - start, 1):.1f}" height="13" '
                     f'fill="{colour}"/>'
                     f'<text x="{left + width + 8}" y="{y + 11}">{row["ratio"]:.2f} x</text>')
        if "target" in row:
            at = x(row["target"])
            parts.append(f'<line x1="{at:.1f}" x2="{at:.1f}" y1="{y - 2}" y2="{y + 15}" '
                         'stroke="black" stroke-width="2"/>')
    return "\n".join(parts + ["</svg>"]) + "\n"


def main():
    folder = pathlib.Path(sys.argv[1])
    plan = json.loads((pathlib.Path(__file__).parent / "jobs.json").read_text())
    times = medians(folder)
    rows = [measure(job, times) for job in plan["jobs"]]
    judged = [row for row in rows if row["met"] is not None]
    text = ["# Ours beside its peers", "", machine(), "",
            "Medians of nine interleaved runs, one thread; CPU time in process, wall time for whole "
            "processes. A ratio above 1 is faster than the peer.", "",
            *job_rows(rows), "",
            f"Targets met: {sum(row['met'] for row in judged)} of {len(judged)}.", "",
            "## How cost grows", "", *growth_rows(plan["growth"], times), ""]
    (folder / "report.md").write_text("\n".join(text))
    (folder / "report.svg").write_text(chart(rows))
    print("\n".join(text))
    missing = [row["job"] for row in rows if not row["is_run"]]
    for job in missing:
        print(f"not run: {job}", file=sys.stderr)
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
