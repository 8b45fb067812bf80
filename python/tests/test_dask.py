"""examples/dask_convert.py over the corpus: every file accounted for, and
the same files failed as `edi read -j 2` reports."""

import json
import re
import subprocess
import sys

import pytest

from conftest import CORPUS, CORPUS_FILES, REPO, unh_count

pytest.importorskip("distributed")


def test_dask_convert_matches_edi(tmp_path, edi_program):
    out = tmp_path / "out"
    run = subprocess.run([sys.executable, str(REPO / "examples" / "dask_convert.py"), str(CORPUS),
                          str(out), "--workers", "2"], capture_output=True, text=True, timeout=300)
    assert run.returncode == 1, run.stderr  # the corpus holds broken files
    failures = {}
    for line in (out / "failures.ndjson").read_text().splitlines():
        row = json.loads(line)
        assert row["failed"] and row["file"] not in failures
        failures[row["file"]] = row["failed"]
    for path in map(str, CORPUS_FILES):
        converted = out / (path.rsplit("/", 1)[1] + ".ndjson")
        assert converted.exists() != (path in failures), path
        if converted.exists():
            rows = [json.loads(r) for r in converted.read_text().splitlines()]
            assert [r["number"] for r in rows] == list(range(1, len(rows) + 1))
            assert len(rows) == unh_count(open(path, "rb").read()) and rows[0]["file"] == path
            assert all(r["tree"]["UNH"] and r["type"] == rows_type(r) for r in rows)
    assert not list(out.glob("*.part"))

    (tmp_path / "edi").mkdir()
    edi = subprocess.run([str(edi_program), "read", "-j", "2", *map(str, CORPUS_FILES),
                          "-o", str(tmp_path / "edi")], capture_output=True, text=True,
                         timeout=300)
    edi_failed = set(re.findall(r"^(.*): failed: ", edi.stderr, re.M))
    assert edi_failed and set(failures) == edi_failed
    assert f"{len(CORPUS_FILES)} files: {len(CORPUS_FILES) - len(failures)} read" in run.stderr


def rows_type(row):
    """The message type of a row as its UNH names it ("" without one)."""
    return row["tree"]["UNH"].get("S009", {}).get("0065", row["type"])
