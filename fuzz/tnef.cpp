// Any bytes as a TNEF container.
#include <MailReadTnef.h>

#include <string>

#include "Fuzz.h"

namespace quarda::fuzz {
namespace {

/// Sets the checksum of every whole record right, so that the records behind a change are read too.
std::string MendChecksums(std::string text) {
  for (size_t at = 6; text.size() > at && text.size() - at >= 11;) {
    uint32_t size = 0;
    for (size_t i = 4; i-- > 0;) size = size << 8 | static_cast<uint8_t>(text[at + 5 + i]);
    if (size > 0x7FFFFFFF) size = 0;
    if (size > text.size() - at - 11) break;
    uint32_t sum = 0;
    for (at += 9; size > 0; --size) sum += static_cast<uint8_t>(text[at++]);
    text[at++] = static_cast<char>(sum);
    text[at++] = static_cast<char>(sum >> 8);
  }
  return text;
}

std::string Load(TTnef& tnef, TStream& stream) {
  try {
    tnef.LoadFromStream(stream);
  } catch (const EError& error) {
    return error.what();
  }
  return {};
}

void CheckItems(const TTnef& tnef, std::string_view input) {
  size_t total = 0;
  for (size_t i = 0; i < tnef.GetCount(); ++i) {
    const TTnefAttachment& item = tnef.GetItems(i);
    const size_t size = item.GetData().size();
    Require(!item.GetFileName().empty(), "every attachment has a name");
    Require(item.GetFileName().find('\0') == std::string::npos, "a name ends at its first zero");
    Require(item.GetSize() <= 0 ? size == 0 : size == static_cast<size_t>(item.GetSize()), "size");
    Require(size == 0 || input.find(item.GetData()) != std::string_view::npos, "data of the input");
    total += size;
  }
  Require(total <= input.size(), "no byte belongs to two attachments");
}

void Check(std::string text) {
  TTnef fromBlock, fromText, longer;
  TMemoryStream block(text);
  const std::string error = Load(fromBlock, block);
  CheckItems(fromBlock, text);

  TStringStream string(text);
  Require(Load(fromText, string) == error, "every stream gives the same answer");
  Require(fromText.GetCount() == fromBlock.GetCount(), "every stream gives the same list");
  if (!error.empty()) return;
  text += '\x03';
  TStringStream cut(text);
  Require(Load(longer, cut) == "Invalid lvl type on attribute: 3", "the walk reaches the end");
  Require(longer.GetCount() == fromBlock.GetCount(), "an error keeps what was found");
}

}  // namespace
}  // namespace quarda::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(quarda::fuzz::AsText(data, size));
  quarda::fuzz::Check(text);
  quarda::fuzz::Check(quarda::fuzz::MendChecksums(text));
  return 0;
}
