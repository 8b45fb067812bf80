"""The exceptions of the package: Error and its kinds."""

from __future__ import annotations

from typing import TYPE_CHECKING, List, Optional, Sequence

if TYPE_CHECKING:
    from ._model import Finding, Message

__all__ = ["Error", "ReadError", "WriteError", "ConfigError", "ArgumentError"]


class Error(Exception):
    """A failure of the library.  `file` is the input or output it is
    about, `findings` every finding of the operation, `finding` the one that
    says why (or None); `reason` is its sentence, and `message` (number in
    the file), `segment`, `tag` and `element` its place.  ``str(err)`` is
    "FILE: REASON", as the edi command prints it."""

    def __init__(self, reason: str, *, file: str = "", findings: Sequence[Finding] = (),
                 finding: Optional[Finding] = None) -> None:
        super().__init__(f"{file}: {reason}" if file else reason)
        self.reason = reason
        self.file = file
        self.findings: List[Finding] = list(findings)
        self.finding = finding
        self.message = finding.message if finding is not None else 0
        self.segment = finding.segment if finding is not None else 0
        self.tag = finding.tag if finding is not None else ""
        self.element = finding.element if finding is not None else ""


class ReadError(Error):
    """An input could not be read.  `messages` holds those read before the
    failure (message by message reads give them as they come)."""

    messages: List[Message]

    def __init__(self, *args, messages: Sequence[Message] = (), **kwargs) -> None:
        super().__init__(*args, **kwargs)
        self.messages = list(messages)


class WriteError(Error):
    """A tree could not be written, or the output could not be saved."""


class ConfigError(Error):
    """A configuration could not be made: an unknown message or directory,
    or no directory data."""


class ArgumentError(Error, ValueError):
    """Arguments the library refused (a sender holding a service character,
    a message given twice)."""


def why(findings: Sequence[Finding]) -> Optional[Finding]:
    """The finding that says why an operation failed: the last failure that
    is not a detail, else the last error, else the last finding."""
    for f in reversed(findings):
        if f.kind == "failure" and f.verbose != 1:
            return f
    for f in reversed(findings):
        if f.severity == "error":
            return f
    return findings[-1] if findings else None


def failure(cls: type, findings: Sequence[Finding], file: str = "", status: int = 1,
            **kwargs) -> Error:
    """The exception for a failed operation (status 2: ArgumentError)."""
    f = why(findings)
    reason = f.text if f is not None else "failed without a finding"
    name = f.file if f is not None and f.file else file
    if status == 2:
        cls = ArgumentError
        kwargs.pop("messages", None)
    return cls(reason, file=name, findings=findings, finding=f, **kwargs)
