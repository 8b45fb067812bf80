"""Shared paths and helpers of the package's tests."""

import os
from pathlib import Path

import pytest

REPO = Path(__file__).resolve().parents[2]
CORPUS = REPO / "tests" / "data" / "corpus" / "edifact"
SAMPLES = REPO / "samples"
CORPUS_FILES = sorted(p for p in CORPUS.iterdir() if p.is_file() and not p.name.startswith("."))


def unh_count(data: bytes) -> int:
    """UNH segments of an interchange, counted with its own terminator and
    release character."""
    s = data[3:] if data.startswith(b"\xef\xbb\xbf") else data
    s = s.lstrip()
    term, rel = ord("'"), ord("?")
    if s.startswith(b"UNA") and len(s) >= 9:
        rel = s[6] if s[6] != ord(" ") else -1
        term = s[8]
        s = s[9:]
    count, seg, i = 0, bytearray(), 0
    while i < len(s):
        c = s[i]
        if c == rel:
            seg += s[i:i + 2]
            i += 2
            continue
        if c == term:
            tag = bytes(seg).strip()
            if tag[:3] == b"UNH" and not tag[3:4].isalnum():
                count += 1
            seg = bytearray()
        else:
            seg.append(c)
        i += 1
    return count


@pytest.fixture(scope="session")
def edi_program() -> Path:
    """The edi command of the plain build ($EDIPROT_EDI names another)."""
    path = Path(os.environ.get("EDIPROT_EDI", REPO / "build" / "plain" / "edi"))
    if not path.is_file():
        if "EDIPROT_EDI" in os.environ:
            pytest.fail(f"$EDIPROT_EDI names no file: {path}")
        pytest.skip(f"no edi command at {path} (build the project first)")
    return path
