"""Tests that are functions of a script: told of as they end, and in a report of GoogleTest's form."""

import pathlib
import shutil
import time
import traceback
from concurrent.futures import ThreadPoolExecutor

TESTS = []


def test(function):
    TESTS.append(function)
    return function


def run(function):
    """Returns whether it failed."""
    start, problem = time.monotonic(), ""
    try:
        function()
    except Exception:  # every one is told of
        problem = traceback.format_exc()
    word = "FAILED" if problem else "passed"
    print(f"{problem}{word}: {function.__name__} ({time.monotonic() - start:.1f} s)", flush=True)
    return bool(problem)


def run_all(folder, report, only, waiting=()):
    """Runs the tests, or only some, in a new folder; those that mostly wait, side by side."""
    shutil.rmtree(folder, ignore_errors=True)
    pathlib.Path(folder).mkdir(parents=True)
    chosen = [function for function in TESTS if not only or function.__name__ in only]
    failures = sum(run(function) for function in chosen if function not in waiting)
    with ThreadPoolExecutor(4) as pool:
        failures += sum(pool.map(run, [function for function in chosen if function in waiting]))
    if not failures:
        shutil.rmtree(folder, ignore_errors=True)
    pathlib.Path(report).write_text(f'<testsuites tests="{len(chosen)}" failures="{failures}" disabled="0"/>\n')
    return failures > 0
