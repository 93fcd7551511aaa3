"""The envelope of the HTTPS service: form bodies in, small documents out.

The client's encoder and decoder are not standard; docs/wire.md tells how they
differ and why each oddity here is needed.
"""
from __future__ import annotations

import codecs
import re

_ASTRAL = re.compile("[\U00010000-\U0010ffff]")
_HALF_PAIR = re.compile("[\ud800-\udfff]")
_PERCENT = re.compile(rb"%([0-9A-Fa-f]{2})")


class Failure(Exception):
    """A refusal in words for the user; `kind` 1 tells a name clash, 0 all else."""

    def __init__(self, name: str, description: str, kind: int = 0) -> None:
        super().__init__(description)
        self.name = name
        self.description = description
        self.kind = kind


def _decode_oddities(error: UnicodeError) -> tuple[str, int]:
    """Reads what strict UTF-8 refuses: halves of pairs, and U+0080 as one byte."""
    if not isinstance(error, UnicodeDecodeError):
        raise error
    data, start = error.object, error.start
    half = data[start:start + 3]
    if len(half) == 3 and half[0] == 0xED and 0xA0 <= half[1] <= 0xBF and 0x80 <= half[2] <= 0xBF:
        return chr(0xD000 | (half[1] & 0x3F) << 6 | half[2] & 0x3F), start + 3
    if data[start] == 0x80:
        return "\x80", start + 1
    return "\ufffd", error.end


codecs.register_error("quilldeck", _decode_oddities)


def decode_text(data: bytes) -> str:
    """The text of client bytes; never fails. A half of a pair without its other half stays."""
    text = data.decode("utf-8", "quilldeck")
    if _HALF_PAIR.search(text):
        text = text.encode("utf-16-le", "surrogatepass").decode("utf-16-le", "surrogatepass")
    return text


def encode_text(text: str) -> bytes:
    """UTF-8 with characters above U+FFFF as two three-byte halves, which is all
    that the client's decoder reads."""
    if _ASTRAL.search(text):
        text = _ASTRAL.sub(_split_pair, text)
    return text.encode("utf-8", "surrogatepass")


def _split_pair(match: re.Match[str]) -> str:
    rest = ord(match.group()) - 0x10000
    return chr(0xD800 + (rest >> 10)) + chr(0xDC00 + (rest & 0x3FF))


def escape(value: str) -> str:
    """`value` as it stands between two tags.

    A backslash in last place would take the closing tag's bracket with it, and the
    format has no escape for it: a blank behind it keeps the document whole.
    """
    if "<" in value or ">" in value:
        value = value.replace("<", "\\<").replace(">", "\\>")
    return value + " " if value.endswith("\\") else value


def element(name: str, value: object) -> str:
    """One leaf element; booleans become True and False."""
    return f"<{name}>{escape(str(value))}</{name}>"


def elements(**fields: object) -> str:
    """Leaf elements in the order given."""
    return "".join(element(name, value) for name, value in fields.items())


def document(inner: str) -> bytes:
    """The whole reply around `inner`, which is escaped already."""
    return encode_text(f"<Result>{inner}</Result>")


def failure_document(failure: Failure) -> bytes:
    """The reply that carries a failure."""
    fields = elements(Type=failure.kind, Name=failure.name, Description=failure.description)
    return document(f"<Error>{fields}</Error>")


MAX_PARAMETERS = 64
MAX_PARAMETER = 1 << 15
"""Characters of a value; what is kept has closer bounds of its own."""


class Form:
    """The parameters of one request, in wire order."""

    def __init__(self, body: bytes) -> None:
        self.pairs: list[tuple[str, str]] = []
        parts = body.split(b"&", MAX_PARAMETERS) if body else []
        if len(parts) > MAX_PARAMETERS:
            raise Failure("Wrong request", "The request has too many parameters.")
        for part in parts:
            key, _, value = part.partition(b"=")
            self.pairs.append((self._decode(key), self._decode(value)))
        if any(len(key) + len(text) > MAX_PARAMETER for key, text in self.pairs):
            raise Failure("Wrong request", "A value of the request is too long.")
        self._first: dict[str, str] = {}
        for name, text in self.pairs:
            self._first.setdefault(name, text)

    @staticmethod
    def _decode(data: bytes) -> str:
        # The client escapes its own "+", so a bare one is no blank here.
        if b"%" in data:
            data = _PERCENT.sub(lambda match: bytes((int(match.group(1), 16),)), data)
        return decode_text(data)

    def __contains__(self, key: str) -> bool:
        return key in self._first

    def get(self, key: str, default: str = "") -> str:
        """The first value of `key`, whatever it holds."""
        return self._first.get(key, default)

    def text(self, key: str) -> str:
        """A text that the store can keep: refuses half a surrogate pair."""
        value = self.get(key)
        if _HALF_PAIR.search(value):
            raise Failure("Wrong text", "The text holds half of a character and cannot be stored.")
        return value

    def integer(self, key: str, low: int = -(1 << 63), high: int = (1 << 63) - 1) -> int:
        """A decimal number within the bounds."""
        value = self.get(key).strip()
        if not re.fullmatch(r"[+-]?[0-9]{1,19}", value) or not low <= int(value) <= high:
            raise Failure("Wrong request", f"The value of '{key}' is not a number that fits here.")
        return int(value)
