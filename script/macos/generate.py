#!/usr/bin/env python3
"""Makes Objective-C declarations of what uses.txt lists.

usage: generate.py PACKAGE OLDEST OUT
PACKAGE: the folder of the unpacked package. OLDEST: that of an older one, which knows the oldest system that the port is
for; what that does not have is left out. Headers are written below OUT.
"""
import pathlib
import re
import shutil
import sys

from declarations import Generator, write
from metadata import FormatError, Metadata, section
from typings import Typings
from uses import Uses, UsesError

HERE = pathlib.Path(__file__).parent
SECTION = b"__objc_metadata"


def by_hand(text):
    """The names that the supplement declares."""
    return set(re.findall(r"// by hand: (\w+)", text))


def binary_of(package):
    found = [path for path in package.glob("build/**/NativeScript.framework/**/NativeScript") if path.is_file()]
    if len(found) != 1:
        raise FormatError(f"{len(found)} framework binaries in {package}, expected one")
    return found[0].read_bytes()


def read_typings(package, frameworks):
    typings = Typings()
    for name in frameworks + ["Runtime"]:
        path = package / "types" / f"{name}.d.ts"
        if path.exists():
            with path.open(encoding="utf-8") as lines:
                typings.read(name, lines)
    return typings


def main(package, oldest, out, uses_path=HERE / "uses.txt"):
    uses = Uses(uses_path.read_text().splitlines())
    supplements = {path.name.removesuffix("Supplement.h"): path for path in HERE.glob("*Supplement.h")}
    names = set().union(*(by_hand(path.read_text()) for path in supplements.values()))
    frameworks = [framework.name for framework in uses.frameworks]
    generator = Generator(Metadata(section(binary_of(package), SECTION)), read_typings(package, frameworks), uses,
                          names, supplements, read_typings(oldest, frameworks))
    files = generator.generate()
    shutil.rmtree(out, ignore_errors=True)
    write(files, out)
    for path in supplements.values():
        shutil.copy(path, out)


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__.strip())
    try:
        main(*map(pathlib.Path, sys.argv[1:]))
    except (FormatError, UsesError) as problem:
        sys.exit(f"generate.py: {problem}")
