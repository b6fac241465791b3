#!/usr/bin/env bash
# Line coverage of the library (Vorn/) by the test suites, with gcovr. Fails
# below the floor the project holds itself to.
set -euo pipefail
cd "$(dirname "$0")/.."
floor="${VORN_COVERAGE_FLOOR:-90}"
find build/coverage -name '*.gcda' -delete 2>/dev/null || true
cmake --workflow --preset coverage
gcovr --root . --filter 'Vorn/' --gcov-ignore-parse-errors --print-summary \
      --fail-under-line "$floor" build/coverage
