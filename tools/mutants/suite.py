"""Runs single tests of the built scratch copy, and leaves no process of theirs behind."""
from __future__ import annotations

import ctypes
import json
import os
import resource
import shutil
import signal
import subprocess
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

MEMORY = 8 << 30  # bytes of address space a process: a loop that never ends must not take the machine


@dataclass(frozen=True)
class Test:
    name: str
    room: str
    command: tuple[str, ...]
    folder: str
    environment: tuple[tuple[str, str], ...]


def listed(build: Path, rooms: set[str]) -> list[Test]:
    """The tests of the rooms' own programs, as CTest would run them."""
    shown = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"], check=True, capture_output=True)
    tests = []
    for entry in json.loads(shown.stdout)["tests"]:
        room = Path(entry["command"][0]).name.removesuffix("_test") if "command" in entry else ""
        if room not in rooms:
            continue
        properties = {each["name"]: each["value"] for each in entry["properties"]}
        settings = properties.get("ENVIRONMENT", []) + [
            change.replace("=set:", "=", 1) for change in properties.get("ENVIRONMENT_MODIFICATION", [])]
        environment = tuple(tuple(setting.split("=", 1)) for setting in settings)
        tests.append(Test(entry["name"], room, tuple(entry["command"]), properties["WORKING_DIRECTORY"], environment))
    return tests


FILTER = "--gtest_filter="


def groups(tests: list[Test]) -> list[list[Test]]:
    """Those that one process can run one after the other: of one program, in one environment."""
    found: dict[tuple, list[Test]] = {}
    for test in tests:
        found.setdefault((test.command[0], test.folder, test.environment), []).append(test)
    return list(found.values())


def together(tests: list[Test]) -> Test:
    """One run of a group, which ends at the first failure."""
    first = tests[0]
    names = [word.removeprefix(FILTER) for test in tests for word in test.command if word.startswith(FILTER)]
    rest = tuple(word for word in first.command[1:] if not word.startswith(FILTER))
    return Test(f"{len(tests)} tests of {first.room}", first.room,
                (first.command[0], FILTER + ":".join(names), "--gtest_fail_fast", *rest), first.folder,
                first.environment)


def become_reaper() -> None:
    """What tests leave behind becomes a child of this process, which ends it."""
    ctypes.CDLL(None).prctl(36, 1, 0, 0, 0)  # PR_SET_CHILD_SUBREAPER
    signal.signal(signal.SIGTERM, lambda *_: exit(1))


def run(test: Test, scratch: Path, seconds: float, mutant: int = 0, trace: Path | None = None) -> tuple[bool, float]:
    """Whether the test passed in time, and how long it took."""
    home = Path(tempfile.mkdtemp(dir=scratch))
    home.chmod(0o755)  # some tests look from another user's side
    environment = {**os.environ, **dict(test.environment), "HOME": str(home), "TMPDIR": str(home)}
    environment["ZELVAR_MUTANT"] = str(mutant)
    if trace:
        environment["ZELVAR_MUTANT_TRACE"] = str(trace)
    begun = time.monotonic()
    try:
        process = subprocess.Popen(test.command, cwd=test.folder, env=environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, preexec_fn=limit)
        passed = process.wait(seconds) == 0
    except subprocess.TimeoutExpired:
        passed = False
    finally:
        unmount(home)
        end_children()
        shutil.rmtree(home, ignore_errors=True)
    return passed, time.monotonic() - begun


def limit() -> None:
    os.setsid()
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def unmount(folder: Path) -> None:
    """By force: who waits for a file system of a test that is over hears no signal, and its process cannot end."""
    mounted = [line.split()[1] for line in Path("/proc/mounts").read_text().splitlines()]
    for point in reversed([point for point in mounted if Path(point).is_relative_to(folder)]):
        ctypes.CDLL(None).umount2(point.encode(), 1 | 2)  # MNT_FORCE, MNT_DETACH


def end_children() -> None:
    """Ends all that descends from this process: whoever loses a parent becomes a child here."""
    while children := Path(f"/proc/self/task/{os.getpid()}/children").read_text().split():
        for child in map(int, children):
            os.kill(child, signal.SIGKILL)
            os.waitpid(child, 0)
