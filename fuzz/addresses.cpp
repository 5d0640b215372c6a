// Address lists: every character of the value is in one entry or separates two, and an address is
// a part of its entry.
#include <Addresses.h>
#include <StringList.h>

#include <algorithm>

#include "Fuzz.h"

namespace {

using namespace quarda;

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return fuzz::AllowErrors([&] {
    const std::string_view value = fuzz::AsText(data, size);
    TStringList entries;
    ExtractAddressList(value, entries);
    CheckEntries(value, entries);
    std::string name, text;
    const bool isPair = ExtractNameValuePair(value, name, text);
    fuzz::Require(isPair == (PosAnyChar(value, TCharSet("=")) > 0), "pair without a separator");
    fuzz::Require(RemoveQuotes("\"" + std::string(value) + "\"") == value, "quotes");
  });
}
