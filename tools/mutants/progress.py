import sys


def progress(what: str, done: int, total: int) -> None:
    """One line on a screen that is written over; in a log one now and then."""
    if sys.stderr.isatty() or done % 25 == 0 or done == total:
        end = "\r" if sys.stderr.isatty() and done < total else "\n"
        print(f"{what}: {done} of {total} ", end=end, file=sys.stderr, flush=True)
