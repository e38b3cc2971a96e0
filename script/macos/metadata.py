"""Reads the description of Apple's frameworks that the package carries in its binary.

The binary is a Mach-O file with a segment "__objc_metadata". What is in it: a magic number, a version, the offsets of
nine tables, then the tables: strings, constants, enumerations, signatures, functions, protocols, classes, structures,
unions. All numbers are little-endian. A 32-bit reference into a table has its highest bit set when another item of
the same list follows.
"""
import struct
from collections import namedtuple

NEXT = 1 << 31
NULL = NEXT - 1
TABLES = ("strings", "constants", "enums", "signatures", "functions", "protocols", "classes", "structs", "unions")

# The kinds of type, in the order of their numbers.
KINDS = ("char int short long longlong uchar uint ushort ulong ulonglong float double uint8 void string id protocol "
         "class instancetype nsstring nsmutablestring Class SEL array struct pointer opaque function bool block "
         "uint128 longdouble vector extvector complex half unichar").split()
KIND_BITS = 0x3F
MORE_TYPES = 0x80
VARIADIC = 0x40

PROPERTY, READONLY, STATIC, METHOD, MORE_MEMBERS = 1, 2, 8, 16, 128

# `detail`: what the kind needs more: the names of protocols, a class's name, a structure's name, the pointee or
# element, the signature of a block or function.
Type = namedtuple("Type", "kind detail count", defaults=(None, 0))
Signature = namedtuple("Signature", "result arguments variadic")
Method = namedtuple("Method", "selector static signature")
Property = namedtuple("Property", "name getter setter static type")
Protocol = namedtuple("Protocol", "name protocols members")
Class = namedtuple("Class", "name superclass protocols members")
Structure = namedtuple("Structure", "name size fields")
Field = namedtuple("Field", "name offset type")
Constant = namedtuple("Constant", "name type")
Enum = namedtuple("Enum", "name members")  # members: value by name
Function = namedtuple("Function", "name signature")


class FormatError(Exception):
    """The bytes are not what this reader knows."""


def section(binary, name):
    """The bytes of the first section of a 64-bit Mach-O file that has this name."""
    try:
        magic, commands = struct.unpack_from("<I12xI", binary, 0)
        if magic != 0xFEEDFACF:
            raise FormatError("not a 64-bit Mach-O file")
        at = 32
        for _ in range(commands):
            command, size = struct.unpack_from("<II", binary, at)
            if command == 0x19:
                count, = struct.unpack_from("<I", binary, at + 64)
                for index in range(count):
                    found, length, offset = struct.unpack_from("<16s24xQI", binary, at + 72 + 80 * index)
                    if found.rstrip(b"\0") == name:
                        return binary[offset:offset + length]
            at += size
    except struct.error as error:
        raise FormatError(f"the Mach-O file is cut short: {error}") from error
    raise FormatError(f"no section {name.decode()}")


class Metadata:
    """The tables by name. A name that is not in a table is a KeyError."""

    def __init__(self, data):
        self.data = data
        if data[:4] != b"NSMD" or len(data) < 38 or struct.unpack_from("<H", data, 4)[0] != 1:
            raise FormatError("unknown metadata format")
        first = 6 + 4 * (len(TABLES) - 1)
        starts = (first,) + struct.unpack_from(f"<{len(TABLES) - 1}I", data, 6)
        ends = starts[1:] + (len(data),)
        if list(ends) != sorted(ends):
            raise FormatError("the tables are not in order")
        self._start = dict(zip(TABLES, starts))
        self._end = dict(zip(TABLES, ends))
        try:
            self.constants = self._index("constants", self._constant)
            self.enums = self._index("enums", self._enum)
            self.functions = self._index("functions", self._function)
            self.protocols = self._index("protocols", self._protocol)
            self.classes = self._index("classes", self._class)
            self.structs = self._index("structs", self._struct)
        except (struct.error, IndexError) as error:
            raise FormatError(f"the metadata is cut short: {error}") from error

    def _index(self, table, read):
        """Every item of a table, by name. The items stand one behind the other."""
        items, at = {}, self._start[table]
        # Four bytes of padding may end the last table.
        while at + 4 < self._end[table] or (at < self._end[table] and table != TABLES[-1]):
            item, at = read(at)
            items[item.name] = item
        return items

    def _u32(self, at):
        return struct.unpack_from("<I", self.data, at)[0]

    def _string(self, offset):
        start = self._start["strings"] + (offset & ~NEXT)
        if start >= self._end["strings"]:
            raise FormatError("a string outside the table")
        return self.data[start:self.data.index(b"\0", start)].decode()

    def _reference(self, table, offset):
        """The name of the item at `offset` of a table; every item starts with its name."""
        if offset & ~NEXT == NULL:
            return None
        return self._string(self._u32(self._start[table] + (offset & ~NEXT)))

    def _references(self, table, at):
        """A list of references that has at least one item."""
        names = []
        while True:
            offset = self._u32(at)
            names.append(self._reference(table, offset))
            at += 4
            if not offset & NEXT:
                return names, at

    def _type(self, at, deep=True):
        """`deep`: signatures of blocks are read too; theirs are not, since they may name each other."""
        number = self.data[at] & KIND_BITS
        if number >= len(KINDS):
            raise FormatError(f"unknown kind of type {number}")
        kind, at = KINDS[number], at + 1
        if kind == "array":
            count = struct.unpack_from("<H", self.data, at)[0]
            element, at = self._type(at + 2, deep)
            return Type(kind, element, count), at
        if kind == "struct":
            offset = self._u32(at)
            # A union's reference has the highest bit set.
            return Type(kind, None if offset & NEXT else self._reference("structs", offset)), at + 4
        if kind in ("block", "function"):
            signature = self._signature(self._u32(at), False) if deep else None
            return Type(kind, signature), at + 4
        if kind == "protocol":
            names, at = self._references("protocols", at)
            return Type(kind, tuple(names)), at
        if kind == "class":
            offset = self._u32(at)
            at += 4
            if offset & NEXT:
                _, at = self._references("protocols", at)
            return Type(kind, self._reference("classes", offset)), at
        if kind == "pointer":
            pointee, at = self._type(at, deep)
            return Type(kind, pointee), at
        return Type(kind), at

    def _signature(self, offset, deep=True):
        at = self._start["signatures"] + offset
        flags = self.data[at]
        result, at = self._type(at, deep)
        arguments, more = [], bool(flags & MORE_TYPES)
        while more:
            more = bool(self.data[at] & MORE_TYPES)
            argument, at = self._type(at, deep)
            arguments.append(argument)
        return Signature(result, tuple(arguments), bool(flags & VARIADIC))

    def _constant(self, at):
        name, evaluated = self._string(self._u32(at)), self.data[at + 4]
        at += 5
        if evaluated == 0:
            kind, at = self._type(at)
            return Constant(name, kind), at
        if evaluated == 3:
            # Text: what stands here is of no use, and its type is not told.
            return Constant(name, None), at + 4
        # A value; those of whole numbers were cut to 32 bits.
        return Constant(name, Type("longlong" if evaluated == 1 else "double")), at + 8

    def _enum(self, at):
        name, at, members, more = self._string(self._u32(at)), at + 4, {}, True
        while more:
            member, value = struct.unpack_from("<Iq", self.data, at)
            members[self._string(member)] = value
            more = bool(member & NEXT)
            at += 12
        return Enum(name, members), at

    def _function(self, at):
        return Function(self._string(self._u32(at)), self._signature(self._u32(at + 4))), at + 8

    def _member(self, at):
        flags = self.data[at]
        static = bool(flags & STATIC)
        if flags & PROPERTY:
            name, getter, signature = struct.unpack_from("<III", self.data, at + 1)
            kind, at, setter = self._signature(signature).result, at + 13, None
            if not flags & READONLY:
                setter, at = self._string(self._u32(at)), at + 8
            return Property(self._string(name), self._string(getter), setter, static, kind), flags, at
        selector, signature = struct.unpack_from("<II", self.data, at + 1)
        return Method(self._string(selector), static, self._signature(signature)), flags, at + 9

    def _members(self, at):
        members, flags = [], MORE_MEMBERS
        while flags & MORE_MEMBERS:
            member, flags, at = self._member(at)
            members.append(member)
        return members, at

    def _protocol(self, at):
        name, protocols, members = self._u32(at), [], []
        at += 4
        if name & NEXT:
            protocols, at = self._references("protocols", at)
        if self.data[at] == 0:
            at += 1
        else:
            members, at = self._members(at)
        return Protocol(self._string(name), protocols, members), at

    def _class(self, at):
        name, protocols, members = self._u32(at), [], []
        at += 8
        if name & NEXT:
            protocols, at = self._references("protocols", at)
        superclass = self._u32(at)
        at += 4
        if superclass & NEXT:
            members, at = self._members(at)
        return Class(self._string(name), self._reference("classes", superclass), protocols, members), at

    def _struct(self, at):
        name, size = struct.unpack_from("<IH", self.data, at)
        at, fields, more = at + 6, [], True
        if self._u32(at) & ~NEXT == NULL:
            return Structure(self._string(name), size, fields), at + 4
        while more:
            field, offset = struct.unpack_from("<IH", self.data, at)
            more = bool(field & NEXT)
            kind, at = self._type(at + 6)
            fields.append(Field(self._string(field), offset, kind))
        return Structure(self._string(name), size, fields), at
