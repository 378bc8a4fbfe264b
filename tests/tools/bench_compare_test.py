"""Two builds of benches that print what they are told to, compared."""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOOLS = Path(__file__).resolve().parents[2] / "tools"
sys.path.insert(0, str(TOOLS / "bench-compare"))

from rule import judge  # noqa: E402

# A bench "a" with one figure, whose values come in turn.
PROGRAM = """#!/bin/sh
case "$1" in
  --list) [ "${{2:-a}}" != a ] || echo a ;;
  --json) turn=$(cat {folder}/turn); echo $((turn + 1)) >{folder}/turn
    set -- {values}; shift $(($(cat {folder}/turn) - 1)); [ -n "$1" ] || exit 1
    printf '[\\n{{"name": "a.x", "value": %s, "unit": "{unit}", "limit": null, "alternatives": [], "note": ""}}\\n]\\n' $1 ;;
esac
"""


class BenchCompare(unittest.TestCase):
    def compare(self, old: str, new: str, unit: str, *words: str) -> subprocess.CompletedProcess:
        with tempfile.TemporaryDirectory() as top:
            for name, values in (("old", old), ("new", new)):
                folder = Path(top) / name
                (folder / "bench").mkdir(parents=True)
                (folder / "turn").write_text("0")
                program = folder / "bench" / "zelvar_bench_a"
                program.write_text(PROGRAM.format(folder=folder, values=values, unit=unit))
                program.chmod(0o755)
            command = [str(TOOLS / "bench-compare.sh"), f"{top}/old", f"{top}/new", "--rounds", "4", *words]
            return subprocess.run(command, capture_output=True, text=True)

    def test_each_outcome(self):
        for old, new, unit, words, code, said in (
            ("10 10 11 11", "10 11 10 11", "ms", (), 0, "noise"),
            ("10 10 11 11", "20 21 20 21", "ms", (), 1, "worse"),
            ("10 10 11 11", "20 21 20 21", "rows/ms", (), 0, "better"),
            ("10 10 11 11", "20 21", "ms", (), 1, "cannot be run by the new build"),
            ("10", "10", "ms", ("b",), 2, ""),
        ):
            with self.subTest(old=old, new=new, unit=unit, words=words):
                done = self.compare(old, new, unit, *words)
                self.assertEqual(done.returncode, code, done.stderr)
                self.assertIn(said, done.stdout)

    def test_a_change_is_larger_than_both_spreads_and_three_per_cent(self):
        noisy = [100.0, 110, 120, 130, 140]  # quartiles 20 apart
        for old, new, word in (
            ([100.0] * 5, [102.9] * 5, ""),
            ([100.0] * 5, [103.1] * 5, "worse"),
            ([100.0] * 5, [96.9] * 5, "better"),
            (noisy, [value + 40 for value in noisy], ""),
            (noisy, [value + 41 for value in noisy], "worse"),
            ([100.0, 100, 100, 100, 900], [110.0] * 5, "worse"),  # one round on a busy machine
        ):
            with self.subTest(old=old, new=new):
                self.assertEqual(judge(old, new, "ms").word, word)


if __name__ == "__main__":
    unittest.main()
