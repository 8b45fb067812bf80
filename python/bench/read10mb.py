#!/usr/bin/env python3
"""Times a read of the 10 MB ORDERS interchange of bench/edifact_read.cpp
(messages of 5 line items) through ediprot and through the edi command.

    python3 python/bench/read10mb.py [EDI_PROGRAM] [--mb 10]

Each way runs in a process of its own (the peak memory is that process's);
the least of three runs is shown.
"""

import argparse
import os
import subprocess
import sys
import tempfile
import time


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
    parts = ["UNA:+.? 'UNB+UNOA:3+BUYERCORP:14+SUPPLIERCO:14+071123:1015+REF1'"]
    size, n = len(parts[0]), 0
    while size < mb * 1e6:
        n += 1
        parts.append(message(n))
        size += len(parts[-1])
    parts.append(f"UNZ+{n}+REF1'")
    return "".join(parts).encode()


CHILD = """
import resource, sys, time, ediprot
t = time.perf_counter()
if sys.argv[2] == "read":
    n = len(ediprot.read(sys.argv[1]))
elif sys.argv[2] == "messages":
    n = sum(1 for _ in ediprot.messages(sys.argv[1]))
else:
    n = sum(1 for m in ediprot.messages(sys.argv[1]) if m.tree.to_dict())
print(n, time.perf_counter() - t, resource.getrusage(resource.RUSAGE_SELF).ru_maxrss)
"""


def best(runs):
    return min(runs, key=lambda r: r[0])


def main() -> None:
    ap = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    ap.add_argument("edi", nargs="?", help="an edi program to compare with")
    ap.add_argument("--mb", type=float, default=10)
    args = ap.parse_args()
    with tempfile.TemporaryDirectory() as tmp:
        path = os.path.join(tmp, "orders.edi")
        with open(path, "wb") as f:
            f.write(interchange(args.mb))
        print(f"{os.path.getsize(path) / 1e6:.1f} MB")
        for way in ("read", "messages", "messages+to_dict"):
            runs = []
            for _ in range(3):
                out = subprocess.run([sys.executable, "-c", CHILD, path, way], check=True,
                                     capture_output=True, text=True).stdout.split()
                runs.append((float(out[1]), int(out[2]) // 1024, int(out[0])))
            t, mem, n = best(runs)
            print(f"ediprot.{way}: {n} messages, {t:.2f} s, peak {mem} MB")
        if args.edi:
            runs = []
            for _ in range(3):
                t0 = time.perf_counter()
                child = subprocess.Popen([args.edi, "read", path, "-o",
                                          os.path.join(tmp, "out.tree")],
                                         stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                _, status, usage = os.wait4(child.pid, 0)
                if status != 0:
                    sys.exit(f"{args.edi} read failed")
                runs.append((time.perf_counter() - t0, usage.ru_maxrss // 1024))
            t, mem = best(runs)
            print(f"edi read -o FILE.tree: {t:.2f} s, peak {mem} MB")


if __name__ == "__main__":
    main()
