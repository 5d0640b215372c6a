#!/usr/bin/env bash
# Installs the SDK, builds plug-ins against it with every compiler and C++ library at hand, and
# scans with them: an engine must run what another compiler made.
#
# Usage: sdk.sh HOST-PROGRAM ENGINE-LIBRARY BUILD-FOLDER SOURCE-FOLDER
set -euo pipefail

host=$1 engine=$2 build=$3 source=$4
here=$(dirname "${BASH_SOURCE[0]}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export CMAKE_CXX_COMPILER_LAUNCHER=
cmake --install "$build" --component sdk --prefix "$work/sdk" >/dev/null

# scan MAIL-TEXT: the exit code, the log without its first columns, and the mail after the scan.
scan() {
  printf '%b' "$1" >"$work/in_1.inp"
  rm -f "$work/base/Quarda.log"
  local result=0
  "$work/base/quarda" "$work/in_1.inp" </dev/null || result=$?
  echo "exit $result"
  cut -f5- "$work/base/Quarda.log" | tr '\t\r' '| '
  cat "$work/in_1.inp"
}

faults=0
expect() {
  local mail=$1 seen wanted
  seen=$(scan "$mail")
  shift
  for wanted; do
    [[ $seen == *"$wanted"* ]] && continue
    faults=$((faults + 1))
    printf 'FAILED: %s: no "%s" in:\n%s\n' "$make" "$wanted" "$seen"
  done
}

# build FOLDER: against the installed SDK, with the compiler and flags of this round.
build() {
  cmake -S "$1" -B "$work/$made" -DCMAKE_PREFIX_PATH="$work/sdk" -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_CXX_FLAGS="$flags" >/dev/null
  cmake --build "$work/$made" >/dev/null
}

try_sample() {
  build "$source/examples/plugin"
  rm -rf "$work/base"
  mkdir -p "$work/base/plug"
  cp "$host" "$engine" "$work/base/"
  cp "$work/$made/SenderList.so" "$work/base/plug/"
  printf '[Subject Checks]\nBlockOnVirus=1\n[Virus Subjects]\nprize\n[Logging]\nLogMode=4\n[Plugins]\nplug\\SenderList.so\n' \
    >"$work/base/Quarda.ini"
  printf '[Blocked]\nspam.example\n[Trusted]\npartner.example\n' >"$work/base/SenderList.ini"

  expect 'From: <a@mail.SPAM.example>\n\nBuy\n' 'exit 1' \
    'Warning|SenderList@plug\SenderList.so|Mails from "mail.SPAM.example" are blocked' \
    'Debug|SenderList@plug\SenderList.so|the mail stays'
  expect 'From: b@else.example\nSubject: Hello\n\nHello\n' 'exit 0' 'X-Sender-List: not listed' \
    'Debug|SenderList@plug\SenderList.so|the mail goes on'
  expect 'From: b@else.example\nSubject: prize\n\nHello\n' 'exit 1'
  expect 'From: c@partner.example\nSubject: prize\n\nHello\n' 'exit 0' 'X-Sender-List: trusted' \
    'Warning|SenderList@plug\SenderList.so|Trusted sender, whatever the subject'
  expect 'no mail' 'exit 0'
}

# With the C++ runtime as the compiler links it, and as the SDK does.
try_boundary() {
  local shared=$work/shared.so
  "$compiler" -std=c++20 -shared -fPIC -I"$work/sdk/include/quarda" $flags -o "$shared" \
    "$here/OutsidePlugin.cpp"
  made=outside$tried
  build "$work/outside"
  "$here/plugin.sh" "$host" "$engine" "$shared" "$errors" stays || report "shared runtime"
  "$here/plugin.sh" "$host" "$engine" "$work/$made/liboutside.so" "$errors" || report "own runtime"
}
report() {
  faults=$((faults + 1))
  echo "FAILED: $make: $1"
}
mkdir "$work/outside"
cat >"$work/outside/CMakeLists.txt" <<PROJECT
cmake_minimum_required(VERSION 3.25)
project(Outside CXX)
find_package(QDEngine REQUIRED)
add_library(outside MODULE $(realpath "$here")/OutsidePlugin.cpp)
target_link_libraries(outside PRIVATE QDEngine::Plugin)
PROJECT

tried=0
while IFS='|' read -r compiler flags errors; do
  make="$compiler $flags"
  if ! echo '#include <string>' | $compiler $flags -x c++ -shared -fPIC -o "$work/probe.so" - 2>/dev/null; then
    echo "passed over: $make"
    continue
  fi
  # Its check of every object's type reads what describes the type, which is the runtime's own affair.
  if [[ $errors == no-errors ]] && grep -q __ubsan_handle_dynamic_type "$engine"; then
    echo "passed over under the sanitizer: $make"
    continue
  fi
  tried=$((tried + 1))
  made=plugin$tried
  try_sample
  try_boundary
done <<'ROWS'
g++||errors
clang++|-O3|errors
clang++|-stdlib=libc++|no-errors
g++|-O0 -D_GLIBCXX_USE_CXX11_ABI=0 -D_GLIBCXX_DEBUG|errors
ROWS
((faults == 0 && tried > 0))
