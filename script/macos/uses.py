"""Reads uses.txt, the list of what the port takes from Apple's frameworks."""
from collections import namedtuple

Framework = namedtuple("Framework", "name imports headers classes protocols enums structs functions constants")
LISTS = {"class": "classes", "protocol": "protocols", "enum": "enums", "function": "functions",
         "constant": "constants", "struct": "structs"}


class UsesError(Exception):
    """A line that can't be understood, or that names something that is not there."""


class Uses:
    def __init__(self, lines):
        self.frameworks = []
        self.options = set()
        self.prefixes = {}  # enumeration: (prefix, suffix) of its values' names
        self.known = set()  # (owner, member) and names that the oldest system has, whatever its package says
        self.types = {}  # (owner or function or constant, selector or None, position): C type
        for number, line in enumerate(lines, 1):
            words = line.split("#")[0].split()
            if words:
                self._line(words, f"uses.txt:{number}")

    def _line(self, words, where):
        keyword, *names = words
        if not names:
            raise UsesError(f"{where}: nothing follows \"{keyword}\"")
        if keyword == "framework":
            self.frameworks.append(Framework(names[0], names[1:], [], [], [], [], [], [], []))
        elif keyword == "known":
            self.known.update([names[0]] if len(names) == 1 else [(names[0], name) for name in names[1:]])
        elif keyword == "header":
            self._current(where).headers.extend(names)
        elif keyword == "prefix" and len(names) in (2, 3):
            self.prefixes[names[0]] = (names[1], names[2] if len(names) == 3 else "")
        elif keyword == "type" and len(names) >= 3:
            self._type(names, where)
        elif keyword == "options":
            self.options.update(names)
            self._current(where).enums.extend(names)
        elif keyword in LISTS:
            getattr(self._current(where), LISTS[keyword]).extend(names)
        else:
            raise UsesError(f"{where}: \"{' '.join(words)}\" is not understood")

    def _type(self, names, where):
        owner, position, *spelling = names
        selector = None
        if not position.isdigit():
            selector, position, *spelling = names[1:]
        if not position.isdigit() or not spelling:
            raise UsesError(f"{where}: expected \"type OWNER [SELECTOR] POSITION C-TYPE\"")
        self.types[(owner, selector, int(position))] = " ".join(spelling)

    def _current(self, where):
        if not self.frameworks:
            raise UsesError(f"{where}: no framework is named before this line")
        return self.frameworks[-1]

    def all(self, kind):
        return {name for framework in self.frameworks for name in getattr(framework, kind)}
