#!/usr/bin/env bash
# Builds the libraries static and shared, with g++ and with clang, and checks for each that they export their
# interface and nothing else, and that no exception reaches a caller, whichever compiler built it.
#
#   linking_test.sh SOURCE_DIR WORK_DIR     WORK_DIR is kept, so that only the first run takes long
set -euo pipefail
source=$1
work=$2
here=$source/tests/linking
compilers=(g++ clang++)
includes=(-I "$source/include" -I "$source/platform")
mkdir -p "$work"

# Prints the demangled names that the dynamic symbol table of $1 defines.
exported() { nm -DC --defined-only "$1" | cut -d ' ' -f 3- | sort -u; }

for caller in "${compilers[@]}"; do
  for unit in src/termination_test support/counted_allocations; do
    "$caller" -std=c++20 -O2 "${includes[@]}" -I "$source/tests" \
      -c "$source/tests/$unit.cc" -o "$work/$(basename "$unit")-$caller.o"
  done
done

for compiler in "${compilers[@]}"; do
  for kind in static shared; do
    build=$work/$compiler-$kind
    shared=$([ "$kind" = shared ] && echo ON || echo OFF)
    echo "== $compiler, $kind"
    cmake -S "$source" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER="$compiler" \
      -DBUILD_SHARED_LIBS="$shared" -DCMAKE_POSITION_INDEPENDENT_CODE=ON \
      -DQEL_BUILD_TESTS=OFF -DQEL_BUILD_TOOL=OFF -DQEL_BUILD_BENCHMARKS=OFF >/dev/null
    cmake --build "$build" >/dev/null

    if [ "$kind" = shared ]; then
      libraries=("$build/src/libqel-purchase.so" "$build/platform/libqel-platform.so")
      exported "${libraries[0]}" | diff "$here/exported_by_purchase.txt" -
      exported "${libraries[1]}" | diff "$here/exported_by_platform.txt" -
    else
      libraries=("$build/src/libqel-purchase.a" "$build/platform/libqel-platform.a")
      "$compiler" -shared -o "$work/embedder.so" \
        -Wl,--whole-archive "${libraries[@]}" -Wl,--no-whole-archive -lmd -pthread
      exported "$work/embedder.so" |
        diff <(sort -u "$here/exported_by_purchase.txt" "$here/exported_by_platform.txt") -
    fi

    for caller in "${compilers[@]}"; do
      echo "-- called by $caller"
      "$caller" -o "$work/termination" "$work/termination_test-$caller.o" "$work/counted_allocations-$caller.o" \
        "${libraries[@]}" -Wl,-rpath,"$build/src:$build/platform" -lgtest -lgtest_main -lmd -pthread
      "$work/termination" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
      tail -n 1 "$work/log"
    done
  done
done
