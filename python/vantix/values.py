"""Typed values: the JSON of an answer as Python values, and Python values as
the words the console reads."""

import enum
import math
from typing import Any, Callable, Mapping, Optional

from .schema import Command, Schema

__all__ = ["from_reply", "format_value", "INTEGER_TYPES", "FLOAT_TYPES", "TEXT_TYPES"]

INTEGER_TYPES = frozenset(
    [
        "int",
        "uint",
        "long",
        "ulong",
        "qlonglong",
        "qulonglong",
        "short",
        "ushort",
        "char",
        "uchar",
        "schar",
        "signed char",
        "unsigned char",
        "qint8",
        "qint16",
        "qint32",
        "qint64",
        "quint8",
        "quint16",
        "quint32",
        "quint64",
    ]
)
FLOAT_TYPES = frozenset(["double", "float", "qreal"])
TEXT_TYPES = frozenset(["QString", "QByteArray", "QChar", "QUrl", "QUuid", "QDateTime", "QDate", "QTime"])


def flags_of(text: str) -> frozenset:
    """The names of a flags value as the protocol writes it (``F_A|F_B``)."""
    return frozenset(part for part in text.split("|") if part)


def from_reply(type_name: str, value: Any, enum_flag: Callable[[str], Optional[bool]]) -> Any:
    """The Python value of an answer's ``type`` and ``value``.

    ``enum_flag(type_name)`` says whether a type is a flag type (True), an
    enum (False) or neither (None); it is asked only about types that are
    not Qt's own.
    """
    if type_name in INTEGER_TYPES:
        return int(value) if isinstance(value, (int, float)) and not isinstance(value, bool) else value
    if type_name in FLOAT_TYPES:
        return float(value) if isinstance(value, (int, float)) and not isinstance(value, bool) else value
    if type_name == "bool":
        return bool(value) if isinstance(value, bool) else value
    if type_name in TEXT_TYPES:
        return value
    if type_name == "QStringList":
        return [str(v) for v in value] if isinstance(value, list) else value
    if type_name == "schema":
        return Schema(value) if isinstance(value, Mapping) else value
    if type_name == "commands":
        return [Command(c) for c in value if isinstance(c, Mapping)] if isinstance(value, list) else value
    if isinstance(value, str) and not type_name.startswith("Q"):
        flag = enum_flag(type_name)
        if flag:
            return flags_of(value)
    return value


def format_value(value: Any) -> str:
    """``value`` as the console reads it, before quoting.

    ``bool`` as ``true``/``false``; numbers in decimal; a set of flag names
    joined by ``|`` (an empty set as ``0``); a list or tuple as a
    ``QStringList``, joined by commas; an :class:`enum.Enum` member by its
    name; ``bytes`` as UTF-8 text.
    """
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, enum.Enum):
        return value.name
    if isinstance(value, int):
        return str(int(value))
    if isinstance(value, float):
        # Shortest text that reads back the same; the console refuses nan and inf itself.
        return repr(value)
    if isinstance(value, str):
        return value
    if isinstance(value, (bytes, bytearray)):
        return bytes(value).decode("utf-8")
    if isinstance(value, (set, frozenset)):
        names = sorted(format_value(v) for v in value)
        return "|".join(names) if names else "0"
    if isinstance(value, (list, tuple)):
        items = [format_value(v) for v in value]
        for item in items:
            if "," in item:
                raise ValueError("an item of a list cannot hold a comma: %r" % item)
        return ",".join(items)
    raise TypeError("cannot write a %s as a console value" % type(value).__name__)


def same_value(written: Any, read: Any) -> bool:
    """Whether a value read back is the one written, by the console's reading."""
    if isinstance(read, frozenset):
        if isinstance(written, (set, frozenset)):
            return read == frozenset(format_value(v) for v in written)
        if isinstance(written, str):
            return read == flags_of(written)
        return True
    if isinstance(read, bool) or isinstance(written, bool):
        return read == written if isinstance(written, bool) else True
    if isinstance(read, float) and isinstance(written, (int, float)):
        return math.isclose(read, written, rel_tol=1e-6, abs_tol=1e-9)
    if isinstance(read, int) and isinstance(written, int):
        return read == written
    if isinstance(read, str) and isinstance(written, (str, enum.Enum)):
        return read == format_value(written)
    if isinstance(read, list) and isinstance(written, (list, tuple)):
        return read == [format_value(v) for v in written]
    # A value the console read from other text (a number for an enum, "on" for a bool): it judged it.
    return True
