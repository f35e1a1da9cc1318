#!/usr/bin/env bash
# Builds and installs the library over Foundation with the platform's formatter chosen, then builds and
# runs an app of Objective-C alone against what was installed.
#
#   package_test.sh SOURCE_DIR WORK_DIR CXX OBJC     WORK_DIR: kept, so that only the first run takes long
set -euo pipefail
source=$1
work=$2
cxx=$3
objc=$4

cmake -S "$source" -B "$work/library" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER="$cxx" \
  -DQEL_PLATFORM_FOUNDATION=ON -DQEL_DATE_FORMATTER=foundation \
  -DQEL_BUILD_TESTS=OFF -DQEL_BUILD_TOOL=OFF -DQEL_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build "$work/library" >/dev/null
rm -rf "$work/installed"
cmake --install "$work/library" --prefix "$work/installed" >/dev/null

cmake -S "$source/tests/foundation/package" -B "$work/app" -G Ninja \
  -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_OBJC_COMPILER="$objc" -DCMAKE_PREFIX_PATH="$work/installed" >/dev/null
cmake --build "$work/app" --clean-first >/dev/null

# printf 1000monthly | md5sum ends in 92794f831b539753, which is -7892189447472310445 when signed.
diff - <("$work/app/app") <<'EXPECTED'
40008
_did = -7892189447472310445
currency = EUR
price = 8290000
product_id = monthly
product_name = Monthly
quantity = 2
subscription = 1
value = 16580000
EXPECTED
