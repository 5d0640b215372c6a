#!/usr/bin/env bash
# The resident engine and its client as processes: starts, requests, ends, and deaths.
#
# Usage: resident.sh HOST-PROGRAM ENGINE-LIBRARY CLIENT-PROGRAM
set -euo pipefail

work=$(mktemp -d)
engine=
trap '[[ -z $engine ]] || kill -9 "$engine" 2>/dev/null; rm -rf "$work"' EXIT
export XDG_RUNTIME_DIR=$work
objects=$work/quarda-$(id -u)
base=$work/base
mkdir "$base"
cp "$@" "$base/"
settings='[Logging]\nLogMode=4\n[Subject Checks]\nBlockOnVirus=1\n'
printf "$settings" >"$base/Quarda.ini"
cd "$work"

faults=0
fail() {
  faults=$((faults + 1))
  echo "FAILED: $*"
}
# Waits until a command succeeds; only a fault makes that take long.
until_true() {
  local tries=0
  until "$@"; do
    ((++tries < 500)) || return 1
    sleep 0.02
  done
}
shared() { od -An -t "$1" -j "$2" -N 4 "$objects/kestavon_Quarda_SharedMem.memory" | tr -d ' '; }
is_ready() { [[ -e $objects/kestavon_Quarda_SharedMem.memory ]] && compgen -G "$objects/window-*" >/dev/null; }
start_engine() {
  "$base/quarda" -Daemon </dev/null &
  engine=$!
  until_true is_ready || fail "the engine does not start"
  until_true has_its_number || fail "the record holds another number"
}
has_its_number() { [[ $(shared u4 0) == "$engine" ]]; }
is_locked() { ! flock -n "$objects" true; }
ended() { ! kill -0 "$engine" 2>/dev/null; }
# request VERDICT SERVED SUBJECT: the verdict, and how many requests the engine served by then.
request() {
  printf 'Subject: %s\r\n\r\nText\r\n' "$3" >"$work/in_1 a.inp"
  local result=0
  "$base/quarda-request" "in_1 a.inp" </dev/null || result=$?
  [[ $result == "$1" ]] || fail "$3: verdict $result instead of $1"
  [[ -z $2 || $(shared u4 16) == "$2" ]] || fail "$3: $(shared u4 16) requests instead of $2"
}

request 0 '' 'nobody there'
grep -q 'Quarda finished' "$base/Quarda.log" || fail "without an engine the mail was not scanned"

start_engine
[[ $(shared u4 4) == 2 ]] || fail "the engine does not wait two minutes"
"$base/quarda" -daemon </dev/null || fail "a second start is no error"
ended && fail "a second start ends the engine"
request 0 1 first
printf "$settings[Virus Subjects]\nprize\n" >"$base/Quarda.ini"
request 1 2 prize
request 0 3 second
"$base/quarda-request" "$(printf '%01100d' 0)" "in_1 a.inp" </dev/null || fail "a long line is an error"
[[ $(shared u4 16) == 3 ]] || fail "a command line that is too long was sent"
# The engine of another installation has other settings, and is not asked.
cp -r "$base" "$work/other"
printf "$settings[Virus Subjects]\nsecond\n" >"$work/other/Quarda.ini"
"$work/other/quarda-request" "in_1 a.inp" </dev/null && fail "scanned with the settings of another"
[[ $(shared u4 16) == 3 ]] || fail "the engine of another installation was asked"
for i in 1 2 3 4 5 6; do
  printf 'Subject: prize\r\n\r\nText\r\n' >"$work/in_p$i.inp"
  { "$base/quarda-request" "$work/in_p$i.inp" </dev/null || echo "$?" >"$work/verdict$i"; } &
  clients[i]=$!
done
wait "${clients[@]}"
[[ $(cat "$work"/verdict? | tr -d '\n') == 111111 && $(shared u4 16) == 9 ]] ||
  fail "six at once: $(cat "$work"/verdict?), $(shared u4 16) served"

# A client that dies leaves the engine as it was; so does a user whose folder this is not.
"$base/quarda-request" "$work/in_p1.inp" </dev/null & kill -9 $! 2>/dev/null || true
wait $! 2>/dev/null || true
served=$(shared u4 16)
if ((EUID == 0)) && command -v setpriv >/dev/null; then
  chmod -R a+rwX "$base" && chmod a+rx "$work" && chmod a+rw "$work/in_1 a.inp"
  setpriv --reuid=65534 --clear-groups "$base/quarda-request" "in_1 a.inp" </dev/null ||
    fail "a stranger gets no scan of his own"
  [[ $(shared u4 16) == "$served" ]] || fail "a stranger was served"
fi
request 1 $((served + 1)) prize
result=0
(cd "$base" && "$base/quarda-request" ' ../in_1 a.inp ' </dev/null) || result=$?
[[ $result == 1 ]] || fail "a file name between blanks: verdict $result"

# What the engine would find or do differently is scanned by the client itself; what it finds in its
# own folder is never meant.
here=$work/'a" b'
mkdir "$here"
printf 'Subject: prize\r\n\r\nText\r\n' | tee "$work/in_2.inp" >"$here/in_3.inp"
echo harmless >"$work/foo"
# in_folder VERDICT SERVED COMMAND...: the client, started in that folder.
in_folder() {
  local result=0 before
  before=$(shared u4 16)
  (cd "$here" && "${@:3}" </dev/null) || result=$?
  [[ $result == "$1" && $(($(shared u4 16) - before)) == "$2" ]] ||
    fail "${*:3}: verdict $result, $(($(shared u4 16) - before)) served"
}
client=$base/quarda-request
in_folder 1 1 "$client" in_3.inp
in_folder 1 1 "$client" foo in_3.inp
in_folder 0 0 "$client" in_2.inp
in_folder 1 0 env QUARDA_DRIVES="D=$here" "$client" 'D:\in_3.inp'
in_folder 1 0 env PATH="$PATH:/elsewhere" "$client" in_3.inp
(ulimit -f 100000 && in_folder 1 0 "$client" in_3.inp && ((faults == 0))) || fail "with another limit"
printf '#!/bin/sh\nexit 1\n' >"$here/look"
chmod +x "$here/look"
printf "$settings[VirusScan]\nMailScan=./look\n" >"$base/Quarda.ini"
in_folder 1 1 "$client" in_3.inp
printf "$settings[Virus Subjects]\nprize\n" >"$base/Quarda.ini"

# Neither is an engine asked that was replaced meanwhile, nor one with fewer rights.
touch "$base/QDEngine.so"
in_folder 1 0 "$client" in_3.inp
if ((EUID == 0)) && command -v setpriv >/dev/null; then
  for group in 2345 1234; do
    cp "$here/in_3.inp" "$work/in_$group.inp"
    chown 0:$group "$work/in_$group.inp" && chmod 660 "$work/in_$group.inp"
  done
  mkdir -m 777 "$work/user" && chmod -R a+rwX "$base"
  (
    export XDG_RUNTIME_DIR=$work/user
    objects=$work/user/quarda-1234
    setpriv --reuid=1234 --regid=1234 --clear-groups "$base/quarda" -daemon </dev/null &
    until_true is_ready
    for group in 2345 1234; do  # its own group as another one changes nothing
      result=0
      setpriv --reuid=1234 --regid=1234 --groups=$group "$client" "$work/in_$group.inp" </dev/null || result=$?
      echo "$result $(shared u4 16)"
    done
    setpriv --reuid=1234 --regid=1234 --clear-groups "$base/quarda" -daemon -quit </dev/null
    wait
  ) >"$work/rights"
  [[ $(tr '\n' ' ' <"$work/rights") == '1 0 1 1 ' ]] || fail "rights: $(cat "$work/rights")"
fi

# Killed in its sleep: the mail is scanned all the same, and a new engine takes over.
kill -9 "$engine"
wait "$engine" 2>/dev/null || true
request 1 '' prize
start_engine
request 1 1 prize
# A client killed in the middle of its scan leaves the engine as it was, and an engine killed there
# leaves the scan to the client.
cat >"$work/scanner" <<'SCANNER'
#!/bin/sh
[ -e "$0.slow" ] || exit 1
rm "$0.slow"
echo >"$0.started"
sleep 0.5
SCANNER
chmod +x "$work/scanner"
printf "$settings[VirusScan]\nMailScan=$work/scanner\n" >"$base/Quarda.ini"
start_slow_scan() {
  touch "$work/scanner.slow"
  rm -f "$work/scanner.started"
  "$base/quarda-request" "in_1 a.inp" </dev/null & client=$!
  until_true test -e "$work/scanner.started" || fail "no scan for $1"
}
start_slow_scan "a client that is killed"
{ kill -9 $client && wait $client; } 2>/dev/null || true
request 1 3 "the next one"
start_slow_scan "an engine that is killed"
{ kill -9 "$engine" && wait "$engine"; } 2>/dev/null || true
result=0
wait $client || result=$?
[[ $result == 1 ]] || fail "the engine was killed in a scan, and the verdict is $result"
printf "$settings[Virus Subjects]\nprize\n" >"$base/Quarda.ini"
start_engine
request 1 1 prize

# A scanner that asks in turn is not kept waiting for the engine that waits for it.
printf 'Subject: prize\r\n\r\nText\r\n' >"$work/in_member.inp"
printf '#!/bin/sh\ncase $1 in *member*) exit 0; esac\nexec "%s" "%s"\n' "$base/quarda-request" \
  "$work/in_member.inp" >"$work/scanner"
chmod +x "$work/scanner"
printf "$settings[Virus Subjects]\nprize\n[VirusScan]\nMailScan=$work/scanner "'"$FILE$"\n' >"$base/Quarda.ini"
SECONDS=0
request 1 2 unpacked
((SECONDS < 8)) || fail "a scanner that asks in turn waits"
printf "$settings[Virus Subjects]\nprize\n" >"$base/Quarda.ini"

# Whoever keeps the others out for good holds up no mail.
flock -o "$objects" sleep 4 & keeper=$!
until_true is_locked
request 1 2 prize
kill -0 $keeper 2>/dev/null || fail "the client waits as long as it likes"
wait $keeper
"$base/quarda-request" -daemon -quit </dev/null
until_true ended || fail "-quit does not end the engine"
[[ -z $(ls "$objects" | grep -v '\.mutex$') ]] || fail "left behind: $(ls "$objects")"

# Another process may shorten the time that the engine waits.
start_engine
printf '\0\0\0\0' | dd of="$objects/kestavon_Quarda_SharedMem.memory" bs=1 seek=4 conv=notrunc 2>/dev/null
until_true ended || fail "the engine does not end when nobody asks"
engine=

# Of two that start at once one serves, and the record is its own.
for i in 1 2 3 4 5; do
  flock "$objects" sleep 0.1 &
  until_true is_locked
  "$base/quarda" -daemon </dev/null & starts=($!)
  "$base/quarda" -daemon </dev/null & starts+=($!)
  until_true is_ready || fail "none of two engines starts"
  sleep 0.05
  kill -0 "$(shared u4 0)" 2>/dev/null || fail "the record names a process that has ended"
  "$base/quarda" -daemon -quit </dev/null
  wait "${starts[@]}"
done

# An engine that cannot start says so where everything is said.
chmod 755 "$objects"
"$base/quarda" -daemon </dev/null
grep -q 'Error.*Exception class .*: Operation not permitted: .*quarda-' "$base/Quarda.log" ||
  fail "the log does not tell why no engine starts: $(tail -n 1 "$base/Quarda.log")"
request 1 '' prize
chmod 700 "$objects"

# A full disk keeps the engine from starting and the client from asking, and no more.
full() {
  mount -t tmpfs -o size=16k none "$work/full"
  [[ $1 == first ]] || { "$base/quarda" -daemon </dev/null & until_true test -e "$2/kestavon_Quarda_SharedMem.memory"; }
  head -c 1M /dev/zero >"$work/full/rest" 2>/dev/null
  "$base/quarda" -daemon </dev/null || echo "a start on a full disk ends with $?"
  "$base/quarda-request" "$work/in_1 a.inp" </dev/null
  [[ $? == 1 ]] || echo "on a full disk the verdict is lost"
  "$base/quarda" -daemon -quit </dev/null
}
export work base
export -f full until_true
mkdir "$work/full"
if unshare -rm mount -t tmpfs none "$work/full" 2>/dev/null; then
  for when in first later; do
    seen=$(XDG_RUNTIME_DIR=$work/full unshare -rm bash -c 'full "$@" 2>&1' - $when "$work/full/quarda-0")
    [[ -z $seen ]] || fail "$seen"
  done
fi
((faults == 0))
