#!/usr/bin/env bash
# Scans with the engine for Windows under Wine, as a mail server would, and compares what it leaves
# with what the engine of this system leaves for the same mails: verdicts, rewritten mails, logs, the
# traffic and settings, byte by byte. The times in the log are left out, and texts of the system, which are its
# own. Then a batch file as scanner, a hook, a plug-in library, and the resident engine with its
# client.
#
# Usage: win32.sh NATIVE-FOLDER WIN32-FOLDER PLUGIN-FOLDER REPOSITORY
#   the folders hold the bundles of both builds
set -euo pipefail
export LC_ALL=C

native=$1 win32=$2 plugins=$3 repository=$4
wine=${WINE:-wine}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

faults=0
fail() {
  faults=$((faults + 1))
  echo "FAILED: $*"
}

# The path as Windows sees it: Wine shows the root folder of this system as drive Z:.
windows() { printf 'Z:%s' "${1//\//\\}"; }
run() { "$wine" "$@" </dev/null 2>/dev/null; }
# The log without date and time.
log() { cut -f3- "$1/Quarda.log" 2>/dev/null || true; }
# The traffic without the minute, in which the two scans differ.
traffic() { cat "$1"/QD{In,Out}Mails.log 2>/dev/null | sed 's/^\[[^]]*\]/[]/' || true; }

# --- The sample mails on both systems -------------------------------------------------------------

for system in native win32; do
  mkdir -p "$work/$system/base" "$work/$system/mails"
  cp "${!system}"/* "$work/$system/base/"
  sed 's/^LogMode=.*/&\nLogInOut=1/' "$repository/examples/settings/Quarda.ini" >"$work/$system/base/Quarda.ini"
done

# scan SYSTEM MAIL: the verdict.
scan() {
  local base=$work/$1/base mail=$work/$1/mails/$2 result=0
  if [[ $1 == native ]]; then
    "$base/quarda" "$mail" </dev/null || result=$?
  else
    run "$base/quarda.exe" "$(windows "$mail")" || result=$?
  fi
  printf '%s' "$result"
}

count=0
rewritten=0
for sample in "$repository"/examples/mails/*.eml "$repository"/tests/data/mails/*.eml; do
  name=${sample##*/}
  for direction in in out; do
    count=$((count + 1))
    mail=${direction}_${name%.eml}.inp
    # A notice tells the minute, which may end between the two scans; it does not do so twice.
    for _ in 1 2; do
      for system in native win32; do
        cp "$sample" "$work/$system/mails/$mail"
        rm -f "$work/$system/base"/{Quarda,QDInMails,QDOutMails}.log
        printf 'exit %s\n' "$(scan $system "$mail")" >"$work/$system/seen"
        { log "$work/$system/base" && traffic "$work/$system/base"; } >>"$work/$system/seen"
        grep -q '^\[\]' "$work/$system/seen" || fail "$name: no traffic on $system"
      done
      if cmp -s "$work"/{native,win32}/mails/"$mail"; then break; fi
    done
    grep -q 'Quarda finished' "$work/win32/seen" || fail "$name: was not scanned"
    if grep -qv $'\r$' < <(sed 1d "$work/win32/seen"); then fail "$name: a line without CR LF"; fi
    cmp -s "$sample" "$work/win32/mails/$mail" || rewritten=$((rewritten + 1))
    cmp -s "$work"/{native,win32}/mails/"$mail" || fail "$name: the mails differ"
    diff -u "$work"/{native,win32}/seen || fail "$name: verdict or log differ"
  done
done
# Both have written all settings back.
cmp "$work"/{native,win32}/base/Quarda.ini || fail "the settings differ"
((rewritten > 0)) || fail "no mail was rewritten"
echo "$count mails scanned on both systems, $rewritten of them rewritten, $faults faults"

# --- What runs on Windows only --------------------------------------------------------------------

base="$work/with programs"
mkdir -p "$base/plug"
cp "$win32"/* "$base/"
cp "$plugins"/*.dll "$base/plug/"
printf '@find "EVIL" %%1 >nul\r\n@if errorlevel 1 exit 0\r\n@exit 7\r\n' >"$base/scan.bat"
printf '@echo %%~1> "%s"\r\n' "$(windows "$base/hooked")" >"$base/hook.bat"
printf '[Virus Exit]\r\n"%s" $sender$\r\n' "$(windows "$base/hook.bat")" >"$base/Quarda.app"
printf '[Blocked]\r\nspam.example\r\n' >"$base/SenderList.ini"
printf '%s\r\n' '[Logging]' LogMode=4 '[VirusScan]' "MailScan=\"$(windows "$base/scan.bat")\" \"\$FILE\$\"" \
  MailScanVirusExitCode=7 '[Plugins]' 'plug\SenderList.dll' >"$base/Quarda.ini"

# judge TITLE PROGRAM VERDICT LOG-TEXT MAIL-TEXT
judge() {
  local result=0
  printf '%b' "$5" >"$work/in_1 a.inp"
  rm -f "$base/Quarda.log"
  run "$base/$2.exe" "$(windows "$work/in_1 a.inp")" || result=$?
  ((result == $3)) || fail "$1: verdict $result instead of $3"
  grep -qaF -- "$4" "$base/Quarda.log" || { fail "$1: no \"$4\" in the log"; log "$base"; }
}

good='From: a@else.example\n\ngood\n'
evil='From: b@else.example\n\nEVIL\n'
judge "clean mail" quarda 0 'Mail Virus Scan: no virus found' "$good"
grep -q '^X-Sender-List: not listed' "$work/in_1 a.inp" || fail "the plug-in did not write"
judge "virus" quarda 1 'Mail Virus Scan: Virus found (ExitCode: 7)' "$evil"
grep -q 'b@else.example' "$base/hooked" || fail "the hook did not run"
judge "plug-in" quarda 1 'Mails from "spam.example" are blocked' 'From: c@spam.example\n\ngood\n'

# Errors cross between engine and plug-in, each with a run-time library of its own.
cp "$base/Quarda.ini" "$work/settings"
printf '%s\r\n' 'plug\Raising.dll' >>"$base/Quarda.ini"
judge "error of a plug-in" quarda 0 'Exception class EStandardError: out of order' 'Subject: raise\n\nx\n'
judge "error through a plug-in" quarda 0 'Exception class EListError: List index' 'Subject: pass\n\nx\n'
judge "error caught by a plug-in" quarda 0 'caught: List index' 'Subject: catch\n\nx\n'
cp "$work/settings" "$base/Quarda.ini"

# The last bytes of a log that may not grow: a part of an entry must not stay. The limit is one of
# this system, so that the engine for Windows can be shown it only here.
printf '%b' "$good" >"$work/in_1 a.inp"
line=$(printf 'x%.0s' {1..98})
for ((i = 0; i < 655; ++i)); do printf '%s\r\n' "$line"; done >"$work/full.log"
cp "$work/full.log" "$base/Quarda.log"
(
  trap '' XFSZ
  ulimit -f 64
  run "$base/quarda.exe" "$(windows "$work/in_1 a.inp")" || true
)
cmp "$work/full.log" "$base/Quarda.log" || fail "a part of an entry stays in a full log"

judge "client without an engine" quarda-request 0 'Quarda finished' "$good"
# Without the host program a client that is not served cannot scan by itself.
mv "$base/quarda.exe" "$base/engine.exe"
run "$base/engine.exe" -daemon &
engine=$!
printf '%b' "$evil" >"$work/in_1 a.inp"
for ((i = 0; i < 60; ++i)); do  # until the engine serves
  run "$base/quarda-request.exe" "$(windows "$work/in_1 a.inp")" || break
  sleep 0.5
done
judge "request" quarda-request 1 'Virus found (ExitCode: 7)' "$evil"
judge "clean request" quarda-request 0 'no virus found' "$good"
kill -0 $engine 2>/dev/null || fail "the resident engine ended"
run "$base/engine.exe" -daemon -quit
for ((i = 0; i < 300; ++i)); do
  kill -0 $engine 2>/dev/null || break
  sleep 0.1
done
if kill -0 $engine 2>/dev/null; then
  fail "-quit does not end the resident engine"
  kill $engine
fi

echo "scans with programs, a plug-in and the resident engine: $faults faults in all"
((faults == 0))
