#!/bin/sh
# Starts the Wine that `make test-windows` and `make test-windows64` run the cross-built
# programs under, and prints the environment for it.
# Usage: eval "$(sh cmake/wine-env.sh build [win32|win64])"; win32 when no architecture is given.
#
# A prefix of the project's own under the build directory, one for each architecture (a prefix
# is made for one and can't serve the other), made once, so that no user setting and no
# earlier run changes the results. One persistent server for the whole run: without it
# every program under test would start and stop a server and Wine's helper services, which
# costs seconds a process. The server and the services are started here with standard input
# and output on /dev/null; started by the first test instead, they would inherit its pipes and
# hold ctest's output open after the test ends.
set -e
build=$(cd "${1:-build}" && pwd)
WINEARCH=${2:-win32}
case $WINEARCH in
win32) WINEPREFIX="$build/wine" ;;
win64) WINEPREFIX="$build/wine64" ;;
*) echo "wine-env.sh: unknown architecture $WINEARCH" >&2; exit 2 ;;
esac
WINEDEBUG=-all
# No browser or .NET engines: the prefix asks to download them otherwise.
WINEDLLOVERRIDES="mscoree,mshtml="
export WINEPREFIX WINEARCH WINEDEBUG WINEDLLOVERRIDES
# An answer of "already running" is fine: the server of an earlier call is kept.
wineserver -p </dev/null >/dev/null 2>&1 || true
wineboot -i </dev/null >/dev/null 2>&1
echo "export WINEPREFIX='$WINEPREFIX' WINEARCH=$WINEARCH WINEDEBUG=$WINEDEBUG WINEDLLOVERRIDES='$WINEDLLOVERRIDES'"
