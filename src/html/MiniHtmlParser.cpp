#include "MiniHtmlParser.h"

#include <CodePage.h>
#include <Files.h>

#include <algorithm>
#include <utility>

namespace quarda {

void THtmlParser::SetText(std::string text) {
  text_ = TEditableText(std::move(text));
  tags_ = TTagIndex();
  noMark_ = kNowhere;
  SetIndex(1);
}

void THtmlParser::SetIndex(int32_t position) noexcept {
  tagStart_ = position;
  index_ = position;
}

size_t THtmlParser::Offset(int32_t position) const noexcept {
  return std::min(static_cast<size_t>(std::max(position, 1) - 1), text_.Size());
}

bool THtmlParser::Next() {
  tagStart_ = index_;
  const TTagSpan tag = TTagScan(text_, noMark_).Next(Offset(index_));
  if (!tag) return false;
  tagStart_ = static_cast<int32_t>(tag.start + 1);
  index_ = static_cast<int32_t>(tag.end + 1);
  return true;
}

std::string THtmlParser::GetTag() const { return text_.Slice(Offset(tagStart_), Offset(index_)); }

TAttrListGuardRef THtmlParser::Get() const { return ParseTag(GetTag(), tagStart_, index_ - 1); }

void THtmlParser::GotoTag(const TAttrListGuardRef& tag) {
  if (!tag) return;
  tagStart_ = tag->GetStart();
  index_ = tag->GetEnd() + 1;
}

bool THtmlParser::GotoClosingTag() {
  if (index_ == 1) return false;
  const std::string name = platform::UpperAnsi(TagNameOf(GetTag()));
  const size_t from = Offset(index_);
  auto closing = tags_.FindClosing(from, name);
  if (!closing) {
    tags_.Build(text_, from, noMark_);
    closing = tags_.FindClosing(from, name);
  }
  if (closing->found || closing->start != from) index_ = static_cast<int32_t>(closing->end + 1);
  tagStart_ = closing->found ? static_cast<int32_t>(closing->start + 1) : index_;
  return closing->found;
}

void THtmlParser::Edit(int32_t from, int32_t to, std::string_view text) {
  const size_t start = Offset(from);
  const size_t end = std::max(start, Offset(to));
  if (start == end && text.empty()) return;
  text_.Replace(start, end, text);
  const size_t before = start > 0 ? start - 1 : 0;
  const size_t mark = text_.Slice(before, start + text.size() + 1).rfind("?>");
  const bool madeMark = mark != std::string::npos;
  tags_.Edit(start, end, text, madeMark);
  if (noMark_ != kNowhere) {
    noMark_ = end <= noMark_ ? noMark_ - (end - start) + text.size() : std::min(noMark_, start);
    if (madeMark) noMark_ = std::max(noMark_, before + mark + 1);
  }
}

void THtmlParser::DeleteTag() {
  Edit(tagStart_, index_, {});
  index_ = tagStart_;
}

void THtmlParser::DeleteFrom(int32_t position) {
  Edit(position, index_, {});
  SetIndex(position);
}

void THtmlParser::DeleteTagSpan(const TAttrListGuardRef& startTag,
                                const TAttrListGuardRef& endTag) {
  if (!startTag) return;
  GotoTag(endTag ? endTag : startTag);
  DeleteFrom(startTag->GetStart());
}

void THtmlParser::Insert(std::string_view text) { Edit(index_, index_, text); }

void THtmlParser::ReplaceTag(std::string_view text) {
  Edit(tagStart_, index_, text);
  index_ = tagStart_;
}

void THtmlParser::ReplaceTag(const TAttrListGuardRef& tag) { ReplaceTag(tag->GetAsString()); }

void THtmlParser::SetTagOuterHTML(std::string_view text) {
  const int32_t start = tagStart_;
  const int32_t end = index_;
  if (!GotoClosingTag()) index_ = end;
  Edit(start, index_, text);
  SetIndex(start);
}

std::string SubStr(std::string_view text, int32_t start, int32_t end) {
  const size_t first = static_cast<size_t>(std::max(start, 1)) - 1;
  if (end < start || first >= text.size() || end < 1) return {};
  return std::string(text.substr(first, static_cast<size_t>(end) - first));
}

std::string ReadFileToString(std::string_view fileName) {
  return platform::ReadWholeFile(fileName);
}

void WriteFileFromString(std::string_view fileName, std::string_view content) {
  platform::TFile file(fileName, platform::TOpenMode::kCreate);
  file.Write(content.data(), content.size());
}

}  // namespace quarda
