#!/usr/bin/env bash
# Line coverage of the library (Vorn/) by the test suites, with gcovr. Fails
# below the floor the project holds itself to.
set -euo pipefail
cd "$(dirname "$0")/.."
floor="${VORN_COVERAGE_FLOOR:-90}"
find build/coverage -name '*.gcda' -delete 2>/dev/null || true
cmake --workflow --preset coverage
# The library's own objects only: the test programs compile private copies of
# a few internal sources, whose records gcovr cannot merge with the library's.
gcovr --root . --filter 'Vorn/' --print-summary \
      --exclude-directories 'build/coverage/tests' --exclude-directories 'build/coverage/bench' \
      --exclude-directories 'build/coverage/tools' \
      --fail-under-line "$floor" build/coverage
