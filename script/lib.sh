# Shared by the scripts beside this file; sourced, never run.
# shellcheck shell=bash
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export LC_ALL=C.UTF-8

# As many compilers at once as there are processors.
jobs=$(nproc)

if [ -t 1 ]; then bold=$'\e[1m' plain=$'\e[0m'; else bold='' plain=''; fi

heading() { printf '\n%s== %s ==%s\n' "$bold" "$*" "$plain"; }
complain() { printf '%s: %s\n' "${0##*/}" "$*" >&2; }
die() { complain "$@"; exit 1; }

# build PRESET [TARGET...]: configures (once, silently) and builds.
build() {
  local preset=$1 log=build/$1-configure.log
  shift
  mkdir -p build
  if ! cmake --preset "$preset" >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    die "configuring the preset $preset failed"
  fi
  cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"}
}

# tally NAME PASSED FAILED: one suite's result, added to the running total
# and, for a caller that sums over several scripts, to the file that
# VEK_TALLY names.
passed=0 failed=0
tally() {
  passed=$((passed + $2)) failed=$((failed + $3))
  if [ -n "${VEK_TALLY:-}" ]; then echo "$1 $2 $3" >>"$VEK_TALLY"; fi
}
