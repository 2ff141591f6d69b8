#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test: the normal build,
# the same tests under AddressSanitizer and UndefinedBehaviorSanitizer, the
# console's stress test against a ThreadSanitizer build of the console, the
# Debian package built, installed and purged, and each fuzz target for a
# bounded time.
set -euo pipefail
cd "$(dirname "$0")/.."

FUZZ_SECONDS="${FUZZ_SECONDS:-30}"
JOBS="$(nproc)"

bash scripts/deps.sh

# One compiler cache for every build of the tree and for other checkouts of
# it: paths are hashed relative to the checkout, debug info without its folder.
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1

run_suite() {  # build dir, extra cmake flags...
  local dir=$1; shift
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
  cmake --build "$dir" -j"$JOBS"
  (cd "$dir" && ctest -j"$JOBS" --output-on-failure --timeout 300) | tee "$dir/ctest.log"
}

echo "== build and test =="
run_suite build
echo "== build and test under ASan+UBSan =="
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  run_suite build-asan -DNV_SANITIZE=ON -DNV_BENCH=OFF

echo "== the console under ThreadSanitizer: keys and refreshes for 20 s =="
cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DNV_TSAN=ON -DNV_BENCH=OFF >/dev/null
cmake --build build-tsan -j"$JOBS" --target nvui
NV_FORM_TEST_NVUI="$PWD/build-tsan/bin/nvui" build/bin/test_screen_form_stress
echo "== Debian package: build, lintian, install, check, purge =="
bash scripts/package-test.sh

echo "== fuzz targets, ${FUZZ_SECONDS}s each =="
cmake -S . -B build-fuzz -DNV_FUZZ=ON -DNV_BENCH=OFF -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build-fuzz -j"$JOBS" --target fuzz_answer_decoder fuzz_request_decoder fuzz_state_roundtrip fuzz_ipv4_parse fuzz_ifname_parse
bash scripts/fuzz.sh build-fuzz "$FUZZ_SECONDS"

total() { grep -Eo 'tests failed out of [0-9]+' "$1" | grep -Eo '[0-9]+$'; }
n=$(( $(total build/ctest.log) + $(total build-asan/ctest.log) ))
echo "tests: $n passed, 0 failed"
