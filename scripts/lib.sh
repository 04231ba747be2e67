# Shared by the scripts of this folder: where things are, and what a fresh Debian 12 machine lacks.
# shellcheck shell=bash

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root" || exit 1

build_packages=(g++ cmake ninja-build ccache pkg-config libxerces-c-dev libicu-dev libxxhash-dev libcsv-dev libcli11-dev
  nlohmann-json3-dev)
test_packages=("${build_packages[@]}" libgtest-dev libgmock-dev libbenchmark-dev)

# install_packages NAME...: installs those that are missing; says what to do where it may not.
install_packages() {
  local missing=()
  local package
  for package in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "These packages are missing; install them as root: ${missing[*]}" >&2
      return 1
    fi
    as_root=(sudo)
  fi
  echo "Installing ${missing[*]}"
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# build PRESET [TARGET...]: configures and builds into build/PRESET, with ccache where it is installed.
build() {
  local preset=$1
  shift
  local launcher=()
  command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  cmake --preset "$preset" "${launcher[@]}" >"build-$preset.log" 2>&1 || {
    cat "build-$preset.log"
    return 1
  }
  rm -f "build-$preset.log"
  local targets=()
  [ $# -gt 0 ] && targets=(--target "$@")
  cmake --build --preset "$preset" "${targets[@]}"
}

# run_tests PRESET [CTEST ARGUMENT...]: runs the tests and ends with the line "N passed, N failed[, N skipped]". What the
# tests print goes to build/PRESET/tests.log, and to the screen if one fails.
run_tests() {
  local preset=$1
  shift
  local report=$root/build/$preset/tests.xml
  local log=$root/build/$preset/tests.log
  rm -f "$report"
  echo "Running the tests of build/$preset; their output goes to build/$preset/tests.log"
  local status=0
  ctest --preset "$preset" --output-junit "$report" "$@" >"$log" 2>&1 || status=$?
  if [ "$status" -ne 0 ] || [ ! -f "$report" ]; then cat "$log"; fi
  [ -f "$report" ] || return 1
  count_tests "$report"
  return "$status"
}

# count_tests REPORT: the line "N passed, N failed[, N skipped]" of a JUnit report.
count_tests() {
  local suite tests failed skipped
  suite=$(tr '\n' ' ' <"$1" | grep -oE '<testsuite [^>]*>')
  tests=$(attribute tests "$suite")
  failed=$(attribute failures "$suite")
  skipped=$(($(attribute skipped "$suite") + $(attribute disabled "$suite")))
  echo "$((tests - failed - skipped)) passed, $failed failed, $skipped skipped"
}

# attribute NAME TAG
attribute() { grep -oE "[[:space:]]$1=\"[0-9]+\"" <<<"$2" | grep -oE '[0-9]+'; }
