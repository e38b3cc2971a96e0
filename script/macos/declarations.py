"""Writes Objective-C declarations: one file for each class, protocol, enumeration and structure, and one header for
each framework that includes its own."""
import pathlib

from metadata import Property
from typings import RESULT, script_name
from uses import UsesError

NUMBERS = {
    "char": "char", "int": "int", "short": "short", "long": "NSInteger", "longlong": "NSInteger",
    "uchar": "unsigned char", "uint": "unsigned int", "ushort": "unsigned short", "ulong": "NSUInteger",
    "ulonglong": "NSUInteger", "float": "float", "double": "double", "uint8": "uint8_t", "void": "void",
    "string": "const char *", "id": "id", "instancetype": "instancetype", "nsstring": "NSString *",
    "nsmutablestring": "NSMutableString *", "Class": "Class", "SEL": "SEL", "opaque": "void *", "bool": "BOOL",
    "half": "__fp16", "unichar": "unichar", "longdouble": "double",
}
INTEGERS = ("longlong", "ulonglong", "long", "ulong")
OBJECTS = ("class", "protocol", "id", "nsstring", "nsmutablestring", "block")
LOWEST = -2 ** 63
# Names of properties that C++ keeps for itself; only their accessors can be called from there.
RESERVED = {"template", "operator", "namespace", "new", "delete", "class", "private", "public", "protected", "this"}


def declare(spelling, name):
    """A declaration of `name`; blocks and function pointers hold the name inside."""
    if "(^)" in spelling:
        return spelling.replace("(^)", f"(^{name})", 1)
    if "(*)" in spelling:
        return spelling.replace("(*)", f"(*{name})", 1)
    return f"{spelling}{'' if spelling.endswith('*') else ' '}{name}"


class File:
    """One generated file: what must be complete before it, what only has to be named, and the text."""

    def __init__(self):
        self.includes, self.classes, self.protocols, self.structs = set(), set(), set(), set()
        self.lines = []

    def text(self):
        head = ["#pragma once", "#include <MacosSupplement.h>"]
        head += [f"#include <declarations/{name}.h>" for name in sorted(self.includes)]
        head += [f"@class {name};" for name in sorted(self.classes)]
        head += [f"@protocol {name};" for name in sorted(self.protocols)]
        head += [f"struct {name};" for name in sorted(self.structs)]
        return "\n".join(head + self.lines) + "\n"


class Generator:
    def __init__(self, metadata, typings, uses, by_hand, supplements=(), oldest=None):
        """`by_hand`: the names that the supplements declare. `supplements`: the frameworks that have one of their own.
        `oldest`: typings of the oldest system; what it lacks is left out, as far as it has the framework.
        """
        self.metadata, self.typings, self.uses, self.by_hand = metadata, typings, uses, by_hand
        self.supplements, self.oldest = supplements, oldest
        self.files = {}
        self._used_types = set()
        self._listed_classes = uses.all("classes") | by_hand
        self._listed_protocols = uses.all("protocols") | by_hand

    def generate(self):
        """The files' texts by their paths."""
        headers = {}
        for framework in self.uses.frameworks:
            headers[f"frameworks/{framework.name}.h"] = self._framework(framework)
            for path in framework.headers or [f"{framework.name}/{framework.name}.h"]:
                headers[path] = f"#pragma once\n#include <frameworks/{framework.name}.h>\n"
        unused = set(self.uses.types) - self._used_types
        if unused:
            raise UsesError(f"uses.txt: no such thing to give a type to: {sorted(map(str, unused))}")
        files = {f"declarations/{name}.h": file.text() for name, file in self.files.items()}
        return headers | files

    def _framework(self, framework):
        lines = ["#pragma once"] + [f"#include <frameworks/{name}.h>" for name in framework.imports]
        for kind, table, make in (("classes", "classes", self._class), ("protocols", "protocols", self._protocol),
                                  ("enums", "enums", self._enum), ("structs", "structs", self._struct),
                                  ("functions", "functions", self._function),
                                  ("constants", "constants", self._constant)):
            for name in getattr(framework, kind):
                self._check_place(framework.name, name, getattr(self.metadata, table))
                make(name)
                lines.append(f"#include <declarations/{name}.h>")
        if framework.name in self.supplements:
            lines.append(f"#include <{framework.name}Supplement.h>")
        return "\n".join(lines) + "\n"

    def _check_place(self, framework, name, table):
        if name not in table:
            raise UsesError(f"uses.txt: {name} (under {framework}) is not in the package")
        home = self.typings.framework.get(name)
        # Structures are declared wherever they are first met.
        if home not in (framework, "Runtime") and table is not self.metadata.structs:
            raise UsesError(f"uses.txt: {name} stands under {framework}, but is in {home}")

        if self._is_newer(framework, name) and table is not self.metadata.structs:
            raise UsesError(f"uses.txt: {name} is newer than the oldest system that the port is for")

    # What the oldest system has

    def _is_newer(self, framework, name):
        if self.oldest is None or framework not in self.oldest.frameworks or name in self.uses.known:
            return False
        return name not in self.oldest.framework

    def _is_newer_member(self, owner, member):
        if self.oldest is None or owner not in self.oldest.framework:
            return False
        # The older package calls a property by its getter.
        names = [member.name, member.getter] if isinstance(member, Property) else [script_name(member.selector)]
        return not any((owner, name) in self.uses.known or self.oldest.has(owner, member.static, name)
                       for name in names)

    def _is_newer_value(self, enum, members, name):
        if self.oldest is None or enum not in self.oldest.values or (enum, name) in self.uses.known:
            return False
        return not self.oldest.has_value(enum, members.keys(), name, members[name])

    # Types

    def _protocol_name(self, name):
        """A protocol that shares its name with a class has "Protocol" behind it in the metadata."""
        stem = name.removesuffix("Protocol")
        return stem if stem != name and stem in self.metadata.classes else name

    def _spell(self, kind, file, sense=None):
        """`sense`: what the TypeScript declarations know of it."""
        if kind.kind in INTEGERS and sense in self.metadata.enums:
            self._enum(sense)
            file.includes.add(sense)
            return sense
        if kind.kind == "uint8" and sense == "boolean":
            return "BOOL"
        if kind.kind in NUMBERS:
            return NUMBERS[kind.kind]
        if kind.kind == "class":
            file.classes.add(kind.detail)
            return f"{kind.detail} *"
        if kind.kind == "protocol":
            names = [self._protocol_name(name) for name in kind.detail]
            file.protocols.update(names)
            return f"id<{', '.join(names)}>"
        if kind.kind == "struct":
            return self._spell_struct(kind, file)
        if kind.kind in ("block", "function"):
            return self._spell_callable(kind, file)
        if kind.kind in ("pointer", "array"):
            return self._spell_pointer(kind, file)
        return "void *"

    def _spell_struct(self, kind, file):
        if kind.detail is None:
            return "void *"
        if kind.detail not in self.by_hand:
            self._struct(kind.detail)
            file.includes.add(kind.detail)
        return f"struct {kind.detail}"

    def _spell_callable(self, kind, file):
        sign = "^" if kind.kind == "block" else "*"
        if kind.detail is None:
            return "id" if kind.kind == "block" else "void *"
        arguments = ", ".join(self._spell(argument, file) for argument in kind.detail.arguments) or "void"
        return f"{self._spell(kind.detail.result, file)} ({sign})({arguments})"

    def _spell_pointer(self, kind, file):
        if kind.detail.kind in ("block", "function", "opaque"):
            return "void **"
        if kind.detail.kind == "struct" and kind.detail.detail and kind.detail.detail not in self.by_hand:
            file.structs.add(kind.detail.detail)
            return f"struct {kind.detail.detail} *"
        spelling = self._spell(kind.detail, file)
        return f"{spelling}{'' if spelling.endswith('*') else ' '}*"

    def _typed(self, kind, file, owner, selector, position, sense):
        """The C type of one position of a member, function or constant."""
        key = (owner, selector, position)
        if key in self.uses.types:
            self._used_types.add(key)
            return self.uses.types[key]
        spelling = self._spell(kind, file, sense)
        # Bytes that a callee only reads can't be told from those that it writes; a result can be written.
        return "const void *" if spelling == "void *" and position != RESULT else spelling

    # Members

    def _method(self, owner, method, file):
        sign, name = ("+" if method.static else "-"), script_name(method.selector)

        def typed(kind, position):
            sense = self.typings.meaning(owner, method.static, name, position)
            return self._typed(kind, file, owner, method.selector, position, sense)

        words = method.selector.split(":")
        result = typed(method.signature.result, RESULT)
        if len(words) == 1:
            return f"{sign} ({result}){words[0]};"
        kinds = [typed(kind, position) for position, kind in enumerate(method.signature.arguments, 1)]
        # The arguments of one that takes any number of them are not all told; they are objects then.
        kinds += ["id"] * (len(words) - 1 - len(kinds))
        parts = [f"{word}:({kind})a{index}" for index, (word, kind) in enumerate(zip(words, kinds))]
        return f"{sign} ({result}){' '.join(parts)}{', ...' if method.signature.variadic else ''};"

    def _property(self, owner, entry, file):
        name = entry.name.rstrip("$")  # stands behind names that mean something in JavaScript
        sense = self.typings.meaning(owner, entry.static, entry.name, RESULT)
        kind = self._typed(entry.type, file, owner, name, RESULT, sense)
        if name in RESERVED:
            return self._accessors(entry, kind)
        attributes = ["class"] if entry.static else []
        attributes += ["readonly"] if entry.setter is None else []
        attributes += [f"getter={entry.getter}"] if entry.getter != name else []
        usual_setter = f"set{name[:1].upper()}{name[1:]}:"
        attributes += [f"setter={entry.setter}"] if entry.setter not in (None, usual_setter) else []
        # A type from uses.txt stands for something else than an object.
        held = entry.type.kind in OBJECTS and (owner, name, RESULT) not in self.uses.types
        attributes += ["strong"] if held else ["assign"] if entry.setter else []
        return f"@property{'(' + ', '.join(attributes) + ')' if attributes else ''} {declare(kind, name)};"

    def _accessors(self, entry, kind):
        sign = "+" if entry.static else "-"
        setter = f" {sign} (void){entry.setter}({kind})value;" if entry.setter else ""
        return f"{sign} ({kind}){entry.getter};{setter}"

    def _member(self, owner, member, file):
        if isinstance(member, Property):
            return self._property(owner, member, file)
        return self._method(owner, member, file)

    def _members(self, owner, members):
        # A property's accessors may stand among the methods too.
        accessors = {(selector, member.static) for member in members if isinstance(member, Property)
                     for selector in (member.getter, member.setter)}
        return [member for member in members if not self._is_newer_member(owner, member) and
                (isinstance(member, Property) or (member.selector, member.static) not in accessors)]

    # Declarations

    def _file(self, name):
        """A new file, or nothing when there is one already."""
        if name in self.files or name in self.by_hand:
            return None
        self.files[name] = File()
        return self.files[name]

    def _adopted(self, names, file):
        adopted = [self._protocol_name(name) for name in names]
        adopted = [name for name in adopted if name in self._listed_protocols]
        file.includes.update(set(adopted) - self.by_hand)
        return f" <{', '.join(adopted)}>" if adopted else ""

    def _class(self, name):
        file, entry = self._file(name), self.metadata.classes[name]
        if file is None:
            return
        if entry.superclass and entry.superclass not in self._listed_classes:
            raise UsesError(f"uses.txt: {name} needs its superclass {entry.superclass}; list it too")
        if entry.superclass and entry.superclass not in self.by_hand:
            file.includes.add(entry.superclass)
        above = f" : {entry.superclass}" if entry.superclass else ""
        file.lines.append(f"@interface {name}{above}{self._adopted(entry.protocols, file)}")
        file.lines += [self._member(name, member, file) for member in self._members(name, entry.members)]
        file.lines.append("@end")

    def _protocol(self, name):
        file, entry = self._file(name), self.metadata.protocols[name]
        if file is None:
            return
        file.lines.append(f"@protocol {name}{self._adopted(entry.protocols, file)}")
        for member in self._members(name, entry.members):
            script = member.name if isinstance(member, Property) else script_name(member.selector)
            file.lines.append("@optional" if self.typings.optional(name, script) else "@required")
            file.lines.append(self._member(name, member, file))
        file.lines.append("@end")

    def _enum(self, name):
        file, members = self._file(name), self.metadata.enums[name].members
        if file is None:
            return
        prefix, suffix = self.uses.prefixes.get(name, (name, ""))
        # The package keeps all values as signed. Of those below 0, some are the highest bit of a set.
        signed = min(members.values()) in range(LOWEST + 1, 0) and name not in self.uses.options
        base = "NSInteger" if signed else "NSUInteger"
        # The package leaves out what the names have in common; a name may stand in full all the same.
        full = {(member if member.startswith(prefix) else prefix + member + suffix): value
                for member, value in members.items() if not self._is_newer_value(name, members, member)}
        values = ", ".join(f"{member} = {value}" if signed else f"{member} = {value % 2 ** 64}UL"
                           for member, value in full.items())
        if name in self.uses.options:
            file.lines += [f"typedef {base} {name};", f"enum : {name} {{ {values} }};"]
        else:
            file.lines.append(f"enum {name} : {base} {{ {values} }};")

    def _struct(self, name):
        file, entry = self._file(name), self.metadata.structs[name]
        if file is None:
            return
        ends = [field.offset for field in entry.fields[1:]] + [entry.size]
        fields = [f"  {declare(self._field(field, end, file), field.name)};" for field, end in zip(entry.fields, ends)]
        file.lines += [f"struct {name} {{"] + fields + ["};"]
        if entry.fields and all(field.type.kind != "array" for field in entry.fields):
            file.lines.append(f"static_assert(sizeof(struct {name}) == {entry.size});")

    def _field(self, field, end, file):
        kind = field.type
        # An enumeration's width isn't told, but there is no room for more than this.
        narrow = {1: "uint8_t", 2: "uint16_t", 4: "uint32_t"}.get(end - field.offset)
        if kind.kind == "longlong" and narrow:
            return narrow
        spelling = self._spell(kind, file)
        return f"__unsafe_unretained {spelling}" if kind.kind in OBJECTS else spelling

    def _function(self, name):
        file, signature = self._file(name), self.metadata.functions[name].signature
        if file is None:
            return
        kinds = [self._typed(kind, file, name, None, position, self.typings.meaning(None, False, name, position))
                 for position, kind in enumerate((signature.result,) + signature.arguments)]
        arguments = kinds[1:] + (["..."] if signature.variadic else [])
        file.lines.append(f"extern \"C\" {declare(kinds[0], name)}({', '.join(arguments) or 'void'});")

    def _constant(self, name):
        file, entry = self._file(name), self.metadata.constants[name]
        if file is None:
            return
        if entry.type is None and (name, None, RESULT) not in self.uses.types:
            raise UsesError(f"uses.txt: {name} is text; give its type in a line \"type {name} 0 ...\"")
        kind = self._typed(entry.type, file, name, None, RESULT, None)
        # Not its value: what the package has was cut to 32 bits.
        constant = declare(kind, f"const {name}") if kind.endswith("*") else f"const {declare(kind, name)}"
        file.lines.append(f"extern \"C\" {constant};")


def write(files, folder):
    for path, text in files.items():
        target = pathlib.Path(folder) / path
        target.parent.mkdir(parents=True, exist_ok=True)
        if not target.exists() or target.read_text() != text:
            target.write_text(text)
