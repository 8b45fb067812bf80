"""Failures as exceptions, silence on stderr, memory of failed calls,
configurations, and the package standing on its own."""

import gc
import os
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

LEAK_CASES = [
    # what, call (each leaks 100 kB or more a time if anything of it is kept)
    ("read failing late", lambda: ediprot.read(PADDED)),
    ("read failing at once", lambda: ediprot.read(b"X" * 400_000 + GOOD)),
    ("messages failing", lambda: list(ediprot.messages(PADDED))),
    ("write of a tree inside itself", lambda: ediprot.write(cyclic_tree(), sender="A",
                                                           recipient="B")),
    ("vda read failing", lambda: ediprot.vda_read(b"hello\n" * 20_000)),
    ("read", lambda: ediprot.read(GOOD * 5)),
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


def test_package_stands_alone():
    pkg = Path(ediprot.__file__).parent
    assert REPO / "python" not in pkg.parents and "EDIPROT_DATA" not in os.environ
    assert Path(ediprot.directories_path()).resolve() == (pkg / "share/ediprot/directories").resolve()
    with open("/proc/self/maps") as f:
        loaded = {Path(line.split()[-1]) for line in f if ".so" in line}
    for lib in ("libedi.so.1", "libedihost.so.1", "libediprot.so.1"):
        assert [p.parent for p in loaded if p.name == lib] == [(pkg / "lib").resolve()], lib
