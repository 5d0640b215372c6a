// The HTML scanner told once more, slowly, over one plain string; and a player of random
// operations on both scanners.
#pragma once

#include <CodePage.h>
#include <MiniHtmlParser.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Fuzz.h"
#include "SimpleTag.h"

namespace quarda {

struct TReferenceParser {
  std::string text;
  int tagStart = 0, index = 0;

  void SetIndex(int position) { tagStart = index = position; }

  bool Next() {
    tagStart = index;
    const size_t open = text.find('<', static_cast<size_t>(std::max(index, 1) - 1));
    if (open == std::string::npos) return false;
    tagStart = static_cast<int>(open + 1);
    index = static_cast<int>(EndOf(open) + 1);
    return true;
  }

  size_t EndOf(size_t open) const {
    if (text.compare(open + 1, 3, "!--") == 0) {
      const size_t mark = text.find("-->", open + 1);
      return mark == std::string::npos ? text.size() : mark + 3;
    }
    if (text.compare(open + 1, 1, "?") == 0 && open + 2 < text.size() &&
        std::isalpha(static_cast<unsigned char>(text[open + 2]))) {
      const size_t mark = text.find("?>", open + 2);
      if (mark != std::string::npos) return mark + 2;
    }
    bool inDouble = false, inSingle = false;
    for (size_t i = open + 1; i < text.size(); ++i) {
      if (text[i] == '"' && !inSingle) inDouble = !inDouble;
      if (text[i] == '\'' && !inDouble) inSingle = !inSingle;
      if (text[i] == '>' && !inDouble && !inSingle) return i + 1;
    }
    return text.size();
  }

  std::string GetTag() const {
    const int first = std::max(tagStart, 1),
              end = std::min(index, static_cast<int>(text.size()) + 1);
    return first < end
               ? text.substr(static_cast<size_t>(first - 1), static_cast<size_t>(end - first))
               : "";
  }

  std::string UpperName() const { return platform::UpperAnsi(SplitSimpleTag(GetTag()).first); }

  bool GotoClosingTag() {
    if (index == 1) return false;
    const std::string name = UpperName();
    for (int depth = 1; Next();) {
      const std::string found = UpperName();
      if (found == "/" + name && --depth == 0) return true;
      if (found == name) ++depth;
    }
    return false;
  }

  void Replace(int from, int to, const std::string& by) {
    const int size = static_cast<int>(text.size());
    from = std::clamp(from, 1, size + 1);
    to = std::clamp(to, from, size + 1);
    text.replace(static_cast<size_t>(from - 1), static_cast<size_t>(to - from), by);
  }

  void ReplaceTag(const std::string& by) {
    Replace(tagStart, index, by);
    index = tagStart;
  }

  void DeleteFrom(int position) {
    Replace(position, index, "");
    SetIndex(position);
  }

  void SetTagOuterHTML(const std::string& by) {
    const int start = tagStart, end = index;
    if (!GotoClosingTag()) index = end;
    DeleteFrom(start);
    Replace(index, index, by);
  }
};

/// Does the same to both scanners, as the numbers that `choose(limit)` gives tell it.
template <class TChoose>
void PlayHtmlEdits(std::string html, int steps, TChoose&& choose) {
  static constexpr const char* kTexts[] = {
      "",   "x",   "<b>", "</b>", "<i a='1' b>", "<b><i></b>", "</i >", "<!-- c -->",  // whole tags
      "<b", "-->", "?>",  "\">'", "<?p ?>",      "<?p>",       "?",     ">"};
  THtmlParser parser;
  TReferenceParser truth{html};
  parser.SetText(std::move(html));
  truth.SetIndex(1);
  TAttrListGuardRef kept;
  const bool wholeTags = choose(2) == 0;  // no edit cuts through a tag
  while (steps-- > 0) {
    const size_t choice = choose(20);
    const std::string text = kTexts[choose(wholeTags ? 8 : std::size(kTexts))];
    size_t place = choose(truth.text.size() + 3);
    if (wholeTags) place = std::min(truth.text.find('<', place), truth.text.size()) + 1;
    const int position = static_cast<int>(place);
    if (choice < 5) {
      fuzz::Require(parser.Next() == truth.Next(), "Next");
    } else if (choice < 8) {
      fuzz::Require(parser.GotoClosingTag() == truth.GotoClosingTag(), "GotoClosingTag");
    } else if (choice == 8) {
      parser.ReplaceTag(text);
      truth.ReplaceTag(text);
    } else if (choice == 9) {
      parser.SetTagOuterHTML(text);
      truth.SetTagOuterHTML(text);
    } else if (choice == 10) {
      parser.Insert(text);
      truth.Replace(truth.index, truth.index, text);
    } else if (choice == 11) {
      parser.DeleteTag();
      truth.ReplaceTag("");
    } else if (choice == 12) {
      parser.DeleteFrom(position);
      truth.DeleteFrom(position);
    } else if (choice == 13 || choice > 15) {
      parser.SetIndex(position);
      truth.SetIndex(position);
      fuzz::Require(parser.Next() == truth.Next(), "Next from anywhere");
    } else if (choice == 14) {
      kept = parser.Get();
    } else if (kept) {  // its positions may be stale by now
      const TAttrListGuardRef end = choose(2) == 0 ? nullptr : parser.Get();
      parser.GotoTag(kept);
      truth.tagStart = kept->GetStart();
      truth.index = kept->GetEnd() + 1;
      if (choose(2) == 0) continue;
      parser.DeleteTagSpan(kept, end);
      if (end) truth.index = end->GetEnd() + 1;
      truth.DeleteFrom(kept->GetStart());
    }
    fuzz::Require(parser.GetTagStart() == truth.tagStart, "start");
    fuzz::Require(parser.GetIndex() == truth.index, "index");
    fuzz::Require(parser.GetTag() == truth.GetTag(), "tag");
  }
  fuzz::Require(parser.GetText() == truth.text, "text");
}

}  // namespace quarda
