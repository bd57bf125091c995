#!/bin/sh
# Runs a Windows program under Wine with a prefix kept inside the build tree. The caller
# (./qm) provides the X display; without one, Wine still runs console programs.
#
# The program's output goes through a temporary file: the first Wine program of a session
# starts Wine's background services, which inherit its output handles and outlive it, and a
# pipe held open by them would keep ctest waiting for the end of the output.
here=$(pwd)
while [ "$here" != "/" ] && [ ! -f "$here/CMakeCache.txt" ]; do here=$(dirname "$here"); done
[ -f "$here/CMakeCache.txt" ] || here=$(pwd)
export WINEPREFIX="${WINEPREFIX:-$here/wineprefix}"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=}"
if [ ! -f "$WINEPREFIX/system.reg" ]; then
  wineboot --init >/dev/null 2>&1 </dev/null
  wineserver -w
fi
# Wine links the user's Desktop, Documents, ... in the prefix to the HOME it was made with; the
# tests get a folder of the build instead, never the user's own.
home="$here/home"
mkdir -p "$home"
for link in "$WINEPREFIX/drive_c/users/$(id -un)"/*; do
  if [ -L "$link" ] && [ "$(readlink "$link")" != "$home" ]; then ln -sfn "$home" "$link"; fi
done
out=$(mktemp "${TMPDIR:-/tmp}/wine-run.XXXXXX") || exit 1
wine "$@" >"$out" 2>&1
rc=$?
cat "$out"
rm -f "$out"
exit $rc
