#!/bin/sh
# The same measurement over every raw file of a directory with GNU parallel: one wavex process per
# file (stateless), JOBS at a time (default: one per core), output in the files' order, one line
# "FILE<tab>VALUE" per value of measure.wx. Add --sshlogin HOSTS to parallel's options to spread
# the files over machines that see them.
#
#   examples/scale/parallel.sh DIR [JOBS] > results.txt
set -eu
dir=$1 jobs=${2:-0}
here=$(cd "$(dirname "$0")" && pwd)
wavex=${WAVEX:-$here/../../build/wavex}
find "$dir" -name '*.raw' | sort |
    parallel -j "$jobs" --keep-order --tag "$wavex" --json --data {} "$here/measure.wx" |
    sed 's/\t.*"y":\[\([^]]*\)\].*/\t\1/'
