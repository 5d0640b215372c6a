// The tag object told once more, slowly: what the real one and the reading of tags in place are
// compared with.
#pragma once

#include <CodePage.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace quarda {

struct TSimpleAttr {
  std::string name, value;
  int lineBreaks = 0, blanks = 0;

  std::string Text() const { return value.empty() ? name : name + "=" + value; }
};

/// Which quotes are open behind each character of a text.
struct TSimpleQuotes {
  bool inDouble = false, inSingle = false;

  bool AreOpen() const { return inDouble || inSingle; }
  void Take(char c) {
    if (c == '"' && !inSingle) inDouble = !inDouble;
    if (c == '\'' && !inDouble) inSingle = !inSingle;
  }
};

inline TSimpleAttr SplitSimpleAttr(const std::string& text) {
  TSimpleQuotes quotes;
  for (size_t i = 0; i < text.size(); ++i) {
    quotes.Take(text[i]);
    if (text[i] == '=' && !quotes.AreOpen()) return {text.substr(0, i), text.substr(i + 1)};
  }
  return {text, ""};
}

inline std::vector<TSimpleAttr> ReadSimpleAttrs(std::string text) {
  std::vector<TSimpleAttr> attributes;
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
  while (!text.empty() && isControl(text.back())) text.pop_back();
  while (!text.empty() && isControl(text.front())) text.erase(0, 1);
  for (size_t i = 0; (i = text.find('\r', i)) != std::string::npos;) text.erase(i, 1);
  if (text.empty()) return attributes;
  text += ' ';  // ends the last attribute
  std::string attribute;
  TSimpleQuotes quotes;
  for (size_t i = 0; i + 1 < text.size() || !attribute.empty();) {
    if (i == text.size()) break;  // a quote is still open
    const bool wasOpen = quotes.AreOpen();
    quotes.Take(text[i]);
    const bool isSpace = !quotes.AreOpen() && (text[i] == ' ' || text[i] == '\n');
    const bool closes = wasOpen && !quotes.AreOpen();
    if (!isSpace) attribute += text[i++];
    if (!isSpace && !closes) continue;
    attributes.push_back(SplitSimpleAttr(attribute));
    attribute.clear();
    for (; i + 1 < text.size() && (text[i] == ' ' || text[i] == '\n'); ++i) {
      TSimpleAttr& last = attributes.back();
      last.lineBreaks += text[i] == '\n' ? 1 : 0;
      last.blanks = text[i] == '\n' ? 0 : last.blanks + 1;
    }
  }
  return attributes;
}

inline std::string WriteSimpleAttrs(const std::vector<TSimpleAttr>& attributes) {
  std::string text;
  for (const TSimpleAttr& each : attributes) {
    text += each.Text();
    for (int i = 0; i < each.lineBreaks; ++i) text += "\r\n";
    text += each.lineBreaks + each.blanks == 0 ? " " : std::string(size_t(each.blanks), ' ');
  }
  if (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

/// The name and the text of the attributes.
inline std::pair<std::string, std::string> SplitSimpleTag(std::string text) {
  if (!text.empty() && text.front() == '<') text.erase(0, 1);
  if (!text.empty() && text.back() == '>') text.pop_back();
  const size_t space = std::min(text.find_first_of(" \r\n"), text.size());
  std::string name = text.substr(0, space);
  std::string rest = space < text.size() ? text.substr(space + 1) : "";
  if (!rest.empty() && (rest[0] == '\r' || rest[0] == '\n')) rest.erase(0, 1);
  if (!name.empty() && name.back() == '/') name.pop_back();
  return {name, rest};
}

struct TSimpleTag {
  std::string name;
  std::vector<TSimpleAttr> attributes;

  explicit TSimpleTag(const std::string& text)
      : name(SplitSimpleTag(text).first),
        attributes(ReadSimpleAttrs(SplitSimpleTag(text).second)) {}

  /// The first attribute of that name in any letter case; null without one.
  TSimpleAttr* Find(const std::string& wanted) {
    for (TSimpleAttr& each : attributes) {
      if (platform::LowerAnsi(each.name) == platform::LowerAnsi(wanted)) return &each;
    }
    return nullptr;
  }
  std::string ValueOf(const std::string& wanted) {
    const TSimpleAttr* found = Find(wanted);
    return found ? found->value : "";
  }

  std::string Text() const {
    return "<" + name + (attributes.empty() ? "" : " " + WriteSimpleAttrs(attributes)) + ">";
  }
};

}  // namespace quarda
