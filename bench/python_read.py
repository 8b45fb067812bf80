#!/usr/bin/env python3
"""Times reads of the 10 MB ORDERS interchange of bench/edifact_read.cpp
(messages of 5 line items) through the Python package and through the edi
command, and reports peak memory.

    PYTHON bench/python_read.py [--edi EDI] [--mb 10] [--runs 3]

PYTHON is an interpreter that imports ediprot (a venv it is installed in);
EDI the edi command to compare with (default: build/plain/edi of the
repository, else `edi` on PATH).  Each way runs in a process of its own, so
that its peak memory is that process's, and the ways take turns, so that a
busy machine slows each alike; the least time of the runs is shown.

    ediprot.read              every message kept (the time of the call)
    ediprot.messages          one message at a time, each dropped
    ediprot.messages+to_dict  the same, each tree made plain data
    edi read -o FILE.tree     the command: the tree in memory, written as text

The first line of the result is the ratio the package is held to:
ediprot.read's time over edi read's.
"""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

REPO = Path(__file__).resolve().parents[1]


def message(ref: int, lines: int = 5) -> str:
    """One ORDERS message, as bench/edifact_read.cpp writes it."""
    r = str(ref)
    segs = [f"UNH+{r}+ORDERS:D:96A:UN", f"BGM+220+PO{r}+9", "DTM+137:20071123:102",
            "DTM+2:20071201:102", "FTX+AAI+++Deliver to gate 3?: ring twice",
            "NAD+BY+4012345000009::9",
            "NAD+SU+4098765000004::9++Supplier Name+Main Street 1+Springfield++12345+DE",
            "RFF+VA:DE123456789", "CTA+OC+:J. Smith", "COM+0049301234:TE", "CUX+2:EUR:9"]
    for i in range(1, lines + 1):
        segs += [f"LIN+{i}++40008621{10000 + i}:EN", f"PIA+1+A{i}:SA", f"IMD+F++:::Screw M{i}",
                 f"QTY+21:{i * 10}:PCE", "PRI+AAA:0.25"]
    segs += ["UNS+S", f"CNT+2:{lines}"]
    segs.append(f"UNT+{len(segs) + 1}+{r}")
    return "".join(s + "'" for s in segs)


def interchange(mb: float) -> bytes:
    """One interchange of ORDERS messages, `mb` megabytes or a little more."""
    parts = ["UNA:+.? 'UNB+UNOA:3+BUYERCORP:14+SUPPLIERCO:14+071123:1015+REF1'"]
    size, n = len(parts[0]), 0
    while size < mb * 1e6:
        n += 1
        parts.append(message(n))
        size += len(parts[-1])
    parts.append(f"UNZ+{n}+REF1'")
    return "".join(parts).encode()


# Runs in a process of its own: messages, seconds, peak kB.  The process
# ends without releasing what it read (os._exit), as a timed call does not
# include that either.
CHILD = """
import os, resource, sys, time, ediprot
t = time.perf_counter()
if sys.argv[2] == "ediprot.read":
    n = len(ediprot.read(sys.argv[1]))
elif sys.argv[2] == "ediprot.messages":
    n = sum(1 for _ in ediprot.messages(sys.argv[1]))
else:
    n = sum(1 for m in ediprot.messages(sys.argv[1]) if m.tree.to_dict())
print(n, time.perf_counter() - t, resource.getrusage(resource.RUSAGE_SELF).ru_maxrss, flush=True)
os._exit(0)
"""

WAYS = ("ediprot.read", "ediprot.messages", "ediprot.messages+to_dict", "edi read -o FILE.tree")


def run_python(path: str, way: str):
    out = subprocess.run([sys.executable, "-c", CHILD, path, way], check=True,
                         capture_output=True, text=True).stdout.split()
    return float(out[1]), int(out[2]) // 1024, int(out[0])


def run_edi(edi: str, path: str, tmp: str):
    t0 = time.perf_counter()
    child = subprocess.Popen([edi, "read", path, "-o", os.path.join(tmp, "out.tree")],
                             stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    if status != 0:
        sys.exit(f"{edi} read failed")
    return time.perf_counter() - t0, usage.ru_maxrss // 1024, None


def default_edi() -> str:
    plain = REPO / "build" / "plain" / "edi"
    return str(plain) if plain.is_file() else (shutil.which("edi") or "")


def main() -> None:
    ap = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    ap.add_argument("--edi", default=default_edi(), help="the edi command to compare with")
    ap.add_argument("--mb", type=float, default=10)
    ap.add_argument("--runs", type=int, default=3)
    args = ap.parse_args()
    if not args.edi:
        sys.exit("no edi command: build the project or name one with --edi")
    with tempfile.TemporaryDirectory() as tmp:
        path = os.path.join(tmp, "orders.edi")
        with open(path, "wb") as f:
            f.write(interchange(args.mb))
        runs = {way: [] for way in WAYS}
        for _ in range(args.runs):
            for way in WAYS:
                runs[way].append(run_edi(args.edi, path, tmp) if way.startswith("edi ")
                                 else run_python(path, way))
        best = {way: min(r, key=lambda x: x[0]) for way, r in runs.items()}
        ratio = best["ediprot.read"][0] / best["edi read -o FILE.tree"][0]
        print(f"{os.path.getsize(path) / 1e6:.1f} MB, {best['ediprot.read'][2]} messages, "
              f"best of {args.runs}; ediprot.read / edi read = {ratio:.2f}")
        for way in WAYS:
            t, mem, _ = best[way]
            print(f"{way:26} {t:6.2f} s   peak {mem:5} MB")


if __name__ == "__main__":
    main()
