"""The application bundle, as packaging/macos/make-bundle puts it together. The Mac's own tools have stand-ins that note
how they were called."""
import os
import pathlib
import plistlib
import re
import subprocess
import tempfile
import unittest

TOP = pathlib.Path(__file__).resolve().parents[2]
MAKE_BUNDLE = TOP / "packaging/macos/make-bundle"
CODESIGN = """#!/bin/sh
echo "codesign $*" >>"$CALLS"
for last; do :; done
[ -e "$last" ] || exit 1
case $last in *.app) [ -f "$last/Contents/Info.plist" ] && [ -f "$last/Contents/Resources/Veloria.icns" ];; esac
exit "${CODESIGN_RESULT:-0}"
"""
ICONUTIL = """#!/bin/sh
echo "iconutil $*" >>"$CALLS"
for last; do :; done
ls "$last" >"$4"
"""


class Bundle(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory(prefix="veloria bundle ")  # with a blank
        self.addCleanup(self.folder.cleanup)
        self.work = pathlib.Path(self.folder.name)
        self.built, self.bundle = self.work / "built", self.work / "out/Veloria.app"
        for path, text in (("src/main/veloria", "the program"), ("src/cli/nimbra", "the command"),
                           ("default.metallib", "the functions")):
            (self.built / path).parent.mkdir(parents=True, exist_ok=True)
            (self.built / path).write_text(text)
        for name, text in (("codesign", CODESIGN), ("iconutil", ICONUTIL)):
            tool = self.work / "tools" / name
            tool.parent.mkdir(exist_ok=True)
            tool.write_text(text)
            tool.chmod(0o755)

    def make(self, **environment):
        tools = f"{self.work / 'tools'}:{os.environ['PATH']}"
        return subprocess.run([MAKE_BUNDLE, self.built, self.bundle], capture_output=True, text=True, check=False,
                              env=os.environ | {"PATH": tools, "CALLS": str(self.work / "calls")} | environment)

    def properties(self):
        with (self.bundle / "Contents/Info.plist").open("rb") as file:
            return plistlib.load(file)

    def test_holds_what_was_built(self):
        result = self.make()
        self.assertEqual(result.returncode, 0, result.stderr)
        contents = self.bundle / "Contents"
        self.assertEqual((contents / "MacOS/Veloria").read_text(), "the program")
        self.assertEqual((contents / "MacOS/nimbra").read_text(), "the command")
        self.assertEqual((contents / "Resources/default.metallib").read_text(), "the functions")
        for program in ("Veloria", "nimbra"):
            self.assertEqual((contents / "MacOS" / program).stat().st_mode & 0o777, 0o755)

    def test_properties(self):
        self.assertEqual(self.make().returncode, 0)
        found = self.properties()
        version = re.search(r"^project\(veloria VERSION ([\d.]+)", (TOP / "CMakeLists.txt").read_text(), re.M)[1]
        self.assertEqual(found["CFBundleShortVersionString"], version)
        self.assertEqual(found["CFBundleVersion"], version)
        self.assertIs(found["LSUIElement"], True)
        self.assertEqual(found["LSMinimumSystemVersion"], "14.0")
        self.assertEqual(found["CFBundlePackageType"], "APPL")
        self.assertIn("menu bar", found["NSScreenCaptureUsageDescription"])
        self.assertNotIn("@", str(found))
        # What it names is there.
        contents = self.bundle / "Contents"
        self.assertTrue((contents / "MacOS" / found["CFBundleExecutable"]).is_file())
        self.assertTrue((contents / "Resources" / (found["CFBundleIconFile"] + ".icns")).is_file())
        # The same name as the other systems know it by.
        metainfo = (TOP / "packaging/com.tollmere.Veloria.metainfo.xml").read_text()
        self.assertIn(f"<id>{found['CFBundleIdentifier']}</id>", metainfo)

    def test_is_signed_from_the_inside_out(self):
        self.assertEqual(self.make().returncode, 0)
        calls = [line.split() for line in (self.work / "calls").read_text().splitlines()]
        signed = [call[-1].rpartition("/")[2] for call in calls if "--sign" in call]
        self.assertEqual(signed, ["nimbra", "Veloria.app"])
        self.assertIn("--verify", calls[-1])

    def test_replaces_the_one_that_is_there(self):
        self.assertEqual(self.make().returncode, 0)
        (self.bundle / "Contents/old").write_text("")
        (self.built / "src/main/veloria").write_text("a newer program")
        self.assertEqual(self.make().returncode, 0)
        self.assertEqual((self.bundle / "Contents/MacOS/Veloria").read_text(), "a newer program")
        self.assertFalse((self.bundle / "Contents/old").exists())

    def test_a_failure_leaves_the_old_one(self):
        self.assertEqual(self.make().returncode, 0)
        self.assertNotEqual(self.make(CODESIGN_RESULT="1").returncode, 0)
        self.assertTrue((self.bundle / "Contents/MacOS/Veloria").is_file())
        (self.built / "default.metallib").unlink()
        result = self.make()
        self.assertEqual(result.returncode, 1)
        self.assertIn("default.metallib is missing; run ./build.sh", result.stderr)
        self.assertTrue((self.bundle / "Contents/Resources/default.metallib").is_file())


class Script(unittest.TestCase):
    def test_elsewhere_no_bundle_is_made(self):
        if os.uname().sysname == "Darwin":
            self.skipTest("this is a Mac")
        result = subprocess.run([TOP / "build.sh", "--app"], capture_output=True, text=True, check=False)
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertIn("on macOS only", result.stderr)


if __name__ == "__main__":
    unittest.main()
