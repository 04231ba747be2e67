#!/usr/bin/env bash
# install_and_consume.sh CMAKE SOURCE BUILD CXX: what is installed must serve a stranger's project.
set -euo pipefail
cmake=$1 source=$2 build=$3 cxx=$4

if grep -q '^KELSCORING_SANITIZERS:STRING=.' "$build/CMakeCache.txt"; then
  echo "A sanitized build isn't installed."
  exit 77
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

"$cmake" --install "$build" --prefix "$prefix" >"$work/install.log"
"$cmake" -S "$source/examples" -B "$work/host" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx" \
  >"$work/configure.log" || { cat "$work/configure.log"; exit 1; }
"$cmake" --build "$work/host" >"$work/build.log" || { cat "$work/build.log"; exit 1; }

# From the root folder, so that nothing is found by accident in the working directory.
cd /
score() { env -u LD_LIBRARY_PATH "$@"; }

score "$prefix/bin/kelscore" score "$source/examples/tree/churn.pmml" "$source/examples/tree/customers.csv" \
  >"$work/installed.csv"
score "$build/bin/kelscore" score "$source/examples/tree/churn.pmml" "$source/examples/tree/customers.csv" \
  >"$work/built.csv"
cmp "$work/installed.csv" "$work/built.csv"
[ "$(wc -l <"$work/installed.csv")" -gt 2 ]

score "$work/host/example_host" "$source/examples/tree/churn.pmml" >"$work/host.txt"
grep -q prediction "$work/host.txt"

pc=$(PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name kelscoring.pc)") pkg-config --define-variable=prefix="$prefix" \
  --cflags --libs kelscoring)
libdir=$(dirname "$(find "$prefix" -name 'libkelscoring20r.so')")
# shellcheck disable=SC2086
"$cxx" "$source/examples/host/main.cpp" $pc -Wl,-rpath,"$libdir" -o "$work/host-by-pkg-config"
score "$work/host-by-pkg-config" "$source/examples/tree/churn.pmml" | cmp - "$work/host.txt"
