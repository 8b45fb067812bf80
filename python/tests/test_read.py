"""Reading: corpus and samples, envelopes, lookups, plain data, sources."""

import io
import json
import threading

import pytest

import ediprot
from conftest import CORPUS, CORPUS_FILES, SAMPLES, unh_count


@pytest.mark.parametrize("path", CORPUS_FILES + sorted(SAMPLES.glob("*.edi")), ids=lambda p: p.name)
def test_every_file_reads_or_fails_with_reason(path):
    try:
        ic = ediprot.read(path)
    except ediprot.ReadError as e:
        assert e.file == str(path) and e.reason and e.finding in e.findings
        assert any(f.kind == "failure" for f in e.findings)
        return
    assert len(ic) == unh_count(path.read_bytes()) > 0
    assert [m.number for m in ic] == list(range(1, len(ic) + 1))
    for m in ic:
        assert m.tree.name == "*" + m.type and m.segments >= 2
        assert m["UNH"][0].value == m.reference  # 0062, or UNH01 in a layout from the file
        assert m.envelope is not None and m.envelope.sender
    # Message by message gives the same messages.
    streamed = list(ediprot.messages(path))
    assert [m.tree for m in streamed] == [m.tree for m in ic]


ENVELOPES = [
    # file, messages, types, sender, recipient, syntax, separators (cmp, el, term, dec), UNG, interchanges
    ("edireader_ORDRSP-D01B-UNOC_latin1.edi", 1, {"ORDRSP"}, "0123456789012", "1234567890128",
     "UNOC", ":+'.", "", {1}),
    ("edifabric_INVOIC_D00A_MultipleInterchange.txt", 2, {"INVOIC"}, "102096559TEST", "PARTNERID",
     "UNOB", ":+'.", "", {1, 2}),
    ("edifabric_INVOIC_D00A_MultipleGroups.txt", 2, {"INVOIC"}, "102096559TEST", "PARTNERID",
     "UNOB", ":+'.", "1", {1}),
    ("smooks_unedifact_no_ung_msg-02_custom_separators.edi", 3, {"MSG1", "MSG2"}, "Acme",
     "AcmeRecipient", "UNOA", "*@#.", "", {1}),
    ("pydifact_order_una_decimal_comma.edi", 1, {"ORDERS"}, "12345678", "WBDZDD", "UNOA", ":+',",
     "", {1}),
    ("edinet_Issue188_IFTMIN_INVOIC_multi.edi", 4, {"IFTMIN", "INVOIC"}, "5790000010790",
     "5790000110247", "UNOC", ":+',", "", {1}),
]


@pytest.mark.parametrize("name,count,types,sender,recipient,syntax,seps,group,interchanges",
                         ENVELOPES, ids=[e[0] for e in ENVELOPES])
def test_envelope(name, count, types, sender, recipient, syntax, seps, group, interchanges):
    ic = ediprot.read(CORPUS / name, keep_going=True)  # (a segment with a bad tag in one)
    env = ic.envelope
    assert len(ic) == count and {m.type for m in ic} == types
    assert (env.sender, env.recipient, env.syntax_id) == (sender, recipient, syntax)
    assert env.component_sep + env.element_sep + env.segment_term + env.decimal_mark == seps
    assert (env.group_id, env.has_ung) == (group, bool(group))
    assert {m.envelope.interchange for m in ic} == interchanges
    assert ic.to_dict()["envelope"]["sender"] == sender


def test_lookup_by_index_and_path():
    msg = ediprot.read(SAMPLES / "orders-d96a.edi")[0]
    parties = msg["SG2"]
    assert isinstance(parties, list) and len(parties) == len(msg.find_all("SG2")) > 1
    assert parties[0]["NAD"]["3035"].value == msg.find("SG2.NAD.3035").value == "BY"
    assert msg["$BGM"] is msg["BGM"] and msg.tree[1] is msg["BGM"]
    assert msg.value_at("SG2[1].NAD.3035") == parties[1]["NAD"]["3035"].value
    assert msg.value_at("SG2[-1].NAD.3035") == parties[-1]["NAD"]["3035"].value
    assert [n.value for n in msg.find_all("SG2.NAD.3035")] == \
        [p["NAD"]["3035"].value for p in parties]
    assert msg.find("SG2.XXX") is None and msg.value_at("SG2[99].NAD", "-") == "-"
    assert msg.get("XXX") is None and "BGM" in msg.tree and "XXX" not in msg.tree
    with pytest.raises(KeyError):
        msg["XXX"]
    with pytest.raises(ValueError):
        msg.find("SG2[x]")


def test_to_dict_mirrors_lookup():
    ic = ediprot.read(SAMPLES / "orders-d96a.edi")
    msg = ic[0]
    d = msg.tree.to_dict()
    assert d["SG2"][0]["NAD"]["3035"] == msg["SG2"][0]["NAD"]["3035"].value
    assert d["BGM"]["C002"]["1001"] == msg.value_at("BGM.C002.1001")
    assert any(v is None for v in d["UNH"].values())      # elements without value stay
    compact = msg.tree.to_dict(skip_empty=True)
    assert "0068" not in compact["UNH"] and compact["SG2"][0]["NAD"]["3035"] == "BY"
    whole = ic.to_dict()
    assert json.loads(json.dumps(whole)) == whole           # plain data only
    assert [m["reference"] for m in whole["messages"]] == [m.reference for m in ic]
    assert whole["messages"][0]["tree"] == d


@pytest.mark.parametrize("kind", ["path", "str", "bytes", "bytearray", "file", "bytesio"])
def test_sources(kind):
    path = SAMPLES / "orders-d96a.edi"
    data = path.read_bytes()
    source = {"path": path, "str": str(path), "bytes": data, "bytearray": bytearray(data),
              "file": None, "bytesio": io.BytesIO(data)}[kind]
    if kind == "file":
        with open(path, "rb") as f:
            ic = ediprot.read(f)
        assert ic.file == str(path)
    else:
        ic = ediprot.read(source)
        assert ic.file == (str(path) if kind in ("path", "str") else "input")
    assert [m.reference for m in ic] == ["ORD0001", "ORD0002"]
    with pytest.raises(TypeError):
        ediprot.read(io.StringIO(data.decode("latin-1")))


def test_values_are_latin1():
    msg = ediprot.read(CORPUS / "edireader_ORDRSP-D01B-UNOC_latin1.edi")[0]
    value = msg.value_at("BGM.C002.1000")
    assert value == "L\xf6r\xe9m \xefps\xfc" and value.encode("latin-1") in \
        (CORPUS / "edireader_ORDRSP-D01B-UNOC_latin1.edi").read_bytes()


def test_options_keep_going_and_validate():
    bad = CORPUS / "edifabric_bad_INVOIC_D00A_BadSegment.txt"
    ic = ediprot.read(bad, keep_going=True)
    assert [f.tag for f in ic[0].findings if f.kind == "left_out"] == ["BGL"]
    assert any(f.kind == "left_out" for f in ic.findings)
    checked = ediprot.read(CORPUS / "bots_ORDERS_D96A_1.edi", validate=True)
    found = [(m.number, f.tag, f.element) for m in checked for f in m.findings
             if f.kind == "validation"]
    assert found and all(f == (f[0], "BGM", "1001") for f in found)


def test_threads_read_as_one_thread():
    files = [CORPUS / n for n in ("bots_INVOIC_D96A_invoic01.edi", "staedi_invoic_d97b.edi",
                                  "edinet_Issue188_IFTMIN_INVOIC_multi.edi")]
    expected = {f: ediprot.read(f).to_dict() for f in files}
    got, errors = {}, []

    def work(i):
        try:
            for _ in range(3):
                f = files[i % len(files)]
                got.setdefault(f, []).append(ediprot.read(f).to_dict())
        except Exception as e:  # noqa: BLE001 - reported below
            errors.append(e)

    threads = [threading.Thread(target=work, args=(i,)) for i in range(6)]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    assert not errors
    assert all(d == expected[f] for f, ds in got.items() for d in ds) and len(got) == 3


@pytest.mark.parametrize("name,text", [
    ("edireader_tiny-withUNA-UNOE_iso8859-5.edi", "\u0420\u044b\u0431\u0430 \u0442\u0435\u043a\u0441\u0442"),
    ("php-edifact_example_utf8_DESADV.edi", "MUNCI\u00cb"),
    ("smooks_edg_recadv_D01B_utf8.txt", "\u5929\u6d25"),
    ("edireader_ORDRSP-D01B-UNOC_latin1.edi", "\u00f6"),
])
def test_values_are_text_of_the_interchanges_character_set(name, text):
    messages = ediprot.read(CORPUS / name)
    assert any(text in str(m.to_dict()) for m in messages)
