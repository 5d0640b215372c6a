// Bodies in base64, uuencode, xxencode and quoted-printable: whole and line by line, the fast
// decoders give what the slow ones give.
#include <BodyLines.h>
#include <Encodings.h>
#include <StringList.h>

#include "Fuzz.h"
#include "SimpleDecoders.h"

namespace {

using namespace quarda;

std::string Decoded(TBodyLines lines, TMailEncodingType encoding) {
  std::string target(CalcDecodeBufSize(lines.CountCharacters()), '.');  // the sanitizer watches
  size_t length = target.size();
  fuzz::Require(DecodeLines(lines, target.data(), length, encoding), "fits");
  return target.substr(0, length);
}

void CheckGroups(const TStringList& lines, TMailEncodingType encoding) {
  const std::string text = lines.SeparateText("");
  const std::string expected = simple::Decode(text, encoding);
  fuzz::Require(TextDecode(text, encoding) == expected, "whole text");
  fuzz::Require(Decoded(TBodyLines(lines), encoding) == expected, "lines");
}

void CheckQuotedLines(TBodyLines lines, const std::string& joined) {
  const std::string expected = simple::DecodeQuoted(joined, false);
  fuzz::Require(DecodeQuotedPrintableLines(lines) == expected, "quoted lines");
  std::string half(expected.size() / 2, '.');
  fuzz::Require(DecodeQuotedPrintableLines(lines, half.data(), half.size()) == expected.size(),
                "the size of all");
  fuzz::Require(half == expected.substr(0, half.size()), "quoted lines into a small buffer");
  std::string target(expected.size(), '\0');  // not a byte behind it is written
  DecodeQuotedPrintableLines(lines, target.data(), SIZE_MAX);
  fuzz::Require(target == expected, "quoted lines into a buffer");
}

void CheckQuotedPrintable(const TStringList& lines) {
  const std::string text = lines.SeparateText("\r\n");
  CheckQuotedLines(TBodyLines(lines), text);
  for (const bool header : {false, true}) {
    fuzz::Require(QuotedPrintableToAnsi(text, header) == simple::DecodeQuoted(text, header),
                  "quoted text");
  }
  if (text.find('\0') == text.npos) {
    const std::string encoded = AnsiToQuotedPrintable(text, true);
    fuzz::Require(QuotedPrintableToAnsi(encoded, true) == text, "quoted round trip");
  }
}

// A text is walked over as the list that it would be split into.
void CheckUnsplit(std::string_view text) {
  TStringList list;
  for (std::string_view rest = text; !rest.empty();) list.AddSlice(TakeLine(rest));
  const TBodyLines lines(text), split(list);
  std::string joined(lines.Join("\r\n", nullptr), '\0');
  lines.Join("\r\n", joined.data());
  fuzz::Require(joined == list.SeparateText("\r\n"), "text as lines");
  fuzz::Require(lines.CountLines() == list.Count(), "number of lines");
  fuzz::Require(lines.LastTwo() == split.LastTwo(), "the end of the text");
  CheckQuotedLines(lines, joined);
  for (const TMailEncodingType encoding : {meUU, meXX, meBase64}) {
    fuzz::Require(Decoded(lines, encoding) == Decoded(split, encoding), "lines of the text");
  }
}

void CheckRoundTrip(std::string_view text, TMailEncodingType encoding) {
  const std::string encoded = TextEncode(text, encoding);
  fuzz::Require(encoded.size() == CalcEncodeBufSize(text.size()), "size of the encoded text");
  // "=" is also a digit of one alphabet: at the end it counts as fill.
  const bool endsInDigit = encoding == meUU && text.size() % 3 == 0 && encoded.ends_with('=');
  fuzz::Require(simple::Decode(encoded, encoding) == text.substr(0, text.size() - endsInDigit),
                "round trip");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return fuzz::AllowErrors([&] {
    const std::string_view text = fuzz::AsText(data, size);
    TStringList lines;
    lines.SetText(text);
    for (const TMailEncodingType encoding : {meUU, meXX, meBase64}) {
      CheckGroups(lines, encoding);
      CheckRoundTrip(text, encoding);
    }
    CheckQuotedPrintable(lines);
    CheckUnsplit(text);
  });
}
