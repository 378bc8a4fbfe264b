"""When a figure has changed."""
from __future__ import annotations

import statistics
from dataclasses import dataclass

LEAST_CHANGE = 0.03  # of the old median: less than that interests nobody


@dataclass(frozen=True)
class Verdict:
    old: float
    new: float
    noise: float  # the spreads of both sets together, as a share of the old median
    word: str  # "worse", "better" or ""

    @property
    def ratio(self) -> float:
        return self.new / self.old if self.old else float("nan")


def spread(values: list[float]) -> float:
    """From quartile to quartile: a round or two on a busy machine do not count."""
    lower, _, upper = statistics.quantiles(values, n=4, method="inclusive")
    return upper - lower


def judge(old: list[float], new: list[float], unit: str) -> Verdict:
    """The medians beside the spreads, of two rounds or more each. More of a rate is better, less of all else."""
    before, after = statistics.median(old), statistics.median(new)
    noise = spread(old) + spread(new)
    changed = abs(after - before) > max(noise, LEAST_CHANGE * abs(before))
    grew = after > before
    word = ("better" if grew == ("/" in unit) else "worse") if changed else ""
    return Verdict(before, after, noise / abs(before) if before else float("nan"), word)
