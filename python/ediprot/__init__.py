"""ediprot: UN/EDIFACT interchanges and VDA record files as trees, on libedi.

Read a file into messages, look values up by path, write trees back::

    import ediprot
    ic = ediprot.read("orders.edi")
    for msg in ic.messages:
        print(msg.reference, msg.type, msg.find("SG2.NAD.3035").value)
    data = ediprot.write(ic, sender="ME", recipient="YOU")

Names and values are bytes in the library; here they are str decoded as
Latin-1 (every byte is one character, nothing is lost) and written back
encoded the same way.  Nothing is printed: what the library finds comes back
as Finding records, failures as exceptions (Error and its kinds).
"""

from __future__ import annotations

import os
from typing import Any, Dict, Iterable, Iterator, List, Optional, Sequence, Tuple, Union

from . import _ediprot
from ._errors import ArgumentError, ConfigError, Error, ReadError, WriteError, failure
from ._model import Document, Envelope, Finding, Interchange, Message, Node, Output

__all__ = [
    "read", "messages", "write", "validate", "config", "directories", "directories_path",
    "message_types",
    "vda_read", "vda_write", "library_version",
    "Node", "Document", "Message", "Interchange", "Envelope", "Finding", "Output",
    "Error", "ReadError", "WriteError", "ConfigError", "ArgumentError",
]

__version__ = "1.0.0"

Source = Union[str, "os.PathLike[str]", bytes, bytearray, memoryview, Any]
PathOrList = Union[str, "os.PathLike[str]", Sequence[Union[str, "os.PathLike[str]"]], None]
Messages = Union[Interchange, Message, Node, Iterable[Union[Message, Node]]]


def library_version() -> str:
    """The version of libedi in use."""
    return _ediprot.version()


# ---- inputs ------------------------------------------------------------

def _ispath(source: Any) -> bool:
    return isinstance(source, (str, os.PathLike))


def _bytes_of(source: Any, name: Optional[str]) -> Tuple[bytes, str]:
    """The bytes and name of an in-memory source or binary file object."""
    if isinstance(source, (bytes, bytearray, memoryview)):
        return bytes(source), name or "input"
    read = getattr(source, "read", None)
    if read is None:
        raise TypeError("source must be a path, bytes or a binary file object, not "
                        + type(source).__name__)
    data = read()
    if not isinstance(data, (bytes, bytearray)):
        raise TypeError("source must be opened in binary mode")
    fname = getattr(source, "name", None)
    return bytes(data), name or (fname if isinstance(fname, str) else "input")


def _paths(config: PathOrList) -> List[bytes]:
    if config is None:
        return []
    if _ispath(config):
        return [os.fsencode(config)]
    return [os.fsencode(c) for c in config]


def _optpath(p: Any) -> Optional[bytes]:
    return None if p is None else os.fsencode(p)


def _findings(tuples: Sequence[tuple]) -> List[Finding]:
    return [Finding._from(t) for t in tuples]


def _open(source: Source, options: Any, name: Optional[str]) -> Tuple[Any, str]:
    if _ispath(source):
        return _ediprot.open_path(os.fsencode(source), options), os.fsdecode(source)
    data, fname = _bytes_of(source, name)
    return _ediprot.open_memory(data, os.fsencode(fname), options), fname


def _read_options(config: PathOrList, raw: bool, keep_going: bool, validate: bool,
                  directories: Any, servconf: Any) -> Any:
    return _ediprot.ReadOptions(raw, keep_going, validate, _paths(config), _optpath(servconf),
                                _optpath(directories))


def _iterate(reader: Any, file: str, found: Optional[List[Finding]] = None) -> Iterator[Message]:
    """The reader's messages; ReadError after a failure.  The reader's own
    findings go to `found` before it is closed.  Messages of one
    interchange share one Envelope object."""
    envelopes: Dict[tuple, Envelope] = {}
    try:
        while True:
            t = reader.next()
            if t is None:
                break
            key = (t[7], t[9][2])  # the envelope's values and all its UNG's
            env = envelopes.get(key)
            if env is None:
                if len(envelopes) > 64:
                    envelopes.clear()
                env = envelopes[key] = Envelope(*t[7], charset=t[9][0], nodes=t[9][1])
            yield Message(t[0], reference=t[1], type=t[2], version=t[3], release=t[4],
                          number=t[5], segments=t[6], envelope=env, findings=_findings(t[8]))
        if found is not None:
            found.extend(_findings(reader.findings()))
        if reader.state < 0:
            raise failure(ReadError, _findings(reader.findings()), file)
    finally:
        reader.close()


def read(source: Source, *, config: PathOrList = None, raw: bool = False,
         keep_going: bool = False, validate: bool = False, directories: Any = None,
         servconf: Any = None, name: Optional[str] = None) -> Interchange:
    """Read an EDIFACT input whole: a path, bytes or a binary file object.

    config: configuration tree file(s) (with several, each message goes with
    the one named after its type); none: generated from the UN/EDIFACT
    directory each UNH names.  raw: hand the bytes to the module untouched.
    keep_going: segments left out of the tree are findings, not a failure.
    validate: each message is also checked against its directory (findings
    of kind "validation" on the message; no failure).  directories: the
    directory data folder.  servconf: a service configuration file.  name:
    names an in-memory input in findings.

    Raises ReadError (with the messages read before) when the input fails.
    """
    reader, file = _open(source, _read_options(config, raw, keep_going, validate, directories,
                                               servconf), name)
    got: List[Message] = []
    found: List[Finding] = []
    try:
        for m in _iterate(reader, file, found):
            got.append(m)
    except ReadError as e:
        e.messages = got
        raise
    return Interchange(file, got, found)


def messages(source: Source, *, config: PathOrList = None, raw: bool = False,
             keep_going: bool = False, validate: bool = False, directories: Any = None,
             servconf: Any = None, name: Optional[str] = None) -> Iterator[Message]:
    """Yield the messages of an EDIFACT input one at a time (arguments as
    for read).  Memory follows the library's working copy (an interchange,
    or a run of messages of one type), not the whole file's trees.  Raises
    ReadError when the input fails, after the messages read before."""
    reader, file = _open(source, _read_options(config, raw, keep_going, validate, directories,
                                               servconf), name)
    return _iterate(reader, file)


# ---- outputs -----------------------------------------------------------

def _message_nodes(items: Messages) -> Tuple[List[Node], bool, Optional[Envelope], bool]:
    """The nodes to write, whether one root is written whole, the first
    envelope found, and whether the nodes carry the envelopes the messages
    came in (``#envelope``/``#group`` in front of the messages of each
    interchange and group, as a read's tree has them)."""
    if isinstance(items, Interchange):
        items = items.messages
    elif isinstance(items, (Message, Node)):
        items = [items]
    nodes: List[Node] = []
    env = None
    carried = False
    last: Optional[Envelope] = None
    for it in items:
        if isinstance(it, Node) and isinstance(it.name, str) and it.name[:1] == "#":
            continue  # an envelope node of a read's root, not a message
        if isinstance(it, Message):
            env = env or it.envelope
            e = it.envelope
            if e is not None and e is not last and e.nodes:
                # A new interchange gets its #envelope; a new group of the
                # same interchange only its #group.
                same = last is not None and last.interchange == e.interchange
                nodes.extend(n for n in e.nodes if not (same and n.name == "#envelope"))
                carried = True
            last = e
            it = it.tree
        if not isinstance(it, Node):
            raise TypeError("write takes an Interchange, Messages or Nodes, not "
                            + type(it).__name__)
        nodes.append(it)
    whole = len(nodes) == 1 and nodes[0].name == "edi"
    return nodes, whole, env, carried


def _star(n: Node) -> Node:
    """A message node is a loop node (*ORDERS): a shallow copy named so."""
    if n.is_loop:
        return n
    m = Node.__new__(Node)
    m._adopt(n)
    m.name = "*" + n.name
    return m


def _encode(s: Optional[str], what: str = "") -> Optional[bytes]:
    """A text argument as the library takes it (encoded where values are)."""
    try:
        return None if s is None else _ediprot.encode_text(s)
    except ValueError as e:
        raise ArgumentError(f"the {what} {e}", file="tree") from None


def _deliver(out: Output, target: Any, file: str) -> None:
    """Write `out` to a path whole or not at all, or to a file object."""
    if target is None:
        return
    if _ispath(target):
        status, _, _, _, found = _ediprot.save(os.fsencode(target), bytes(out))
        if status != 0:
            raise failure(WriteError, _findings(found), file, status)
    else:
        target.write(out)


def _output(result: tuple, cls: type, file: str) -> Output:
    status, _, text, _, found = result
    findings = _findings(found)
    if status != 0 or text is None:
        raise failure(cls, findings, file, status)
    out = Output(text)
    out.findings = findings
    return out


def write(messages: Messages, target: Any = None, *, config: PathOrList = None,
          message: Optional[str] = None, sender: Optional[str] = None,
          recipient: Optional[str] = None, reference: Optional[str] = None,
          test: bool = False, exact: bool = False, directories: Any = None,
          name: Optional[str] = None) -> Output:
    """Write messages as one EDIFACT interchange and return its bytes.

    messages: an Interchange, a Message, a message Node (``*ORDERS``; a
    name without ``*`` gets it), a root Node named ``edi`` holding message
    nodes, or an iterable of Messages and Nodes.  target: a path, written
    whole or not at all, or a binary file object.  config: outbound
    configuration file(s); none: generated from each UNH (or `message`,
    TYPE:DIRECTORY such as ORDERS:D96A).  Messages that were read go back in
    the envelope they came in (UNA, every UNB element, their UNG groups;
    messages of several interchanges as several interchanges);
    sender/recipient (ID, ID:QUALIFIER or ID:QUALIFIER:ROUTING) set the
    UNB's over it, and are needed for messages built by hand (else
    ArgumentError).
    reference: the control reference (default: a new one).  test: mark a
    test interchange.  exact: the module's output untouched (no count,
    reference or date fixes).  Values go back in the character set they
    were read in; values of nodes made by hand are written as Latin-1.

    Raises WriteError (ArgumentError for refused arguments).
    """
    nodes, whole, env, carried = _message_nodes(messages)
    # Messages that came in an envelope go back in it; options set what
    # they name over it.
    if not carried and sender is None and env is not None:
        sender = env.sender
    if not carried and recipient is None and env is not None:
        recipient = env.recipient
    if not carried and (not sender or not recipient):
        # libedi would write a UNB without them.
        raise ArgumentError("a sender and a recipient are needed (no envelope gives them)",
                            file=name or "tree")
    out_name = os.fsdecode(target) if _ispath(target) else ""
    options = {
        "configs": _paths(config), "message": _encode(message, "message"),
        "sender": _encode(sender, "sender"), "recipient": _encode(recipient, "recipient"),
        "reference": _encode(reference, "reference"), "test": test, "exact": exact,
        "name": _encode(name, "name"), "output": os.fsencode(out_name),
        "directories": _optpath(directories),
    }
    try:
        result = _ediprot.write_messages(
            [n if whole or n.name[:1] == "#" else _star(n) for n in nodes], options, whole)
    except ValueError as e:
        raise WriteError(str(e), file=name or "tree") from e
    out = _output(result, WriteError, out_name)
    _deliver(out, target, out_name)
    return out


def validate(source: Source, *, name: Optional[str] = None) -> List[Finding]:
    """Check an EDIFACT interchange against the directories its UNH segments
    name, or a VDA file against the bundled layout of its records; the
    findings, empty for a clean file.  Raises ReadError when the input
    cannot be read at all."""
    if _ispath(source):
        file = os.fsdecode(source)
        result = _ediprot.validate_path(os.fsencode(source))
    else:
        data, file = _bytes_of(source, name)
        result = _ediprot.validate_memory(data, os.fsencode(file))
    status, _, _, _, found = result
    findings = _findings(found)
    if status == 2 or any(f.kind == "failure" for f in findings):
        raise failure(ReadError, findings, file, status)
    return findings


# ---- configurations ----------------------------------------------------

def config(message: str, directory: str, outbound: bool = False) -> Node:
    """The generated configuration tree of `message` (ORDERS) in
    `directory` (D96A), inbound or outbound: a root ``edi`` whose child is
    the message node, each node with its layout in `attrs`.  Raises
    ConfigError for an unknown message or directory."""
    status, trees, _, _, found = _ediprot.config(message, directory, outbound)
    if status != 0 or not trees:
        raise failure(ConfigError, _findings(found), "", status)
    return trees[0]


def directories() -> List[str]:
    """The UN/EDIFACT directories the bundled data holds (D93A ... D10B)."""
    status, _, _, items, found = _ediprot.config_list(None)
    if status != 0:
        raise failure(ConfigError, _findings(found), "", status)
    return list(items)


def directories_path() -> str:
    """The folder of the directory data in use: $EDIPROT_DIRECTORIES, else
    the data installed with the package."""
    return _ediprot.directories_path()


def message_types(directory: str) -> Dict[str, str]:
    """The messages of a directory: type to name (ORDERS: Purchase order
    message)."""
    status, _, _, items, found = _ediprot.config_list(directory.encode("latin-1"))
    if status != 0:
        raise failure(ConfigError, _findings(found), "", status)
    return dict(item.split("\t", 1) for item in items)


# ---- VDA ---------------------------------------------------------------

def vda_read(source: Source, config: Any = None, *, raw: bool = False,
             keep_going: bool = False, name: Optional[str] = None) -> Document:
    """Read a VDA 4905 or 4913 record file (a path, bytes or a binary file
    object) into a tree: a root ``vda`` with every record as a loop
    instance.  config: a configuration file; none: the bundled one of the
    family its first record belongs to.  Raises ReadError."""
    options = _read_options(None, raw, keep_going, False, None, None)
    conf = _optpath(config)
    if _ispath(source):
        file = os.fsdecode(source)
        result = _ediprot.vda_read(os.fsencode(source), conf, options)
    else:
        data, file = _bytes_of(source, name)
        result = _ediprot.vda_read_memory(data, os.fsencode(file), conf, options)
    status, trees, _, _, found = result
    findings = _findings(found)
    if status != 0 or not trees:
        raise failure(ReadError, findings, file, status)
    return Document(trees[0], file, findings)


def vda_write(tree: Node, target: Any = None, config: Any = None) -> Output:
    """Write a VDA tree (as vda_read gives it) as a record file and return
    its bytes; to `target` too when given (a path, whole or not at all, or a
    binary file object).  config: a configuration file; none: the bundled
    one of the tree's family.  Raises WriteError."""
    out_name = os.fsdecode(target) if _ispath(target) else ""
    options = {"output": os.fsencode(out_name)}
    try:
        result = _ediprot.vda_write(tree, _optpath(config), options)
    except ValueError as e:
        raise WriteError(str(e), file="tree") from e
    out = _output(result, WriteError, out_name)
    _deliver(out, target, out_name)
    return out
