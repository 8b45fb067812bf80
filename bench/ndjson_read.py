#!/usr/bin/env python3
"""Times `edi read --format ndjson` on a generated ORDERS interchange (the
messages of bench/python_read.py) and reports its peak memory, beside a
flat tokenizer that cuts the same bytes into segments, elements and
components and does nothing else, in the same run.

    python3 bench/ndjson_read.py [--edi EDI] [--mb 10] [--runs 3] [--jobs 1,2]
                                 [--module BENCH]

Each worker count of --jobs is run (`-j N`; 1 is the plain read) and must
give the same output, byte for byte; its speed-up over the first is shown.
The least time of the runs is shown; every NDJSON line is checked to be a
JSON document and their number to be the interchange's message count, one
line at a time, so that the check holds no more than a line.  With
--module (the bench_edifact_read program of a build; found beside EDI by
default) the module alone is timed as well, reading messages of the same
kind whole into one tree (at most 10 MB of them: its tree is the size of
the input many times over).
"""

import argparse
import hashlib
import json
import os
import resource
import subprocess
import sys
import tempfile
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from python_read import default_edi, interchange  # noqa: E402


def flat(data: bytes) -> int:
    """Segments, elements and components as lists: what any reader does first."""
    n = 0
    for seg in data.split(b"'"):
        for el in seg.split(b"+"):
            n += len(el.split(b":"))
    return n


def peak_of_children() -> int:
    return resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss


def run_edi(edi: str, path: str, out: str, jobs: int):
    """Seconds and the peak resident size (KB) of one read.  The peak of
    the children so far is the largest of any child: a run is measured in
    a child of its own, so that an earlier, larger run does not hide it."""
    cmd = [edi, "read", path, "--format", "ndjson", "-o", out]
    if jobs > 1:
        cmd += ["-j", str(jobs)]
    code = (
        "import resource, subprocess, sys, time\n"
        "t = time.perf_counter()\n"
        "subprocess.run(sys.argv[1:], check=True, stderr=subprocess.DEVNULL)\n"
        "s = time.perf_counter() - t\n"
        "print(s, resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)\n")
    got = subprocess.run([sys.executable, "-c", code] + cmd, check=True,
                         capture_output=True, text=True).stdout.split()
    return float(got[0]), int(got[1])


def check(out: str, messages: int) -> str:
    """The output's digest, after every line is read as JSON."""
    digest = hashlib.sha256()
    lines = 0
    with open(out, "rb") as f:
        for line in f:
            json.loads(line)
            digest.update(line)
            lines += 1
    assert lines == messages, f"{lines} lines for {messages} messages"
    return digest.hexdigest()


def module_alone(bench: str, mb: float) -> None:
    size = min(mb, 10.0)
    got = subprocess.run([bench, str(size)], check=True, capture_output=True,
                         text=True).stdout.splitlines()
    for line in got:
        if line.startswith(("file ", "edifactread", "read and free", "per node")):
            print("module alone  ", line)


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--edi", default=default_edi())
    ap.add_argument("--mb", type=float, default=10)
    ap.add_argument("--runs", type=int, default=3)
    ap.add_argument("--jobs", default="1", help="worker counts to run, e.g. 1,2")
    ap.add_argument("--module", default=None,
                    help="bench_edifact_read to time the module alone ('' for none)")
    args = ap.parse_args()
    jobs = [int(j) for j in args.jobs.split(",")]
    data = interchange(args.mb)
    messages = data.count(b"UNH+")
    mb = len(data) / 1e6
    print(f"input                    {mb:.1f} MB, {messages} messages")
    with tempfile.TemporaryDirectory() as tmp:
        path = os.path.join(tmp, "in.edi")
        with open(path, "wb") as f:
            f.write(data)
        first, digest = None, None
        for j in jobs:
            out = os.path.join(tmp, f"out{j}.ndjson")
            best, peak = min(run_edi(args.edi, path, out, j) for _ in range(args.runs))
            d = check(out, messages)
            assert digest is None or d == digest, f"-j {j} gives another output than -j {jobs[0]}"
            digest = d
            first = first or best
            print(f"edi read -j {j:<2}           {best:.2f} s  {mb / best:.2f} MB/s  "
                  f"peak {peak / 1024:.0f} MB  x{first / best:.2f}")
            os.remove(out)
    t = time.perf_counter()
    for _ in range(args.runs):
        flat(data)
    tokenizer = (time.perf_counter() - t) / args.runs
    print(f"flat tokenizer           {tokenizer:.2f} s  {mb / tokenizer:.2f} MB/s")
    bench = args.module
    if bench is None:
        beside = Path(args.edi).resolve().parent / "bench" / "bench_edifact_read"
        bench = str(beside) if beside.is_file() else ""
    if bench:
        module_alone(bench, args.mb)


if __name__ == "__main__":
    main()
