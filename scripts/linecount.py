#!/usr/bin/env python3
"""Counts non-blank, non-comment lines of C and C++ in src/ and in tests/ + fuzz/,
and prints the test share (the aim is tests + fuzz <= 40% of src)."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SUFFIXES = {".c", ".cc", ".cpp", ".h", ".hpp"}


def code_lines(text):
    # Drop block comments (keeping their line breaks), then line comments.
    text = re.sub(r"/\*.*?\*/", lambda m: "\n" * m.group(0).count("\n"), text, flags=re.S)
    count = 0
    for line in text.splitlines():
        line = line.strip()
        if line and not line.startswith("//"):
            count += 1
    return count


def count(folders):
    total = 0
    for folder in folders:
        for path in (ROOT / folder).rglob("*"):
            if path.suffix in SUFFIXES and path.is_file():
                total += code_lines(path.read_text(errors="replace"))
    return total


def main():
    product = count(["src"])
    tests = count(["tests", "fuzz"])
    share = 100.0 * tests / product if product else 0.0
    print(f"src: {product}  tests+fuzz: {tests}  share: {share:.1f}%")
    return 0 if share <= 40.0 else 1


if __name__ == "__main__":
    sys.exit(main())
