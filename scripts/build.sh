#!/usr/bin/env bash
# Configures one preset and builds it, or the targets named.
#
#   scripts/build.sh PRESET [TARGET...]     e.g. scripts/build.sh release player tamarin
#
# Where ccache is installed, objects come from its cache; a clone in another folder finds them too.
# Environment: JOBS, the number of processes at a time (default: all cores).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

preset=${1:-}
if [[ -z $preset ]]; then
    sed -n '2,5p' "$0" >&2
    exit 2
fi
shift

launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    # Nothing that is compiled depends on where the tree lies: paths are mapped to its root.
    export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
    # What ccache asks for before it keeps objects that were made with precompiled headers.
    export CCACHE_SLOPPINESS=pch_defines,time_macros
fi
cmake --preset "$preset" "${launcher[@]}" -Wno-dev >/dev/null
if [[ $# -eq 0 ]]; then set -- all; fi
cmake --build --preset "$preset" -j "${JOBS:-$(nproc)}" --target "$@"
