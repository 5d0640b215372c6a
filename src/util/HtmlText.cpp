// All functions copy what stays into a new text; each byte is looked at a fixed number of times.
#include "HtmlText.h"

#include <CodePage.h>

#include <algorithm>
#include <cstddef>
#include <optional>

namespace quarda {
namespace {

constexpr std::string_view kSpace = "\t\n\r ";

struct TEntity {
  std::string_view name;
  char character;
};

// In this order: an abbreviated name takes the first row that it begins.
constexpr TEntity kEntities[] = {
    {"nbsp", ' '},      {"szlig", '\xDF'}, {"lt", '<'},        {"gt", '>'},
    {"amp", '&'},       {"quot", '"'},     {"apos", '\''},     {"eacute", '\xE9'},
    {"egrave", '\xE8'}, {"ecirc", '\xEA'}, {"aacute", '\xE1'}, {"agrave", '\xE0'},
    {"ocirc", '\xF4'},
};

std::optional<char> Umlaut(char letter) noexcept {
  switch (letter) {
    case 'A':
      return '\xC4';
    case 'a':
      return '\xE4';
    case 'O':
      return '\xD6';
    case 'o':
      return '\xF6';
    case 'U':
      return '\xDC';
    case 'u':
      return '\xFC';
    default:
      return std::nullopt;
  }
}

std::optional<char> DecodeEntity(std::string_view name) noexcept {
  if (name.empty()) return std::nullopt;
  // A name that could be an umlaut's is tried as nothing else, so "&n;" and "&qu;" stay.
  if (std::string_view("uml").starts_with(name.substr(1))) return Umlaut(name.front());
  const auto found = std::ranges::find_if(
      kEntities, [name](const TEntity& entity) { return entity.name.starts_with(name); });
  if (found == std::end(kEntities)) return std::nullopt;
  return found->character;
}

/// The length of the line-break tag at the start of the text, 0 without one.
size_t LineBreakTagSize(std::string_view text) noexcept {
  for (const std::string_view tag : {std::string_view("<br>"), std::string_view("<br />")}) {
    if (platform::SameAnsiText(text.substr(0, tag.size()), tag)) return tag.size();
  }
  return 0;
}

std::string ReplaceLineBreakTags(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  size_t done = 0;
  for (size_t at = text.find('<'); at != std::string_view::npos;) {
    const size_t size = LineBreakTagSize(text.substr(at));
    if (size > 0) {
      result.append(text.substr(done, at - done)).append("\r\n");
      done = at + size;
    }
    at = text.find('<', at + std::max<size_t>(size, 1));
  }
  return result.append(text.substr(done));
}

/// The position behind the tag that starts at `at`: behind its first ">" outside quotes.
size_t EndOfTag(std::string_view text, size_t at) noexcept {
  char quote = '\0';
  for (; at < text.size(); ++at) {
    const char c = text[at];
    if (quote != '\0') {
      if (c == quote) quote = '\0';
    } else if (c == '>') {
      return at + 1;
    } else if (c == '"' || c == '\'') {
      quote = c;
    }
  }
  return at;
}

/// Takes everything before the first of the characters (or all) off the text.
std::string_view TakeUntil(std::string_view& rest, std::string_view chars) noexcept {
  const std::string_view taken = rest.substr(0, rest.find_first_of(chars));
  rest.remove_prefix(taken.size());
  return taken;
}

/// Takes an attribute's value off the text: up to white space or ">" outside quotes. The other
/// quote character inside quotes becomes the one that closes them.
std::string_view TakeValue(std::string_view& rest) noexcept {
  char quote = '\0';
  size_t end = 0;
  for (; end < rest.size(); ++end) {
    const char c = rest[end];
    if (c == '"' || c == '\'') {
      quote = c == quote ? '\0' : c;
    } else if (quote == '\0' && (c == '>' || kSpace.find(c) != std::string_view::npos)) {
      break;
    }
  }
  const std::string_view value = rest.substr(0, end);
  rest.remove_prefix(end);
  return value;
}

}  // namespace

std::string ConvHtmlToUml(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  size_t done = 0;
  for (size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at)) {
    ++at;
    const size_t end = text.find_first_of("&;", at);
    if (end == std::string_view::npos) break;
    if (text[end] == ';') {
      if (const auto character = DecodeEntity(text.substr(at, end - at))) {
        result.append(text.substr(done, at - 1 - done)) += *character;
        done = end + 1;
      }
    }
    at = end;
  }
  return result.append(text.substr(done));
}

std::string RemoveHtmlTags(std::string_view text) {
  const std::string broken = ReplaceLineBreakTags(text);
  const std::string_view html = broken;
  std::string plain;
  plain.reserve(html.size());
  size_t done = 0;
  for (size_t at; (at = html.find('<', done)) != std::string_view::npos;) {
    plain.append(html.substr(done, at - done));
    done = EndOfTag(html, at + 1);
  }
  plain.append(html.substr(done));
  return ConvHtmlToUml(plain);
}

void LineBreakToBR(std::string& text) {
  std::string result;
  result.reserve(text.size() + static_cast<size_t>(std::ranges::count(text, '\n')) * 5 + 12);
  std::string_view rest = text;
  for (size_t at; (at = rest.find('\n')) != std::string_view::npos;) {
    result.append(rest.substr(0, at + 1)).append(" <br>");
    rest.remove_prefix(at + 1);
  }
  result.append(rest).append("<br><hr><br>");
  text = std::move(result);
}

std::string GetHtmlTagAttr(std::string_view tag, std::string_view attrName) {
  std::string_view rest = tag;
  TakeUntil(rest, "\t\n\r >");
  while (!rest.empty()) {
    rest.remove_prefix(std::min(rest.find_first_not_of(kSpace), rest.size()));
    const std::string_view name = TakeUntil(rest, "\t\n\r =>");
    if (rest.starts_with('>')) break;
    if (!rest.starts_with('=')) continue;
    rest.remove_prefix(1);
    const std::string_view value = TakeValue(rest);
    if (platform::SameAnsiText(name, attrName)) return std::string(value.empty() ? name : value);
  }
  return {};
}

}  // namespace quarda
