#!/usr/bin/env bash
# Holds that clang finds no fault under automatic reference counting: in the sources of the platform over
# Foundation, and in its header and the documented example, both as plain Objective-C. Where the installed
# run time cannot run such code, it can still be checked.
#
#   arc_test.sh SOURCE_DIR CLANG [OPTION...]     OPTION: what clang needs to find Foundation
set -euo pipefail
source=$1
shift
clang=("$@" -fsyntax-only -Wall -Wextra -I "$source/include" -I "$source/platform"
  -I "$source/platform/foundation" -I "$source/src" -I "$source/tests/foundation/store_headers")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# What clang finds. GCC's header of the run time, objc/runtime.h, has an error of its own under automatic
# reference counting.
faults() {
  "${clang[@]}" "$@" 2>&1 | grep -E '(error|warning):' | grep -vE '/objc/[a-z]+\.h:' || true
}

failed=0
expect_no_fault() {
  local found
  found=$(faults "${@:2}")
  [ -z "$found" ] && { echo "no fault: $1"; return; }
  printf 'faults: %s\n%s\n' "$1" "$found"
  failed=1
}
expect_fault() {
  [ -n "$(faults "${@:2}")" ] && { echo "found, as it must be: $1"; return; }
  echo "overlooked: $1"
  failed=1
}

cxx=(-x objective-c++ -std=c++20)
for file in "$source"/platform/foundation/*.mm; do
  expect_no_fault "${file#"$source"/}" "${cxx[@]}" "$file"
done

printf '#import "qel/foundation.h"\n' >"$work/header.m"
expect_no_fault "the header in Objective-C" -x objective-c -Wpedantic "$work/header.m"
expect_no_fault "the header in Objective-C without reference counting" \
  -x objective-c -Wpedantic -fno-objc-arc "$work/header.m"

# The first Objective-C that the document shows.
# shellcheck disable=SC2016  # The backquotes are the document's.
sed -n '/^```objc$/,/^```$/{/^```objc$/d;/^```$/q;p}' "$source/docs/foundation.md" >"$work/example.m"
grep -q QELInAppPurchaseEventParametersFromProductAndTransactionV2 "$work/example.m"
expect_no_fault "the example of docs/foundation.md" -x objective-c "$work/example.m"

# What each of the checks above is for.
printf '#import <Foundation/Foundation.h>\nvoid f(id object) { [object release]; }\n' >"$work/release.mm"
expect_fault "a release" "${cxx[@]}" "$work/release.mm"
printf '#import "qel/foundation.h"\nnamespace {}\n' >"$work/namespace.m"
expect_fault "C++ in Objective-C" -x objective-c "$work/namespace.m"

exit $failed
