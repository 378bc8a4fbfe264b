"""What tools/bench-compare.sh does."""
from __future__ import annotations

import argparse
import collections
import json
import subprocess
import sys
from pathlib import Path

from rule import LEAST_CHANGE, judge

ROOT = Path(__file__).resolve().parents[2]
BENCH = ROOT / "tools" / "bench.sh"
LEAST_ROUNDS = 4  # fewer have no quartiles worth the name

ABOUT = f"""\
Runs the benches of two builds in turn, each bench in a process of its own a round, and says for each figure: the
medians of both, their ratio, the noise, and whether it became better or worse.

A build is a build folder (build/release), a source tree with benches in build/release, or a commit that a worktree of
this repository has checked out. Its benches are there after `cmake --build DIR --target all benches`.

A figure has changed when its medians lie further apart than the spreads of both sets together, and further than
{LEAST_CHANGE:.0%} of the old one. The spread of a set is the distance of its quartiles. The builds take turns at going first.
Of a rate (unit with a "/") more is better, of all other figures less is.

Exit code: 0 nothing became worse, 1 something did, or does not run any more, 2 usage."""


def has_benches(folder: Path) -> bool:
    return any((folder / "bench").glob("zelvar_bench_*"))


def worktree_of(commit: str) -> Path | None:
    def git(*words: str) -> str:
        return subprocess.run(["git", "-C", str(ROOT), *words], capture_output=True, text=True).stdout

    wanted = git("rev-parse", "--verify", "--quiet", commit + "^{commit}").strip()
    tree = None
    for line in git("worktree", "list", "--porcelain").splitlines():
        key, _, value = line.partition(" ")
        tree = Path(value) if key == "worktree" else tree
        if wanted and (key, value) == ("HEAD", wanted):
            return tree
    return None


def build_of(word: str) -> Path:
    """The build folder that a word of the command line means."""
    place = Path(word) if Path(word).is_dir() else worktree_of(word)
    for folder in [place, place / "build" / "release"] if place else []:
        if has_benches(folder):
            return folder.resolve()
    sys.exit(usage(f"no benches in '{word}'" if place else f"'{word}' is no folder and no commit of a worktree"))


def usage(why: str) -> int:
    print(f"bench-compare: {why}; see --help", file=sys.stderr)
    return 2


def bench(build: Path, *words: str) -> str | None:
    """What it prints; nothing if it fails."""
    done = subprocess.run([str(BENCH), "--build", str(build), *words], stdout=subprocess.PIPE, text=True)
    return done.stdout if done.returncode == 0 else None


def names_of(build: Path, filters: list[str]) -> list[str]:
    """The benches to run; none that another one's name selects as well."""
    names = (bench(build, "--list", *filters) or "").split()
    return [name for name in names if not any(name != other and name.startswith(other) for other in names)]


Figures = dict[str, dict[str, list[float]]]  # values by name and by build


def measure(name: str, builds: dict[str, Path], rounds: int) -> tuple[Figures, dict[str, str], set[str]]:
    """The figures of a bench, their units, and the builds that could not run it."""
    figures: Figures = collections.defaultdict(lambda: {which: [] for which in builds})
    units: dict[str, str] = {}
    failed: set[str] = set()
    for turn in range(rounds):
        order = list(builds) if turn % 2 == 0 else list(reversed(builds))
        for which in order:
            printed = bench(builds[which], "--json", name) if which not in failed else None
            if printed is None:
                failed.add(which)
                continue
            for figure in json.loads(printed):
                if figure["value"] is not None:
                    figures[figure["name"]][which].append(figure["value"])
                    units[figure["name"]] = figure["unit"]
    return figures, units, failed


def main() -> int:
    parser = argparse.ArgumentParser(prog="bench-compare.sh", description=ABOUT,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("old", metavar="OLD")
    parser.add_argument("new", metavar="NEW")
    parser.add_argument("filters", metavar="FILTER", nargs="*", help="the benches whose names begin so")
    parser.add_argument("--rounds", type=int, default=7, help="of each build (default 7)")
    arguments = parser.parse_intermixed_args()
    if arguments.rounds < LEAST_ROUNDS:
        return usage(f"at least {LEAST_ROUNDS} rounds are needed")
    builds = {"old": build_of(arguments.old), "new": build_of(arguments.new)}
    names = sorted(set(names_of(builds["old"], arguments.filters)) | set(names_of(builds["new"], arguments.filters)))
    if not names:
        return usage("no bench has such a name")
    worse = 0
    for name in names:
        figures, units, failed = measure(name, builds, arguments.rounds)
        for which in sorted(failed):
            print(f"{name}: cannot be run by the {which} build")
        worse += "new" in failed
        for figure, values in figures.items():
            if min(len(values["old"]), len(values["new"])) < LEAST_ROUNDS:
                print(f"{figure:<44} only {'old' if values['old'] else 'new'}")
                continue
            verdict = judge(values["old"], values["new"], units[figure])
            worse += verdict.word == "worse"
            print(f"{figure:<44} {verdict.old:12.3f} {verdict.new:12.3f} {units[figure]:<8} "
                  f"x {verdict.ratio:6.3f}  noise {verdict.noise:6.1%}  {verdict.word}".rstrip(), flush=True)
    return 1 if worse else 0


if __name__ == "__main__":
    sys.exit(main())
