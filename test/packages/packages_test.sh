#!/usr/bin/env bash
# packages_test.sh WHAT BUILD SOURCES CXX: a host of its own, outside of the tree, gets the library
# by one road and one verdict from the local risk server.
#   installed    find_package (shared, static, doubles, reasons) and pkg-config, from a moved folder
#   subproject   FetchContent and add_subdirectory, with install
#   debian       the packages of cpack, unpacked as a system would have them
#   cross        find_package for 64-bit ARM, run by an emulator against this machine's server
set -euo pipefail

what="$1" build="$2" sources="$3" compiler="$4"
folder="$(mktemp -d)"
serverProcess=
trap 'test -z "$serverProcess" || kill "$serverProcess"; rm -rf "$folder"' EXIT
export XDG_DATA_HOME="$folder/data"
cp -r "$sources/test/packages/consumer" "$folder/host"
cd "$folder"

fail() {
  echo "packages_test: $1" >&2
  exit 1
}

# expect TEXT PATTERN: some line matches it as a whole.
expect() {
  grep -qx -- "$2" <<<"$1" || fail "no line \"$2\" in: $1"
}

start_server() {
  mkfifo ready
  "$1" >ready &
  serverProcess=$!
  read -r line <ready
  url="${line#risk server ready at }"
}

verdict_of() {
  local said
  said="$("$@" "$url")" || fail "$1 got no verdict: $said"
  expect "$said" '[0-9.]* LOW'
}

# configure FOLDER OPTION...: prints what cmake says.
configure() {
  local into="$1"
  shift
  cmake -G Ninja -S host -B "$into" -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 "$@" 2>&1
}

# by_pkg_config PROGRAM MODULE [LINKER OPTION...]
by_pkg_config() {
  local program="$1" module="$2"
  shift 2
  # shellcheck disable=SC2046 # they are words
  "$compiler" -std=c++20 $(pkg-config --cflags "$module") host/verdict.cpp -o "$program" \
    "$@" $(pkg-config --libs "$module")
}

installed() {
  cmake --install "$build" --prefix "$folder/first" >/dev/null
  mv first there # nothing in it may name the folder that it was installed to
  ! grep -rqI --include='*.cmake' --include='*.pc' -e "$folder/first" -e "$sources" there ||
    fail "a file names where it was built"
  local libraries
  libraries="$(dirname "$(find there -name libquorvance.so)")"
  start_server there/bin/quorvance-risk-server
  configure by_cmake -DHOW=package -DCMAKE_PREFIX_PATH="$folder/there" >configure.log ||
    fail "$(cat configure.log)"
  cmake --build by_cmake -- --quiet
  verdict_of by_cmake/verdict_shared
  verdict_of by_cmake/verdict_static
  expect "$(by_cmake/with_doubles)" 'doubles VERY_HIGH'
  ! readelf -d by_cmake/verdict_static | grep -q libquorvance || fail "static is not static"

  export PKG_CONFIG_PATH="$folder/$libraries/pkgconfig"
  by_pkg_config shared quorvance -Wl,-rpath,"$folder/$libraries"
  verdict_of ./shared
  by_pkg_config static quorvance-static
  verdict_of ./static
  # shellcheck disable=SC2046
  "$compiler" -std=c++20 $(pkg-config --cflags quorvance) host/verdict.cpp -o private \
    -L"$libraries" -l:libquorvance.a $(pkg-config --static --libs-only-l quorvance |
      sed 's/-lquorvance//')
  verdict_of ./private
  [[ "$(pkg-config --modversion quorvance)" == "$(./shared "$url" | cut -d' ' -f1)" ]] ||
    fail "pkg-config tells another version than the library"

  local -a ofQt=()
  if [[ -e "$libraries/libquorvance_qt.so" ]]; then
    ofQt=(quorvance-qt qtbase qtdeclarative)
    with_qt "$folder/there"
    bank_alone "$folder/there"
    # shellcheck disable=SC2046
    "$compiler" -std=c++20 -fPIC $(pkg-config --cflags quorvance-qt Qt6Quick Qt6Widgets) \
      host/verdict_qt.cpp -o qt -Wl,-rpath,"$folder/$libraries" \
      $(pkg-config --libs quorvance-qt Qt6Quick Qt6Widgets)
    verdict_of ./qt
  fi
  ! readelf -d "$libraries/libquorvance.so" | grep -i 'NEEDED.*qt' || fail "the library needs Qt"
  reasons
  tools
  another_standard_library
  python3 -B "$sources/test/packages/sbom_test.py" \
    there/share/doc/quorvance/quorvance.spdx.json "${ofQt[@]}"
}

# with_qt PREFIX: an application of Qt's finds the component, and Qt by itself.
with_qt() {
  configure host_of_qt -DHOW=package -DWITH_QT=ON -DCMAKE_PREFIX_PATH="$1" >configure.log ||
    fail "$(cat configure.log)"
  cmake --build host_of_qt --target verdict_qt -- --quiet
  verdict_of host_of_qt/verdict_qt
  readelf -d host_of_qt/verdict_qt | grep -q 'libquorvance_qt.so.1' || fail "no soname of Qt's"
}

# bank_alone PREFIX: the bank in Qt is a project of its own.
bank_alone() {
  cp -r "$sources/examples/qt_bank" bank
  cmake -G Ninja -S bank -B bank/build -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_UNITY_BUILD=ON \
    -DCMAKE_CXX_FLAGS=-O0 -DCMAKE_PREFIX_PATH="$1" >configure.log 2>&1 || fail "$(cat configure.log)"
  cmake --build bank/build -- --quiet
  QT_QPA_PLATFORM=offscreen bank/build/qt_bank --help | grep -q -- --script || fail "no bank alone"
}

# Each missing component tells why.
reasons() {
  local said
  cat >host/CMakeLists.txt <<'TEXT'
cmake_minimum_required(VERSION 3.25)
project(Reasons LANGUAGES CXX)
set(CMAKE_DISABLE_FIND_PACKAGE_CURL ${WITHOUT_CURL})
find_package(Quorvance QUIET COMPONENTS ${ASKED})
message(STATUS "found ${Quorvance_FOUND}: ${Quorvance_NOT_FOUND_MESSAGE}")
TEXT
  local -a ask=(-DCMAKE_PREFIX_PATH="$folder/there" -DWITHOUT_CURL=ON)
  said="$(configure reasons "${ask[@]}" -DASKED=shared)" || fail "$said"
  expect "$said" '-- found 1: *'
  local targets
  targets="$(find there -name QuorvanceQtTargets.cmake)"
  [[ -z "$targets" ]] || mv "$targets" kept.cmake
  said="$(configure reasons "${ask[@]}" -DASKED=qt)" || fail "$said"
  expect "$said" '-- found 0: The component "qt" is not installed.*without Qt 6.*'
  [[ -z "$targets" ]] || mv kept.cmake "$targets"
  said="$(configure reasons "${ask[@]}" '-DASKED=static;testing;gold')" || fail "$said"
  expect "$said" '-- found 0: .*"static" needs.*libcurl.*"testing" needs.*no component "gold".*'
}

tools() {
  local tool
  for tool in quorvance-reports quorvance-risk-server; do
    expect "$("there/bin/$tool" --version)" "[a-z_-]* $(pkg-config --modversion quorvance)"
    expect "$("there/bin/$tool" -h 2>/dev/null)" 'usage: .*'
    local said status=0
    said="$("there/bin/$tool" --nonsense 2>&1 >/dev/null)" || status=$?
    ((status == 2)) || fail "$tool --nonsense ends with $status"
    expect "$said" '[a-z_-]*: --nonsense: no such option, see --help'
    (($(wc -l <<<"$said") == 1)) || fail "$tool --nonsense says more than one line"
    man --warnings -l "there/share/man/man1/$tool.1" 2>&1 >/dev/null | grep . &&
      fail "the manual page of $tool has warnings"
  done
  return 0
}

# Whatever is included first, its first word on libc++ is the reason. The headers for C do with any.
another_standard_library() {
  local header said
  while read -r header; do
    said="$("$compiler" -std=c++20 -D_LIBCPP_VERSION=1 -E -o /dev/null -x c++ \
      $(pkg-config --cflags quorvance) -include "$header" /dev/null 2>&1)" &&
      fail "$header takes another standard library"
    [[ "$(grep -m 1 'error:' <<<"$said")" == *'libstdc++'* ]] || fail "$header: $said"
  done < <(cd there/include && find quorvance -name '*.h' ! -name 'c.h' ! -name 'c_*.h' ! -path '*/testing/*')
}

subproject() {
  start_server "$build/apps/risk_server/risk_server"
  local how
  # The second one finds what the first has built: both name the same folder and the same options.
  for how in fetch subdirectory; do
    configure with_sources -DHOW="$how" -DSOURCES="$sources" -DCMAKE_UNITY_BUILD=ON \
      -DCMAKE_INSTALL_LIBDIR=lib >configure.log || fail "$(cat configure.log)"
    cmake --build with_sources -- --quiet
    verdict_of with_sources/verdict_shared
    verdict_of with_sources/verdict_static
    expect "$(with_sources/with_doubles)" 'doubles VERY_HIGH'
    rm -rf installed
    cmake --install with_sources --prefix "$folder/installed" >/dev/null
    LD_LIBRARY_PATH="$folder/installed/lib" verdict_of installed/bin/verdict_shared
    [[ -e installed/lib/pkgconfig/quorvance.pc ]] || fail "the subproject installed nothing"
    [[ ! -e with_sources/quorvance/apps ]] || fail "the subproject builds its apps"
  done
}

cross() {
  cmake --install "$build" --prefix "$folder/there" >/dev/null
  start_server "${RISK_SERVER:-$sources/build/plain/apps/risk_server/risk_server}"
  configure by_cmake -DHOW=package -DCMAKE_PREFIX_PATH="$folder/there" \
    -DCMAKE_TOOLCHAIN_FILE="$sources/cmake/arm64.cmake" >configure.log || fail "$(cat configure.log)"
  cmake --build by_cmake -- --quiet
  local program
  for program in verdict_shared verdict_static; do
    readelf -h "by_cmake/$program" | grep -q AArch64 || fail "$program is for another processor"
    verdict_of qemu-aarch64-static "by_cmake/$program"
  done
  expect "$(qemu-aarch64-static by_cmake/with_doubles)" 'doubles VERY_HIGH'
}

debian() {
  cpack --config "$build/CPackConfig.cmake" -B "$folder/out" \
    -D CPACK_DEBIAN_COMPRESSION_TYPE=gzip >cpack.log 2>&1 ||
    fail "$(cat cpack.log)"
  local deb name
  for deb in out/*.deb; do
    dpkg-deb -x "$deb" root
    name="$(dpkg-deb -f "$deb" Package)"
    [[ -e "root/usr/share/doc/$name/copyright" ]] || fail "$name has no copyright file"
  done
  local architecture
  architecture="$(dpkg-architecture -qDEB_HOST_MULTIARCH)"
  [[ -e root/usr/lib/$architecture/libquorvance.so.1 ]] || fail "$(find root -name '*.so*')"
  expect "$(dpkg-deb -f out/libquorvance1_*.deb Depends)" '.*libc6 (>= .*libcurl4 (>= .*'
  expect "$(dpkg-deb -f out/libquorvance-dev_*.deb Depends)" \
    'libquorvance1 (= [0-9.]*), nlohmann-json3-dev (>= 3.11)'
  expect "$(dpkg-deb -f out/quorvance-tools_*.deb Depends)" '.*libcpp-httplib.*'
  [[ "$(dpkg-deb -c out/libquorvance1_*.deb | grep -c '/usr/include')" == 0 ]] ||
    fail "the library's package holds headers"
  start_server root/usr/bin/quorvance-risk-server
  configure by_cmake -DHOW=package -DCMAKE_PREFIX_PATH="$folder/root/usr" >configure.log ||
    fail "$(cat configure.log)"
  cmake --build by_cmake --target verdict_shared -- --quiet
  verdict_of by_cmake/verdict_shared
  if compgen -G 'out/libquorvance-qt1_*.deb' >/dev/null; then
    expect "$(dpkg-deb -f out/libquorvance-qt1_*.deb Depends)" 'libquorvance1 (= [0-9.]*), .*libqt6quick6 (>= .*'
    expect "$(dpkg-deb -f out/libquorvance-qt-dev_*.deb Depends)" \
      'libquorvance-dev (= [0-9.]*), libquorvance-qt1 (= [0-9.]*)'
    ! dpkg-deb -c out/libquorvance-dev_*.deb | grep -i 'qt' || fail "what is of Qt is in another package"
    with_qt "$folder/root/usr"
  fi
}

"$what"
