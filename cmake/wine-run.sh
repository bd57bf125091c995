#!/bin/sh
# Runs a Windows program under Wine with a prefix kept inside the build tree. The caller
# (./qm) provides the X display; without one, Wine still runs console programs.
here=$(pwd)
while [ "$here" != "/" ] && [ ! -f "$here/CMakeCache.txt" ]; do here=$(dirname "$here"); done
[ -f "$here/CMakeCache.txt" ] || here=$(pwd)
export WINEPREFIX="${WINEPREFIX:-$here/wineprefix}"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=}"
if [ ! -f "$WINEPREFIX/system.reg" ]; then
  wineboot --init >/dev/null 2>&1
  wineserver -w
fi
exec wine "$@"
