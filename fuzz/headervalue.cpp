// Values of header fields: split as a plain walk splits them, and again the same when joined.
#include <MailRead.h>
#include <Streams.h>

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text = fuzz::AsText(data, size);
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
  return 0;
}
