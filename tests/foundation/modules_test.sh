#!/usr/bin/env bash
# Checks that clang's modules accept the header: a program that imports the module, and nothing else, has the
# functions and the store's classes. In Objective-C: GNUstep's headers make no module in Objective-C++.
#
#   modules_test.sh SOURCE_DIR CLANG [OPTION...]     OPTION: what clang needs to find Foundation
set -euo pipefail
source=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Fails at an error, and at a warning that is not in GNUstep's headers. They have some while a module is built.
# Without automatic reference counting, under which GCC's header of the run time has an error of its own.
compile() {
  "$@" -fno-objc-arc -fsyntax-only -Wall -Wextra -fmodules -fmodules-cache-path="$work/cache" \
    -I "$source/platform" -I "$source/platform/foundation" -I "$source/tests/foundation/store_headers" \
    >"$work/log" 2>&1 || return 1
  ! grep -E ': (warning|error):' "$work/log" | grep -v '/GNUstep/'
}

cat >"$work/body" <<'PROGRAM'
BOOL isInvalid(SKProduct *product, SKPaymentTransaction *transaction) {
  NSDictionary<NSString *, id> *event =
      QELInAppPurchaseEventParametersFromProductAndTransactionV2(product, transaction, nil);
  return [product isKindOfClass:[NSObject class]] && event[kQELParameterInAppPurchaseInvalid] != nil;
}
PROGRAM
{ echo '@import QELPurchase;'; cat "$work/body"; } >"$work/module.m"
{ echo '#import "qel/foundation.h"'; cat "$work/body"; } >"$work/header.m"
compile "$@" "$work/module.m" || { cat "$work/log"; exit 1; }
ls "$work"/cache/*/QELPurchase-*.pcm
compile "$@" "$work/header.m" || { cat "$work/log"; exit 1; }

# What is wrong is found.
sed 's/QELPurchase;/QELPurchases;/' "$work/module.m" >"$work/no_module.m"
sed '/@import/d' "$work/module.m" >"$work/no_import.m"
{ cat "$work/module.m"; echo 'int unused(SKProduct *product) {}'; } >"$work/warning.m"
for wrong in no_module no_import warning; do
  if compile "$@" "$work/$wrong.m" >/dev/null; then
    echo "expected a fault in $wrong.m"
    exit 1
  fi
done
