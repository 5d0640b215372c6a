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

try_sample() {
  cmake -S "$source/examples/plugin" -B "$work/$made" -DCMAKE_PREFIX_PATH="$work/sdk" \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
  cmake --build "$work/$made" >/dev/null
  rm -rf "$work/base"
  mkdir -p "$work/base"
  cp "$host" "$engine" "$work/$made/SenderList.so" "$work/base/"
  printf '[Subject Checks]\nBlockOnVirus=1\n[Virus Subjects]\nprize\n[Logging]\nLogMode=4\n[Plugins]\nSenderList.so\n' \
    >"$work/base/Quarda.ini"
  printf '[Blocked]\nspam.example\n[Trusted]\npartner.example\n' >"$work/base/SenderList.ini"

  expect 'From: <a@mail.SPAM.example>\n\nBuy\n' 'exit 1' \
    'Warning|SenderList@SenderList.so|Mails from "mail.SPAM.example" are blocked' \
    'Debug|SenderList@SenderList.so|the mail stays'
  expect 'From: b@else.example\nSubject: Hello\n\nHello\n' 'exit 0' 'X-Sender-List: not listed' \
    'Debug|SenderList@SenderList.so|the mail goes on'
  expect 'From: b@else.example\nSubject: prize\n\nHello\n' 'exit 1'
  expect 'From: c@partner.example\nSubject: prize\n\nHello\n' 'exit 0' 'X-Sender-List: trusted' \
    'Warning|SenderList@SenderList.so|Trusted sender, whatever the subject'
  expect 'no mail' 'exit 0'
}

try_boundary() {
  "$compiler" -std=c++20 -shared -fPIC -I"$work/sdk/include/quarda" $flags -o "$work/outside.so" \
    "$here/OutsidePlugin.cpp"
  "$here/plugin.sh" "$host" "$engine" "$work/outside.so" "$errors" || faults=$((faults + 1))
}

tried=0
while IFS='|' read -r compiler flags errors; do
  make="$compiler $flags"
  if ! echo '#include <string>' | $compiler $flags -x c++ -shared -fPIC -o "$work/probe.so" - 2>/dev/null; then
    echo "passed over: $make"
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
