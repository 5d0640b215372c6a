// Every function builds its result in one walk over the text; nothing is erased or inserted in
// place, so that all of them are linear.
#include "TextUtils.h"

#include <CodePage.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace quarda {
namespace {

bool IsLineBreak(char c) noexcept { return c == '\r' || c == '\n'; }

char OtherLineBreak(char c) noexcept { return c == '\r' ? '\n' : '\r'; }

/// All of the digits as a number, or nothing.
template <class TNumber>
std::optional<TNumber> ParseDigits(std::string_view digits, int base) noexcept {
  TNumber value = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value, base);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

uint32_t HexDigit(char c) noexcept {
  if (c >= '0' && c <= '9') return static_cast<uint32_t>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<uint32_t>(c - 'A' + 10);
  if (c >= 'a' && c <= 'f') return static_cast<uint32_t>(c - 'a' + 10);
  return 0;
}

bool NamesMailField(std::string_view line) {
  const std::string lower = platform::LowerAnsi(line);
  // "to:" also covers "reply-to:" and the like, as it may stand anywhere.
  return lower.find("subject:") != std::string::npos || lower.find("to:") != std::string::npos ||
         lower.find("from:") != std::string::npos;
}

/// Removes the line break at the start: one character and the whole run of the other kind.
void SkipLineBreak(std::string_view& rest) noexcept {
  const char other = OtherLineBreak(rest.front());
  const size_t end = rest.find_first_not_of(other, 1);
  rest.remove_prefix(std::min(end, rest.size()));
}

}  // namespace

std::string Concat(std::initializer_list<std::string_view> pieces) {
  size_t size = 0;
  for (const std::string_view piece : pieces) size += piece.size();
  std::string text;
  text.reserve(size);
  for (const std::string_view piece : pieces) text.append(piece);
  return text;
}

std::optional<int32_t> TryStrToInt(std::string_view text) noexcept {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  return ParseDigits<int32_t>(text, 10);
}

std::optional<int32_t> TryStrToIntOrHex(std::string_view text) noexcept {
  if (!text.starts_with("0x") && !text.starts_with("0X")) return TryStrToInt(text);
  const auto value = ParseDigits<uint32_t>(text.substr(2), 16);
  if (!value) return std::nullopt;
  return static_cast<int32_t>(*value);
}

int32_t CaseStringOf(std::string_view text, std::span<const std::string_view> words) noexcept {
  const auto found = std::ranges::find_if(
      words, [text](std::string_view word) { return platform::SameAnsiText(text, word); });
  return found == words.end() ? -1 : static_cast<int32_t>(found - words.begin());
}

std::string DelChars(std::string_view text, std::string_view chars) {
  std::array<bool, 256> isDeleted{};
  for (const char c : chars) isDeleted[static_cast<unsigned char>(c)] = true;
  std::string kept;
  kept.reserve(text.size());
  for (const char c : text) {
    if (!isDeleted[static_cast<unsigned char>(c)]) kept += c;
  }
  return kept;
}

std::string IntToNullStr(int32_t value, uint8_t digits) {
  const int64_t wide = value;
  std::string text = std::to_string(wide < 0 ? -wide : wide);
  if (text.size() < digits) text.insert(0, digits - text.size(), '0');
  if (value < 0) text.insert(0, 1, '-');
  return text;
}

uint32_t HexToInt(std::string_view digits) noexcept {
  uint32_t value = 0;
  for (const char c : digits) value = value << 4 | HexDigit(c);
  return value;
}

size_t CountChar(char c, std::string_view text) noexcept {
  const std::string_view counted = text.substr(0, text.find('\0'));
  return static_cast<size_t>(std::ranges::count(counted, c));
}

std::string RepeatChar(char c, int32_t count) {
  return count <= 0 ? std::string() : std::string(static_cast<size_t>(count), c);
}

std::string InvertString(std::string_view text) { return {text.rbegin(), text.rend()}; }

size_t PosLastChar(char c, std::string_view text) noexcept {
  return text.rfind(c) + 1;  // npos + 1 is 0
}

std::string DelQuotes(std::string_view text) {
  const bool quoted =
      !text.empty() && (text.front() == '"' || text.front() == '\'') && text.back() == text.front();
  if (!quoted) return std::string(text);
  return text.size() == 1 ? std::string() : std::string(text.substr(1, text.size() - 2));
}

std::string CTextToText(std::string_view text) {
  if (text.starts_with('"') && text.ends_with('"')) {
    text = text.size() == 1 ? std::string_view() : text.substr(1, text.size() - 2);
  }
  std::string plain;
  plain.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      plain += text[i];
      continue;
    }
    ++i;
    if (text[i] == 'n') {
      plain += "\r\n";
    } else {
      plain += text[i] == 'm' ? '\n' : text[i];
    }
  }
  return plain;
}

std::string TextToCText(std::string_view text) {
  std::string escaped = "\"";
  escaped.reserve(text.size() + text.size() / 8 + 2);
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (!IsLineBreak(c)) {
      if (c == '"' || c == '\\') escaped += '\\';
      escaped += c;
    } else if (i + 1 == text.size()) {
      break;
    } else if (text[i + 1] == OtherLineBreak(c)) {
      escaped += "\\n";
      ++i;
    } else {
      escaped += "\\m";
    }
  }
  escaped += '"';
  return escaped;
}

bool IsEmailFile(std::string_view content) {
  bool seen = false;
  for (std::string_view rest = content; !rest.empty(); SkipLineBreak(rest)) {
    const size_t end = rest.find_first_of("\r\n");
    if (end == std::string_view::npos) return false;
    if (end == 0) return seen;
    seen = seen || NamesMailField(rest.substr(0, end));
    rest.remove_prefix(end);
  }
  return false;
}

std::string ReplaceMacrosEx(std::string_view text, const TMacroCallback& callback) {
  std::string result;
  result.reserve(text.size());
  size_t done = 0;  // the text before it is in the result
  std::string macro;
  while (true) {
    const size_t open = text.find('$', done);
    if (open == std::string_view::npos) break;
    const size_t close = text.find('$', open + 1);
    if (close == std::string_view::npos) break;
    const std::string_view written = text.substr(open, close + 1 - open);
    result.append(text.substr(done, open - done));
    macro = written;
    result.append(callback(macro) ? std::string_view(macro) : written);
    done = close + 1;
  }
  result.append(text.substr(done));
  return result;
}

std::string ReplaceMacrosEx(std::string_view text, int32_t data,
                            const TMacroDataCallback& callback) {
  return ReplaceMacrosEx(text, [&](std::string& macro) { return callback(macro, data); });
}

}  // namespace quarda
