"""The answer of ``describe`` as Python objects.

Every class keeps the object it was made from in ``raw``, so keys that a
newer server adds are at hand before this package knows them. Console and
debug commands are both :class:`Command`; a server that still describes a
debug command's arguments as text (``"[,1|2],<percent>"``) gives that text in
``Command.arguments_text`` and no :class:`Argument` list.
"""

from typing import Any, Dict, Iterator, List, Mapping, Optional

__all__ = [
    "Schema",
    "Command",
    "Argument",
    "Shortcut",
    "Device",
    "Target",
    "Property",
    "Method",
    "Signal",
    "Parameter",
    "Enum",
]


def _str(raw: Mapping[str, Any], key: str, default: str = "") -> str:
    value = raw.get(key)
    return value if isinstance(value, str) else default


def _list(raw: Mapping[str, Any], key: str) -> List[Any]:
    value = raw.get(key)
    return value if isinstance(value, list) else []


class _Described:
    __slots__ = ("raw",)

    def __init__(self, raw: Mapping[str, Any]):
        self.raw = dict(raw) if isinstance(raw, Mapping) else {}

    def __repr__(self) -> str:
        return "<%s %s>" % (type(self).__name__, getattr(self, "name", ""))


class Argument(_Described):
    """An argument of a command: ``name``, ``type`` (``target``, ``value``,
    ``ms``, ``choice``, ...), ``optional``, ``repeated`` and, for
    ``choice``, its ``choices``."""

    __slots__ = ("name", "type", "optional", "repeated", "choices")

    def __init__(self, raw: Mapping[str, Any]):
        super().__init__(raw)
        self.name = _str(self.raw, "name")
        self.type = _str(self.raw, "type")
        self.optional = bool(self.raw.get("optional", False))
        self.repeated = bool(self.raw.get("repeated", False))
        self.choices = [str(c) for c in _list(self.raw, "choices")]


class Command(_Described):
    """A console command or a debug controller command.

    ``debug`` tells the two apart: a debug command is written
    ``name,arg,...`` and goes to the debug controller unchanged.
    """

    __slots__ = ("name", "help", "usage", "arguments", "arguments_text", "host", "debug")

    def __init__(self, raw: Mapping[str, Any], debug: bool = False):
        super().__init__(raw)
        self.name = _str(self.raw, "name")
        self.help = _str(self.raw, "help")
        usage = self.raw.get("usage")
        self.usage = [usage] if isinstance(usage, str) else [str(u) for u in _list(self.raw, "usage")]
        arguments = self.raw.get("arguments")
        self.arguments = [Argument(a) for a in arguments if isinstance(a, Mapping)] if isinstance(arguments, list) else []
        self.arguments_text = arguments if isinstance(arguments, str) else None
        self.host = bool(self.raw.get("host", False))
        kind = self.raw.get("kind")
        self.debug = bool(debug or self.raw.get("debug", False) or kind == "debug")


class Shortcut(_Described):
    """A keyboard shortcut of the debug controller, as ``key`` takes it."""

    __slots__ = ("key", "help")

    def __init__(self, raw: Mapping[str, Any]):
        super().__init__(raw)
        self.key = _str(self.raw, "key")
        self.help = _str(self.raw, "help")

    @property
    def name(self) -> str:
        return self.key


class Device(_Described):
    """A known device id: ``name`` (``ID_BATTERY_2ND``), ``number``,
    ``alias`` (``battery2``), ``present``, ``default_type``."""

    __slots__ = ("name", "number", "alias", "present", "default_type")

    def __init__(self, raw: Mapping[str, Any]):
        super().__init__(raw)
        self.name = _str(self.raw, "name")
        number = self.raw.get("number")
        self.number = number if isinstance(number, int) else None
        self.alias = _str(self.raw, "alias")
        self.present = bool(self.raw.get("present", False))
        self.default_type = _str(self.raw, "defaultType")


class Parameter(_Described):
    """A parameter of a method or signal: ``name`` and ``type``."""

    __slots__ = ("name", "type")

    def __init__(self, raw: Mapping[str, Any]):
        super().__init__(raw)
        self.name = _str(self.raw, "name")
        self.type = _str(self.raw, "type")


class Property(_Described):
    """A property of a target: ``name``, ``type``, ``writable``, ``notify``
    (its change signal), and where the build does something else than the
    name says, ``effect`` (``none``, ``trace``, ``indirect``) and ``hint``.
    ``value`` and ``text`` are there when the answer carried values (``show``)."""

    __slots__ = ("name", "type", "writable", "notify", "effect", "hint", "value", "text")

    def __init__(self, raw: Mapping[str, Any]):
        super().__init__(raw)
        self.name = _str(self.raw, "name")
        self.type = _str(self.raw, "type")
        self.writable = bool(self.raw.get("writable", False))
        self.notify = _str(self.raw, "notify") or None
        self.effect = _str(self.raw, "effect") or None
        self.hint = _str(self.raw, "hint") or None
        self.value = self.raw.get("value")
        self.text = self.raw.get("text")


class Method(_Described):
    """A method that ``call`` reaches: ``name``, ``signature``, ``arguments``,
    ``returns``, and ``effect``/``hint`` as for properties."""

    __slots__ = ("name", "signature", "arguments", "returns", "effect", "hint")

    def __init__(self, raw: Mapping[str, Any]):
        super().__init__(raw)
        self.name = _str(self.raw, "name")
        self.signature = _str(self.raw, "signature")
        self.arguments = [Parameter(a) for a in _list(self.raw, "arguments") if isinstance(a, Mapping)]
        self.returns = _str(self.raw, "returns")
        self.effect = _str(self.raw, "effect") or None
        self.hint = _str(self.raw, "hint") or None


class Signal(_Described):
    """A signal of a target: ``name``, ``signature``, ``arguments``."""

    __slots__ = ("name", "signature", "arguments")

    def __init__(self, raw: Mapping[str, Any]):
        super().__init__(raw)
        self.name = _str(self.raw, "name")
        self.signature = _str(self.raw, "signature")
        self.arguments = [Parameter(a) for a in _list(self.raw, "arguments") if isinstance(a, Mapping)]


class Target(_Described):
    """What commands can reach: ``System``, a present device, another object.

    ``properties`` maps names to :class:`Property`; ``methods`` is a list
    (methods may be overloaded), ``signals`` a list of :class:`Signal`.
    """

    __slots__ = ("name", "class_name", "kind", "number", "alias", "properties", "methods", "signals")

    def __init__(self, raw: Mapping[str, Any]):
        super().__init__(raw)
        self.name = _str(self.raw, "name")
        self.class_name = _str(self.raw, "class")
        self.kind = _str(self.raw, "kind")
        number = self.raw.get("number")
        self.number = number if isinstance(number, int) else None
        self.alias = _str(self.raw, "alias") or None
        self.properties = {}  # type: Dict[str, Property]
        for p in _list(self.raw, "properties"):
            if isinstance(p, Mapping):
                prop = Property(p)
                self.properties[prop.name] = prop
        self.methods = [Method(m) for m in _list(self.raw, "methods") if isinstance(m, Mapping)]
        self.signals = [Signal(s) for s in _list(self.raw, "signals") if isinstance(s, Mapping)]

    def method(self, name: str) -> Optional[Method]:
        """The first method called ``name``, or None."""
        return next((m for m in self.methods if m.name == name), None)

    def signal(self, name: str) -> Optional[Signal]:
        """The signal called ``name``, or None."""
        return next((s for s in self.signals if s.name == name), None)


class Enum(_Described):
    """An enum or flag type: ``name``, ``flag``, ``scope``, ``keys`` (name to number)."""

    __slots__ = ("name", "flag", "scope", "keys")

    def __init__(self, name: str, raw: Mapping[str, Any]):
        super().__init__(raw)
        self.name = name
        self.flag = bool(self.raw.get("flag", False))
        self.scope = _str(self.raw, "scope")
        keys = self.raw.get("keys")
        self.keys = {str(k): v for k, v in keys.items()} if isinstance(keys, Mapping) else {}


class Schema(_Described):
    """Everything a front end can offer, as ``describe`` gives it.

    ``commands`` lists the console commands and then the debug controller's
    (``Command.debug`` is true for those); ``targets`` maps a target's name
    to its :class:`Target`; :meth:`target` also takes an alias
    (``battery1``) and ignores case.
    """

    __slots__ = ("protocol", "platform", "commands", "shortcuts", "devices", "targets", "enums")

    def __init__(self, raw: Mapping[str, Any]):
        super().__init__(raw)
        protocol = self.raw.get("protocol")
        self.protocol = protocol if isinstance(protocol, int) else None
        self.platform = _str(self.raw, "platform")
        self.commands = [Command(c) for c in _list(self.raw, "commands") if isinstance(c, Mapping)]
        # A server may list the debug commands among the commands as well.
        seen = {(c.name, c.debug) for c in self.commands}
        for c in _list(self.raw, "debugCommands"):
            if isinstance(c, Mapping):
                command = Command(c, debug=True)
                if (command.name, True) not in seen:
                    self.commands.append(command)
        self.shortcuts = [Shortcut(s) for s in _list(self.raw, "shortcuts") if isinstance(s, Mapping)]
        self.devices = [Device(d) for d in _list(self.raw, "devices") if isinstance(d, Mapping)]
        self.targets = {}  # type: Dict[str, Target]
        for t in _list(self.raw, "targets"):
            if isinstance(t, Mapping):
                target = Target(t)
                self.targets[target.name] = target
        enums = self.raw.get("enums")
        self.enums = {}  # type: Dict[str, Enum]
        if isinstance(enums, Mapping):
            for name, e in enums.items():
                if isinstance(e, Mapping):
                    self.enums[str(name)] = Enum(str(name), e)

    @property
    def console_commands(self) -> List[Command]:
        """The console commands, in ``help`` order."""
        return [c for c in self.commands if not c.debug]

    @property
    def debug_commands(self) -> List[Command]:
        """The debug controller's commands."""
        return [c for c in self.commands if c.debug]

    def command(self, name: str) -> Optional[Command]:
        """The command called ``name`` (console commands ignore case), or None."""
        for c in self.commands:
            if c.name == name or (not c.debug and c.name.lower() == name.lower()):
                return c
        return None

    def target(self, name: str) -> Optional[Target]:
        """The target called ``name``, or with that alias, ignoring case; or None."""
        if name in self.targets:
            return self.targets[name]
        folded = name.lower()
        for t in self.targets.values():
            if t.name.lower() == folded or (t.alias and t.alias.lower() == folded):
                return t
        return None

    def properties(self) -> Iterator[tuple]:
        """Every (target, property) pair."""
        for t in self.targets.values():
            for p in t.properties.values():
                yield t, p
