#!/usr/bin/env python3
"""Times the conversion of all files of a folder, by tnhost and by others, in one table.

    benchmarks/batch.py [--bin DIR] [--parallel N] [--runs N] [--also NAME=COMMAND]... FOLDER

A COMMAND converts one file, {in}, to {out} (.glb); it is run for N files at a time, as tnconvert is.
All ways take turns, so that what else the machine does strikes all of them alike; of several runs
the one with the least processor time counts. Compare the ratios, not the seconds.
"""
import argparse
import os
import pathlib
import resource
import shlex
import shutil
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
SUFFIXES = {".stp", ".step", ".p21", ".igs", ".iges", ".stl", ".obj", ".wrl", ".vrml", ".wrz"}
PAGE = os.sysconf("SC_PAGESIZE")


def descendants(process):
    """The ids of a process and all below it."""
    found = [process]
    for each in found:
        try:
            for task in os.listdir(f"/proc/{each}/task"):
                with open(f"/proc/{each}/task/{task}/children") as children:
                    found += map(int, children.read().split())
        except OSError:
            pass  # it has ended
    return found


def memory(process):
    """Bytes that a process and all below it take: what several share counts once."""
    total = 0
    for each in descendants(process):
        try:
            with open(f"/proc/{each}/smaps_rollup") as rollup:
                total += sum(int(line.split()[1]) << 10 for line in rollup if line.startswith("Pss:"))
        except OSError:
            pass
    return total


def measure(command, environment):
    """Wall and processor seconds, peak memory and exit status of a command and all that it starts."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.monotonic()
    process = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    peak = 0
    ended = threading.Event()

    def watch():
        nonlocal peak
        while not ended.wait(0.05):
            peak = max(peak, memory(process.pid))

    watcher = threading.Thread(target=watch)
    watcher.start()
    process.wait()
    wall = time.monotonic() - start
    ended.set()
    watcher.join()
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    cpu = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return {"wall": wall, "cpu": cpu, "peak": peak, "status": process.returncode}


class Way:
    """One way to convert the folder."""

    def __init__(self, name, command, is_cold=True):
        self.name, self.command, self.is_cold = name, command, is_cold
        self.best, self.outputs = None, 0

    def run(self, scratch):
        output = scratch / "output"
        shutil.rmtree(output, ignore_errors=True)
        output.mkdir()
        if self.is_cold:
            shutil.rmtree(scratch / "cache", ignore_errors=True)
        environment = dict(os.environ, XDG_CACHE_HOME=str(scratch / "cache"),
                           XDG_CONFIG_HOME=str(scratch / "config"))
        result = measure(self.command(output), environment)
        # Counted rather than believed.
        self.outputs = sum(1 for file in output.iterdir() if file.stat().st_size > 0)
        if not self.best or result["cpu"] < self.best["cpu"]:
            self.best = result


def per_file(template, files, parallel, scratch):
    """Runs a command for each file by xargs, several at a time."""
    names = scratch / "names"
    names.write_bytes(b"".join(
        os.fsencode(file) + b"\0" + os.fsencode(f"{number:06}.glb") + b"\0"
        for number, file in enumerate(files)))
    words = " ".join({"{in}": '"$1"', "{out}": '"$0/$2"'}.get(word, shlex.quote(word))
                     for word in shlex.split(template))
    return lambda output: ["xargs", "-0", "-a", str(names), "-n", "2", "-P", str(parallel),
                           "sh", "-c", words, str(output)]


def processor():
    with open("/proc/cpuinfo") as info:
        return next((line.split(":")[1].strip() for line in info if line.startswith("model name")),
                    "unknown processor")


def table(ways, count, size):
    print(f"{count} files, {size / 1e6:.0f} MB; {os.cpu_count()} cores, {processor()}; "
          f"{time.strftime('%Y-%m-%d')}\n")
    print("| Way | Converted | Wall s | Processor s | Peak MB | Wall ÷ first | Processor ÷ first |")
    print("|---|---|---|---|---|---|---|")
    first = ways[0].best
    for way in ways:
        best = way.best
        print(f"| {way.name} | {way.outputs} | {best['wall']:.2f} | {best['cpu']:.2f} "
              f"| {best['peak'] / 1e6:.0f} | {best['wall'] / first['wall']:.3f} "
              f"| {best['cpu'] / first['cpu']:.3f} |")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--bin", type=pathlib.Path, default=ROOT / "build/release/bin",
                        help="where tnhost and tnconvert lie")
    parser.add_argument("--parallel", type=int, default=os.cpu_count(), help="files at a time")
    parser.add_argument("--runs", type=int, default=1)
    parser.add_argument("--also", action="append", default=[], metavar="NAME=COMMAND")
    parser.add_argument("folder", type=pathlib.Path)
    options = parser.parse_args()
    files = sorted(file.resolve() for file in options.folder.rglob("*")
                   if file.suffix.lower() in SUFFIXES and file.is_file())
    if not files:
        sys.exit(f"There is no file to convert in {options.folder}.")

    with tempfile.TemporaryDirectory(prefix="tn-benchmark-") as name:
        scratch = pathlib.Path(name)

        def host(output):
            return [str(options.bin / "tnhost"), "--headless", "--mode", "convert", "--output",
                    str(output), "--max-processes", str(options.parallel),
                    str(options.folder.resolve())]

        ways = [Way("tnhost, cold", host), Way("tnhost, again", host, is_cold=False)]
        also = [f"tnconvert by xargs={options.bin / 'tnconvert'} {{in}} {{out}}", *options.also]
        for number, each in enumerate(also):
            title, _, template = each.partition("=")
            if not template:
                sys.exit(f"--also needs NAME=COMMAND: {each}")
            place = scratch / str(number)
            place.mkdir()
            ways.append(Way(title, per_file(template, files, options.parallel, place)))
        for _ in range(options.runs):
            for way in ways:
                way.run(scratch)
    table(ways, len(files), sum(file.stat().st_size for file in files))


if __name__ == "__main__":
    main()
