#!/usr/bin/env python3
"""Times `edi read --format ndjson` on a generated ORDERS interchange (the
messages of bench/python_read.py) and reports its peak memory, beside a
flat tokenizer that cuts the same bytes into segments, elements and
components and does nothing else, in the same run.

    python3 bench/ndjson_read.py [--edi EDI] [--mb 10] [--runs 3]

The least time of the runs is shown; every NDJSON line is checked to be a
JSON document and their number to be the interchange's message count.
"""

import argparse
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


def run_edi(edi: str, path: str, out: str):
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
    t = time.perf_counter()
    subprocess.run([edi, "read", path, "--format", "ndjson", "-o", out], check=True,
                   stderr=subprocess.DEVNULL)
    seconds = time.perf_counter() - t
    peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
    return seconds, max(peak, before)


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--edi", default=default_edi())
    ap.add_argument("--mb", type=float, default=10)
    ap.add_argument("--runs", type=int, default=3)
    args = ap.parse_args()
    data = interchange(args.mb)
    with tempfile.TemporaryDirectory() as tmp:
        path, out = os.path.join(tmp, "in.edi"), os.path.join(tmp, "out.ndjson")
        with open(path, "wb") as f:
            f.write(data)
        best, peak = min(run_edi(args.edi, path, out) for _ in range(args.runs))
        with open(out, encoding="utf-8") as f:
            lines = [json.loads(line) for line in f]
        assert len(lines) == data.count(b"UNH+"), "a message is missing"
        t = time.perf_counter()
        for _ in range(args.runs):
            flat(data)
        tokenizer = (time.perf_counter() - t) / args.runs
    mb = len(data) / 1e6
    print(f"input                  {mb:.1f} MB, {len(lines)} messages")
    print(f"edi read --format ndjson {best:.2f} s  {mb / best:.2f} MB/s  "
          f"peak {peak / 1024:.0f} MB")
    print(f"flat tokenizer           {tokenizer:.2f} s  {mb / tokenizer:.2f} MB/s")


if __name__ == "__main__":
    main()
