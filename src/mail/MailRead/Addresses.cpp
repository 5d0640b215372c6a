#include "Addresses.h"

#include <Files.h>
#include <StringList.h>

#include <algorithm>
#include <limits>

namespace quarda {
namespace {

bool IsBlank(char c) noexcept { return static_cast<unsigned char>(c) <= ' '; }

std::string_view Trim(std::string_view text) noexcept {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

// Whether the character opens or closes a quoted stretch.
bool IsQuoteMark(std::string_view text, size_t at) noexcept {
  return text[at] == '"' && (at == 0 || text[at - 1] != '\\');
}

// The bare address around an "@".
std::string_view AddressAround(std::string_view text, size_t at) noexcept {
  constexpr std::string_view kDelimiters = " \"<>";
  const size_t before = at == 0 ? text.npos : text.find_last_of(kDelimiters, at - 1);
  const size_t begin = before == text.npos ? 0 : before + 1;
  const size_t end = std::min(text.find_first_of(kDelimiters, at), text.size());
  return text.substr(begin, end - begin);
}

}  // namespace

std::string HeaderEmailToAddress(std::string_view text) {
  bool quoted = false;
  for (size_t at = 0; at < text.size(); ++at) {
    if (IsQuoteMark(text, at)) quoted = !quoted;
    if (quoted) continue;
    if (text[at] == '<') {
      const std::string_view rest = text.substr(at + 1);
      return std::string(Trim(rest.substr(0, rest.find('>'))));
    }
    if (text[at] == '@') return std::string(Trim(AddressAround(text, at)));
  }
  return {};
}

void ExtractAddressList(std::string_view value, TStringList& list) {
  const TStringListUpdate update(list);
  bool quoted = false;
  size_t begin = 0;
  for (size_t at = 0; at < value.size(); ++at) {
    if (IsQuoteMark(value, at)) quoted = !quoted;
    if (quoted) continue;
    if (value[at] == '<') {
      at = value.find('>', at);
      if (at == value.npos) break;
    } else if (value[at] == ',') {
      list.Add(Trim(value.substr(begin, at - begin)));
      begin = at + 1;
    }
  }
  if (begin < value.size()) list.Add(Trim(value.substr(begin)));
}

std::string MakeAddressList(const TStringList& list) {
  std::string value;
  for (size_t i = 0; i < list.Count(); ++i) {
    const std::string_view address = Trim(list[i]);
    if (address.empty()) continue;
    if (!value.empty()) value += "\r\n\t";
    value += address;
  }
  return value;
}

bool ExtractNameValuePair(std::string_view text, std::string& name, std::string& value) {
  const size_t equals = text.find('=');
  const bool isPair = equals != text.npos;
  std::string newName(isPair ? Trim(text.substr(0, equals)) : text);
  std::string newValue(isPair ? Trim(text.substr(equals + 1)) : std::string_view());
  name = std::move(newName);
  value = std::move(newValue);
  return isPair;
}

std::string RemoveQuotes(std::string_view text) {
  if (text.size() >= 2 && (text.front() == '"' || text.front() == '\'') &&
      text.front() == text.back())
    text = text.substr(1, text.size() - 2);
  return std::string(text);
}

size_t PosAnyChar(std::string_view text, const TCharSet& set) noexcept {
  for (size_t at = 0; at < text.size(); ++at) {
    if (set.Contains(text[at])) return at + 1;
  }
  return 0;
}

int32_t GetFileSize(std::string_view fileName) {
  constexpr uint64_t kLargest = std::numeric_limits<int32_t>::max();
  for (const platform::TFileRecord& found : platform::FindFiles(fileName)) {
    if ((found.attributes & platform::kFolder) != 0) continue;
    return static_cast<int32_t>(std::min(found.size, kLargest));
  }
  return 0;
}

}  // namespace quarda
