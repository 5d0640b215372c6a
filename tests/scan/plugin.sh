#!/usr/bin/env bash
# Scans mails with an outside plug-in in the programs as they are delivered. Errors must pass the
# boundary both ways: between libraries that each bring a C++ runtime that is no matter of course,
# and impossible where the runtimes are of different makes ("no-errors").
#
# Usage: plugin.sh HOST-PROGRAM ENGINE-LIBRARY PLUGIN-LIBRARY [no-errors]
set -euo pipefail

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/base/plug"
cp "$1" "$2" "$work/base/"
cp "$3" "$work/base/plug/outside.so"
# Neither a missing library nor one without the entry point (the engine itself) may disturb.
printf '[Logging]\nLogMode=1\n[Plugins]\nmissing.so\n%s\nplug\\outside.so\n' "${2##*/}" \
  >"$work/base/Quarda.ini"

faults=0
while IFS='|' read -r subject code entry; do
  [[ ${4:-} == no-errors && $subject =~ raise|catch ]] && continue
  printf 'Subject: %s\r\n\r\nText\r\n' "$subject" >"$work/in_1.inp"
  rm -f "$work/base/Quarda.log"
  result=0
  "$work/base/${1##*/}" "$work/in_1.inp" </dev/null || result=$?
  log=$(cut -f5- "$work/base/Quarda.log" | tr '\t\r' '|\n')
  if ((result != code)) || [[ $log != *"$entry"* ]]; then
    faults=$((faults + 1))
    printf 'FAILED: %s: exit code %s, log:\n%s\n' "$subject" "$result" "$log"
  fi
done <<'ROWS'
pass|0|
refuse|1|Warning|Outside@D:\elsewhere\outside.so|unwanted
raise|0|Error|Outside@D:\elsewhere\outside.so|Exception class EStandardError: out of order
raise late|0|Error||Exception class EStandardError: too late
catch|0|Warning|Outside@D:\elsewhere\outside.so|caught: List index out of bounds (7)
keep|0|
parts|0|
ROWS

grep -q '^X-Outside: same part' "$work/in_1.inp" &&
  grep -q aW5zaWRl "$work/in_1.inp" || {
  faults=$((faults + 1))
  echo "FAILED: the mail was not rewritten:"
  cat "$work/in_1.inp"
}
((faults == 0))
