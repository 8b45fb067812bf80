"""Trees, messages, envelopes and findings as Python objects."""

from __future__ import annotations

import dataclasses
import re
from typing import Any, Dict, Iterable, Iterator, List, Optional, Sequence, Tuple, Union

from . import _ediprot

__all__ = ["Node", "Document", "Message", "Interchange", "Envelope", "Finding", "Output"]

_PATH_PART = re.compile(r"^([^\[\].]+)(?:\[(-?\d+)\])?$")
_KINDS = ("failure", "module", "left_out", "changed", "validation", "note")
_SEVERITIES = ("error", "warning", "info")


def _matches(name: str, key: str) -> bool:
    """True when a child named `name` answers to `key` ($ and * optional)."""
    return name == key or (name[:1] in ("$", "*") and name[1:] == key)


def _parse_path(path: str) -> List[tuple]:
    parts = []
    for part in path.split("."):
        m = _PATH_PART.match(part)
        if m is None:
            raise ValueError(f"bad path {path!r}: part {part!r}")
        parts.append((m.group(1), None if m.group(2) is None else int(m.group(2))))
    return parts


class Node(_ediprot.NodeBase):
    """One node of a tree: a message, loop, segment, composite or element.

    `name` is the library's name: ``*`` in front marks a loop (and the
    message node, ``*ORDERS``), ``$`` a segment or VDA record, anything
    else a composite or element.  `value` is the text of an element (None:
    no value; ``""`` is an empty value), `children` the nodes below in
    order, `loop` the number of a loop instance (from 1; 0 lets the writer
    number it), `attrs` the layout fields of a configuration node (None in
    data trees).

    Lookup: ``node["SG2"]`` gives every instance of the loop ``*SG2`` as a
    list, ``node["NAD"]`` the first child ``$NAD`` (or ``NAD``) as a Node,
    ``node[0]`` the first child; ``find("SG2.NAD.3035")`` the first node
    on that path in any loop instance, ``"SG2[1].NAD"`` the second.

    The fields live in the extension's NodeBase: a node of a tree the
    library gave stands for the library's node, decodes its name and value
    when they are read and makes its children as Nodes when they are first
    asked for; a node built by hand, or a field set, holds its own.
    """

    __slots__ = ()
    name: str
    value: Optional[str]
    loop: int
    attrs: Optional[Dict[str, Any]]

    def __init__(
        self,
        name: str,
        value: Optional[str] = None,
        children: Optional[Iterable[Node]] = None,
        *,
        loop: int = 0,
        attrs: Optional[Dict[str, Any]] = None,
    ) -> None:
        self.name = name
        self.value = value
        self._children: Optional[List[Node]] = list(children) if children else None
        self.loop = loop
        self.attrs = attrs

    @property
    def children(self) -> List[Node]:
        """The nodes below, in order (a list that may be changed in place)."""
        if self._children is None:
            self._children = []
        return self._children

    @children.setter
    def children(self, nodes: Iterable[Node]) -> None:
        self._children = list(nodes)

    def __reduce__(self) -> tuple:
        """Pickled and copied as a node holding its own fields (the library's
        tree stays in this process), with a subclass's slots."""
        extra = {s: getattr(self, s) for c in type(self).__mro__
                 for s in c.__dict__.get("__slots__", ()) if hasattr(self, s)}
        return (_rebuild, (type(self), self.name, self.value, self._children, self.loop,
                           self.attrs), (None, extra) if extra else None)

    # -- names ---------------------------------------------------------
    @property
    def key(self) -> str:
        """The name without its ``$`` or ``*`` mark, as lookups and to_dict use it."""
        return self.name[1:] if self.name[:1] in ("$", "*") else self.name

    @property
    def is_loop(self) -> bool:
        """True for a loop instance (and the message node)."""
        return self.name.startswith("*")

    @property
    def is_segment(self) -> bool:
        """True for a segment or VDA record."""
        return self.name.startswith("$")

    # -- lookup --------------------------------------------------------
    def __getitem__(self, key: Union[int, slice, str]) -> Any:
        """A child by position (or a slice of them), or by name: a list of loop instances for a
        loop, else the first child of that name.  KeyError when none."""
        if isinstance(key, (int, slice)):
            return self.children[key]
        found = [c for c in self._children or () if _matches(c.name, key)]
        if not found:
            raise KeyError(key)
        if any(c.name.startswith("*") for c in found):
            return found
        return found[0]

    def get(self, key: str, default: Any = None) -> Any:
        """As ``node[key]``, with `default` when there is no such child."""
        try:
            return self[key]
        except KeyError:
            return default

    def __contains__(self, key: str) -> bool:
        """True when a child answers to `key` (``"NAD"`` in a loop instance)."""
        return any(_matches(c.name, key) for c in self._children or ())

    def __iter__(self) -> Iterator[Node]:
        """The children in order."""
        return iter(self._children or ())

    def find_all(self, path: str) -> List[Node]:
        """Every node on a dotted path below this one, in document order.

        Each part is a name (``$``/``*`` optional) with an optional index
        ``[i]`` among the nodes of that name under one parent (from 0,
        negative from the end); without an index every instance is followed.
        """
        nodes = [self]
        for name, index in _parse_path(path):
            step = []
            for n in nodes:
                m = [c for c in n._children or () if _matches(c.name, name)]
                if index is not None:
                    m = [m[index]] if -len(m) <= index < len(m) else []
                step.extend(m)
            nodes = step
        return nodes

    def find(self, path: str) -> Optional[Node]:
        """The first node on a dotted path (see find_all), or None."""
        found = self.find_all(path)
        return found[0] if found else None

    def value_at(self, path: str, default: Optional[str] = None) -> Optional[str]:
        """The value of the first node on `path`, or `default` when there is
        none or it has no value."""
        n = self.find(path)
        return default if n is None or n.value is None else n.value

    def walk(self) -> Iterator[Node]:
        """This node and every node below it, depth first in order."""
        todo = [self]
        while todo:
            n = todo.pop()
            yield n
            if n._children:
                todo.extend(reversed(n._children))

    # -- plain data ----------------------------------------------------
    def to_dict(self, *, skip_empty: bool = False) -> Dict[str, Any]:
        """The children as plain data, keyed by name without ``$``/``*``:
        a loop gives a list of its instances, a node with children a dict,
        a leaf its value.  Names that repeat outside loops give lists too; a
        node holding both a value and children keeps the value under
        ``"#value"``.  `skip_empty` leaves out leaves without value and
        what is empty then.  Loop numbers and attrs are not kept."""
        return _ediprot.to_dict(self, skip_empty)

    @classmethod
    def from_dict(cls, name: str, data: Dict[str, Any]) -> Node:
        """The tree `to_dict` describes, below a node named `name`.

        Lists become loops (``*KEY``, one instance per item); dicts directly
        below the root or a loop instance become segments (``$KEY``), dicts
        below a segment composites; other values are element values (str or
        None).  Keys that already begin with ``$`` or ``*`` keep their name.
        """
        return cls._from(name, data, segment_level=name.startswith("$"))

    @classmethod
    def _from(cls, name: str, data: Dict[str, Any], segment_level: bool) -> Node:
        node = cls(name, data.get("#value"))
        for k, v in data.items():
            if k == "#value":
                continue
            marked = k[:1] in ("$", "*")
            if isinstance(v, list):
                loop = k if marked else "*" + k
                for item in v:
                    if isinstance(item, dict):
                        node.children.append(cls._from(loop, item, loop.startswith("$")))
                    else:
                        node.children.append(cls(loop, item))
            elif isinstance(v, dict):
                child = k if marked or segment_level else "$" + k
                node.children.append(cls._from(child, v, True))
            else:
                node.children.append(cls(k, v))
        return node

    def dumps(self, format: str = "tree") -> str:
        """The tree in the library's tree text format (``"tree"``, bytes
        above 127 escaped) or as its JSON document (``"json"``, each byte
        the character of that number), as `edi read` writes them."""
        if format not in ("tree", "json"):
            raise ValueError("format is 'tree' or 'json'")
        text = _ediprot.tree_dump(self, format == "json")
        return text.decode("utf-8" if format == "json" else "latin-1")

    # -- comparison and display ----------------------------------------
    def __eq__(self, other: object) -> bool:
        """Same name, value, loop, attrs and children, all the way down."""
        if not isinstance(other, Node):
            return NotImplemented
        todo = [(self, other)]
        while todo:
            a, b = todo.pop()
            ac, bc = a._children or (), b._children or ()
            if (a.name, a.value, a.loop, a.attrs, len(ac)) != (
                b.name, b.value, b.loop, b.attrs, len(bc)
            ):
                return False
            todo.extend(zip(ac, bc))
        return True

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        parts = [repr(self.name)]
        if self.value is not None:
            parts.append(f"value={self.value!r}")
        if self.loop:
            parts.append(f"loop={self.loop}")
        if self._children:
            parts.append(f"children={len(self._children)}")
        return f"Node({', '.join(parts)})"


def _rebuild(cls: type, name: Any, value: Any, children: Optional[List[Node]], loop: Any,
             attrs: Any) -> Node:
    """A node of class `cls` from the fields Node.__reduce__ gives."""
    node = cls.__new__(cls)
    Node.__init__(node, name, value, children, loop=loop, attrs=attrs)
    return node


class Document(Node):
    """A root Node with the file it came from and the findings of its read
    (VDA reads)."""

    __slots__ = {"file": "The file read (a path, or the name of an in-memory input).",
                 "findings": "The findings of the read, as Finding records."}

    def __init__(self, root: Node, file: str = "", findings: Sequence[Finding] = ()) -> None:
        self._adopt(root)
        self.file = file
        self.findings: List[Finding] = list(findings)


@dataclasses.dataclass(frozen=True)
class Finding:
    """What the library found: the record behind each sentence the edi
    command prints.  `kind` is one of failure, module, left_out, changed,
    validation, note; `severity` error, warning or info; `message` the
    message number in the file (0: none), `segment` the segment position
    in its message (UNH is 1; 0: none); `verbose` 1 marks a detail, 2 a
    summary standing for details."""

    kind: str
    severity: str
    file: str
    message: int
    segment: int
    tag: str
    element: str
    text: str
    verbose: int = 0

    @classmethod
    def _from(cls, t: tuple) -> Finding:
        kind, sev = t[0], t[1]
        return cls(
            _KINDS[kind] if 0 <= kind < len(_KINDS) else str(kind),
            _SEVERITIES[sev] if 0 <= sev < len(_SEVERITIES) else str(sev),
            *t[2:],
        )

    def __str__(self) -> str:
        return f"{self.file}: {self.text}" if self.file else self.text


@dataclasses.dataclass(frozen=True)
class Envelope:
    """The envelope a message came in, as the partner sent it: the UNA
    service characters (or the defaults), UNB values, and the UNG it stands
    in.  Texts are "" when absent; `repetition_sep` is " " when none;
    `interchange` counts the interchanges of the file from 1."""

    component_sep: str
    element_sep: str
    decimal_mark: str
    release_char: str
    repetition_sep: str
    segment_term: str
    has_una: bool
    syntax_id: str
    syntax_version: str
    sender: str
    sender_qualifier: str
    recipient: str
    recipient_qualifier: str
    date: str
    time: str
    control_ref: str
    application_ref: str
    test_indicator: str
    has_ung: bool
    group_id: str
    group_sender: str
    group_recipient: str
    group_ref: str
    interchange: int
    #: The character set the values were decoded with (ISO-8859-1, UTF-8, ...).
    charset: str = ""
    #: The envelope as the read's nodes: ``#envelope`` (every UNB element)
    #: and ``#group`` when the message is in a group; write sends them back.
    nodes: Tuple[Any, ...] = dataclasses.field(default=(), compare=False, repr=False)

    def to_dict(self) -> Dict[str, Any]:
        """The fields as a dict (the nodes as plain data)."""
        d = {f.name: getattr(self, f.name) for f in dataclasses.fields(self) if f.name != "nodes"}
        d["nodes"] = [n.to_dict() for n in self.nodes]
        return d


class Message:
    """One message: its tree (the message node ``*TYPE``), its UNH values,
    number in the file (from 1), segment count (UNH to UNT), envelope and
    findings.  Lookups (``msg["SG2"]``, find, find_all, value_at) go to the
    tree.  A message built by hand needs only its tree."""

    __slots__ = {
        "tree": "The message node (``*TYPE``), a Node.",
        "reference": "UNH 0062, the message reference.",
        "type": "UNH S009 0065, the message type (ORDERS).",
        "version": "UNH S009 0052, the version (D).",
        "release": "UNH S009 0054, the release (96A).",
        "number": "The message's number in the file, from 1.",
        "segments": "Its segments in the file, UNH to UNT.",
        "envelope": "The Envelope it came in, or None for one built by hand.",
        "findings": "The findings about this message, as Finding records.",
    }

    def __init__(
        self,
        tree: Node,
        *,
        reference: str = "",
        type: str = "",
        version: str = "",
        release: str = "",
        number: int = 0,
        segments: int = 0,
        envelope: Optional[Envelope] = None,
        findings: Sequence[Finding] = (),
    ) -> None:
        self.tree = tree
        self.reference = reference
        self.type = type
        self.version = version
        self.release = release
        self.number = number
        self.segments = segments
        self.envelope = envelope
        self.findings: List[Finding] = list(findings)

    def __getitem__(self, key: Union[int, slice, str]) -> Any:
        """As ``Node.__getitem__`` on the tree: ``msg["SG2"][0]["NAD"]``."""
        return self.tree[key]

    def get(self, key: str, default: Any = None) -> Any:
        """As Node.get on the tree."""
        return self.tree.get(key, default)

    def find(self, path: str) -> Optional[Node]:
        """As Node.find on the tree."""
        return self.tree.find(path)

    def find_all(self, path: str) -> List[Node]:
        """As Node.find_all on the tree."""
        return self.tree.find_all(path)

    def value_at(self, path: str, default: Optional[str] = None) -> Optional[str]:
        """As Node.value_at on the tree."""
        return self.tree.value_at(path, default)

    def to_dict(self, *, skip_empty: bool = False) -> Dict[str, Any]:
        """Number, UNH values, segment count, envelope and the tree (as
        Node.to_dict) as plain data."""
        return {
            "number": self.number,
            "reference": self.reference,
            "type": self.type,
            "version": self.version,
            "release": self.release,
            "segments": self.segments,
            "envelope": self.envelope.to_dict() if self.envelope is not None else None,
            "tree": self.tree.to_dict(skip_empty=skip_empty),
        }

    def __repr__(self) -> str:
        return f"<Message {self.number} {self.type} {self.reference!r}: {self.segments} segments>"


class Interchange:
    """What a read gives: the messages of the input in file order, the
    findings of the whole read, and the envelope of the first message (each
    message has its own, for files of several interchanges)."""

    __slots__ = {"file": "The file read (a path, or the name of an in-memory input).",
                 "messages": "The messages, in file order.",
                 "findings": "The findings of the whole read, as Finding records."}

    def __init__(self, file: str, messages: Sequence[Message], findings: Sequence[Finding] = ()):
        self.file = file
        self.messages: List[Message] = list(messages)
        self.findings: List[Finding] = list(findings)

    @property
    def envelope(self) -> Optional[Envelope]:
        """The envelope of the first message, or None without messages."""
        return self.messages[0].envelope if self.messages else None

    def __len__(self) -> int:
        """The number of messages."""
        return len(self.messages)

    def __iter__(self) -> Iterator[Message]:
        """The messages in file order."""
        return iter(self.messages)

    def __getitem__(self, i: int) -> Message:
        """Message `i` (from 0; its `number` counts from 1)."""
        return self.messages[i]

    def to_dict(self, *, skip_empty: bool = False) -> Dict[str, Any]:
        """File, envelope, messages (as Message.to_dict) and findings."""
        env = self.envelope
        return {
            "file": self.file,
            "envelope": env.to_dict() if env is not None else None,
            "messages": [m.to_dict(skip_empty=skip_empty) for m in self.messages],
            "findings": [dataclasses.asdict(f) for f in self.findings],
        }

    def __repr__(self) -> str:
        return f"<Interchange {self.file!r}: {len(self.messages)} messages>"


class Output(bytes):
    """The bytes of a write, with the findings of the write (values the
    writer changed, the configuration it chose) in `findings`."""

    findings: List[Finding]


_ediprot.register_node_type(Node)
