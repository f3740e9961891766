#!/usr/bin/env bash
# Installs the Debian 12 packages that building and checking need, and only those that are missing.
#
#   scripts/install-packages.sh          what a build, its tests and its benchmarks need
#   scripts/install-packages.sh check    the same, and what ./check needs
#   scripts/install-packages.sh full     the same, and what ./check --full needs
#
# Uses sudo when it is not run by root. Where there is no apt-get it names the packages and goes on:
# the build then says what it misses.
set -euo pipefail

build=(g++ cmake ninja-build git libgtest-dev librapidcheck-dev libbenchmark-dev libcli11-dev
       nlohmann-json3-dev libfmt-dev libxxhash-dev libboost1.81-dev)
check=(clang-format-14 ccache)
full=(clang-14 clang-tidy-14 libclang-rt-14-dev libomp-14-dev)

case "${1:-build}" in
build) wanted=("${build[@]}") ;;
check) wanted=("${build[@]}" "${check[@]}") ;;
full) wanted=("${build[@]}" "${check[@]}" "${full[@]}") ;;
*)
    echo "usage: scripts/install-packages.sh [build|check|full]" >&2
    exit 2
    ;;
esac

if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    echo "There is no apt-get here. Install what Debian 12 calls: ${wanted[*]}" >&2
    exit 0
fi

missing=()
for package in "${wanted[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [[ $status == installed ]] || missing+=("$package")
done
if [[ ${#missing[@]} -eq 0 ]]; then
    echo "All ${#wanted[@]} packages are installed."
    exit 0
fi

as_root=(env DEBIAN_FRONTEND=noninteractive)
if [[ $(id -u) -ne 0 ]]; then
    if ! command -v sudo >/dev/null; then
        echo "Packages are missing, and there is no sudo. Run this as root:" >&2
        echo "  apt-get update && apt-get install ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo "${as_root[@]}")
fi
apt=("${as_root[@]}" apt-get -o DPkg::Lock::Timeout=600 -qq)

echo "Installing ${#missing[@]} of ${#wanted[@]} packages: ${missing[*]}"
# A list that cannot be fetched may not matter; the installation decides.
"${apt[@]}" update </dev/null || echo "apt-get update failed; trying with the lists there are." >&2
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! "${apt[@]}" install -y --no-install-recommends "${missing[@]}" </dev/null >"$log" 2>&1; then
    cat "$log" >&2
    echo "ERROR: apt-get could not install ${missing[*]}" >&2
    exit 1
fi
echo "Installed."
