#!/usr/bin/env bash
# Scans many mails with everything switched on: one by one, eight processes at a time, and eight
# requests at a time to a resident engine. All three must give the same verdicts, the same mails,
# reports and log lines, and leave nothing behind. Prints what it measured.
#
# Usage: load.sh HOST-PROGRAM ENGINE-LIBRARY CLIENT-PROGRAM REPOSITORY [MAILS [FOLDER...]]
#   MAILS   how many mails (200)
#   FOLDER  further samples
set -euo pipefail
export LC_ALL=C

programs=("$1" "$2" "$3")
repository=$4
count=${5:-200}
today=$(date +%F)  # notices name it, so nothing is compared over midnight
at_once=8
work=$(mktemp -d)
engine=
trap '[[ -z $engine ]] || kill -9 "$engine" 2>/dev/null; rm -rf "$work"' EXIT
mkdir "$work/tmp" "$work/runtime"
export TMPDIR=$work/tmp XDG_RUNTIME_DIR=$work/runtime QUARDA_LOAD_TEST=$work
samples=("$repository"/examples/mails/*.eml "$repository"/tests/data/mails/*.eml)
for folder in "${@:6}"; do samples+=("$folder"/*.eml); done

base=$work/run/base mails=$work/run/mails
account=$mails/admin
windows() { printf 'C:%s' "${1//\//\\}"; }

faults=0
fail() {
  faults=$((faults + 1))
  echo "FAILED: $run: $*"
}

# Every check, every log, a scanner, hooks, notices and red alerts.
write_settings() {
  cat "$repository/examples/settings/Quarda.ini" - >"$base/Quarda.ini" <<EOF
[Common]
InformOnVirus=1
AdminAddress=admin@here.example
[Logging]
LogInOut=1
LogMaxFileSize=$1
[VirusScan]
Command1=grep -q -F EVIL -- "\$FILE\$"
Command1VirusExitCode=0
MailScan=grep -q -F EVIL -- "\$FILE\$"
MailScanVirusExitCode=0
[SpamFilter]
SpamFilter=grep -q -i -F lottery -- "\$FILE\$"
ExitCode=0
MailAddress=spam@here.example
[Scanned Text]
Text=Checked on \$DATE\$.
[Red Alert]
VirusMailCount=50
MinuteSpan=1
Action=true
EOF
  printf '[Before All]\r\ncp $onlymail$ $subject$ "%s\\$NAME$"\r\n' "$(windows "$work/run/subjects")" \
    >"$base/Quarda.app"
}

# prepare LARGEST-LOG: a fresh installation and the mails, two a virus in 25, one outgoing in five.
prepare() {
  rm -rf "$work/run"
  local i name
  mkdir -p "$base" "$account" "$work/run/subjects" "$work/run/verdicts"
  cp "${programs[@]}" "$base/"
  touch "$account/admin@here.example"
  printf 'There was a virus in your mail: $VIRUSREASON$\r\n' >"$base/QDVirusMail.txt"
  write_settings "$1"
  for i in 1 2; do "$base/quarda" </dev/null; done  # completes the settings
  rm "$base/Quarda.log"
  cp "$base/Quarda.ini" "$work/"
  for ((i = 1; i <= count; ++i)); do
    printf -v name '%s/%s_m%05d.inp' "$mails" "$( ((i % 5)) && echo in || echo out)" "$i"
    {
      printf 'X-Number: %d\r\n' "$i"
      cat "${samples[i % ${#samples[@]}]}"
      ((i % 25 > 1)) || printf 'EVIL\r\n'
    } >"$name"
  done
}

now() { date +%s%N; }

# scan_all PROGRAM PROCESSES: every mail once; prints how long that took.
scan_all() {
  local start
  start=$(now)
  (cd "$mails" && printf '%s\0' *.inp) |
    xargs -0 -n 1 -P "$2" sh -c '"$0" "$1/$3" </dev/null; echo $? >"$2/$3"' \
      "$base/$1" "$mails" "$work/run/verdicts"
  echo "$run: $count mails in $((($(now) - start) / 1000000)) ms"
}

number_of() { find "$@" | wc -l; }

check_leftovers() {
  local left
  left=$(find "$base" "$mails" "$TMPDIR" -type f \( -name '.quarda-*' -o -name '*.tmp' -o -name '*.sbj' \
    -o -path "$base/Temp/*" ! -name Quarda.mai ! -name Quarda.ra ! -name Statistic.txt \))
  [[ -z $left ]] || fail "left behind: $left"
  left=$(grep -l -z -s "^QUARDA_LOAD_TEST=$work\$" /proc/[0-9]*/environ || true)
  local process
  for process in ${left//[!0-9[:space:]]/}; do
    [[ $process == "$$" || $process == "$engine" || ! -d /proc/$process ]] ||
      fail "process $process goes on: $(tr '\0' ' ' <"/proc/$process/cmdline")"
  done
  return 0
}

# Each file is whole: settings as they were, counters, times, and lines of all their fields.
check_files() {
  cmp -s "$base/Quarda.ini" "$work/Quarda.ini" || fail "the settings changed"
  tr -d '\r' <"$base/Temp/Statistic.txt" | paste -s -d ' ' |
    grep -q -P '^20[-0-9]{8} ( [A-Za-z]+=\d+){7}$' || fail "statistics: $(cat "$base/Temp/Statistic.txt")"
  grep -q -v -P '^\d{5}\.\d+\r$' "$base/Temp/Quarda.ra" && fail "the times of virus mails: $(cat "$base/Temp/Quarda.ra")"
  for log in QDInMails QDOutMails; do
    grep -n -v -a -P '^\[20[-0-9]+ [0-9:]+\]\t(\[.*\]\t){5}(\[VIRUS !!!\])*\r$' "$base/$log.log" && fail "$log.log is torn"
  done
  grep -n -v -a -P '^20[-0-9]+\t[0-9:]{8}\t(IN|OUT|ATT)\t[^\t]+\t(Error|Warning|Extended|Passed|Debug)\t\w*(/\w*)?\t.*\r$' \
    "$base/Quarda.log" && fail "Quarda.log is torn"
  return 0
}

# keep NAME: what must be the same whoever scanned. Numbers of temporary files are not.
keep() {
  local kept=$work/$1
  mkdir "$kept"
  cp -r "$work/run/verdicts" "$kept/"
  mkdir "$kept/mails" "$kept/subjects"
  cp "$mails"/*.inp "$kept/mails/"
  cp "$work/run/subjects"/[io]*.inp "$kept/subjects/"
  (cd "$account" && md5sum In_*.mai) | cut -d ' ' -f 1 | sort >"$kept/reports"
  cut -f 3- "$base/Quarda.log" | grep -v -a -e '!!! RedAlert !!!' |
    sed -E 's/\b(In_|Out_)[0-9]{5}\b/\1/g; s/\bTemp[0-9]{4}\b/Temp/g' | sort >"$kept/log"
  cat "$base"/QD*Mails.log | cut -f 2- | sort >"$kept/traffic"
}

compare() {
  local others
  others=$(diff -rq "$work/one" "$work/$1" | grep -v traffic || true)
  if [[ -n $others && $(date +%F) == "$today" ]]; then
    fail "differs from one by one: $(wc -l <<<"$others") files"
    head -n 5 <<<"$others"
    diff "$work/one/log" "$work/$1/log" | head -n 5
  fi
  [[ $(comm -13 "$work/one/traffic" "$work/$1/traffic" | wc -l) == 0 ]] || fail "other lines in the traffic logs"
  echo "$run: lines lost in the traffic logs: $(comm -23 "$work/one/traffic" "$work/$1/traffic" | wc -l)," \
    "scans not counted: $((count - $(sed -n 's/^Mails=\([0-9]*\).*/\1/p' "$base/Temp/Statistic.txt")))"
}

run='one by one'
prepare 1000000
scan_all quarda 1
check_leftovers
check_files
keep one
[[ $(number_of "$mails" -maxdepth 1 -name '*.inp') == "$count" ]] || fail "mails are lost"
[[ $(wc -l <"$work/one/traffic") == "$count" ]] || fail "mails are missing in the traffic logs"
grep -q "^Mails=$count"$'\r' "$base/Temp/Statistic.txt" || fail "$(cat "$base/Temp/Statistic.txt")"
echo "$run: $(cat "$work"/one/verdicts/* | grep -c 1) blocked, $(wc -l <"$work/one/reports") reported," \
  "$(wc -l <"$work/one/log") log lines"

run="$at_once at a time"
prepare 1000000
scan_all quarda "$at_once"
check_leftovers
check_files
keep processes
compare processes

run="$at_once at a time, resident"
prepare 1000000
"$base/quarda" -daemon </dev/null &
engine=$!
until compgen -G "$work/runtime/*/window-*" >/dev/null; do sleep 0.02; done
"$base/quarda-request" </dev/null
rm "$base/Quarda.log"
files_before=$(number_of "/proc/$engine/fd" -mindepth 1)
memory_before=$(awk '/VmRSS/ {print $2}' "/proc/$engine/status")
scan_all quarda-request "$at_once"
files=$(number_of "/proc/$engine/fd" -mindepth 1)
[[ $files == "$files_before" ]] || fail "$files files are open instead of $files_before"
echo "$run: $files files open, memory $memory_before KB before, $(awk '/VmRSS/ {print $2}' "/proc/$engine/status") KB after"
check_leftovers
"$base/quarda" -daemon -quit </dev/null
wait "$engine"
engine=
[[ -z $(find "$work/runtime" -type f ! -name lock ! -name '*.mutex'; find "$work/runtime" -type s) ]] || fail "left: $(find "$work/runtime")"
check_files
keep resident
compare resident

# A log that is full every few mails: the backup is always a full one, never the new log behind it.
run="$at_once at a time, small log"
prepare 4
scan_all quarda "$at_once"
check_leftovers
check_files
for file in "$base/Quarda.bak" "$base/QDInMails.bak"; do
  [[ ! -e $file || $(stat -c %s "$file") -gt 4096 ]] || fail "$file holds $(stat -c %s "$file") bytes"
done
[[ -e $base/Quarda.bak ]] || fail "no log was full"
((faults == 0))
