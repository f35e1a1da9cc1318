#!/usr/bin/env bash
# Configures the project alone and inside another one, with packages missing, and checks what it builds and says.
#
#   configure_test.sh SOURCE_DIR WORK_DIR
set -euo pipefail
source=$1
work=$2
rm -rf "$work"
mkdir -p "$work"

# Configures the project in $work/build, with further arguments of cmake. The output is in $work/log, in one line.
configure() {
  rm -rf "$work/build"
  local status=0
  cmake -S "$source" -B "$work/build" -G Ninja "$@" >"$work/output" 2>&1 || status=$?
  tr -s ' \n' ' ' <"$work/output" >"$work/log"
  return "$status"
}

expect() {
  grep --fixed-strings --quiet -- "$1" "$work/log" || {
    echo "expected '$1', found:"
    cat "$work/output"
    return 1
  }
}

without=(-DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON
  -DCMAKE_DISABLE_FIND_PACKAGE_TBB=ON -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON)

# Parts whose packages are missing are left out.
configure "${without[@]}"
expect "Left out: the command qel-purchase (not found: CLI11, TBB)"
expect "Left out: the tests (not found: GTest)"
expect "Left out: the benchmarks (not found: benchmark)"
expect "CMAKE_BUILD_TYPE is not set; using Release"
grep --quiet '^CMAKE_BUILD_TYPE:STRING=Release$' "$work/build/CMakeCache.txt"
cmake "$work/build" >/dev/null  # again, with the cache of the first time

configure -DCMAKE_DISABLE_FIND_PACKAGE_rapidcheck=ON -DCMAKE_BUILD_TYPE=Debug
expect "Left out: the comparison tests, the exhaustive test and the fuzz targets (not found: rapidcheck)"
grep --quiet '^CMAKE_BUILD_TYPE:STRING=Debug$' "$work/build/CMakeCache.txt"

# A part that the user asks for is not left out.
for part in TOOL TESTS BENCHMARKS; do
  if configure "${without[@]}" -DQEL_BUILD_$part=ON; then
    echo "expected a failure with QEL_BUILD_$part=ON"
    exit 1
  fi
  expect "QEL_BUILD_$part=ON, but the"
  expect "or set QEL_BUILD_$part to OFF or AUTO."
done
if configure -DCMAKE_DISABLE_FIND_PACKAGE_libmd=ON; then
  echo "expected a failure without libmd"
  exit 1
fi

# Without libcrypto, or if the user does not want it, the command is built without its subcommand receipt.
if configure -DCMAKE_DISABLE_FIND_PACKAGE_OpenSSL=ON -DQEL_BUILD_RECEIPT=ON; then
  echo "expected a failure with QEL_BUILD_RECEIPT=ON"
  exit 1
fi
expect "QEL_BUILD_RECEIPT=ON, but qel::receipt and qel-purchase receipt cannot be built. Not found: OpenSSL."
configure -DQEL_BUILD_RECEIPT=OFF
expect "Configuring done"
configure -DCMAKE_DISABLE_FIND_PACKAGE_OpenSSL=ON -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS=-O0
expect "Left out: qel::receipt and qel-purchase receipt (not found: OpenSSL)"
cmake --build "$work/build" --target qel-purchase >"$work/log" || { cat "$work/log"; exit 1; }
ctest --test-dir "$work/build" --no-tests=error --output-on-failure -R '^command\.ReceiptLeftOutTest$'

# Inside another project it is the library alone: no command, no tests, no build type, nothing installed.
mkdir "$work/app"
cat >"$work/app/CMakeLists.txt" <<PROJECT
cmake_minimum_required(VERSION 3.25)
project(app LANGUAGES CXX)
if(FETCHED)
  include(FetchContent)
  FetchContent_Declare(qel-purchase SOURCE_DIR $source)
  FetchContent_MakeAvailable(qel-purchase)
else()
  add_subdirectory($source qel-purchase)
endif()
add_executable(app $source/examples/embed/main.cc)
target_link_libraries(app PRIVATE qel::purchase)
if(CMAKE_BUILD_TYPE OR TARGET qel-purchase OR TARGET qel_tool OR TARGET qel-bench OR TARGET qel_unit_tests)
  message(FATAL_ERROR "expected the library alone")
endif()
PROJECT
cmake -S "$work/app" -B "$work/fetched" -G Ninja -DFETCHED=ON >/dev/null
cmake -S "$work/app" -B "$work/subproject" -G Ninja >/dev/null
cmake --build "$work/subproject" >/dev/null
"$work/subproject/app" | diff "$source/tests/package/embed.txt" -
cmake --install "$work/subproject" --prefix "$work/nothing" >/dev/null
[ ! -e "$work/nothing" ]
cmake "$work/subproject" -DQEL_INSTALL=ON >/dev/null
cmake --build "$work/subproject" >/dev/null
cmake --install "$work/subproject" --prefix "$work/something" >/dev/null
[ -f "$work/something/include/qel/purchase_event.h" ]

# A digest of the embedder's, and version 4 of utfcpp, whose target has a namespace.
for wrong in -DQEL_DIGEST=sha1 -DBUILD_SHARED_LIBS=ON -DQEL_BUILD_TOOL=ON; do
  if configure -DQEL_DIGEST=external "$wrong"; then
    echo "expected a failure with $wrong"
    exit 1
  fi
  expect "QEL_DIGEST"
done
mkdir "$work/utf8cpp" "$work/external"
cat >"$work/utf8cpp/utf8cpp-config.cmake" <<'PACKAGE'
find_path(UTF8CPP_INCLUDE_DIR utf8/core.h PATH_SUFFIXES utf8cpp REQUIRED)
add_library(utf8cpp::utf8cpp INTERFACE IMPORTED)
set_target_properties(utf8cpp::utf8cpp PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${UTF8CPP_INCLUDE_DIR})
PACKAGE
cat >"$work/external/CMakeLists.txt" <<PROJECT
cmake_minimum_required(VERSION 3.25)
project(external LANGUAGES CXX)
set(QEL_DIGEST external)
add_subdirectory($source qel-purchase)
add_executable(app $source/examples/embed/main.cc digest.cc)
target_link_libraries(app PRIVATE qel::purchase)
PROJECT
cat >"$work/external/digest.cc" <<'PROGRAM'
#include "qel/digest.h"
std::uint64_t qel::qel_64LSBMD5(std::string_view bytes) { return bytes.size(); }
PROGRAM
cmake -S "$work/external" -B "$work/external/build" -G Ninja -Dutf8cpp_DIR="$work/utf8cpp" \
  -DCMAKE_DISABLE_FIND_PACKAGE_libmd=ON >/dev/null
cmake --build "$work/external/build" >/dev/null
# The identifier is the size of 1000000512coins.100.
"$work/external/build/app" | diff <(sed 's/^_did = .*/_did = 19/' "$source/tests/package/embed.txt") -

# By hand, without CMake.
cd "$source"
"${CXX:-c++}" -std=c++20 -Iinclude -Iplatform src/*.cc platform/portable/*.cc platform/digest/libmd.cc \
  examples/embed/main.cc -lmd -o "$work/by_hand"
"$work/by_hand" | diff tests/package/embed.txt -
