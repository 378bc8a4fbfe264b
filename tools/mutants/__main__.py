"""What tools/mutants.sh does in its scratch copy."""
from __future__ import annotations

import argparse
import collections
import itertools
import os
import random
import re
import signal
import subprocess
import sys
from concurrent.futures import ProcessPoolExecutor, as_completed
from dataclasses import dataclass, field
from pathlib import Path

import suite
from draw import Drawing, Mutant
from progress import progress
from rooms import House
from suite import Test

# What the tests of its own room and those of others may take for one change, the quickest first.
OWN_SECONDS, OTHERS_SECONDS = 120.0, 60.0


@dataclass
class Verdict:
    noticed_by: str = ""
    tried: int = 0
    left_out: int = 0


@dataclass
class Bench:
    """The built programs, what each test takes, and which tests reach which change."""
    house: House
    scratch: Path
    idle: dict[Test, float] = field(default_factory=dict)
    reaching: dict[int, list[Test]] = field(default_factory=dict)

    def note(self, test: Test, passed: bool, seconds: float, reached: list[int]) -> None:
        if not passed:
            print(f"fails without a change, left out: {test.name}", file=sys.stderr)
            return
        self.idle[test] = seconds
        for number in reached:
            self.reaching.setdefault(number, []).append(test)

    def judge(self, mutant: Mutant) -> Verdict:
        tests = sorted(self.reaching.get(mutant.number, ()), key=lambda test: self.idle[test])
        near = self.house.neighbours(mutant.room)
        own = [test for test in tests if test.room == mutant.room]
        others = [test for test in tests if test.room in near]
        chosen = self.within(own, OWN_SECONDS) + self.within(others, OTHERS_SECONDS)
        for group in suite.groups(chosen):
            if noticed := self.noticed_by(group, mutant.number):
                return Verdict(noticed_by=noticed)
        return Verdict(tried=len(chosen), left_out=len(own) + len(others) - len(chosen))

    def noticed_by(self, tests: list[Test], number: int) -> str:
        """In one process; each by itself where they do not get along without a change either."""
        seconds = sum(self.idle[test] for test in tests) * 5 + 10
        whole = suite.together(tests)
        if suite.run(whole, self.scratch, seconds, number)[0]:
            return ""
        if suite.run(whole, self.scratch, seconds)[0]:
            return whole.name
        for test in tests:
            seconds = self.idle[test] * 5 + 10
            failed = not suite.run(test, self.scratch, seconds, number)[0]
            if failed and suite.run(test, self.scratch, seconds)[0]:  # not by chance
                return test.name
        return ""

    def within(self, tests: list[Test], seconds: float) -> list[Test]:
        spent = itertools.accumulate(self.idle[test] for test in tests)
        return [test for test, so_far in zip(tests, spent) if so_far <= seconds or test == tests[0]]


def trace(test: Test, scratch: Path, size: int) -> tuple[bool, float, list[int]]:
    """Runs a test without a change: whether it passed, how long it took, which changes it came by."""
    reached = scratch / f"reached.{os.getpid()}"
    reached.write_bytes(bytes(size))
    passed, seconds = suite.run(test, scratch, 300, trace=reached)
    return passed, seconds, [number for number, byte in enumerate(reached.read_bytes()) if byte]


def build(drawing: Drawing, folder: Path, targets: list[str], jobs: int) -> None:
    """Builds until the compiler takes every change."""
    while True:
        made = subprocess.Popen(["cmake", "--build", folder, "-j", str(jobs), "--target", *targets, "--", "-k", "0"],
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace")
        output = []
        for line in made.stdout:
            output.append(line)
            if step := re.match(r"\[(\d+)/(\d+)\]", line):
                progress("built", int(step[1]), int(step[2]))
        if made.wait() == 0:
            return
        failed = re.findall(r"^FAILED: (src/.*)CMakeFiles/[^/]+/(.*)\.o ", "".join(output), re.M)
        changed = {Path(mutant.site.path) for mutant in drawing.mutants()}
        refused = changed & {drawing.house.tree / (room + source) for room, source in failed}
        if not refused:
            told = [line for line in output if line.startswith("FAILED") or "error" in line]
            sys.exit("The scratch copy does not build:\n" + "".join(told or output[-40:]))
        for path in refused:
            drawing.lose(path)
        drawing.fill()


def report(tree: Path, mutants: dict[Mutant, Verdict]) -> None:
    for seed in sorted({mutant.seed for mutant in mutants}):
        of_seed = [verdict for mutant, verdict in mutants.items() if mutant.seed == seed]
        print(f"seed {seed}: noticed {sum(1 for each in of_seed if each.noticed_by)} of {len(of_seed)}")
    rooms: dict[str, list[Verdict]] = collections.defaultdict(list)
    for mutant, verdict in mutants.items():
        rooms[mutant.room].append(verdict)
    for room, verdicts in sorted(rooms.items()):
        print(f"{room:16} {sum(1 for each in verdicts if each.noticed_by):4} of {len(verdicts)}")
    print(f"\nnoticed {sum(1 for each in mutants.values() if each.noticed_by)} of {len(mutants)}\n\nNot noticed:")
    for mutant, verdict in sorted(mutants.items(), key=lambda item: (item[0].site.path, item[0].site.line)):
        if not verdict.noticed_by:
            reach = f"{verdict.tried} tests" + (f", {verdict.left_out} left out" if verdict.left_out else "")
            place = f"{Path(mutant.site.path).relative_to(tree)}:{mutant.site.line}:{mutant.site.column}"
            print(f"{place}: {mutant.site.what} ({reach})\n    {mutant.site.source}")


def main() -> None:
    parser = argparse.ArgumentParser()
    parser.add_argument("--seed", type=lambda text: [int(word) for word in text.split(",")])
    for name, kind in (("--count", int), ("--room", str), ("-j", int)):
        parser.add_argument(name, type=kind)
    parser.add_argument("scratch", type=Path)
    options = parser.parse_args()
    suite.become_reaper()
    tree = options.scratch / "tree"
    house = House(tree)
    if options.room and options.room not in house.rooms:
        sys.exit(f"No room {options.room}: there are {', '.join(sorted(house.rooms))}")
    rooms = {options.room} if options.room else set(house.rooms)
    tested = house.tested & set().union(rooms, *(house.neighbours(room) for room in rooms))

    drawing = Drawing(house, tree / "build/tidy/compile_commands.json", rooms, options.count)
    for seed in options.seed:
        drawing.draw(seed)
    targets = [f"{room}_test" for room in sorted(tested)] + ["zelvar-tool", "zelvar-reader", "zelvar-gdal"]
    build(drawing, tree / "build/dev", targets, options.j)
    mutants = drawing.mutants()

    bench = Bench(house, options.scratch)
    verdicts: dict[Mutant, Verdict] = {}
    with ProcessPoolExecutor(options.j, initializer=suite.become_reaper) as workers:
        try:
            tests = suite.listed(tree / "build/dev", tested)
            traces = {workers.submit(trace, test, options.scratch, drawing.numbers): test for test in tests}
            for done, traced in enumerate(as_completed(traces)):
                progress("tests traced", done + 1, len(tests))
                bench.note(traces[traced], *traced.result())

            random.Random(0).shuffle(mutants)  # an early end leaves a fair part
            judged = {workers.submit(bench.judge, mutant): mutant for mutant in mutants}
            for judgement in as_completed(judged):
                verdicts[judged[judgement]] = judgement.result()
                noticed = sum(1 for each in verdicts.values() if each.noticed_by)
                progress(f"noticed {noticed}, tried", len(verdicts), len(mutants))
        except (KeyboardInterrupt, SystemExit):
            for number in (signal.SIGINT, signal.SIGTERM):  # a whole group of processes may have been told twice
                signal.signal(number, signal.SIG_IGN)
            print(f"ended early: {len(verdicts)} of {len(mutants)} changes were tried", file=sys.stderr)
            suite.end_children()
            report(tree, verdicts)
            sys.stdout.flush()
            os._exit(130)  # the queue of the workers that were ended waits for them for ever
    report(tree, verdicts)


try:
    main()
finally:
    suite.end_children()
