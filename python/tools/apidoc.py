"""Writes the API reference of python/README.md from the docstrings.

    python3 python/tools/apidoc.py          # prints the reference
    python3 python/tools/apidoc.py --write  # replaces it in python/README.md

The reference stands between the lines ``<!-- api begin -->`` and
``<!-- api end -->``; the test suite checks that it is current.
"""

import inspect
import os
import re
import sys
from typing import Any, List

HERE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, HERE)

import vantix  # noqa: E402
import vantix.pytest_plugin  # noqa: E402
from importlib import import_module  # noqa: E402

# Modules by name: vantix.launch is also the name of a function.
client, connection, discovery, errors, launch, messages, schema = (
    import_module("vantix." + m) for m in ("client", "connection", "discovery", "errors", "launch", "messages", "schema")
)

BEGIN = "<!-- api begin -->"
END = "<!-- api end -->"


def _markdown(text: str) -> str:
    """Docstring markup as Markdown: ``x`` and :role:`x` become `x`."""
    text = re.sub(r":[a-z]+:`~?([^`]+)`", lambda m: "`%s`" % m.group(1).rsplit(".", 1)[-1]
                  if m.group(0).split("`")[1].startswith("~") else "`%s`" % m.group(1), text)
    text = re.sub(r"``([^`]+)``", r"`\1`", text)
    return text.replace("::\n", ":\n")


def _doc(obj: Any) -> str:
    return _markdown(inspect.cleandoc(obj.__doc__ or "").strip())


def _signature(name: str, obj: Any) -> str:
    try:
        text = str(inspect.signature(obj))
    except (TypeError, ValueError):
        return name
    return name + text.replace("'", "").replace("Ellipsis", "...")


def _members(cls: type) -> List[str]:
    lines = [""]
    for name, member in cls.__dict__.items():
        if name.startswith("_") and name not in ("__init__",):
            continue
        if name == "__init__":
            continue
        if isinstance(member, property):
            if member.__doc__:
                lines.append("- `%s` (property): %s" % (name, " ".join(_doc(member).split())))
        elif inspect.isfunction(member):
            if not member.__doc__:
                continue
            lines.append("")
            lines.append("#### `%s.%s`" % (cls.__name__, _signature(name, member).replace("(self, ", "(").replace("(self)", "()")))
            lines.append("")
            lines.append(_doc(member))
    return lines


def _entry(title: str, obj: Any, members: bool = True) -> List[str]:
    lines = ["", "### `%s`" % title, ""]
    doc = _doc(obj)
    if doc:
        lines.append(doc)
    if members and inspect.isclass(obj):
        lines += _members(obj)
    return lines


def reference() -> str:
    lines = ["## API reference", "", "Generated from the docstrings by `python/tools/apidoc.py`."]
    lines += ["", "### Finding and starting applications"]
    for name, obj in [
        ("vantix.connect", discovery.connect),
        ("vantix.list", discovery.list_applications),
        ("vantix.launch", launch.launch),
    ]:
        lines += ["", "#### `%s`" % _signature(name, obj), "", _doc(obj)]
    lines += _entry("vantix.Application", discovery.Application, members=False)
    lines += _entry("vantix.App", launch.App)
    lines += _entry("vantix.Client%s" % str(inspect.signature(client.Client)).replace("'", ""), client.Client)
    lines += _entry("Event and log streams", connection.Stream)
    lines += _entry("vantix.Event", messages.Event, members=False)
    lines += _entry("vantix.LogEntry", messages.LogEntry, members=False)
    lines += _entry("vantix.Schema", schema.Schema)
    for cls in (schema.Target, schema.Property, schema.Method, schema.Signal, schema.Command, schema.Argument,
                schema.Device, schema.Enum):
        lines += ["", "- `%s`: %s" % (cls.__name__, " ".join(_doc(cls).split()))]
    lines += ["", "### Errors", "", _doc(errors)]
    lines.append("")
    for cls in (errors.Error, errors.UnknownCommand, errors.UnknownTarget, errors.BadValue, errors.BadRequest,
                errors.Failed, errors.Disconnected, errors.ConnectError, errors.Timeout, errors.ScriptError,
                errors.ExpectationFailed):
        lines.append("- `vantix.%s`: %s" % (cls.__name__, " ".join(_doc(cls).split())))
    lines += ["", "### Words", "", _doc(vantix.words)]
    for name in ("quote", "join", "split"):
        obj = getattr(vantix.words, name)
        lines += ["", "#### `vantix.%s`" % _signature(name, obj), "", _doc(obj)]
    lines += ["", "### The pytest plugin", "", _doc(vantix.pytest_plugin)]
    return "\n".join(lines) + "\n"


def main() -> int:
    text = reference()
    if sys.argv[1:] == ["--write"]:
        path = os.path.join(HERE, "README.md")
        with open(path, encoding="utf-8") as f:
            readme = f.read()
        head, _, rest = readme.partition(BEGIN + "\n")
        _, _, tail = rest.partition(END)
        with open(path, "w", encoding="utf-8") as f:
            f.write(head + BEGIN + "\n" + text + END + tail)
    else:
        sys.stdout.write(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
