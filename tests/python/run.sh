#!/bin/sh
# run.sh PYTHON TEST: runs a test of the package; ends with 77 where it can't be run here.
if ! command -v "$1" >/dev/null || ! "$1" -c 'import numpy, hypothesis' 2>/dev/null; then
  echo "SKIPPED. For it: apt-get install pybind11-dev python3-dev python3-numpy python3-hypothesis"
  exit 77
fi
exec "$1" -X faulthandler "$2"
