#!/usr/bin/env bash
# Scans large mails with little memory: what is in a mail, and how often, must not decide how much
# of it is in memory at a time.
#
# Usage: memory.sh HOST-PROGRAM ENGINE-LIBRARY
set -euo pipefail
export LC_ALL=C

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
base=$work/base
mkdir -p "$base" "$work/mails/admin"
cp "$@" "$base/"
printf '[Common]\nInformOnVirus=1\nAdminAddress=admin@home\n[Logging]\nLogMode=4\n
[VirusScan]\nMailScan=grep -q -a "Subject: EVIL" -- "$FILE$"\nMailScanVirusExitCode=0\n' >"$base/Quarda.ini"
echo "Bad." >"$base/QDVirusMail.txt"
touch "$work/mails/admin/admin@home"
mail=$work/mails/in_1.inp

faults=0
fail() {
  faults=$((faults + 1))
  echo "FAILED: $*"
}
# scan MEGABYTES EXIT-CODE ROW: scans the mail with that much address space.
scan() {
  rm -f "$base/Quarda.log"
  local code=0
  (ulimit -v $(($1 * 1024)) && exec "$base/quarda" "$mail") || code=$?
  ((code == $2)) || fail "$3: exit code $code"
  ! grep -a -E "memory|Exception" "$base/Quarda.log" || fail "$3: see above"
}
empty_lines() { yes $'\r' | head -n "$1" || true; }
mail_start=$'Subject: s\r\nContent-Type: multipart/mixed; boundary='
attachment=$'\r\nContent-Disposition: attachment; filename='

printf 'Subject: s\r\n\r\nText\r\n' >"$mail"
(ulimit -v $((24 * 1024)) && "$base/quarda" "$mail") >/dev/null 2>&1 && [[ -s $base/Quarda.log ]] ||
  { echo "This build does not start with little memory."; exit 77; }

{ printf 'To: a@b\r\nSubject: EVIL\r\n\r\n'; empty_lines 12000000; } >"$mail"
scan 24 0 "a virus mail of 24 MB is reported"
(($(stat -c %s "$work/mails/admin/In_00001.mai") > 24000000)) || fail "the report is not whole"
(($(stat -c %s "$mail") < 1000)) || fail "the mail is no notice"

{ printf '%sb\r\n\r\n' "$mail_start"
  for i in {1..12}; do
    printf -- '--b%sf.bin\r\n\r\n' "$attachment"
    empty_lines 1500000
  done
  printf -- '--b--\r\n'; } >"$mail"
scan 48 0 "eleven copies of an attachment of 3 MB"
(($(stat -c %s "$mail") < 4000000)) || fail "the copies are still there"

{ printf '%sb%sm.eml\r\n\r\nSubject: inner\r\n\r\n' "$mail_start" $'\r\n\r\n--b'"$attachment"
  empty_lines 12000000
  printf -- '--b--\r\n'; } >"$mail"
scan 80 0 "a mail of 24 MB in a mail"
grep -q -a "In_00001.inp" "$base/Quarda.log" || fail "the mail of 24 MB was not opened"

{ for i in {1..60}; do printf '%sb%s\r\n\r\n--b%s%sm.eml\r\n\r\n' "$mail_start" $i $i "$attachment"; done
  printf 'Subject: EVIL\r\n\r\n'
  empty_lines 400000
  for i in {60..1}; do printf -- '--b%s--\r\n' $i; done; } >"$mail"
sed -i 's/^InformOnVirus=.*/InformOnVirus=0/' "$base/Quarda.ini"
scan 48 1 "a virus under sixty mails of 800 KB"
grep -q -a "In_00060.inp" "$base/Quarda.log" || fail "the innermost of sixty mails was not opened"

((faults == 0)) && echo "All mails scanned as expected."
