#!/usr/bin/env python3
"""Plants the faults of a catalogue one at a time and says which the tests catch.

Each fault is a one-line edit of a source file (see scripts/mutants.txt for the
format). The edits are made in a scratch copy of the source tree under the
work folder, never in the tree itself, so an interrupted run leaves the tree
as it was; the scratch copy is brought back in line with the tree at the start
of every run and each planted file is restored as soon as its fault is tried.

For every fault it rebuilds the scratch copy incrementally, runs each test
program and prints one line: caught (with the programs and the number of tests
that failed) or survived. "build failed" means the catalogue's edit does not
compile, which is a fault of the catalogue, not of the tests.

A development tool, run by hand; it takes minutes:

    scripts/mutants.py                       # every fault, this tree's tests
    scripts/mutants.py --only lag-retry-19   # one fault
    scripts/mutants.py --source ../old --results before.tsv
    scripts/mutants.py --compare before.tsv  # also lists faults caught there and not here
    scripts/mutants.py --check               # the catalogue's edits apply, nothing is built
"""

import argparse
import concurrent.futures
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass, field
from pathlib import Path

REPO = Path(__file__).resolve().parent.parent
TEST_PROGRAMS = ["vorn_tests", "platform_tests", "emu_tests", "tools_tests", "fabricd_tests"]
FAILED_LINE = re.compile(r"^\[  FAILED  \] (\S+)", re.M)


@dataclass
class Fault:
    ident: str
    breaks: str
    path: str
    find: str
    replace: str
    line: int  # of the catalogue, for messages


@dataclass
class Outcome:
    fault: Fault
    verdict: str  # caught, survived, build-failed, catalogue-error
    programs: dict = field(default_factory=dict)  # program -> failed test names
    detail: str = ""


def parse_catalogue(path):
    """Reads entries of the form

        [ident] what the fault breaks
        file: Vorn/Foo.cpp
        find: text of the line to find (exactly once in the file)
        replace: its replacement

    separated by blank lines; '#' starts a comment line. Leading blanks of
    find and replace after the first one following the colon are kept."""
    faults, entry, errors = [], None, []

    def close():
        if entry is None:
            return
        missing = [k for k in ("file", "find", "replace") if k not in entry]
        if missing:
            errors.append(f"{path}:{entry['line']}: [{entry['ident']}] lacks {', '.join(missing)}")
        else:
            faults.append(Fault(entry["ident"], entry["breaks"], entry["file"],
                                entry["find"], entry["replace"], entry["line"]))

    for number, raw in enumerate(Path(path).read_text().splitlines(), 1):
        if raw.startswith("#"):
            continue
        if not raw.strip():
            close()
            entry = None
            continue
        head = re.match(r"^\[([\w.-]+)\]\s*(.*)$", raw)
        if head:
            close()
            entry = {"ident": head.group(1), "breaks": head.group(2), "line": number}
            continue
        key = re.match(r"^(file|find|replace):(?: ?)(.*)$", raw)
        if entry is None or not key:
            errors.append(f"{path}:{number}: not part of an entry: {raw!r}")
            continue
        entry[key.group(1)] = key.group(2)
    close()
    seen = set()
    for f in faults:
        if f.ident in seen:
            errors.append(f"{path}:{f.line}: [{f.ident}] appears twice")
        seen.add(f.ident)
    return faults, errors


def check_edit(tree, fault):
    """The edit's problem in tree, or None when it applies exactly once."""
    target = tree / fault.path
    if not target.is_file():
        return f"no file {fault.path}"
    count = target.read_text().count(fault.find)
    if count != 1:
        return f"'{fault.find}' is in {fault.path} {count} times, not once"
    if fault.find == fault.replace:
        return "find and replace are the same"
    return None


def tracked_files(source):
    out = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "-z"],
                         cwd=source, check=True, capture_output=True).stdout
    return [p for p in out.decode().split("\0") if p and (source / p).is_file()]


def sync_scratch(source, scratch):
    """Makes scratch hold source's files; unchanged files keep their times so
    that the next build stays incremental."""
    wanted = set(tracked_files(source))
    for rel in wanted:
        src, dst = source / rel, scratch / rel
        if dst.is_file() and dst.read_bytes() == src.read_bytes():
            continue
        dst.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(src, dst)
    for dst in list(scratch.rglob("*")):
        rel = dst.relative_to(scratch).as_posix()
        if dst.is_file() and rel not in wanted:
            dst.unlink()


def configure(scratch, build, jobs):
    # Debug without optimisation builds fastest; warnings stay warnings
    # because a planted fault may well warn. The test programs load
    # libvorn.so at run time, so a fault in it relinks nothing but it.
    subprocess.run(["cmake", "-S", scratch, "-B", build, "-G", "Ninja",
                    "-DCMAKE_BUILD_TYPE=Debug", "-DVORN_WERROR=OFF", "-DVORN_BENCH=OFF",
                    "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"], check=True, stdout=subprocess.DEVNULL)
    return run_build(build, jobs)


def run_build(build, jobs):
    proc = subprocess.run(["cmake", "--build", build, "-j", str(jobs)],
                          capture_output=True, text=True)
    return proc.returncode == 0, proc.stdout[-3000:] + proc.stderr[-3000:]


def run_program(build, program, timeout, fail_fast):
    exe = next(iter(build.glob(f"tests/{program}")), None)
    if exe is None:
        return program, None
    flags = ["--gtest_brief=1"] + (["--gtest_fail_fast"] if fail_fast else [])
    # A planted fault can crash a program before it removes its scratch
    # files: they go below a directory of this run's, removed here.
    with tempfile.TemporaryDirectory(dir=build, prefix="scratch-") as scratch:
        env = dict(os.environ, GTEST_COLOR="no", TMPDIR=scratch)
        try:
            proc = subprocess.run([exe, *flags], cwd=build / "tests", env=env,
                                  capture_output=True, text=True, errors="replace",
                                  timeout=timeout)
        except subprocess.TimeoutExpired:
            return program, ["(timed out)"]
    if proc.returncode == 0:
        return program, []
    failed = sorted(set(FAILED_LINE.findall(proc.stdout)))
    return program, failed or [f"(exit {proc.returncode})"]


def run_tests(build, jobs, timeout, fail_fast=False):
    with concurrent.futures.ThreadPoolExecutor(max_workers=jobs) as pool:
        results = pool.map(lambda p: run_program(build, p, timeout, fail_fast), TEST_PROGRAMS)
        return {p: r for p, r in results if r is not None}


def try_fault(fault, scratch, build, jobs, timeout, fail_fast):
    problem = check_edit(scratch, fault)
    if problem:
        return Outcome(fault, "catalogue-error", detail=problem)
    target = scratch / fault.path
    original = target.read_text()
    try:
        target.write_text(original.replace(fault.find, fault.replace, 1))
        built, log = run_build(build, jobs)
        if not built:
            return Outcome(fault, "build-failed", detail=log.strip().splitlines()[-1:][0] if log.strip() else "")
        programs = run_tests(build, jobs, timeout, fail_fast)
    finally:
        target.write_text(original)
    caught = {p: f for p, f in programs.items() if f}
    return Outcome(fault, "caught" if caught else "survived", caught)


def describe(outcome):
    f = outcome.fault
    if outcome.verdict == "caught":
        where = ", ".join(f"{p} ({len(t)})" for p, t in sorted(outcome.programs.items()))
        return f"caught    {f.ident:32} {where}"
    if outcome.verdict == "survived":
        return f"SURVIVED  {f.ident:32} {f.breaks}"
    return f"{outcome.verdict.upper():9} {f.ident:32} {outcome.detail}"


def results_row(o):
    tests = " ".join(t for ts in o.programs.values() for t in ts)
    return f"{o.fault.ident}\t{o.verdict}\t{','.join(sorted(o.programs))}\t{tests}\n"


def read_results(path):
    rows = Path(path).read_text().splitlines()[1:]
    return {r.split("\t")[0]: r.split("\t")[1] for r in rows if r}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--catalogue", default=REPO / "scripts" / "mutants.txt", type=Path)
    parser.add_argument("--source", default=REPO, type=Path,
                        help="the tree whose code and tests are tried (default: this one)")
    parser.add_argument("--work", default=REPO / "build" / "mutants", type=Path,
                        help="scratch copy and its build (kept between runs)")
    parser.add_argument("--only", help="comma-separated fault names")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 2)
    parser.add_argument("--timeout", type=int, default=600, help="seconds per test program")
    parser.add_argument("--results", type=Path, help="write a table of the outcomes here")
    parser.add_argument("--compare", type=Path, help="a results table of an earlier run")
    parser.add_argument("--check", action="store_true", help="check the catalogue only")
    parser.add_argument("--every-failure", action="store_true",
                        help="run each program to its end, naming every test a fault fails "
                             "(by default a program stops at its first failure)")
    args = parser.parse_args()

    faults, errors = parse_catalogue(args.catalogue)
    source = args.source.resolve()
    errors += [f"[{f.ident}] {p}" for f in faults if (p := check_edit(source, f))]
    if errors:
        print("\n".join(errors), file=sys.stderr)
        return 2
    if args.only:
        names = set(args.only.split(","))
        faults = [f for f in faults if f.ident in names]
    if args.check:
        print(f"{len(faults)} faults, every edit applies once")
        return 0

    # A signal ends the run through the finally clauses, which restore the
    # planted file of the scratch copy (the tree itself is never edited).
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(130))
    scratch, build = args.work / "src", args.work / "build"
    scratch.mkdir(parents=True, exist_ok=True)
    sync_scratch(source, scratch)
    built, log = configure(scratch, build, args.jobs)
    if not built:
        print(log, file=sys.stderr)
        return 2
    clean = run_tests(build, args.jobs, args.timeout)
    if any(clean.values()):
        print(f"the unplanted tree fails its tests: {clean}", file=sys.stderr)
        return 2

    # The table is written as the run goes, so that an interrupted run keeps
    # what it found.
    table = open(args.results, "w") if args.results else None
    if table:
        table.write("fault\tverdict\tprograms\tfailed tests\n")
    start, outcomes = time.monotonic(), []
    try:
        for fault in faults:
            outcome = try_fault(fault, scratch, build, args.jobs, args.timeout,
                                not args.every_failure)
            outcomes.append(outcome)
            print(describe(outcome), flush=True)
            if table:
                table.write(results_row(outcome))
                table.flush()
    except KeyboardInterrupt:
        print("interrupted; the tree is unchanged", file=sys.stderr)
        return 130
    finally:
        if table:
            table.close()
        run_build(build, args.jobs)  # leaves the scratch build matching its sources

    caught = sum(o.verdict == "caught" for o in outcomes)
    survived = [o.fault.ident for o in outcomes if o.verdict == "survived"]
    print(f"\n{caught} of {len(outcomes)} caught, {len(survived)} survived "
          f"({time.monotonic() - start:.0f} s)")
    status = 0
    if args.compare:
        before = read_results(args.compare)
        lost = [o.fault.ident for o in outcomes
                if before.get(o.fault.ident) == "caught" and o.verdict != "caught"]
        print("caught before and not now: " + (", ".join(lost) if lost else "none"))
        status = 1 if lost else 0
    return status


if __name__ == "__main__":
    sys.exit(main())
