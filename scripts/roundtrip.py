#!/usr/bin/env python3
"""Reads each EDIFACT file of a folder with `edi read`, writes the tree back
with `edi write` (the envelope it came in, no option) and compares the
segments with the file's: byte for byte once transport is set aside (a
byte-order mark, line ends, blanks and tabs between segments).

usage: scripts/roundtrip.py [EDI] [FOLDER]
  EDI     the edi command (default build/plain/edi)
  FOLDER  the interchanges (default tests/data/corpus/edifact)

Prints one line per file (same, differs at ..., not read, not written: the
reason) and the counts; docs/roundtrip.md explains each file that differs.
"""
import os
import subprocess
import sys
import tempfile


def segments(data):
    """The interchange without transport bytes."""
    if data.startswith(b"\xef\xbb\xbf"):
        data = data[3:]
    term, rel = b"'", b"?"
    if data.startswith(b"UNA") and len(data) >= 9:
        term, rel = data[8:9], data[6:7]
    if term not in (b"\n", b"\r"):
        data = data.replace(b"\r", b"").replace(b"\n", b"")
    out = bytearray()
    after = True
    for i in range(len(data)):
        c = data[i:i + 1]
        if after and c in (b" ", b"\t"):
            continue
        after = c == term and not (i > 0 and data[i - 1:i] == rel)
        out += c
    return bytes(out)


def main():
    edi = sys.argv[1] if len(sys.argv) > 1 else "build/plain/edi"
    folder = sys.argv[2] if len(sys.argv) > 2 else "tests/data/corpus/edifact"
    counts = {"same": 0, "differs": 0, "not read": 0, "not written": 0}
    with tempfile.TemporaryDirectory() as tmp:
        tree, out = os.path.join(tmp, "t.json"), os.path.join(tmp, "out.edi")
        for name in sorted(os.listdir(folder)):
            path = os.path.join(folder, name)
            read = subprocess.run([edi, "read", path, "--format", "json", "-o", tree],
                                  capture_output=True)
            if read.returncode != 0:
                counts["not read"] += 1
                print(f"not read     {name}")
                continue
            if os.path.exists(out):
                os.remove(out)
            write = subprocess.run([edi, "write", tree, "-o", out], capture_output=True)
            if write.returncode != 0:
                counts["not written"] += 1
                why = write.stderr.decode("utf-8", "replace").strip().splitlines()
                print(f"not written  {name}: {why[-1] if why else ''}"[:200])
                continue
            with open(path, "rb") as f:
                a = segments(f.read())
            with open(out, "rb") as f:
                b = segments(f.read())
            if a == b:
                counts["same"] += 1
                print(f"same         {name}")
                continue
            counts["differs"] += 1
            at = next((i for i in range(min(len(a), len(b))) if a[i] != b[i]), min(len(a), len(b)))
            print(f"differs      {name} at byte {at}: {a[max(0, at - 30):at + 30]!r} "
                  f"-> {b[max(0, at - 30):at + 30]!r}")
    print(", ".join(f"{k} {v}" for k, v in counts.items()))


if __name__ == "__main__":
    main()
