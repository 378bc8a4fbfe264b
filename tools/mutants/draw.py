"""Draws changes from a seed and writes them into the sources of the scratch copy."""
from __future__ import annotations

import json
import random
import shlex
from dataclasses import dataclass
from pathlib import Path

from clang.cindex import Diagnostic, Index, TranslationUnit

from progress import progress
from rooms import House
from sites import Site, apply, collect

# The headers are kept for the next look, are so at the first look, and the bodies of their functions are not read.
QUICK = TranslationUnit.PARSE_PRECOMPILED_PREAMBLE | 0x100 | TranslationUnit.PARSE_SKIP_FUNCTION_BODIES | 0x800
PER_SOURCE = 3  # so many changes in a source that was drawn: reading and compiling are what costs
HEADER = Path(__file__).with_name("Mutant.h")


@dataclass(frozen=True)
class Mutant:
    number: int
    seed: int
    room: str
    site: Site


class Source:
    """A source with the changes that were drawn in it."""

    def __init__(self, path: Path, arguments: list[str]) -> None:
        self.path, self.arguments = path, arguments
        self.text = path.read_bytes().decode("latin-1")
        self.mutants: list[Mutant] = []

    def draw(self, count: int, seed: int, chance: random.Random, room: str, first: int) -> None:
        """Takes up to `count` sites that compile, numbered from `first`: first the kind of change, then the place."""
        unit = Index.create().parse(None, self.arguments, options=QUICK)
        sites = collect(unit, str(self.path), self.text)
        for mutant in self.mutants:
            sites = apart(sites, mutant.site)
        goal = len(self.mutants) + count
        while len(self.mutants) < goal and sites:
            kind = chance.choice(sorted({site.kind for site in sites}))
            site = chance.choice([site for site in sites if site.kind == kind])
            sites = apart(sites, site)
            self.mutants.append(Mutant(first, seed, room, site))
            unit.reparse([(str(self.path), self.changed().encode("latin-1"))])
            if any(diagnostic.severity >= Diagnostic.Error for diagnostic in unit.diagnostics):
                self.mutants.pop()
            else:
                first += 1

    def changed(self) -> str:
        return apply(self.text, ((mutant.number, mutant.site) for mutant in self.mutants))

    def write(self) -> None:
        """The changed text stands in a header of the system's kind, about which the compiler does not warn."""
        beside = self.path.with_suffix(".mutants")
        if self.mutants:
            beside.write_bytes(b"#pragma GCC system_header\n#line 1\n" + self.changed().encode("latin-1"))
            self.path.write_text(f'#include "{HEADER}"\n#include "{beside}"\n')
        else:
            self.path.write_bytes(self.text.encode("latin-1"))


class Drawing:
    """`count` changes of each seed in the sources of `rooms`, spread by their lines."""

    def __init__(self, house: House, commands: Path, rooms: set[str], count: int) -> None:
        self.house, self.count = house, count
        self.chances: dict[int, random.Random] = {}
        self.sources: dict[Path, Source] = {}
        self.numbers = 1
        for entry in sorted(json.loads(commands.read_text()), key=lambda entry: entry["file"]):
            path = Path(entry["file"])
            if path.is_relative_to(house.tree / "src") and house.of(path) in rooms and path not in self.sources:
                self.sources[path] = Source(path, arguments(entry["command"]))

    def mutants(self) -> list[Mutant]:
        return [mutant for source in self.sources.values() for mutant in source.mutants]

    def draw(self, seed: int) -> None:
        self.chances[seed] = random.Random(seed)
        self.fill()

    def fill(self) -> None:
        for seed, chance in self.chances.items():
            self.fill_from(seed, chance)

    def fill_from(self, seed: int, chance: random.Random) -> None:
        """Draws until there are enough, or no more are found."""
        for _ in range(5):
            paths = list(self.sources)
            lines = [self.sources[path].text.count("\n") for path in paths]
            missing = self.count - sum(1 for mutant in self.mutants() if mutant.seed == seed)
            drawn = chance.choices(paths, lines, k=-(-missing // PER_SOURCE)) if any(lines) else []
            for done, path in enumerate(sorted(set(drawn))):
                progress("sources read", done + 1, len(set(drawn)))
                wanted = min(drawn.count(path) * PER_SOURCE, missing)
                self.sources[path].draw(wanted, seed, random.Random(chance.random()), self.house.of(path),
                                        self.numbers)
                self.sources[path].write()
                self.numbers += wanted
                missing -= wanted

    def lose(self, path: Path) -> None:
        """The compiler refused the source: it stays as it was, and is not asked again."""
        source = self.sources.pop(path)
        source.mutants = []
        source.write()


def apart(sites: list[Site], taken: Site) -> list[Site]:
    return [site for site in sites if site.end <= taken.start or taken.end <= site.start]


def arguments(command: str) -> list[str]:
    """What clang needs to know of a compiler's line; a variable array is refused, as no number may become one."""
    words = shlex.split(command)
    compiler = next(at for at, word in enumerate(words) if word.endswith("++"))
    kept = [word for word in words[compiler + 1:] if not word.startswith("-W") and word != "-c"]
    return [*kept, "-include", str(HEADER), "-Wno-everything", "-Werror=vla"]
