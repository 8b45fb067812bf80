"""Failures as exceptions, silence on stderr, memory of failed calls,
configurations, and the package standing on its own."""

import gc
import os
import sys
import tracemalloc
from pathlib import Path

import pytest

import ediprot
from ediprot import Node
from conftest import CORPUS, REPO, SAMPLES

GOOD = (SAMPLES / "orders-d96a.edi").read_bytes()
LEFT_OUT = (CORPUS / "edifabric_bad_INVOIC_D00A_BadSegment.txt").read_bytes()

FAILED_READS = [
    # file, words of the reason
    ("bots_bad_garbage_before_UNB.edi", "does not begin with UNA or UNB"),
    ("edifabric_bad_INVOIC_D00A_BadSegment.txt", "40 segments left out"),
    ("edinet_bad_Issue98_minimal_UNB_indented.edi", "no sender identification"),
    ("pydifact_bad_hl7_lab_not_edifact.edi", "holds no message"),
    ("no-such-file.edi", "cannot be read"),
]


@pytest.mark.parametrize("name,words", FAILED_READS, ids=[f[0] for f in FAILED_READS])
def test_failed_read(name, words):
    path = CORPUS / name
    with pytest.raises(ediprot.ReadError) as err:
        ediprot.read(path)
    e = err.value
    assert words in e.reason and e.file == str(path) and str(e) == f"{path}: {e.reason}"
    assert e.finding.kind == "failure" and e.finding in e.findings
    assert isinstance(e, ediprot.Error) and not isinstance(e, ediprot.WriteError)


def test_failure_after_messages_keeps_them():
    got = []
    with pytest.raises(ediprot.ReadError) as err:
        for m in ediprot.messages(GOOD + LEFT_OUT, name="two.edi"):
            got.append(m.reference)
    assert got == ["ORD0001", "ORD0002"] and err.value.file == "two.edi"
    assert any(f.kind == "left_out" and f.tag == "BGL" for f in err.value.findings)
    with pytest.raises(ediprot.ReadError) as err:
        ediprot.read(GOOD + LEFT_OUT)
    assert [m.reference for m in err.value.messages] == got


def test_configurations():
    cfg = ediprot.config("ORDERS", "D96A")
    (msg,) = cfg["ORDERS"]  # the message node is a loop: *ORDERS
    assert cfg.name == "edi" and msg.name == "*ORDERS"
    assert msg["UNH"].attrs == {"iseditag": 1, "ediforce": "mand"}
    assert ediprot.config("ORDERS", "D96A", outbound=True) != cfg
    dirs = ediprot.directories()
    assert dirs[0] == "D93A" and "D96A" in dirs and dirs[-1] == "D10B"
    assert ediprot.message_types("D96A")["ORDERS"] == "Purchase order message"
    with pytest.raises(ediprot.ConfigError, match="nearest with it: D95A"):
        ediprot.config("APERAK", "D93A")
    with pytest.raises(ediprot.ConfigError):
        ediprot.message_types("D00X")


def test_nothing_is_printed(capfd):
    for call in (lambda: ediprot.read(CORPUS / "bots_bad_garbage_before_UNB.edi"),
                 lambda: ediprot.read(LEFT_OUT),
                 lambda: ediprot.write(Node("*ORDERS"), sender="A", recipient="B"),
                 lambda: ediprot.vda_read(b"hello"),
                 lambda: ediprot.config("XXXXXX", "D96A")):
        with pytest.raises(ediprot.Error):
            call()
    ediprot.validate(CORPUS / "bots_ORDERS_D96A_1.edi")
    ediprot.vda_write(ediprot.vda_read(SAMPLES / "vda4905-sample.txt"))
    assert capfd.readouterr() == ("", "")


def rss() -> int:
    with open("/proc/self/statm") as f:
        return int(f.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def cyclic_tree():
    tree = Node("*ORDERS", children=[Node("$FTX", "x" * 100) for _ in range(2000)])
    tree.children[-1].children.append(tree)
    return tree


# Line ends between interchanges: taken out by the library, but held in
# every copy of the input, so that a reader kept would show.
PADDED = GOOD * 5 + b"\n" * 200_000 + LEFT_OUT

def library_tree_with_bad_value():
    """A read tree (kept by the library) of which one late value cannot be
    written: the copy made before the refusal must be released."""
    ic = ediprot.read(GOOD * 5)
    ic[-1]["BGM"]["1004"].value = "\u20ac"
    return ic


BAD_TREE = library_tree_with_bad_value()

LEAK_CASES = [
    # what, call (each leaks 100 kB or more a time if anything of it is kept)
    ("read failing late", lambda: ediprot.read(PADDED)),
    ("read failing at once", lambda: ediprot.read(b"X" * 400_000 + GOOD)),
    ("messages failing", lambda: list(ediprot.messages(PADDED))),
    ("write of a tree inside itself", lambda: ediprot.write(cyclic_tree(), sender="A",
                                                           recipient="B")),
    ("vda read failing", lambda: ediprot.vda_read(b"hello\n" * 20_000)),
    ("read", lambda: ediprot.read(GOOD * 5)),
    ("messages left after the first", lambda: next(ediprot.messages(PADDED))),
    ("write of a read tree refused late", lambda: ediprot.write(BAD_TREE)),
]


@pytest.mark.parametrize("what,call", LEAK_CASES, ids=[c[0] for c in LEAK_CASES])
def test_repeated_calls_keep_no_memory(what, call):
    def run(n):
        for _ in range(n):
            try:
                call()
            except ediprot.Error:
                pass
        gc.collect()

    run(30)
    before = rss()
    run(200)
    assert rss() - before < 4 << 20, f"{what}: {(rss() - before) >> 10} kB more"


FAILING = [
    ("read", lambda: ediprot.read(PADDED), ediprot.ReadError),
    ("messages", lambda: list(ediprot.messages(PADDED)), ediprot.ReadError),
    ("vda read", lambda: ediprot.vda_read(b"hello\n" * 1000), ediprot.ReadError),
    ("write", lambda: ediprot.write(BAD_TREE), ediprot.WriteError),
]


@pytest.mark.parametrize("what,call,exc", FAILING, ids=[f[0] for f in FAILING])
def test_failing_calls_leave_no_objects_and_no_exception(what, call, exc):
    def fail():
        with pytest.raises(exc) as err:
            call()
        # Raised while nothing else was being handled, and not chained.
        assert err.value.__context__ is None or isinstance(err.value.__cause__, ValueError)

    for _ in range(10):
        fail()
    gc.collect()
    tracemalloc.start()
    try:
        before = tracemalloc.get_traced_memory()[0]
        for _ in range(100):
            fail()
        gc.collect()
        grown = tracemalloc.get_traced_memory()[0] - before
    finally:
        tracemalloc.stop()
    assert sys.exc_info() == (None, None, None)
    assert grown < 64 << 10, f"{what}: {grown >> 10} kB of Python objects kept"


def test_package_stands_alone():
    pkg = Path(ediprot.__file__).parent
    assert REPO / "python" not in pkg.parents and "EDIPROT_DATA" not in os.environ
    assert Path(ediprot.directories_path()).resolve() == (pkg / "share/ediprot/directories").resolve()
    with open("/proc/self/maps") as f:
        loaded = {Path(line.split()[-1]) for line in f if ".so" in line}
    for lib in ("libedi.so.1", "libedihost.so.1", "libediprot.so.1"):
        assert [p.parent for p in loaded if p.name == lib] == [(pkg / "lib").resolve()], lib
