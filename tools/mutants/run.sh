#!/usr/bin/env bash
# Breaks the library on purpose, one place at a time, and checks that the suites notice.
#
#   tools/mutants/run.sh [--all] [--list FILE] [NAME...]
#
# For each record of the list (default tools/mutants/breaks.txt; NAMEs pick some of them) the
# script replaces the text in its file, rebuilds the native preset incrementally, runs the
# owning family's test program (or, with --all, every test program) stopping at the first
# failure, and restores the file, also on Ctrl-C. The family's suite is enough by default: each
# break is in code that only that family's tests reach directly, and running every program for
# each of several dozen breaks would take many times longer on a shared machine.
#
# Results: one line per break in build/mutants/results.txt (caught, MISSED, not-applied,
# build-error) and a summary on the standard output. Exit status 1 if any break was missed.
set -uo pipefail
cd "$(dirname "$0")/../.."
ROOT=$(pwd)
LIST=tools/mutants/breaks.txt
ALL=0
PICK=()
while (($#)); do
  case $1 in
    --all) ALL=1 ;;
    --list) LIST=$2; shift ;;
    -h|--help) sed -n '2,15p' "$0"; exit 0 ;;
    *) PICK+=("$1") ;;
  esac
  shift
done

BUILD=build/native
# The suites run with the time zone and locale that ctest pins for them; without these some
# date and time tests fail whatever the break, and every break there would look caught.
export TZ=EST5EDT LC_ALL=C
OUT=build/mutants
mkdir -p "$OUT"
RESULTS=$OUT/results.txt
: >"$RESULTS"
BACKUP=""
TARGET=""

restore() {
  if [ -n "$TARGET" ] && [ -n "$BACKUP" ] && [ -f "$BACKUP" ]; then
    # Written over (not moved) so the file gets a new time stamp and the next build recompiles it.
    cat "$BACKUP" >"$TARGET"
    rm -f "$BACKUP"
  fi
  TARGET=""
  BACKUP=""
}
trap 'restore; echo "interrupted; file restored" >&2; exit 130' INT TERM
trap restore EXIT

if ! git diff --quiet -- utils; then
  echo "utils/ has uncommitted changes; commit or stash them first (the script restores files from its own copy, but a clean tree makes the results comparable)" >&2
fi

cmake --preset native >/dev/null || exit 2
cmake --build "$BUILD" >/dev/null 2>"$OUT/baseline.log" || { echo "the unbroken tree does not build" >&2; exit 2; }

wanted() {
  ((${#PICK[@]} == 0)) && return 0
  local p
  for p in "${PICK[@]}"; do [ "$p" = "$1" ] && return 0; done
  return 1
}

run_one() {  # name suite file old new
  local name=$1 suite=$2 file=$3 old=$4 new=$5 status
  wanted "$name" || return 0
  if [ ! -f "$file" ]; then echo "$name	$suite	not-applied	(no file $file)" >>"$RESULTS"; return; fi
  BACKUP=$(mktemp "$OUT/backup.XXXXXX")
  cp "$file" "$BACKUP"
  TARGET=$file
  OLD=$old NEW=$new perl -0pi -e 's/\Q$ENV{OLD}\E/$ENV{NEW}/' "$file"
  if cmp -s "$file" "$BACKUP"; then
    status=not-applied
  else
    local programs=()
    if ((ALL)); then
      programs=("$BUILD"/bin/test_*)
      cmake --build "$BUILD" >"$OUT/$name.build.log" 2>&1 || status=build-error
    else
      programs=("$BUILD/bin/test_$suite")
      cmake --build "$BUILD" --target "test_$suite" >"$OUT/$name.build.log" 2>&1 || status=build-error
    fi
    if [ -z "${status:-}" ]; then
      status=MISSED
      : >"$OUT/$name.test.log"
      for exe in "${programs[@]}"; do
        if ! timeout 300 "$exe" --gtest_fail_fast --gtest_brief=1 >>"$OUT/$name.test.log" 2>&1; then
          status=caught
          break
        fi
      done
    fi
  fi
  restore
  printf '%s\t%s\t%s\n' "$name" "$suite" "$status" | tee -a "$RESULTS"
}

name="" suite="" file="" old="" new=""
flush() { [ -n "$name" ] && run_one "$name" "$suite" "$file" "$old" "$new"; name=""; old=""; new=""; }
while IFS= read -r line || [ -n "$line" ]; do
  case $line in
    'break '*) flush; read -r _ name suite file <<<"$line" ;;
    '- '*) old=${line#- } ;;
    '+ '*) new=${line#+ } ;;
  esac
done <"$LIST"
flush

# Leave the build matching the restored sources.
cmake --build "$BUILD" >/dev/null 2>&1

echo
awk -F'\t' '{n[$3]++} END {for (k in n) printf "%s: %d\n", k, n[k]}' "$RESULTS" | sort
! grep -q '	MISSED$' "$RESULTS"
