#!/bin/sh
# Installs the Debian packages wavex builds, tests and benchmarks with, when they are missing.
set -eu

packages="cmake ninja-build g++ clang libclang-rt-14-dev pkgconf libgtest-dev libbenchmark-dev
libcli11-dev libedit-dev libpcre2-dev libmd-dev uuid-dev python3-numpy sox python3-scipy python3-mpmath
libfftw3-dev libxml2-dev chromium
python3-dev python3-pybind11 pybind11-dev python3-pytest parallel python3-distributed
ngspice libplplot-dev plplot-driver-cairo fonts-dejavu-core libpng-dev libeigen3-dev"

missing=""
for p in $packages; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing="$missing $p"
done
[ -z "$missing" ] && exit 0

echo "Installing:$missing"
if [ "$(id -u)" -eq 0 ]; then sudo=""; else sudo="sudo"; fi
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends $missing >/dev/null
