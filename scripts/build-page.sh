#!/usr/bin/env bash
# Builds the page of `tamarin serve` from web/src into web/built, which is committed so that nobody
# needs Node to build the programs.
#
#   scripts/build-page.sh            build it
#   scripts/build-page.sh --compare  build it elsewhere, and say whether web/built is that
#
# Needs Node 18 or later and npm. The tools come as web/package-lock.json has them.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../web"

case "${1:-}" in
'' | --compare) ;;
*)
    sed -n '2,7s/^# \{0,1\}//p' "../scripts/build-page.sh" >&2
    exit 2
    ;;
esac

# Anew when the list of tools has changed.
if [[ ! -e node_modules/.package-lock.json || package-lock.json -nt node_modules/.package-lock.json ]]; then
    npm ci --no-audit --no-fund
fi
node_modules/.bin/tsc -p .
if [[ ${1:-} != --compare ]]; then
    node build.mjs built
    gzip -9c built/page.js built/page.css built/index.html | wc -c | sed 's/$/ bytes compressed/'
    exit 0
fi
fresh=$(mktemp -d)
trap 'rm -rf "$fresh"' EXIT
node build.mjs "$fresh"
if ! diff -rq built "$fresh"; then
    echo "web/built is not what web/src makes: run scripts/build-page.sh and commit it" >&2
    exit 1
fi
echo "web/built is what web/src makes."
