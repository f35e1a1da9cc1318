#!/usr/bin/env bash
# Installs the library, then builds the examples with what was installed, and runs them.
#
#   package_test.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The README shows the example as it is.
# shellcheck disable=SC2016  # The backquotes are the README's.
sed -n '/^```cpp$/,/^```$/p' "$source/README.md" | sed '1d;$d' | diff - "$source/examples/embed/main.cc"

cmake --install "$build" --prefix "$work/installed" >/dev/null

# Builds and runs the example NAME.
run_example() {
  cmake -S "$source/examples/$1" -B "$work/$1" -G Ninja -DCMAKE_PREFIX_PATH="$work/installed" \
    -DCMAKE_CXX_FLAGS="${CXXFLAGS:-}" ${CXX:+-DCMAKE_CXX_COMPILER="$CXX"} >/dev/null
  cmake --build "$work/$1" >/dev/null
  "$work/$1/$1"
}

# printf 1000000512coins.100 | md5sum ends in c734b382628c6ee9, which is -4092448788792447255 when signed.
diff - <(run_example embed) <<'EXPECTED'
_did = -4092448788792447255
currency = EUR
price = 8290000
product_id = coins.100
product_name = 100 coins
quantity = 2
value = 16580000
EXPECTED

# printf 100077monthly | md5sum ends in 114f509b0a08bcf9, which is 1247304248623414521.
diff - <(run_example live_records) <<'EXPECTED'
_did = 1247304248623414521
currency = EUR
original_price = 4990000
price = 1990000
price_is_discounted = 1
product_id = monthly
product_name = Monthly
quantity = 1
subscription = 1
value = 1990000
EXPECTED
