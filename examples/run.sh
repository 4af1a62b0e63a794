#!/bin/sh
# Runs the packager on the bundled example module in a scratch directory and shows the result.
# Usage: run.sh <mxsbutil binary> <scratch directory>
set -u
tool=$1
dir=$2
here=$(dirname "$0")
rm -rf "$dir" && mkdir -p "$dir" && cp "$here/demo.dll" "$dir/"
# The directory must be absolute: relative paths name no file to open.
dir=$(cd "$dir" && pwd)
echo "\$ mxsbutil -c demo -t DRVR -d $dir/"
"$tool" -c demo -t DRVR -d "$dir/"
status=$?
echo "exit status: $status"
if [ -f "$dir/demo.msb" ]; then
    echo "$dir/demo.msb:"
    od -A d -t x1z -v "$dir/demo.msb"
else
    echo "(no package written)"
fi
exit $status
