#!/usr/bin/env bash
# Scans mails with two outside plug-ins in the programs as they are delivered. Errors must pass the
# boundary both ways: between libraries that each bring a C++ runtime that is no matter of course,
# and impossible where the runtimes are of different makes ("no-errors"). A shared runtime that binds
# to what a library shows keeps that from being unloaded ("stays").
#
# Usage: plugin.sh HOST-PROGRAM ENGINE-LIBRARY PLUGIN-LIBRARY [no-errors|errors [stays]]
set -euo pipefail

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/base/plug"
cp "$1" "$2" "$work/base/"
cp "$3" "$work/base/plug/outside.so"
cp "$3" "$work/base/plug/other.so"
# Neither a missing library nor one without the entry point (the engine itself) may disturb.
printf '[Logging]\nLogMode=1\n[Plugins]\nmissing.so\n%s\nplug\\outside.so\n\\plug\\other.so\n' \
  "${2##*/}" >"$work/base/Quarda.ini"
export OUTSIDE_FAREWELLS=$work/farewells
unloading=${5:-}

faults=0
# scan NAME CODE ENTRY FAREWELLS: scans the mail; the log holds the entry, and the libraries were
# unloaded in that order.
scan() {
  local result=0 log farewells
  rm -f "$work/base/Quarda.log" "$work/farewells"
  "$work/base/quarda" "$work/in_1.inp" </dev/null || result=$?
  log=$(cut -f5- "$work/base/Quarda.log" 2>/dev/null | tr '\t\r' '|\n' || true)
  farewells=$(sed 's|.*/||; s|\.so$||' "$work/farewells" | xargs)
  if ((result != $2)) || [[ $log != *"$3"* ||
    -z $unloading && $farewells != "$4" ]]; then
    faults=$((faults + 1))
    printf 'FAILED: %s: exit code %s, unloaded: %s; log:\n%s\n' "$1" "$result" "$farewells" "$log"
  fi
}

while IFS='|' read -r subject code farewells entry; do
  [[ ${4:-} == no-errors && $subject =~ raise|catch ]] && continue
  printf 'Subject: %s\r\n\r\nText\r\n' "$subject" >"$work/in_1.inp"
  scan "$subject" "$code" "$entry" "$farewells"
done <<'ROWS'
pass|0|outside other|
refuse|1|outside other|Warning|Outside@D:\elsewhere\outside.so|unwanted
raise|0|outside other|Error|Outside@D:\elsewhere\outside.so|Exception class EStandardError: out of order
raise late|0|outside other|Error||Exception class EStandardError: too late
catch|0|outside other|Warning|Outside@D:\elsewhere\outside.so|caught: List index out of bounds (7)
keep|0|outside other|
keep list|0|outside other|
keep other|0|other outside|
delete|0|other outside|
exit|3|other outside|
parts|0|outside other|
ROWS

fail() {
  faults=$((faults + 1))
  echo "FAILED: $1:"
  cat "$2"
}
grep -q '^X-Outside: same part' "$work/in_1.inp" && grep -q aW5zaWRl "$work/in_1.inp" ||
  fail "the mail was not rewritten" "$work/in_1.inp"
grep -q '^Written=late' "$work/base/Quarda.ini" ||
  fail "a plug-in that ends the process loses settings" "$work/base/Quarda.ini"

# The scan of an attached mail loads the libraries once more, and all four plug-ins see that mail.
printf '%s\r\n' 'Subject: outer' 'Content-Type: multipart/mixed; boundary=b' '' '--b' \
  'Content-Type: message/rfc822; name=a.eml' 'Content-Disposition: attachment; filename=a.eml' '' \
  'Subject: inner' '' 'Text' '--b--' >"$work/in_1.inp"
scan "attached mail" 0 inner "outside other"
[[ $(grep -c inner "$work/base/Quarda.log") == 4 ]] || fail "not four times" "$work/base/Quarda.log"

# An entry point that gives nothing or raises leaves a scan without the plug-in.
printf 'Subject: refuse\r\n\r\nText\r\n' >"$work/in_1.inp"
for fault in null raise "raise late"; do
  [[ ${4:-} == no-errors && $fault =~ raise ]] && continue
  OUTSIDE_FAULT=$fault scan "entry point: $fault" 0 "" "outside other"
done
((faults == 0))
