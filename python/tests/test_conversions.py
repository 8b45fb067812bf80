"""The binding's own conversions on random trees (fixed seeds): Python
nodes to the library's tree and back, nodes standing for a library tree
changed in place, plain data both ways, pickling."""

import pickle
import random

import pytest

import ediprot
from ediprot import Node, _ediprot

# Latin-1 without NUL: markers, separators, controls, bytes above 127.
ALPHABET = "aZ09$*#_. -/\\'\"?+:\x01\x7f\x80\xa0\xe9\xff"
WORDS = {"editype": ["string", "float", "date", "sdate", "float0", "time"],
         "ediforce": ["mand", "cond"], "edialign": ["left", "right"], "edidata": ["opt"]}


def text(rng, longest=8):
    return "".join(rng.choice(ALPHABET) for _ in range(rng.randrange(longest)))


def value(rng):
    pick = rng.randrange(4)
    return None if pick == 0 else "" if pick == 1 else \
        text(rng).encode("latin-1") if pick == 2 else text(rng)


def attrs(rng):
    """Layout fields as they come back: set ones only."""
    if rng.random() < 0.5:
        return None
    a = {k: rng.choice(v) for k, v in WORDS.items() if rng.random() < 0.5}
    a.update({k: rng.choice([-1, 1, 7, 2**31 - 1]) for k in ("edilen", "iseditag")
              if rng.random() < 0.5})
    if rng.random() < 0.5:
        a["defval"] = text(rng)
    return a or None


def node(rng, with_attrs):
    return Node(text(rng) if rng.random() < 0.9 else text(rng).encode("latin-1"), value(rng),
                loop=rng.choice([0, 1, 2, -1, 2**31 - 1, -2**31]),
                attrs=attrs(rng) if with_attrs else None)


def random_tree(rng, with_attrs=False, shape="bushy"):
    """A random tree: bushy (up to 6 levels of up to 5 children), deep (a
    chain of thousands) or wide (thousands of siblings)."""
    root = node(rng, with_attrs)
    if shape == "deep":
        n = root
        for _ in range(3000):
            n.children.append(node(rng, with_attrs))
            n = n.children[-1]
    elif shape == "wide":
        root.children = [node(rng, with_attrs) for _ in range(5000)]
    else:
        todo = [(root, 0)]
        while todo:
            n, depth = todo.pop()
            for _ in range(rng.randrange(6) if depth < 6 else 0):
                c = node(rng, with_attrs)
                n.children.append(c)
                todo.append((c, depth + 1))
    return root


def flat(tree):
    """The tree as one list in document order, texts as str: the same list
    means the same tree, at any depth."""
    s = lambda t: t.decode("latin-1") if isinstance(t, bytes) else t  # noqa: E731
    return [(s(n.name), s(n.value), n.loop, n.attrs, len(n._children or ())) for n in tree.walk()]


CASES = [(seed, shape, with_attrs) for seed in range(12) for shape, with_attrs in
         (("bushy", False), ("bushy", True))] + \
        [(100, "deep", False), (101, "wide", True)]


@pytest.mark.parametrize("seed,shape,with_attrs", CASES)
def test_tree_through_library_and_back(seed, shape, with_attrs):
    tree = random_tree(random.Random(seed), with_attrs, shape)
    back = _ediprot.roundtrip(tree, with_attrs)
    assert flat(back) == flat(tree)
    # A tree standing for the library's is copied from there, and pickles
    # as nodes of their own.
    assert flat(_ediprot.roundtrip(back, with_attrs)) == flat(tree)
    if shape != "deep":
        assert flat(pickle.loads(pickle.dumps(back))) == flat(tree)


def edit(rng, tree):
    """A random change somewhere in the tree, the same for the same rng
    state whatever the tree's nodes are made of."""
    nodes = list(tree.walk())
    n = nodes[rng.randrange(len(nodes))]
    pick = rng.randrange(6)
    if pick == 0:
        n.value = text(rng) if rng.random() < 0.7 else None
    elif pick == 1:
        n.name = text(rng)
    elif pick == 2:
        n.children.append(Node(text(rng), text(rng), [Node("x", text(rng))]))
    elif pick == 3 and n.children:
        del n.children[rng.randrange(len(n.children))]
    elif pick == 4:
        n.loop = rng.randrange(9)
    else:
        n.children = list(reversed(n.children))


@pytest.mark.parametrize("seed", range(10))
def test_changed_library_tree_is_written_as_changed(seed):
    rng = random.Random(seed)
    mine = random_tree(rng)
    theirs = _ediprot.roundtrip(mine, False)
    edits = rng.getstate()
    for tree in (mine, theirs):
        rng.setstate(edits)
        for _ in range(8):
            edit(rng, tree)
    assert flat(_ediprot.roundtrip(theirs, False)) == flat(mine)
    # Plain data of the changed nodes and of those still the library's.
    assert theirs.to_dict() == _ediprot.roundtrip(mine, False).to_dict()


def plain_tree(rng):
    """A tree whose plain data names every node: names without a leading
    marker or #, so that from_dict gives the same plain data back."""
    tree = random_tree(rng)
    for n in tree.walk():
        n.name = rng.choice(["", "$", "*"]) + "n" + rng.choice("ABC") + text(rng, 3).strip("#")
        if isinstance(n.value, bytes):
            n.value = n.value.decode("latin-1")
    return tree


@pytest.mark.parametrize("seed", range(10))
@pytest.mark.parametrize("skip_empty", [False, True])
def test_plain_data_both_ways(seed, skip_empty):
    tree = plain_tree(random.Random(seed))
    lazy = _ediprot.roundtrip(tree, False)
    data = tree.to_dict(skip_empty=skip_empty)
    assert lazy.to_dict(skip_empty=skip_empty) == data
    if not skip_empty:  # (what is left out is not given back)
        assert Node.from_dict("root", data).to_dict() == data


def test_read_tree_changed_and_written():
    ic = ediprot.read(b"UNA:+.? 'UNB+UNOC:3+ME+YOU+240101:1200+R1'UNH+1+ORDERS:D:96A:UN'"
                      b"BGM+220+PO\xe91+9'UNS+S'UNT+4+1'UNZ+1+R1'")
    msg = ic[0]
    assert msg.value_at("BGM.1004") == "PO\xe91"
    msg["BGM"]["1004"].value = "PO-2"
    out = ediprot.write(ic, reference="R1")
    assert b"UNH+1+ORDERS:D:96A:UN'BGM+220+PO-2+9'UNS+S'UNT+4+1'" in out
    del msg.tree.children[1]  # BGM
    assert b"UNH+1+ORDERS:D:96A:UN'UNS+S'UNT+3+1'" in ediprot.write(ic, reference="R1")


@pytest.mark.parametrize("bad,exc", [
    (lambda t: t.children.append("leaf"), TypeError),
    (lambda t: setattr(t, "_children", ("a",)), TypeError),
    (lambda t: t.children[0].children.append(t), ValueError),
    (lambda t: setattr(t.children[0], "value", "\u20ac"), ValueError),
    (lambda t: setattr(t.children[0], "name", 5), TypeError),
    (lambda t: setattr(t.children[0], "loop", 2**40), ValueError),
])
def test_bad_nodes_are_refused(bad, exc):
    tree = _ediprot.roundtrip(random_tree(random.Random(7)), False)
    tree.children.append(Node("c"))
    with pytest.raises(exc):
        bad(tree)
        _ediprot.roundtrip(tree, False)
