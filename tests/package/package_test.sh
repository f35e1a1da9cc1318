#!/usr/bin/env bash
# Installs the library. Builds and runs the examples against it, with CMake and with pkg-config, and
# checks what find_package says if it cannot find what it is asked for.
#
#   package_test.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build=$1
source=$2
here=$source/tests/package
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Configures a project in $work/probe whose CMakeLists.txt is $1, then arguments of cmake.
probe() {
  local text=$1
  shift
  rm -rf "$work/probe"
  mkdir "$work/probe"
  printf 'cmake_minimum_required(VERSION 3.25)\nproject(probe LANGUAGES CXX)\n%s\n' "$text" >"$work/probe/CMakeLists.txt"
  cmake -S "$work/probe" -B "$work/probe/build" -G Ninja ${CXX:+-DCMAKE_CXX_COMPILER="$CXX"} \
    -DCMAKE_PREFIX_PATH="$work/installed" "$@"
}

# Runs a command that must fail, and expects its message, in one line, to contain $1.
fails_with() {
  local expected=$1
  shift
  if "$@" >"$work/log" 2>&1; then
    echo "expected a failure: $*"
    return 1
  fi
  tr -s ' \n' ' ' <"$work/log" | grep --fixed-strings --quiet -- "$expected" || {
    echo "expected '$expected', found:"
    cat "$work/log"
    return 1
  }
}

# The README shows the example as it is.
# shellcheck disable=SC2016  # The backquotes are the README's.
sed -n '/^```cpp$/,/^```$/p' "$source/README.md" | sed '1d;$d' | diff - "$source/examples/embed/main.cc"

cmake --install "$build" --prefix "$work/installed" >/dev/null

# With CMake.
for example in embed live_records; do
  cmake -S "$source/examples/$example" -B "$work/$example" -G Ninja -DCMAKE_PREFIX_PATH="$work/installed" \
    -DCMAKE_CXX_FLAGS="${CXXFLAGS:-}" ${CXX:+-DCMAKE_CXX_COMPILER="$CXX"} >/dev/null
  cmake --build "$work/$example" >/dev/null
  "$work/$example/$example" | diff "$here/$example.txt" -
done

# With pkg-config. Archives bring along what they link, with --static and without.
for static in "" --static; do
  PKG_CONFIG_PATH=$(dirname "$(find "$work/installed" -name qel-purchase.pc)")
  export PKG_CONFIG_PATH
  # shellcheck disable=SC2046,SC2086  # Lists of flags.
  "${CXX:-c++}" -std=c++20 ${CXXFLAGS:-} "$source/examples/embed/main.cc" \
    $(pkg-config --cflags --libs $static qel-purchase) -o "$work/with_pkg_config"
  "$work/with_pkg_config" | diff "$here/embed.txt" -
done
[ "$(pkg-config --modversion qel-purchase)" = "$("$work/installed/bin/qel-purchase" --version | cut -d ' ' -f 2)" ]

# Each component of the installation contains its own files and no others.
for component in runtime development command documentation; do
  cmake --install "$build" --prefix "$work/component/$component" --component "$component" >/dev/null
done
diff <(cd "$work/installed" && find . -type f | sort) <(cd "$work/component" && find . -type f | cut -d / -f 3- |
  sed 's#^#./#' | sort)
[ -x "$work/component/command/bin/qel-purchase" ]
[ -f "$work/component/command/share/man/man1/qel-purchase.1" ]
# The completions are where the shells look for them, and those that the command writes.
for completion in bash:bash-completion/completions/qel-purchase zsh:zsh/site-functions/_qel-purchase \
  fish:fish/vendor_completions.d/qel-purchase.fish; do
  "$work/installed/bin/qel-purchase" completion "${completion%%:*}" |
    diff - "$work/component/command/share/${completion#*:}"
done
[ -f "$work/component/development/include/qel/purchase_event.h" ]
[ -f "$work/component/documentation/share/doc/qel-purchase/docs/embedding.md" ]

# The document names every header, and each compiles without another one before it.
for header in "$work"/installed/include/qel/*.h; do
  name=qel/$(basename "$header")
  grep --fixed-strings --quiet "\`$name\`" "$source/docs/embedding.md" || { echo "docs/embedding.md lacks $name"; exit 1; }
  echo "#include \"$name\"" |
    "${CXX:-c++}" -std=c++20 -Wall -Wextra -Werror -I "$work/installed/include" -fsyntax-only -x c++ -
done

# Components of find_package.
probe 'find_package(qel-purchase 1 REQUIRED COMPONENTS purchase)
if(NOT TARGET qel::purchase OR NOT TARGET qel::platform OR NOT qel-purchase_purchase_FOUND)
  message(FATAL_ERROR "expected the targets of the component purchase")
endif()' >/dev/null
fails_with "There is no component gui: expected purchase or foundation or receipt." \
  probe 'find_package(qel-purchase REQUIRED COMPONENTS purchase gui)'
fails_with 'The component foundation is not installed' \
  probe 'find_package(qel-purchase REQUIRED COMPONENTS foundation)'
fails_with 'compatible with requested version "2"' probe 'find_package(qel-purchase 2 REQUIRED)'
fails_with 'The component purchase links libmd, which was not found' \
  probe 'find_package(qel-purchase REQUIRED)' -DCMAKE_DISABLE_FIND_PACKAGE_libmd=ON

# A search that fails changes no variable but those of the package that was sought and CMake's cached answers about
# the system, and defines no target of the package.
# shellcheck disable=SC2016  # Variables of CMake.
probe 'get_cmake_property(names VARIABLES)
foreach(name IN LISTS names)
  set(before "${before}${name}=${${name}}\n")
endforeach()
find_package(qel-purchase QUIET COMPONENTS purchase gui)
get_cmake_property(names VARIABLES)
foreach(name IN LISTS names)
  if(NOT DEFINED CACHE{${name}} AND NOT name MATCHES "^(before|names?|CMAKE_MATCH_.*|qel-purchase_.*)$")
    string(FIND "${before}" "${name}=${${name}}\n" place)
    if(place EQUAL -1)
      message(SEND_ERROR "find_package changed ${name} to ${${name}}")
    endif()
  endif()
endforeach()
if(qel-purchase_FOUND OR TARGET qel::purchase)
  message(SEND_ERROR "expected that qel-purchase is not found")
endif()' -DCMAKE_DISABLE_FIND_PACKAGE_libmd=ON >/dev/null
