"""Writing: round trips, trees built by hand, targets, the tree conversion."""

import io

import pytest

import ediprot
from ediprot import Node, _ediprot
from conftest import CORPUS, SAMPLES

ROUND_TRIP = [SAMPLES / "orders-d96a.edi", SAMPLES / "desadv-d96a.edi",
              CORPUS / "bots_INVOIC_D96A_invoic01.edi", CORPUS / "smooks_edg_paxlst_D03B.txt",
              CORPUS / "pydifact_order_una_decimal_comma.edi"]


def values(ic):
    """Names and values of every message, without what the writer sets anew
    (UNT) and the empty values it adds to pad composites."""
    return [[(n.name, n.value) for n in m.tree.walk() if n.value and n.key != "UNT"]
            for m in ic]


@pytest.mark.parametrize("path", ROUND_TRIP, ids=lambda p: p.name)
def test_round_trip(path):
    ic = ediprot.read(path)
    out = ediprot.write(ic, reference="REF1")
    back = ediprot.read(out)
    assert values(back) == values(ic)
    assert (back.envelope.sender, back.envelope.recipient, back.envelope.control_ref) == \
        (ic.envelope.sender, ic.envelope.recipient, "REF1")
    # The same messages from plain data, in a new envelope of the options;
    # from the single messages, in their own.
    rebuilt = [Node.from_dict(m.tree.name, m.tree.to_dict()) for m in ic]
    again = ediprot.write(rebuilt, sender=ic.envelope.sender, recipient=ic.envelope.recipient,
                          reference="REF1")
    assert values(ediprot.read(again)) == values(ic)
    assert ediprot.write(list(ic), reference="REF1") == out


def test_text_above_127_goes_back_as_it_came():
    ic = ediprot.read(CORPUS / "edireader_ORDRSP-D01B-UNOC_latin1.edi")
    msg = ic[0]
    out = ediprot.write(ic, name="latin1")
    assert not [f for f in out.findings if "above 127" in f.text]
    assert b"\xf6" in out and "\u00f6" in str(msg.to_dict())


def hand_built():
    seg = lambda tag, *kids: Node("$" + tag, children=kids)  # noqa: E731
    return Node("ORDERS", children=[
        seg("UNH", Node("0062", "M1"), Node("S009", children=[
            Node("0065", "ORDERS"), Node("0052", "D"), Node("0054", "96A"), Node("0051", "UN")])),
        seg("BGM", Node("C002", children=[Node("1001", "220")]), Node("1004", "PO-7"),
            Node("1225", "9")),
        Node("*DTM", children=[seg("DTM", Node("C507", children=[
            Node("2005", "137"), Node("2380", "20240101"), Node("2379", "102")]))]),
        *[Node("*SG2", children=[seg("NAD", Node("3035", q), Node("C082", children=[
            Node("3039", gln), Node("3055", "9")]))]) for q, gln in (("BY", "111"), ("SU", "222"))],
        seg("UNS", Node("0081", "S")),
    ])


def test_hand_built_tree_is_written(tmp_path):
    target = tmp_path / "out.edi"
    out = ediprot.write(hand_built(), target, sender="ME", recipient="YOU", reference="9",
                        test=True)
    assert target.read_bytes() == out
    assert b"NAD+BY+111::9'NAD+SU+222::9'UNS+S'UNT+7+M1'UNZ+1+9'" in out
    ic = ediprot.read(out)
    assert (ic.envelope.sender, ic.envelope.test_indicator) == ("ME", "1")
    assert [n.value for n in ic[0].find_all("SG2.NAD.C082.3039")] == ["111", "222"]
    assert ediprot.validate(out) == []
    buf = io.BytesIO()
    ediprot.write(hand_built(), buf, sender="ME", recipient="YOU", reference="9", test=True)
    assert buf.getvalue() == out
    # Envelope nodes of a read's root among the messages are not written.
    envelope = Node("#envelope", children=[Node("0004", "OTHER")])
    assert ediprot.write([envelope, hand_built()], sender="ME", recipient="YOU", reference="9",
                         test=True) == out
    # A UNH without type and directory: given by `message`.
    bare = hand_built()
    bare["UNH"].children.pop()
    assert b"UNH+M1+ORDERS:D:96A:UN'" in ediprot.write(bare, sender="ME", recipient="YOU",
                                                        message="ORDERS:D96A")


BAD_WRITES = [
    # what, tree change, write arguments, exception, words of the reason
    ("sender with separator", None, {"sender": "A+B"}, ediprot.ArgumentError, "sender"),
    ("no sender", None, {"sender": ""}, ediprot.ArgumentError, "sender"),
    ("sender above U+00FF", None, {"sender": "\u20ac"}, ediprot.ArgumentError, "sender"),
    ("value without code", lambda t: setattr(t["BGM"]["1004"], "value", "\u20ac"), {},
     ediprot.WriteError, "has no code for"),
    ("NUL in a value", lambda t: setattr(t["BGM"]["1004"], "value", "a\0b"), {},
     ediprot.WriteError, "NUL"),
    ("tree inside itself", lambda t: t["BGM"].children.append(t), {}, ediprot.WriteError,
     "itself"),
    ("no directory", lambda t: t["UNH"].children.pop(), {}, ediprot.WriteError, "directory"),
]


@pytest.mark.parametrize("what,change,args,exc,words", BAD_WRITES, ids=[b[0] for b in BAD_WRITES])
def test_bad_writes(tmp_path, what, change, args, exc, words):
    tree = hand_built()
    if change:
        change(tree)
    target = tmp_path / "never.edi"
    kwargs = {"sender": "ME", "recipient": "YOU", **args}
    with pytest.raises(exc) as err:
        ediprot.write(tree, target, **kwargs)
    assert words in str(err.value) and not target.exists()


def test_wrong_types():
    tree = hand_built()
    tree.children.append("UNS")
    with pytest.raises(TypeError, match="not a Node"):
        ediprot.write(tree, sender="ME", recipient="YOU")
    with pytest.raises(TypeError):
        ediprot.write([42], sender="ME", recipient="YOU")


def test_unwritable_target_leaves_nothing(tmp_path):
    with pytest.raises(ediprot.WriteError) as err:
        ediprot.write(hand_built(), tmp_path / "no" / "such" / "dir.edi", sender="ME",
                      recipient="YOU")
    assert err.value.file.endswith("dir.edi") and err.value.findings


def test_conversion_keeps_every_field():
    cfg = ediprot.config("ORDERS", "D96A", outbound=True)
    assert _ediprot.roundtrip(cfg, True) == cfg
    assert cfg.find("ORDERS.UNH").attrs["ediforce"] == "mand"
    node = Node("x", "\xff\x01", [Node("y", "raw"), Node("z", "")], loop=3,
                attrs={"edilen": 5, "editype": "sdate", "defval": "d"})
    assert _ediprot.roundtrip(node, True) == node
    deep = Node("d")
    for _ in range(20000):
        deep = Node("d", children=[deep])
    assert _ediprot.roundtrip(deep, False) == deep
    with pytest.raises(ValueError, match="unknown field"):
        _ediprot.roundtrip(Node("x", attrs={"colour": 1}), True)


def test_dumps():
    node = Node("*ORDERS", children=[Node("$BGM", children=[Node("1004", "P\xe9")])])
    assert node.dumps().splitlines() == ["*ORDERS", "  $BGM", '    1004 data="P\\xe9"']
    assert '"data": "P\xe9"' in node.dumps("json").replace('"data":"', '"data": "')
    with pytest.raises(ValueError):
        node.dumps("xml")


def _segments(data: bytes) -> bytes:
    """The interchange without transport bytes (BOM, line ends)."""
    if data.startswith(b"\xef\xbb\xbf"):
        data = data[3:]
    return data.replace(b"\r", b"").replace(b"\n", b"")


@pytest.mark.parametrize("name", [
    "edifabric_INVOIC_D00A_NonDefaultSeparators.txt",   # the partner's service characters
    "edifabric_INVOIC_D00A_MultipleInterchange.txt",    # two interchanges, each with its UNA
    "edifabric_INVOIC_D00A_MultipleGroups.txt",         # functional groups
    "edireader_ORDRSP-D01B-UNOC_latin1.edi",            # Latin-1 text
    "php-edifact_example_utf8_DESADV.edi",              # UTF-8 text
])
def test_read_then_write_gives_the_partners_interchange_back(name):
    data = (CORPUS / name).read_bytes()
    assert _segments(ediprot.write(ediprot.read(data))) == _segments(data)


def test_options_set_what_they_name_over_the_received_envelope():
    ic = ediprot.read(CORPUS / "edifabric_INVOIC_D00A_NonDefaultSeparators.txt")
    out = bytes(ediprot.write(ic, sender="NEWSENDER:ZZ"))
    assert out.startswith(b"UNA:|.? 'UNB|UNOB:1|NEWSENDER:ZZ|PARTNERID:01:ZZUK|")
