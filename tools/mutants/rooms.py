"""The rooms of the house, as their CMakeLists.txt tell them."""
from __future__ import annotations

import re
from dataclasses import dataclass, field
from pathlib import Path

LISTS = ("DEPENDS", "PRIVATE")
WORDS = {*LISTS, "QT", "LAYER", "FOLDER", "PUBLIC_HEADERS", "PRIVATE_HEADERS", "EXTERNAL", "EXTERNAL_PRIVATE",
         "SOURCES"}


@dataclass
class Room:
    name: str
    folder: Path
    uses: set[str] = field(default_factory=set)


class House:
    def __init__(self, tree: Path) -> None:
        self.tree = tree
        self.rooms: dict[str, Room] = {}
        for path in sorted((tree / "src").rglob("CMakeLists.txt")):
            for call in re.findall(r"^zelvar_module\(([^)]*)\)", path.read_text(), re.M):
                words = re.sub(r"#.*", "", call).split()
                room = self.rooms[words[0]] = Room(words[0], path.parent)
                current = ""
                for word in words[1:]:
                    current = word if word in WORDS else current
                    if current in LISTS and word not in WORDS:
                        room.uses.add(word)
        self.tested: set[str] = set()
        for path in (tree / "tests").rglob("CMakeLists.txt"):
            self.tested.update(re.findall(r"^zelvar_test\((\w+)", path.read_text(), re.M))

    def of(self, source: Path) -> str:
        """The room with the innermost folder around a source."""
        around = [room for room in self.rooms.values() if source.is_relative_to(room.folder)]
        return max(around, key=lambda room: len(room.folder.parts)).name

    def neighbours(self, name: str) -> set[str]:
        """The rooms that use this one directly, and the command, which uses all."""
        return {room.name for room in self.rooms.values() if name in room.uses} | {"tool"} - {name}
