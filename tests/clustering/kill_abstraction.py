#!/usr/bin/env python3
"""Kills `tamarin abstract` at random moments and shows that what is left ends in the same bytes.

    kill_abstraction.py TAMARIN DIRECTORY [--kills N] [--seed N]

An undisturbed run is the reference. Then the program is killed with SIGKILL N times, each time after
a random part of the time that the undisturbed run took, and started again. A run that ends before its
turn is the end of one abstraction: its five files must be the reference's, and the next one is begun
anew. After every kill the files of finished rounds are whole, and there is no description. Takes some
600 MB and a minute or two; what it makes is removed when all is well.
"""
import argparse
import filecmp
import os
import random
import shutil
import signal
import subprocess
import sys
import time

NAME = "20-30-30-30"
FILES = ["abstraction", "flop", "preflop", "river", "turn"]


def start(tamarin, directory, log):
    return subprocess.Popen([tamarin, "abstract", NAME, "--sample", "20000", "--dir", directory],
                            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=log)


def folder_in(directory):
    return os.path.join(directory, "lookup", NAME)


def files_in(directory):
    folder = folder_in(directory)
    if not os.path.isdir(folder):
        return []
    return sorted(name for name in os.listdir(folder) if not name.startswith("."))


def compare(directory, reference, names):
    for name in names:
        if not filecmp.cmp(os.path.join(folder_in(directory), name),
                           os.path.join(folder_in(reference), name), shallow=False):
            sys.exit(f"{name} differs from the undisturbed run's")


def check_whole(directory, reference):
    names = files_in(directory)
    if names != FILES:
        sys.exit(f"the files are {' '.join(names)}")
    compare(directory, reference, names)


def check_killed(directory, reference):
    """What is there is whole; only the end of a run writes the description."""
    names = files_in(directory)
    rounds = [name for name in names if name in FILES]
    compare(directory, reference, rounds)
    if "abstraction" in names and rounds != FILES:
        sys.exit("there is a description without all the rounds")
    if any(name.endswith(".bad") for name in names):
        sys.exit(f"a kill left a damaged file: {' '.join(names)}")
    return names


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("tamarin")
    parser.add_argument("directory")
    parser.add_argument("--kills", type=int, default=6)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    tamarin = os.path.abspath(options.tamarin)
    draw = random.Random(options.seed)
    shutil.rmtree(options.directory, ignore_errors=True)
    reference = os.path.join(options.directory, "whole")
    directory = os.path.join(options.directory, "killed")
    os.makedirs(reference)
    os.makedirs(directory)
    log_path = os.path.join(options.directory, "log")
    log = open(log_path, "w")
    began = time.monotonic()
    if start(tamarin, reference, log).wait() != 0:
        sys.exit(f"the undisturbed run failed; see {log_path}")
    took = time.monotonic() - began
    if files_in(reference) != FILES:
        sys.exit(f"the undisturbed run left {' '.join(files_in(reference))}")
    print(f"undisturbed: {took:.1f} s", flush=True)

    kills = 0
    while kills < options.kills:
        delay = draw.uniform(0.02, 0.7) * took
        maker = start(tamarin, directory, log)
        try:
            if maker.wait(timeout=delay) != 0:
                sys.exit(f"a run after a kill failed; see {log_path}")
            check_whole(directory, reference)
            shutil.rmtree(folder_in(directory))
            print("made, the same files; begun anew", flush=True)
            continue
        except subprocess.TimeoutExpired:
            maker.send_signal(signal.SIGKILL)
            maker.wait()
        kills += 1
        print(f"kill {kills} after {delay:.1f} s: {' '.join(check_killed(directory, reference))}",
              flush=True)

    if start(tamarin, directory, log).wait() != 0:
        sys.exit(f"the last run failed; see {log_path}")
    check_whole(directory, reference)
    print(f"{kills} kills, the same {len(FILES)} files")
    shutil.rmtree(options.directory)


if __name__ == "__main__":
    main()
