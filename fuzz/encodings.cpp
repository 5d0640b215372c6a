// Bodies in base64, uuencode, xxencode and quoted-printable: whole and line by line, the fast
// decoders give what the slow ones give.
#include <BodyLines.h>
#include <Encodings.h>
#include <StringList.h>

#include "Fuzz.h"
#include "SimpleDecoders.h"

namespace {

using namespace quarda;

void CheckGroups(const TStringList& lines, TMailEncodingType encoding) {
  const std::string text = lines.SeparateText("");
  const std::string expected = simple::Decode(text, encoding);
  fuzz::Require(TextDecode(text, encoding) == expected, "whole text");
  std::string target(CalcDecodeBufSize(text.size()), '\0');
  size_t length = target.size();
  fuzz::Require(DecodeLines(TBodyLines(lines), target.data(), length, encoding), "fits");
  fuzz::Require(target.substr(0, length) == expected, "lines");
}

void CheckQuotedPrintable(const TStringList& lines) {
  const std::string text = lines.SeparateText("\r\n");
  const std::string expected = simple::DecodeQuoted(text, false);
  fuzz::Require(QuotedPrintableToAnsi(text, false) == expected, "quoted text");
  fuzz::Require(DecodeQuotedPrintableLines(TBodyLines(lines)) == expected, "quoted lines");
  std::string target(expected.size(), '\0');  // not a byte behind it is written
  DecodeQuotedPrintableLines(TBodyLines(lines), target.data(), SIZE_MAX);
  fuzz::Require(target == expected, "quoted lines into a buffer");
  fuzz::Require(QuotedPrintableToAnsi(text, true) == simple::DecodeQuoted(text, true), "header");
  if (text.find('\0') == text.npos) {
    const std::string encoded = AnsiToQuotedPrintable(text, true);
    fuzz::Require(QuotedPrintableToAnsi(encoded, true) == text, "quoted round trip");
  }
}

// A text is walked over as the list that it would be split into.
void CheckUnsplit(std::string_view text) {
  TStringList list;
  for (std::string_view rest = text; !rest.empty();) list.AddSlice(TakeLine(rest));
  const TBodyLines lines(text);
  std::string joined(lines.Join("\n", nullptr), '\0');
  lines.Join("\n", joined.data());
  fuzz::Require(joined == list.SeparateText("\n"), "text as lines");
  fuzz::Require(lines.LastTwo() == TBodyLines(list).LastTwo(), "the end of the text");
  fuzz::Require(DecodeQuotedPrintableLines(lines) == DecodeQuotedPrintableLines(TBodyLines(list)),
                "quoted lines of the text");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return fuzz::AllowErrors([&] {
    const std::string_view text = fuzz::AsText(data, size);
    TStringList lines;
    lines.SetText(text);
    for (const TMailEncodingType encoding : {meUU, meXX, meBase64}) CheckGroups(lines, encoding);
    CheckQuotedPrintable(lines);
    CheckUnsplit(text);
    const std::string encoded = TextEncode(text, meBase64);
    fuzz::Require(simple::Decode(encoded, meBase64) == text, "base64 round trip");
  });
}
