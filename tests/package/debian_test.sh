#!/usr/bin/env bash
# Builds the Debian packages and installs them in a clean root. Runs the command there, shows its manual, and builds
# the example against the packages with CMake and with pkg-config. Then installs the same build by hand.
#
#   debian_test.sh SOURCE_DIR WORK_DIR [ROOT]
#
# WORK_DIR is kept, so that only the first run takes long. ROOT is the root of a Debian system with g++, cmake, make,
# pkgconf and man-db. By default the test makes one of this system's packages; see clean_root.py.
set -euo pipefail
source=$1
work=$2
here=$source/tests/package
root=${3:-$work/root}

# Runs a command. Prints its output only if it fails.
quietly() {
  "$@" >"$work/log" 2>&1 || { cat "$work/log"; return 1; }
}

# Runs a command in the root: directly, or in a user namespace if this is not the user root.
in_root() {
  local enter=(chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 CXX=g++ "$@")
  if [ "$(id -u)" -eq 0 ]; then
    "${enter[@]}"
  else
    # shellcheck disable=SC2016  # The inner shell expands them.
    unshare --map-root-user --mount sh -c 'mount --bind /dev/null "$0" && exec "$@"' "$root/dev/null" "${enter[@]}"
  fi
}

mkdir -p "$work"
work=$(realpath "$work")
rm -rf "$work/build/packages"
echo "== build the packages"
quietly cmake --preset package -S "$source" -B "$work/build"
quietly cmake --build "$work/build"
quietly cpack --config "$work/build/CPackConfig.cmake"
packages=("$work"/build/packages/*.deb)
for package in "${packages[@]}"; do
  echo "$(basename "$package"): $(dpkg-deb --field "$package" Depends)"
done
diff - <(for package in "${packages[@]}"; do dpkg-deb --field "$package" Package; done) <<'EXPECTED'
libqel-purchase-dev
libqel-purchase1
qel-purchase
EXPECTED
# The packages say what they need: the libraries that the command and the shared libraries link, and nothing that
# only their builds need.
depends=$(for package in "${packages[@]}"; do dpkg-deb --field "$package" Depends; done)
mapfile -t needed < <(tr ',' '\n' <<<"$depends" | awk '{ print $1 }' | sort -u | grep -v qel)
for library in libmd0 libstdc++6; do
  printf '%s\n' "${needed[@]}" | grep --line-regexp --fixed-strings --quiet "$library" ||
    { echo "expected that a package depends on $library, found: ${needed[*]}"; exit 1; }
done
if [[ " ${needed[*]} " == *"-dev "* ]]; then
  echo "a package depends on a package for developers: ${needed[*]}"
  exit 1
fi
# Their programs find the libraries without a run path.
for package in "${packages[@]}"; do
  rm -rf "$work/unpacked"
  dpkg-deb --extract "$package" "$work/unpacked"
  while read -r file; do
    if readelf --dynamic "$file" | grep -E 'RPATH|RUNPATH'; then
      echo "$file has a run path"
      exit 1
    fi
  done < <(find "$work/unpacked" -type f \( -name 'lib*.so.*' -o -path '*/bin/*' \))
done

echo "== install them in a clean root"
if [ $# -lt 3 ]; then
  rm -rf "$root"
  "$here/clean_root.py" "$root" g++ cmake make pkgconf man-db "${needed[@]}"
fi
mkdir -p "$root/dev" "$root/tmp/qel"
[ -e "$root/dev/null" ] || mknod -m 666 "$root/dev/null" c 1 3 2>/dev/null || touch "$root/dev/null"
cp "${packages[@]}" "$source/tests/golden/purchases.jsonl" "$here/embed.txt" "$root/tmp/qel/"
quietly in_root sh -c 'dpkg --install /tmp/qel/*.deb'
cat "$work/log"
[ -z "$(in_root dpkg --audit libqel-purchase1 libqel-purchase-dev qel-purchase)" ]

echo "== run the command"
in_root qel-purchase --version
in_root sh -c 'qel-purchase events /usr/share/doc/libqel-purchase-dev/examples/purchases.jsonl |
  diff /tmp/qel/purchases.jsonl -'
in_root env MANWIDTH=80 man --no-justification --pager=cat qel-purchase >"$work/manual"
head -n 4 "$work/manual"
grep -q 'qel-purchase - ' "$work/manual"

echo "== find the completions"
for file in bash-completion/completions/qel-purchase zsh/vendor-completions/_qel-purchase \
  fish/vendor_completions.d/qel-purchase.fish; do
  in_root dpkg --search "/usr/share/$file" | grep --quiet '^qel-purchase: '
done

echo "== build the example with CMake"
in_root sh -ec 'cd /tmp/qel
  cmake -S /usr/share/doc/libqel-purchase-dev/examples/embed -B with_cmake >/dev/null
  cmake --build with_cmake
  with_cmake/embed | diff embed.txt -'

echo "== build the example with pkg-config"
# shellcheck disable=SC2016  # The shell in the root expands them.
in_root sh -ec 'cd /tmp/qel
  echo "qel-purchase $(pkg-config --modversion qel-purchase): $(pkg-config --cflags --libs qel-purchase)"
  g++ -std=c++20 /usr/share/doc/libqel-purchase-dev/examples/embed/main.cc \
    $(pkg-config --cflags --libs qel-purchase) -o with_pkg_config
  ./with_pkg_config | diff embed.txt -'

echo "== remove the packages"
quietly in_root dpkg --purge qel-purchase libqel-purchase-dev libqel-purchase1
rm -r "$root/tmp/qel"
diff /dev/null <(find "$root/usr" "$root/var/lib/dpkg/info" -iname '*qel*')

# Installed by hand, the shared libraries and the command find one another wherever they are.
echo "== install the shared libraries by hand, and move them"
quietly cmake -S "$source" -B "$work/build" -DCMAKE_SKIP_INSTALL_RPATH=OFF
quietly cmake --build "$work/build"
rm -rf "$work/installed" "$work/moved"
quietly cmake --install "$work/build" --prefix "$work/installed"
mv "$work/installed" "$work/moved"
"$work/moved/bin/qel-purchase" events "$source/examples/purchases.jsonl" 2>/dev/null |
  diff "$source/tests/golden/purchases.jsonl" -
