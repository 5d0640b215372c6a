// Values of header fields: split as a plain walk splits them, and again the same when joined; the
// addresses in them, of which every character is in one entry or separates two; their encoded
// words, which are read back as they were written.
#include <Addresses.h>
#include <Encodings.h>
#include <MailRead.h>
#include <Streams.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Fuzz.h"

namespace {

using namespace quarda;

void AddPiece(std::vector<std::string>& pieces, std::string_view piece) {
  while (!piece.empty() && (piece[0] == ' ' || piece[0] == '\t')) piece.remove_prefix(1);
  if (!piece.empty()) pieces.emplace_back(piece);
}

// Character by character, with one marker for the span that is open.
std::vector<std::string> SplitPlainly(std::string_view text) {
  std::vector<std::string> pieces;
  char open = 0;
  size_t start = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (open == 0 && c == ';') {
      AddPiece(pieces, text.substr(start, i - start));
      start = i + 1;
    } else if (open == 0) {
      const bool word = c == '=' && text.substr(i, 2) == "=?";
      open = c == '"' ? '"' : c == '<' ? '>' : word ? '=' : '\0';
    } else if (c == open && (c != '=' || text[i - 1] == '?')) {
      open = 0;
    }
  }
  AddPiece(pieces, text.substr(start));
  return pieces;
}

std::vector<std::string> Lines(const TStringList& list) {
  std::vector<std::string> lines;
  for (size_t i = 0; i < list.Count(); ++i) lines.emplace_back(list[i]);
  return lines;
}

std::string_view Trimmed(std::string_view text) {
  const auto blank = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

void CheckSplitting(std::string_view text) {
  THeader header;
  THeaderItem& item = header.Add("A", "");
  item.SetValuesAsText(text);
  fuzz::Require(Lines(item.GetValues()) == SplitPlainly(text), "split as a plain walk does");
  const std::vector<std::string> before = Lines(item.GetValues());
  item.SetValuesAsText(item.GetValuesAsText());
  fuzz::Require(Lines(item.GetValues()) == before, "joined and split again");

  std::string line = "A:" + std::string(text.substr(0, text.find('\n'))) + "\n";
  TStringStream stream(line);
  TTextStreamer streamer(stream, TStreamerMode::kRead);
  header.LoadFromTextStreamer(streamer);
  const std::vector<std::string> read = SplitPlainly(Trimmed(std::string_view(line).substr(2)));
  std::vector<std::string> values;
  for (THeaderValues cursor(header, "a"); cursor.Next();) values.emplace_back(cursor.Line());
  fuzz::Require(values == read, "read without an item");
  fuzz::Require(Lines(header.GetItems(0).GetValues()) == read, "read by the item");
}

void CheckAddress(std::string_view entry) {
  const std::string address = HeaderEmailToAddress(entry);
  fuzz::Require(entry.find(address) != entry.npos, "address is no part of its entry");
  fuzz::Require(address.find('>') == address.npos, "address beyond its bracket");
}

// Entries come in order, and only commas and blanks lie between them.
void CheckEntries(std::string_view value, const TStringList& entries) {
  size_t at = 0;
  for (size_t i = 0; i < entries.Count(); ++i) {
    const size_t found = value.find(entries[i], at);
    fuzz::Require(found != value.npos, "entry is no part of the value");
    const std::string_view between = value.substr(at, found - at);
    fuzz::Require(std::all_of(between.begin(), between.end(),
                              [](char c) { return c == ',' || static_cast<uint8_t>(c) <= ' '; }),
                  "characters lost");
    at = found + entries[i].size();
    CheckAddress(entries[i]);
  }
}

void CheckAddresses(std::string_view value) {
  TStringList entries;
  ExtractAddressList(value, entries);
  CheckEntries(value, entries);
  std::string name, text;
  const bool isPair = ExtractNameValuePair(value, name, text);
  fuzz::Require(isPair == (PosAnyChar(value, TCharSet("=")) > 0), "pair without a separator");
  fuzz::Require(RemoveQuotes("\"" + std::string(value) + "\"") == value, "quotes");
}

// Whether the value comes back: a NUL or an end mark inside would end its word early.
bool IsReadBack(std::string_view value, std::string_view encoded) {
  if (encoded == value) return value.find("=?") == value.npos;
  // Escaping leaves "?" alone and makes "=" of other characters.
  return value.find('\0') == value.npos && encoded.find("?=", 15) == encoded.size() - 2;
}

void CheckWords(std::string_view value) {
  const std::string decoded = DecodeHeader(value);
  fuzz::Require(decoded.size() <= value.size(), "grows");
  fuzz::Require(value.find("=?") != value.npos || decoded == value, "plain value changes");
  const std::string encoded = EncodeHeader(value);
  if (IsReadBack(value, encoded)) fuzz::Require(DecodeHeader(encoded) == value, "round trip");
  const std::string word = "=?x?b?" + TextEncode(value, meBase64) + "?=";
  fuzz::Require(DecodeHeader(word) == value, "base64 word");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view value = fuzz::AsText(data, size);
  CheckSplitting(value);
  CheckAddresses(value);
  CheckWords(value);
  return 0;
}
