#!/usr/bin/env bash
# Runs clang-tidy 14 with the tree's .clang-tidy over the sources (or over the files named).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

build=build/tidy
# A build configured for clang: clang-tidy would not know some of g++'s options.
cmake --preset fuzz -B "$build" -DTAMARIN_SANITIZE= -DTAMARIN_FUZZERS=OFF -DTAMARIN_TOOLBOX=ON -Wno-dev >/dev/null
if [[ $# -gt 0 ]]; then
    files=("$@")
else
    mapfile -t files < <(git ls-files 'src/*.cpp')
fi
printf '%s\0' "${files[@]}" | xargs -0 -n 1 -P "${JOBS:-$(nproc)}" \
    clang-tidy-14 --quiet -p "$build" --warnings-as-errors='*' 2>&1 |
    { grep -v -E '^[0-9]+ warnings? (generated|treated)|^Suppressed|^Use -header-filter' || true; }
exit "${PIPESTATUS[0]}"
