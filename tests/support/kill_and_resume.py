"""Kills `quorvex convert` at random over a folder of mixed copies, resumes it, and compares the result.

Usage: kill_and_resume.py QUORVEX FOLDER... [--copies 300] [--kills 20] [--to j2k-lossless] [--seed N]

The tree that a run with kills and a last whole run leave must equal, file by file and byte by byte, the tree of one
run that nobody disturbed; the manifest must name every input, and no temporary file may stay. Names of the copies
hold blanks, quotes, line breaks, other alphabets and bytes that are no UTF-8. Exit status 1 where anything differs.
"""
import argparse
import hashlib
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time

LARGEST = 2_000_000  # bytes of a copy: the run shall end within a minute
NAMES = [b"plain %d.dcm", b"with blank and 'quote' \"%d\"", b"line\nbreak %d.dcm", "größe Ж 像 %d".encode(),
         b"not \xff\xfe utf-8 %d.dcm", b".hidden%d", b"-o %d", b"%d"]


def mixed_copies(folders, count, target):
    """Copies of real files under names of every kind, in folders of their own; as bytes paths."""
    pool = sorted(os.path.join(at, name) for folder in folders for at, _, names in os.walk(os.fsencode(folder))
                  for name in names)
    pool = [path for path in pool if 0 < os.path.getsize(path) <= LARGEST]
    for number in range(count):
        folder = os.path.join(target, b"series %d" % (number % 7))
        os.makedirs(folder, exist_ok=True)
        name = NAMES[number % len(NAMES)].replace(b"%d", b"%d" % number)
        shutil.copy(random.choice(pool), os.path.join(folder, name))


def digests(tree):
    """SHA-256 of every file of a tree, by its path in it."""
    found = {}
    for at, _, names in os.walk(tree):
        for name in names:
            path = os.path.join(at, name)
            with open(path, "rb") as file:
                found[os.path.relpath(path, tree)] = hashlib.sha256(file.read()).hexdigest()
    return found


class Conversion:
    """One output tree with its manifest, made by as many runs as it takes."""

    def __init__(self, quorvex, source, work, name, to):
        self.tree, self.manifest = os.path.join(work, name), os.path.join(work, name + b".jsonl")
        self.command = [os.fsencode(quorvex), b"convert", source, b"-o", self.tree, b"--to", os.fsencode(to),
                        b"--manifest", self.manifest, b"--jobs", b"2"]

    def start(self):
        return subprocess.Popen(self.command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def finish(self):
        began = time.monotonic()
        status = self.start().wait()
        if status not in (0, 1):
            sys.exit(f"a whole run ended with {status}")
        return time.monotonic() - began

    def forget(self):
        shutil.rmtree(self.tree, ignore_errors=True)
        if os.path.exists(self.manifest):
            os.remove(self.manifest)

    def inputs(self):
        """The inputs that the manifest tells of; lines that a kill has torn are none."""
        found = set()
        with open(self.manifest, encoding="utf-8", errors="replace") as lines:
            for line in lines:
                try:
                    found.add(json.loads(line).get("input"))
                except ValueError:
                    continue
        return found - {None}

    def kill_often(self, kills, seconds):
        """Kills that many runs, each after up to a share of `seconds`; a run that ends by itself begins anew."""
        done = 0
        while done < kills:
            run = self.start()
            try:
                run.wait(random.uniform(0.01, seconds / 6))
                self.forget()
            except subprocess.TimeoutExpired:
                run.kill()
                run.wait()
                done += 1


def differences(whole, killed, copies):
    first, second = digests(whole.tree), digests(killed.tree)
    yield from (f"only without kills: {path!r}" for path in first.keys() - second.keys())
    yield from (f"only with kills: {path!r}" for path in second.keys() - first.keys())
    yield from (f"differs: {path!r}" for path in first.keys() & second.keys() if first[path] != second[path])
    if not first:
        yield "no run wrote a file"
    for run in (whole, killed):
        if (count := len(run.inputs())) != copies:
            yield f"{run.manifest!r} tells of {count} inputs"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("quorvex")
    parser.add_argument("folders", nargs="+")
    parser.add_argument("--copies", type=int, default=300)
    parser.add_argument("--kills", type=int, default=20)
    parser.add_argument("--to", default="j2k-lossless")
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 32))
    options = parser.parse_args()
    random.seed(options.seed)
    with tempfile.TemporaryDirectory(prefix="quorvex-") as work:
        work = os.fsencode(work)
        source = os.path.join(work, b"source")
        mixed_copies(options.folders, options.copies, source)
        whole, killed = (Conversion(options.quorvex, source, work, name, options.to) for name in (b"whole", b"killed"))
        seconds = whole.finish()
        killed.kill_often(options.kills, seconds)
        killed.finish()
        found = sorted(differences(whole, killed, options.copies))
        count = len(digests(whole.tree))
    print(f"{options.copies} copies, {options.kills} kills (seed {options.seed}): {count} outputs, "
          f"{len(found)} different")
    print("\n".join(found))
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
