#!/usr/bin/env bash
# Scans the sample mails with the sample settings in a base folder of its own, as a mail server
# would, and compares verdict, reason and the bytes left in the file with what the table expects.
#
# Usage: samples.sh HOST-PROGRAM ENGINE-LIBRARY REPOSITORY
set -euo pipefail

samples=$3/examples/mails
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/base" "$work/mails"
cp "$1" "$2" "$work/base/"
cp "$3/examples/settings/Quarda.ini" "$work/base/"

# sample | exit code | what a warning of the log must hold ("-": no warning) | the file afterwards
rows='
allowed-attachments       |0|-                                                              |same
alternative               |0|-                                                              |same
attached-mail             |0|-                                                              |same
attached-mail-forbidden   |1|Invalid attachment file extension: ".exe" <=> "tool.exe"       |same
double-extension          |1|Invalid attachment file extension: ".exe" <=> "photo.jpg.exe"  |same
encoded-attachment-name   |1|Invalid attachment file extension: ".scr" <=> "Rechnung        |same
encoded-headers           |0|-                                                              |same
encoded-virus-subject     |1|Virus subject found "*you have won*" and marked as virus       |same
faked-sender              |0|faked asmtp sender: "support@ours.example".                     |Subject: Quarda - faked sender: Your mailbox is full
forbidden-attachment      |1|Invalid attachment file extension: ".EXE" <=> "Setup.EXE"      |same
html-attachment           |0|Script removed.                                                |<p>Welcome to the club.</p>
html-iframe               |0|iframe found and changed to a comment.                         |<block_iframe src="http://example.com/weather" width=200></block_iframe>
html-iframe-virus         |1|iframe found and marked as virus.                              |same
html-object               |0|ActiveX element deactivated.                                   |<block_object classid="" width=320>
html-script               |0|Script removed.                                                |<p>The caf=E9 opens on 1 April.</p>
listed-attachment         |1|Invalid filename: "update????.zip" => An invented worm         |same
nested-multiparts         |0|-                                                              |same
outgoing-notice           |0|-                                                              |: This mail has passed a server-based virus scan.
plain                     |0|-                                                              |same
suspicious-subject        |0|Suspicious subject found and noted in subject                  |Subject: Quarda suspicious: Offer: 100% free, today only
unknown-double-extension  |1|Invalid attachment double file extension: "*.*.bmp" <=> "invoice.pdf.chm"|same
uuencoded                 |0|-                                                              |same
virus-subject             |1|Virus subject found "*you have won*" and marked as virus       |same
winmail-container         |0|-                                                              |same
'

faults=0
fault() {
  faults=$((faults + 1))
  echo "FAILED: $sample: $1"
  cat "$work/base/Quarda.log" 2>/dev/null || true
}

count=0
while IFS='|' read -r sample code warning after; do
  [[ -n $sample ]] || continue
  count=$((count + 1))
  read -r sample <<<"$sample"
  read -r warning <<<"$warning"
  direction=in
  [[ $sample == outgoing-* ]] && direction=out
  mail=$work/mails/${direction}_$sample.inp
  cp "$samples/$sample.eml" "$mail"
  rm -f "$work/base/Quarda.log"

  result=0
  "$work/base/${1##*/}" "$mail" </dev/null || result=$?
  ((result == code)) || fault "exit code $result instead of $code"

  warnings=$(grep -aE $'\t(Warning|Error)\t' "$work/base/Quarda.log" || true)
  if [[ $warning == - ]]; then
    [[ -z $warnings ]] || fault "unexpected warnings"
  else
    [[ $warnings == *"$warning"* ]] || fault "no warning $warning"
  fi

  if [[ $after == same ]]; then
    cmp -s "$mail" "$samples/$sample.eml" || fault "the file was changed"
  else
    grep -qaF "$after" "$mail" || fault "no line \"$after\" in the file"
  fi
done <<<"$rows"

mails=("$samples"/*.eml)
sample="the table"
((count == ${#mails[@]})) || fault "$count rows for ${#mails[@]} sample mails"

echo "$count sample mails scanned, $faults faults"
((faults == 0))
