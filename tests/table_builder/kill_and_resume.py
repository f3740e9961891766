#!/usr/bin/env python3
"""Kills `tamarin tables` at random moments and shows that what is left ends in the same bytes.

    kill_and_resume.py TAMARIN DIRECTORY [--kills N] [--seed N] [--reference LOOKUP]

An undisturbed run (or the tables in LOOKUP) is the reference. Then the program is killed with
SIGKILL N times, each time after a random part of the time that the undisturbed run took, and
started again. A run that ends before its turn loses a random third of its tables, so that every
stage has its kills. Between kills nothing may lie under a table's name but that table. In the end
all files equal the reference, the manifest knows them all, and no temporary file is left. One more
run, of the large tables, has one thread and little memory. Takes about eleven gigabytes and ten
minutes; what it makes is removed when all is well.
"""
import argparse
import filecmp
import json
import os
import random
import resource
import shutil
import signal
import subprocess
import sys
import time

TABLES = 46


def tables_in(lookup):
    return sorted(name for name in os.listdir(lookup)
                  if not name.startswith(".") and ".tmp." not in name
                  and not name.endswith(".bad") and name != "manifest.json")


def leftovers(lookup):
    return [name for name in os.listdir(lookup) if ".tmp." in name or name.endswith(".bad")]


def start(tamarin, directory, log, *more):
    return subprocess.Popen([tamarin, "tables", "--dir", directory, *more],
                            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=log)


def undisturbed(tamarin, directory):
    os.makedirs(directory)
    began = time.monotonic()
    with open(os.path.join(directory, "log"), "w") as log:
        status = start(tamarin, directory, log).wait()
    if status != 0:
        sys.exit(f"the undisturbed run ended with status {status}; see {directory}/log")
    took = time.monotonic() - began
    peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1e6 * 1.024
    print(f"undisturbed: {took:.1f} s, {peak:.2f} GB resident at the peak", flush=True)
    return took


def compare(lookup, reference, names):
    """A kill leaves each table whole or away."""
    for name in names:
        if not filecmp.cmp(os.path.join(lookup, name), os.path.join(reference, name),
                           shallow=False):
            sys.exit(f"{name} differs from the undisturbed run's")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("tamarin")
    parser.add_argument("directory")
    parser.add_argument("--kills", type=int, default=10)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--reference")
    options = parser.parse_args()
    tamarin = os.path.abspath(options.tamarin)
    draw = random.Random(options.seed)
    shutil.rmtree(options.directory, ignore_errors=True)
    os.makedirs(options.directory)
    reference = options.reference or os.path.join(options.directory, "whole", "lookup")
    took = 90.0 if options.reference else undisturbed(tamarin, os.path.dirname(reference))

    directory = os.path.join(options.directory, "killed")
    lookup = os.path.join(directory, "lookup")
    os.makedirs(directory)
    log_path = os.path.join(directory, "log")
    kills = 0
    while kills < options.kills:
        delay = draw.uniform(0.2, 0.9 * took)
        with open(log_path, "a") as log:
            builder = start(tamarin, directory, log)
            try:
                status = builder.wait(timeout=delay)
                if status != 0:
                    sys.exit(f"a run after a kill ended with status {status}; see {log_path}")
                names = tables_in(lookup)
                for name in draw.sample(names, len(names) // 3):
                    os.remove(os.path.join(lookup, name))
                print("all made; a third of the tables removed", flush=True)
                continue
            except subprocess.TimeoutExpired:
                builder.send_signal(signal.SIGKILL)
                builder.wait()
        kills += 1
        names = tables_in(lookup) if os.path.isdir(lookup) else []
        compare(lookup, reference, names)
        last = open(log_path, errors="replace").read().strip().splitlines()
        print(f"kill {kills} after {delay:.1f} s: {len(names)} tables, "
              f"{len(leftovers(lookup)) if names else 0} temporary files; "
              f"{last[-1] if last else ''}", flush=True)

    with open(log_path, "a") as log:
        status = start(tamarin, directory, log).wait()
    if status != 0:
        sys.exit(f"the last run ended with status {status}; see {log_path}")
    names = tables_in(lookup)
    if len(names) != TABLES:
        sys.exit(f"{len(names)} tables, not {TABLES}")
    compare(lookup, reference, names)
    if leftovers(lookup):
        sys.exit(f"left behind: {' '.join(leftovers(lookup))}")
    with open(os.path.join(lookup, "manifest.json")) as file:
        manifest = json.load(file)
    known = sorted(entry["name"] for entry in manifest["files"])
    if known != names or "begun" in manifest:
        sys.exit(f"the manifest knows {len(known)} tables, not {TABLES}")
    # A window at a time and nothing side by side: the same bytes.
    with open(log_path, "a") as log:
        status = start(tamarin, directory, log, "--only", "equity,utility", "--force", "--memory",
                       "900MB", "--threads", "1").wait()
    if status != 0:
        sys.exit(f"the run in little memory ended with status {status}; see {log_path}")
    compare(lookup, reference, names)
    print(f"{kills} kills, the same {TABLES} tables")
    shutil.rmtree(options.directory)


if __name__ == "__main__":
    main()
