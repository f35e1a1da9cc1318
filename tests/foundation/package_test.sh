#!/usr/bin/env bash
# Builds and installs the library over Foundation with the platform's formatter chosen, once static and once
# shared. Then builds and runs apps with what was installed.
#
#   package_test.sh SOURCE_DIR WORK_DIR CXX OBJC     WORK_DIR: kept, so that only the first run takes long
set -euo pipefail
source=$1
work=$2
cxx=$3
objc=$4

# Runs a command. Prints its output only if it fails.
quietly() {
  "$@" >"$work/log" 2>&1 || { cat "$work/log"; return 1; }
}

# Installs the library to $1/installed and builds the apps in $1/app. $2 is the value of BUILD_SHARED_LIBS.
build() {
  quietly cmake -S "$source" -B "$1/library" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER="$cxx" \
    -DBUILD_SHARED_LIBS="$2" -DCMAKE_INSTALL_LIBDIR=lib -DQEL_PLATFORM_FOUNDATION=ON -DQEL_DATE_FORMATTER=foundation \
    -DQEL_BUILD_TESTS=OFF -DQEL_BUILD_TOOL=OFF -DQEL_BUILD_BENCHMARKS=OFF
  quietly cmake --build "$1/library"
  rm -rf "$1/installed"
  quietly cmake --install "$1/library" --prefix "$1/installed"

  quietly cmake -S "$source/tests/foundation/package" -B "$1/app" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_OBJC_COMPILER="$objc" -DCMAKE_OBJCXX_COMPILER="$objc" -DCMAKE_PREFIX_PATH="$1/installed"
  quietly cmake --build "$1/app" --clean-first
}

# Runs the apps in $1/app, each of which must exit with 0. Shared libraries come from $1/installed/lib: CMake adds no
# run path to a program that is linked as Objective-C.
run_apps() {
  local -x LD_LIBRARY_PATH=$1/installed/lib
  "$1/app/app" >"$1/output"
  # printf 1000monthly | md5sum ends in 92794f831b539753, which is -7892189447472310445 when signed.
  diff - "$1/output" <<'EXPECTED'
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
  "$1/app/foundation_first"
  "$1/app/purchase_first"
}

mkdir -p "$work"
build "$work/static" OFF
run_apps "$work/static"
build "$work/shared" ON
run_apps "$work/shared"

# All that qel/foundation.h declares is exported.
diff - <(nm --dynamic --defined-only "$work/shared/installed/lib/libqel-foundation.so" |
  awk '$3 ~ /^k?QEL/ { print $3 }' | LC_ALL=C sort) <<'EXPECTED'
QELInAppPurchaseEventParametersFromProductAndTransactionV2
QELMatchingInAppPurchaseItems
QELSetDiagnosticsMonitor
kQELParameterInAppPurchaseInvalid
kQELParameterIsSubscriptionConversion
kQELParameterIsSubscriptionRenewal
EXPECTED
