"""Reads what the TypeScript declarations tell beyond the metadata: which enumeration an integer belongs to, what is a
truth value, which methods of a protocol may be left out, and which framework something is in. Those of an older package
also tell what the oldest system has that the port is for."""
import re

OWNER = re.compile(r"declare (?:interface|class) (\w+)")
MEMBER = re.compile(r"  (static )?(?:readonly )?(\w+)(\??)(?:\((.*)\))?: (.*);$")
FUNCTION = re.compile(r"declare function (\w+)\((.*)\): (.*);$")
CONSTANT = re.compile(r"declare const (\w+): ")
VALUE = re.compile(r"  (\w+): (-?\d+),$")
# What the older package puts around the arguments of methods that return their own class.
OWN_CLASS = re.compile(r"<This extends [^>]*=> any>|\bthis: This(?:, )?")
ENUM = re.compile(r"interop\.Enum<typeof (\w+)>")

RESULT = 0  # arguments are 1 and up


def script_name(selector):
    """The name of a method in TypeScript: setBytes:length: is setBytesLength."""
    first, *others = selector.split(":")
    return first + "".join(part[:1].upper() + part[1:] for part in others)


def split_arguments(text):
    """Splits at the commas that stand in no bracket."""
    arguments, depth, start = [], 0, 0
    for at, letter in enumerate(text.replace("=>", "  ")):
        depth += (letter in "(<[{") - (letter in ")>]}")
        if letter == "," and depth == 0:
            arguments.append(text[start:at])
            start = at + 1
    return [argument for argument in arguments + [text[start:]] if argument.strip()]


def meaning(text):
    """An enumeration's name, "boolean" or nothing."""
    if "=>" in text:
        return None
    found = ENUM.search(text)
    if found:
        return found[1]
    return "boolean" if re.search(r"\bboolean\b", text) else None


class Typings:
    def __init__(self):
        self.frameworks = set()
        self.framework = {}  # of each class, protocol, function, constant and enumeration
        self.values = {}  # of each enumeration, by name
        self._meanings = {}
        self._optional = set()

    def read(self, framework, lines):
        self.frameworks.add(framework)
        owner = None
        for line in lines:
            line = OWN_CLASS.sub("", line) if "this: This" in line else line
            member = MEMBER.match(line) if owner else None
            value = VALUE.match(line) if owner else None
            if member:
                self._member(owner, member)
            elif value:
                self.values.setdefault(owner, {})[value[1]] = int(value[2])
            elif line.startswith("}"):
                owner = None
            elif line.startswith("declare"):
                owner = self._declaration(framework, line)

    def _declaration(self, framework, line):
        function = FUNCTION.match(line)
        if function:
            name, arguments, result = function.groups()
            self._add(None, name, arguments, result)
            self.framework.setdefault(name, framework)
            return None
        named = OWNER.match(line) or CONSTANT.match(line)
        if named:
            self.framework.setdefault(named[1], framework)
        return named[1] if named and line.rstrip().endswith("{") else None

    def _member(self, owner, match):
        static, name, optional, arguments, result = match.groups()
        self._add((owner, bool(static)), name, arguments, result)
        if optional:
            self._optional.add((owner, name))

    def _add(self, owner, name, arguments, result):
        meanings = [meaning(text) for text in [result] + split_arguments(arguments or "")]
        self._meanings.setdefault((owner, name), meanings)

    def meaning(self, owner, static, name, position):
        """`owner`: a class or protocol, or None for a function. `name`: as TypeScript has it."""
        meanings = self._meanings.get(((owner, static) if owner else None, name), [])
        return meanings[position] if position < len(meanings) else None

    def has(self, owner, static, name):
        return ((owner, static), name) in self._meanings

    def has_value(self, enum, names, name, value):
        """`names`: all that the enumeration has now. By name, unless these were shortened in another way then."""
        values = self.values.get(enum, {})
        return name in values if values.keys() & names else value in values.values()

    def optional(self, owner, name):
        return (owner, name) in self._optional
