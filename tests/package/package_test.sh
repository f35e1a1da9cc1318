#!/usr/bin/env bash
# Installs the library, then builds and runs the example of the README against what was installed.
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
cmake -S "$source/examples/embed" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/installed" \
  -DCMAKE_CXX_FLAGS="${CXXFLAGS:-}" ${CXX:+-DCMAKE_CXX_COMPILER="$CXX"} >/dev/null
cmake --build "$work/build" >/dev/null

# printf 1000000512coins.100 | md5sum ends in c734b382628c6ee9, which is -4092448788792447255 when signed.
diff "-" <("$work/build/embed") <<'EXPECTED'
_did = -4092448788792447255
currency = EUR
price = 8290000
product_id = coins.100
product_name = 100 coins
quantity = 2
value = 16580000
EXPECTED
