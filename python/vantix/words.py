"""How a console line is cut into words and how a word is written so that it
comes back as it was; the same rule as the engine's and every other client's.

Words are separated by blanks (Qt's ``QChar::isSpace()``). A double-quoted
word keeps its blanks and may be empty (``""``); inside the quotes a
backslash escapes: ``\\n``, ``\\r`` and ``\\t`` are a line feed, a carriage
return and a tab, ``\\uXXXX`` is that UTF-16 code unit, and any other
character after a backslash stands for itself (``\\"`` and ``\\\\``). Outside
quotes a backslash is an ordinary character.

The engine judges UTF-16 code units with Qt's Unicode tables, so the tables
are written out here rather than taken from :mod:`unicodedata`, whose
version moves with Python's. A character outside the Basic Multilingual
Plane reaches Qt as two surrogates, which need nothing.
"""

import re
from typing import Iterable, List

__all__ = ["quote", "join", "split", "WordsError"]


class WordsError(ValueError):
    """A line that cannot be cut into words: an open quote, a cut escape."""


# QChar::isSpace(): 0x09-0x0d, 0x20, 0x85, 0xa0 and the Zs, Zl, Zp categories.
_BLANKS = frozenset(
    [0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x20, 0x85, 0xA0, 0x1680]
    + list(range(0x2000, 0x200B))
    + [0x2028, 0x2029, 0x202F, 0x205F, 0x3000]
)

# Other_Format (Cf) in the Basic Multilingual Plane, as Qt 5.15 has it.
_FORMAT_RANGES = (
    (0x00AD, 0x00AD),
    (0x0600, 0x0605),
    (0x061C, 0x061C),
    (0x06DD, 0x06DD),
    (0x070F, 0x070F),
    (0x08E2, 0x08E2),
    (0x180E, 0x180E),
    (0x200B, 0x200F),
    (0x202A, 0x202E),
    (0x2060, 0x2064),
    (0x2066, 0x206F),
    (0xFEFF, 0xFEFF),
    (0xFFF9, 0xFFFB),
)
_FORMAT = frozenset(c for low, high in _FORMAT_RANGES for c in range(low, high + 1))


def _is_blank(code: int) -> bool:
    return code in _BLANKS


def _needs_escape(code: int) -> bool:
    """What must not stand bare in a quoted word: anything that could end a
    line, or that a reader would not see (blanks other than the space,
    controls, format characters)."""
    if code == 0x20:
        return False
    return code in _BLANKS or code < 0x20 or 0x7F <= code <= 0x9F or code in _FORMAT


def _class(codes: Iterable[int]) -> str:
    return "".join("\\u%04x" % c for c in sorted(codes))


# Any character that keeps a word from standing bare; searched in one pass
# since every command a client sends goes through here.
_NOT_BARE = re.compile(
    "[\"%s]" % _class(_BLANKS | _FORMAT | set(range(0x20)) | set(range(0x7F, 0xA0)))
)


def quote(word: str) -> str:
    """``word`` as one word of a console line: unchanged when it needs
    nothing, else in double quotes with escapes. The result is always one
    line of printable text."""
    if word and word[0] != "#" and _NOT_BARE.search(word) is None:
        return word
    out = ['"']
    for ch in word:
        code = ord(ch)
        if ch == '"' or ch == "\\":
            out.append("\\" + ch)
        elif ch == "\n":
            out.append("\\n")
        elif ch == "\r":
            out.append("\\r")
        elif ch == "\t":
            out.append("\\t")
        elif code <= 0xFFFF and _needs_escape(code):
            out.append("\\u%04x" % code)
        else:
            out.append(ch)
    out.append('"')
    return "".join(out)


def join(words: Iterable[str]) -> str:
    """The words quoted and joined by spaces: a line that :func:`split`
    (and the engine) gives back as ``words``."""
    return " ".join(quote(w) for w in words)


def _utf16_units(line: str) -> List[str]:
    # Qt reads the line as UTF-16; \uXXXX may then make half of a pair.
    units = line.encode("utf-16-le", "surrogatepass")
    return [units[i : i + 2].decode("utf-16-le", "surrogatepass") for i in range(0, len(units), 2)]


def _fuse(units: List[str]) -> str:
    return "".join(units).encode("utf-16-le", "surrogatepass").decode("utf-16-le", "surrogatepass")


def split(line: str) -> List[str]:
    """The words of ``line``, as the engine cuts them; raises
    :class:`WordsError` when a quote is not closed or an escape is cut short."""
    chars = _utf16_units(line) if any(ord(c) > 0xFFFF for c in line) else list(line)
    words: List[str] = []
    word: List[str] = []
    in_word = False
    quoted = False
    i = 0
    n = len(chars)
    while i < n:
        c = chars[i]
        if quoted:
            if c == '"':
                quoted = False
            elif c != "\\":
                word.append(c)
            else:
                i += 1
                if i == n:
                    raise WordsError("a backslash ends the line inside quotes")
                e = chars[i]
                if e == "n":
                    word.append("\n")
                elif e == "r":
                    word.append("\r")
                elif e == "t":
                    word.append("\t")
                elif e == "u":
                    digits = "".join(chars[i + 1 : i + 5])
                    if len(digits) != 4 or any(d not in "0123456789abcdefABCDEF" for d in digits):
                        raise WordsError("\\u needs four hex digits")
                    word.append(chr(int(digits, 16)))
                    i += 4
                else:
                    word.append(e)
        elif c == '"':
            quoted = True
            in_word = True
        elif len(c) == 1 and _is_blank(ord(c)):
            if in_word:
                words.append(_fuse(word))
                word = []
                in_word = False
        else:
            word.append(c)
            in_word = True
        i += 1
    if quoted:
        raise WordsError("a quote is not closed")
    if in_word:
        words.append(_fuse(word))
    return words
