"""Compares what each room's files include with what the room links: links.py ROOMS, a list that CMake wrote."""
import re
import sys
from pathlib import Path


class Room:
    def __init__(self, line):
        folder, self.path, sources, public, private, self.name = line.split("|")
        self.folder = Path(folder)
        self.sources = sources.split()
        self.public = set(public.split())
        self.private = set(private.split())

    def headers(self):
        return {f"{self.path}/{source}" for source in self.sources if source.endswith(".h")}


def includes(file):
    return re.findall(r'^#\s*(?:include|import) "([^"]+)"', file.read_text(), re.MULTILINE)


def rooms_included(room, source, owner):
    """The rooms that a source includes, through headers of the room's own too that are not listed."""
    found, files, seen = set(), [room.folder / source], set()
    while files:
        file = files.pop()
        if file in seen:
            continue
        seen.add(file)
        for name in includes(file):
            if name in owner:
                found.add(owner[name])
            elif (room.folder / name).exists():
                files.append(room.folder / name)
    return found - {room.name}


def complaints(room, owner):
    in_headers, in_sources = set(), set()
    for source in room.sources:
        (in_headers if source.endswith(".h") else in_sources).update(rooms_included(room, source, owner))
    rooms = set(owner.values())
    for other in sorted(in_headers - room.public):
        yield f"{room.name}: its headers include {other}, which is not in PUBLIC_LINK"
    for other in sorted(in_sources - room.public - room.private):
        yield f"{room.name}: its sources include {other}, which it does not link"
    for other in sorted(room.public & rooms - in_headers):
        yield f"{room.name}: no header of its includes {other}, which is in PUBLIC_LINK"


def main():
    rooms = [Room(line) for line in Path(sys.argv[1]).read_text().splitlines()]
    owner = {header: room.name for room in rooms for header in room.headers()}
    found = [text for room in rooms for text in complaints(room, owner)]
    print("\n".join(found) or f"{len(rooms)} rooms link what they include")
    return 1 if found else 0


sys.exit(main())
