#!/usr/bin/env python3
"""Removes one defence of the support room at a time and expects a red test each time.

usage: tests/support/mutants.py BUILD_DIR [NAME...]

BUILD_DIR is a configured build of this tree. The sources are changed in place, one after another,
and put back; run it in a clone of your own. Prints a line a mutant: the tests that turned red, or
SURVIVED. Exit status 1 when any survived.
"""
import re
import subprocess
import sys
from pathlib import Path

ROOM = Path(__file__).resolve().parents[2] / "src" / "support"
FILES = "AtomicFile*:*AtomicFileFaults*:MappedFile*:ReadWholeFile*:*TableFiles*"
NET = "GetLine*:SocketStream*:ConnectTo*"

# name, file, what to replace, by what, tests to run
MUTANTS = [
    ("no sync of the data", "atomic_file.cpp",
     "body.files.fsync(body.fd)", "0", FILES),
    ("a failed sync counts as success", "atomic_file.cpp",
     'return body.fail("sync", errno);', "{}", FILES),
    ("a failed sync is tried again", "atomic_file.cpp",
     "if (uninterrupted([&] { return body.files.fsync(body.fd); }) != 0 &&",
     "if (body.files.fsync(body.fd) != 0 &&"
     " uninterrupted([&] { return body.files.fsync(body.fd); }) != 0 &&", FILES),
    ("no sync of the directory", "atomic_file.cpp",
     "return body.syncDirectory();", "return {};", FILES),
    ("written in place", "atomic_file.cpp",
     "O_WRONLY | O_CREAT | O_EXCL", "O_WRONLY | O_CREAT | O_TRUNC",
     FILES, "open(name.c_str()", "open((name = body->target).c_str()",
     "const std::string name = body->target", "std::string name = body->target"),
    ("temporary not opened exclusively", "atomic_file.cpp",
     "O_CREAT | O_EXCL", "O_CREAT | O_TRUNC", FILES),
    ("rest of a short write dropped", "atomic_file.cpp",
     "size -= static_cast<size_t>(written);", "size = 0;", FILES),
    ("interrupted calls not repeated", "atomic_file.cpp",
     "outcome >= 0 || errno != EINTR", "true", FILES),
    ("close not checked", "atomic_file.cpp",
     'return body.fail("close", errno);', "{}", FILES),
    ("temporary left behind after a failure", "atomic_file.cpp",
     "uninterrupted([&] { return files.unlink(temporary.c_str()); });", "{}", FILES),
    ("stale temporaries left behind", "atomic_file.cpp",
     "removeStale(body->target, files);", "if (false) removeStale(body->target, files);", FILES),
    ("temporaries of the living removed", "atomic_file.cpp",
     "owner <= 0 || !mayBeDead(owner)",
     "owner <= 0 || (mayBeDead(owner), false)", FILES),
    ("locked temporaries removed", "atomic_file.cpp",
     "files.flock(fd, LOCK_EX | LOCK_NB) == 0", "fd >= 0", FILES),
    ("temporary unlocked before the rename", "atomic_file.cpp",
     "    const char* const temporary = body.temporary.c_str();",
     "    body.unlock();\n    const char* const temporary = body.temporary.c_str();", FILES),
    ("mapped whatever the size", "file.cpp",
     "expectedSize != anySize && file.size != expectedSize", "false", FILES),
    ("pipes opened with blocking", "file.cpp",
     "O_RDONLY | O_CLOEXEC | O_NONBLOCK", "O_RDONLY | O_CLOEXEC", FILES),
    ("error of a save dropped", "util.cpp",
     "return status.ok();", "return true;", FILES),
    ("SIGPIPE not ignored", "interrupt.cpp", "ignore(SIGPIPE);", "", "BrokenPipes*"),
    ("SIGXFSZ not ignored", "interrupt.cpp", "ignore(SIGXFSZ);", "", "BrokenPipes*:" + FILES),
    ("second signal swallowed", "interrupt.cpp", "        endAtOnce(signal);", "        {}",
     "Interrupts*", "void endAtOnce", "[[maybe_unused]] void endAtOnce"),
    ("one request taken for two", "interrupt.cpp", "now - first >= sameRequest", "now >= first",
     "Interrupts*", "constexpr int64_t sameRequest", "[[maybe_unused]] constexpr int64_t sameRequest"),
    ("lock skipped", "lock.cpp",
     "flock(fd, LOCK_EX | LOCK_NB) != 0", "fd < 0", "FileLock*"),
    ("replaced lock file trusted", "lock.cpp", "!stillNamed(fd, path)", "false", "FileLock*",
     "bool stillNamed", "[[maybe_unused]] bool stillNamed"),
    ("send raises SIGPIPE", "net.cpp", "size, MSG_NOSIGNAL)", "size, 0)", NET),
    ("rest of a short send dropped", "net.cpp",
     "done += static_cast<size_t>(sent);", "done = size;", NET),
    ("time-out for each piece of a line", "net.cpp",
     "        if (start_ < 0)\n            start_ = now;", "        start_ = now;", NET),
    ("interrupted connect given up", "net.cpp",
     "        if (errno == EINTR)\n            continue;\n        if (errno == EAGAIN",
     "        if (errno == EAGAIN", NET),
]


def run(command, limit):
    try:
        return subprocess.run(command, capture_output=True, text=True, timeout=limit,
                              errors="replace")
    except subprocess.TimeoutExpired:
        return None


def verdict(build, tests):
    built = run(["cmake", "--build", build, "--target", "test_support"], 1200)
    if built is None or built.returncode != 0:
        return "DOES NOT BUILD " + (built.stdout[-1500:] if built else "")
    outcome = run([str(Path(build) / "bin" / "test_support"), "--gtest_filter=" + tests,
                   "--gtest_brief=1"], 90)
    if outcome is None:
        return "red: hangs"
    if outcome.returncode == 0:
        return "SURVIVED"
    names = re.findall(r"^\[  FAILED  \] ([\w./]+)", outcome.stdout, re.M)
    unique = list(dict.fromkeys(names)) or ["dies in the middle"]
    return f"red: {len(unique)} ({unique[0]})"


def main():
    build, wanted = sys.argv[1], sys.argv[2:]
    survived = 0
    for name, file, old, new, tests, *more in MUTANTS:
        if wanted and name not in wanted:
            continue
        path = ROOM / file
        original = path.read_text()
        text = original
        for before, after in zip([old, *more[::2]], [new, *more[1::2]]):
            if before not in text:
                sys.exit(f"{name}: {file} no longer has: {before}")
            text = text.replace(before, after)
        try:
            path.write_text(text)
            result = verdict(build, tests)
        finally:
            path.write_text(original)
        survived += not result.startswith("red")
        print(f"{name:42} {result}", flush=True)
    return 1 if survived else 0


if __name__ == "__main__":
    sys.exit(main())
