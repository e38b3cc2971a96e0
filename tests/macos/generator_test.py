"""The parts of script/macos that can go wrong quietly."""
import pathlib
import struct
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parents[2] / "script" / "macos"))

from declarations import Generator, declare  # noqa: E402
from metadata import KINDS, NEXT, NULL, TABLES, FormatError, Metadata, section  # noqa: E402
from typings import Typings, script_name, split_arguments  # noqa: E402
from uses import Uses, UsesError  # noqa: E402


class Blob:
    """Builds metadata the way that the package's are laid out."""

    def __init__(self):
        self.tables = {name: b"" for name in TABLES}

    def string(self, text):
        at = len(self.tables["strings"])
        self.tables["strings"] += text.encode() + b"\0"
        return at

    def add(self, table, content):
        at = len(self.tables[table])
        self.tables[table] += content
        return at

    def signature(self, *types):
        """Each type as (kind, further bytes); the first is the result's."""
        content = b""
        for index, (kind, more) in enumerate(types):
            content += bytes([KINDS.index(kind) | (0x80 if index + 1 < len(types) else 0)]) + more
        return self.add("signatures", content)

    def name_with(self, text, has_more):
        return struct.pack("<I", self.string(text) | (NEXT if has_more else 0))

    def bytes(self):
        at, starts = 6 + 4 * (len(TABLES) - 1), []
        for name in TABLES:
            starts.append(at)
            at += len(self.tables[name])
        header = b"NSMD" + struct.pack(f"<H{len(TABLES) - 1}I", 1, *starts[1:])
        return header + b"".join(self.tables[name] for name in TABLES) + bytes(4)


def small_blob():
    """One of each: enum Mode, struct Extent, protocol Base, protocol Drawing <Base>, class Root, class Canvas : Root."""
    blob = Blob()
    blob.add("enums", blob.name_with("Mode", False) +
             struct.pack("<Iq", blob.string("Fast") | NEXT, 1) + struct.pack("<Iq", blob.string("Slow"), -2))
    extent = blob.add("structs", blob.name_with("Extent", False) + struct.pack("<H", 12) +
                      blob.name_with("width", True) + struct.pack("<HB", 0, KINDS.index("double")) +
                      blob.name_with("mode", False) + struct.pack("<HB", 8, KINDS.index("longlong")))
    base = blob.add("protocols", blob.name_with("Base", False) + b"\0")
    handler = blob.signature(("void", b""), ("float", b""))
    draw = blob.signature(("bool", b""), ("struct", struct.pack("<I", extent)), ("longlong", b""),
                          ("block", struct.pack("<I", handler)))
    blob.add("protocols", blob.name_with("Drawing", True) + struct.pack("<I", base) +
             struct.pack("<BII", 16, blob.string("draw:mode:then:"), draw))
    root = blob.add("classes", blob.name_with("Root", False) + struct.pack("<II", NULL, NULL))
    name = blob.signature(("nsstring", b""))
    paused, set_paused = blob.signature(("uint8", b"")), blob.signature(("void", b""), ("uint8", b""))
    blob.add("classes", blob.name_with("Canvas", False) + struct.pack("<II", NULL, root | NEXT) +
             struct.pack("<BIII", 1 | 2 | 128, blob.string("name"), blob.string("name"), name) +
             struct.pack("<BIIIII", 1 | 128, blob.string("paused"), blob.string("isPaused"), paused,
                         blob.string("setPaused:"), set_paused) +
             struct.pack("<BIII", 1 | 2, blob.string("template"), blob.string("isTemplate"), paused))
    open_canvas = blob.signature(("class", struct.pack("<I", root)), ("pointer", bytes([KINDS.index("opaque")])))
    blob.add("functions", struct.pack("<II", blob.string("OpenCanvas"), open_canvas))
    return blob


TYPINGS = """
declare const Mode: {
  Fast: 1,
};
declare interface Base {
}
declare interface Drawing extends Base {
  drawModeThen?(extent: Extent, mode: interop.Enum<typeof Mode>, then: (p1: number, p2: string) => void): boolean;
}
declare class Root {
}
declare class Canvas extends Root {
  readonly name: string;
  paused: boolean;
  readonly template: boolean;
}
declare function OpenCanvas(place: interop.Pointer): Root;
""".splitlines()


def typings_of(lines, framework="Easel"):
    typings = Typings()
    typings.read(framework, lines)
    return typings


def generated(uses, oldest=None, oldest_framework="Easel"):
    oldest = typings_of(oldest.splitlines(), oldest_framework) if oldest else None
    return Generator(Metadata(small_blob().bytes()), typings_of(TYPINGS), Uses(uses), set(), (), oldest).generate()


class Names(unittest.TestCase):
    def test_selectors_as_they_stand_in_typescript(self):
        for selector, name in (("setBytes:length:atIndex:", "setBytesLengthAtIndex"), ("new", "new"),
                               ("isEqual:", "isEqual"), ("a::b:", "aB"), ("_x:y:", "_xY")):
            self.assertEqual(script_name(selector), name)

    def test_arguments_are_split_outside_brackets_only(self):
        self.assertEqual(split_arguments("a: Map<x, y>, b: (p: z, q: w) => void | null, c: [u, v]"),
                         ["a: Map<x, y>", " b: (p: z, q: w) => void | null", " c: [u, v]"])
        self.assertEqual(split_arguments(""), [])

    def test_names_go_inside_blocks_and_function_pointers(self):
        self.assertEqual(declare("void (^)(id)", "done"), "void (^done)(id)")
        self.assertEqual(declare("int (*)(void)", "call"), "int (*call)(void)")
        self.assertEqual(declare("NSString *", "name"), "NSString *name")
        self.assertEqual(declare("BOOL", "on"), "BOOL on")


class Reading(unittest.TestCase):
    def test_every_table(self):
        metadata = Metadata(small_blob().bytes())
        self.assertEqual(metadata.enums["Mode"].members, {"Fast": 1, "Slow": -2})
        self.assertEqual([(field.name, field.offset) for field in metadata.structs["Extent"].fields],
                         [("width", 0), ("mode", 8)])
        self.assertEqual(metadata.protocols["Base"].members, [])
        self.assertEqual(metadata.protocols["Drawing"].protocols, ["Base"])
        draw = metadata.protocols["Drawing"].members[0]
        self.assertEqual([argument.kind for argument in draw.signature.arguments], ["struct", "longlong", "block"])
        self.assertEqual(draw.signature.arguments[2].detail.arguments[0].kind, "float")
        canvas = metadata.classes["Canvas"]
        self.assertEqual((canvas.superclass, len(canvas.members)), ("Root", 3))
        self.assertEqual(canvas.members[1].getter, "isPaused")

    def test_what_is_cut_short_or_strange_is_refused(self):
        whole = small_blob().bytes()
        for length in range(0, len(whole) - 4, 7):
            with self.assertRaises(FormatError, msg=str(length)):
                Metadata(whole[:length])
        with self.assertRaises(FormatError):
            Metadata(whole[:4] + b"\2" + whole[5:])
        for binary in (b"", b"\xcf\xfa\xed\xfe", b"MZ" + bytes(100)):
            with self.assertRaises(FormatError):
                section(binary, b"__any")


class OldestSystem(unittest.TestCase):
    CANVAS = """
declare class Canvas extends Root {
  readonly isPaused: boolean;
  static canvasWithName<This extends abstract new (...args: any) => any>(this: This, name: string): InstanceType<This>;
}
declare class Root {
}
"""

    def test_newer_members_are_left_out(self):
        text = generated(["framework Easel", "class Root Canvas"], self.CANVAS)["declarations/Canvas.h"]
        self.assertIn("BOOL paused;", text)  # there by its getter's name
        self.assertNotIn("name", text)
        self.assertNotIn("isTemplate", text)
        text = generated(["framework Easel", "class Root Canvas", "known Canvas name"], self.CANVAS)
        self.assertIn("NSString *name;", text["declarations/Canvas.h"])

    def test_newer_names_are_refused(self):
        with self.assertRaisesRegex(UsesError, "Drawing is newer than the oldest system"):
            generated(["framework Easel", "protocol Drawing"], self.CANVAS)
        generated(["framework Easel", "protocol Drawing", "known Drawing"], self.CANVAS)
        # Of a framework that it does not have at all it can't tell.
        generated(["framework Easel", "protocol Drawing"], self.CANVAS, "Kiln")

    def test_newer_values_are_left_out(self):
        def values(oldest):
            return generated(["framework Easel", "protocol Drawing", "known Drawing"], oldest)["declarations/Mode.h"]
        self.assertNotIn("ModeSlow", values("declare const Mode: {\n  Fast: 1,\n};"))
        # The names were cut in another way then, so the numbers tell.
        self.assertIn("ModeFast = 1, ModeSlow = -2",
                      values("declare const Mode: {\n  VeryFast: 1,\n  VerySlow: -2,\n};"))
        self.assertNotIn("ModeSlow", values("declare const Mode: {\n  ModeFast: 1,\n};"))

    def test_methods_that_return_their_own_class(self):
        typings = typings_of(self.CANVAS.splitlines())
        self.assertTrue(typings.has("Canvas", True, "canvasWithName"))
        self.assertFalse(typings.has("Canvas", False, "canvasWithName"))


class Writing(unittest.TestCase):
    def test_enumerations_come_from_the_typings_and_widths_from_the_metadata(self):
        files = generated(["framework Easel", "protocol Base Drawing"])
        text = files["declarations/Drawing.h"]
        self.assertIn("@protocol Drawing <Base>", text)
        self.assertIn("@optional\n- (BOOL)draw:(struct Extent)a0 mode:(Mode)a1 then:(void (^)(float))a2;", text)
        self.assertIn("enum Mode : NSInteger { ModeFast = 1, ModeSlow = -2 };", files["declarations/Mode.h"])
        self.assertIn("uint32_t mode;", files["declarations/Extent.h"])

    def test_properties_keep_their_accessors(self):
        text = generated(["framework Easel", "class Root Canvas"])["declarations/Canvas.h"]
        self.assertIn("@interface Canvas : Root", text)
        self.assertIn("@property(readonly, strong) NSString *name;", text)
        self.assertIn("@property(getter=isPaused, assign) BOOL paused;", text)
        self.assertIn("- (BOOL)isTemplate;", text)
        self.assertNotIn("BOOL template", text)
        text = generated(["framework Easel", "class Root Canvas", "type Canvas name 0 CFStringRef",
                          "type Canvas paused 0 int"])["declarations/Canvas.h"]
        self.assertIn("@property(readonly) CFStringRef name;", text)
        self.assertIn("@property(getter=isPaused, assign) int paused;", text)

    def test_options_prefixes_and_types_by_hand(self):
        files = generated(["framework Easel", "options Mode", "prefix Mode Go ly", "function OpenCanvas",
                           "type OpenCanvas 1 CanvasRef"])
        self.assertIn("enum : Mode { GoFastly = 1UL, GoSlowly = 18446744073709551614UL };",
                      files["declarations/Mode.h"])
        self.assertIn("extern \"C\" Root *OpenCanvas(CanvasRef);", files["declarations/OpenCanvas.h"])

    def test_frameworks_have_headers_of_other_names_where_wanted(self):
        files = generated(["framework Easel", "class Root", "framework Runtime Easel", "header runtime/one.h two.h"])
        self.assertIn("Easel/Easel.h", files)
        self.assertNotIn("Runtime/Runtime.h", files)
        for path in ("runtime/one.h", "two.h"):
            self.assertIn("#include <frameworks/Runtime.h>", files[path])
        self.assertIn("#include <frameworks/Easel.h>", files["frameworks/Runtime.h"])

    def test_what_is_not_listed_is_not_there(self):
        files = generated(["framework Easel", "protocol Drawing"])
        self.assertNotIn("Base", files["declarations/Drawing.h"])
        self.assertNotIn("declarations/Canvas.h", files)

    def test_lines_that_mean_nothing_are_refused(self):
        for line, reason in (("class Sculpture", "Sculpture .* is not in the package"),
                             ("class Canvas", "needs its superclass Root"),
                             ("type OpenCanvas 5 int", "no such thing"),
                             ("type OpenCanvas", "not understood"),
                             ("klass Root", "not understood"), ("class", "nothing follows")):
            with self.assertRaisesRegex(UsesError, reason, msg=line):
                generated(["framework Easel", line])
        with self.assertRaisesRegex(UsesError, "stands under Kiln, but is in Easel"):
            generated(["framework Kiln", "class Root"])
        with self.assertRaisesRegex(UsesError, "no framework"):
            generated(["class Root"])


if __name__ == "__main__":
    unittest.main()
