#!/usr/bin/env python3
"""Times `edi write` of one very large ORDERS message given as the compact
JSON that `edi read` writes by default, as a user runs both: the message
(N line items, each LIN, PIA, IMD, QTY and PRI, as bench/python_read.py
writes them) is read with `edi read FILE -o FILE.json` (the configuration
generated from the UN directory its UNH names) and written back with
`edi write FILE.json -o OUT` (the outbound configuration generated the
same way; sender, recipient, date and control reference from the JSON's
envelope).  The write must give back the interchange byte for byte, and
the benchmark checks that it does.

    python3 bench/readwrite_large.py [--edi EDI] [--items 100000] [--runs 3]

Each command runs in a process of its own (started from a small Python
process of its own, whose resource.getrusage(RUSAGE_CHILDREN) ru_maxrss
is then the command's peak alone).  The write's time is the least of
--runs runs (the first run after other work on the machine pays for the
system's first touch of fresh memory); the read is timed once and shown
for information.

Measured on the 2-core build machine (another build running at times),
RelWithDebInfo with mimalloc, 100,000 line items (9.8 MB of EDIFACT,
87.7 MB of compact JSON):

    edi write, before:  4.87 s   2.00 MB/s  peak 519 MB
    edi write, now:     0.77 s  12.65 MB/s  peak 484 MB  (0.82 s, 11.97 MB/s
                                                          in a busier minute)
    edi read:           11.6 to 13.0 s, peak 2,622 MB (not changed here)

docs/edi-command.md ("One very large message") says what took the time
and what was changed.
"""

import argparse
import os
import subprocess
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from python_read import default_edi, message  # noqa: E402

# Runs one command and prints its seconds and its peak resident memory in
# kB: the only child of this process, so RUSAGE_CHILDREN is its own.
CHILD = """
import resource, subprocess, sys, time
t = time.perf_counter()
rc = subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL).returncode
seconds = time.perf_counter() - t
print(rc, seconds, resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)
"""


def interchange(items: int) -> bytes:
    """One interchange holding one ORDERS message of `items` line items."""
    head = "UNA:+.? 'UNB+UNOA:3+BUYERCORP:14+SUPPLIERCO:14+071123:1015+REF1'"
    return (head + message(1, items) + "UNZ+1+REF1'").encode()


def measured(cmd):
    """Seconds and peak MB of one run of `cmd`; exits when it fails."""
    out = subprocess.run([sys.executable, "-c", CHILD, *cmd], check=True,
                         capture_output=True, text=True).stdout.split()
    if out[0] != "0":
        sys.exit(f"{' '.join(cmd)} failed (status {out[0]})")
    return float(out[1]), int(out[2]) / 1024


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    ap.add_argument("--edi", default=default_edi(), help="the edi command")
    ap.add_argument("--items", type=int, default=100000, help="line items of the message")
    ap.add_argument("--runs", type=int, default=3, help="runs of the write; the least time counts")
    args = ap.parse_args()
    if not args.edi:
        sys.exit("no edi command: build the project or name one with --edi")
    data = interchange(args.items)
    mb = len(data) / 1e6
    with tempfile.TemporaryDirectory() as tmp:
        edi_in, json_path, edi_out = (os.path.join(tmp, n) for n in ("in.edi", "in.json", "out.edi"))
        with open(edi_in, "wb") as f:
            f.write(data)
        read_s, read_mb = measured([args.edi, "read", edi_in, "-o", json_path])
        json_mb = os.path.getsize(json_path) / 1e6
        best = None
        for _ in range(args.runs):
            run = measured([args.edi, "write", json_path, "-o", edi_out])
            best = run if best is None or run[0] < best[0] else best
        with open(edi_out, "rb") as f:
            same = f.read() == data
    write_s, write_mb = best
    print(f"input       one ORDERS message, {args.items} line items, {mb:.1f} MB; "
          f"compact JSON {json_mb:.1f} MB")
    print(f"edi read    {read_s:6.2f} s  {mb / read_s:6.2f} MB/s  peak {read_mb:5.0f} MB  (once)")
    print(f"edi write   {write_s:6.2f} s  {mb / write_s:6.2f} MB/s  peak {write_mb:5.0f} MB  "
          f"(least of {args.runs})")
    print(f"written     {'the same bytes as the input' if same else 'DIFFERS from the input'}")
    if not same:
        sys.exit(1)


if __name__ == "__main__":
    main()
