"""Writes Python data as definition-language YAML (docs/definition-language.md).

Generators build plain dicts and lists and hand them here, so that quoting and layout are decided
in one place. A mapping or list whose values are all scalars, or small mappings of scalars, goes on
one line in flow style, the way hand-written definitions read; anything deeper is written in block
style. Key order is kept as given.
"""

import json
import re

_PLAIN = re.compile(r"^[A-Za-z_][A-Za-z0-9_]*$")
# Words a YAML reader may take for something other than text.
_RESERVED = {"true", "false", "null", "yes", "no", "on", "off", "y", "n", "~"}


def scalar(value):
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, int):
        return str(value)
    text = str(value)
    if _PLAIN.match(text) and text.lower() not in _RESERVED:
        return text
    # JSON's double-quoted form is also a valid YAML double-quoted scalar.
    return json.dumps(text)


def _is_scalar(value):
    return not isinstance(value, (dict, list))


def _flat(value, depth=0):
    """True when the value can stand on one line: nested at most two levels, and short."""
    if _is_scalar(value):
        return True
    if depth >= 3:
        return False
    items = value.values() if isinstance(value, dict) else value
    return all(_flat(item, depth + 1) for item in items)


def _flow(value):
    if _is_scalar(value):
        return scalar(value)
    if isinstance(value, dict):
        return "{" + ", ".join(f"{scalar(k)}: {_flow(v)}" for k, v in value.items()) + "}"
    return "[" + ", ".join(_flow(v) for v in value) + "]"


def _wrapped(lead, values, indent, out):
    """A long list of scalars in flow style over several lines."""
    line = lead + "["
    pad = " " * (indent + 4)
    for i, value in enumerate(values):
        piece = scalar(value) + ("]" if i == len(values) - 1 else ",")
        if len(line) + len(piece) > 110 and not line.endswith("["):
            out.append(line)
            line = pad
        elif not line.endswith("[") and line != pad:
            line += " "
        line += piece
    out.append(line)


def _lines(value, indent, out):
    pad = " " * indent
    if isinstance(value, dict):
        for key, item in value.items():
            if _flat(item) and len(_flow(item)) + indent < 160:
                out.append(f"{pad}{scalar(key)}: {_flow(item)}")
            elif isinstance(item, list) and all(_is_scalar(v) for v in item):
                _wrapped(f"{pad}{scalar(key)}: ", item, indent, out)
            else:
                out.append(f"{pad}{scalar(key)}:")
                _lines(item, indent + 2, out)
    else:
        for item in value:
            if _flat(item) and len(_flow(item)) + indent < 160:
                out.append(f"{pad}- {_flow(item)}")
            elif isinstance(item, dict):
                # The first key goes on the dash line, the others under it.
                inner = []
                _lines(item, indent + 2, inner)
                inner[0] = pad + "- " + inner[0][indent + 2:]
                out.extend(inner)
            else:
                out.append(f"{pad}-")
                _lines(item, indent + 2, out)


def dump(document, header_lines):
    """The whole source: a comment header, then the document."""
    out = ["# " + line if line else "#" for line in header_lines]
    _lines(document, 0, out)
    return "\n".join(out) + "\n"
