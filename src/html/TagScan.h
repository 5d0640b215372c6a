// Finding the next tag in a text that is given in stretches.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace quarda {

inline constexpr size_t kNowhere = static_cast<size_t>(-1);

/// A tag, from its "<" (offset from 0) up to behind its ">".
struct TTagSpan {
  size_t start = kNowhere;
  size_t end = 0;
  bool cutOff = false;  ///< the text ended first
  bool loose = false;   ///< begins like a processing instruction, but nothing closes one behind it

  explicit operator bool() const noexcept { return start != kNowhere; }
};

/// What matters inside a tag: its end and quotes.
inline constexpr auto kTagMarks = [] {
  std::array<bool, 256> marks{};
  for (const char c : {'>', '"', '\''}) marks[static_cast<unsigned char>(c)] = true;
  return marks;
}();

/// A plain string as the scanner reads it.
class TStringSource {
 public:
  explicit TStringSource(std::string_view text) : text_(text) {}
  size_t Size() const noexcept { return text_.size(); }
  std::string_view ViewFrom(size_t at) const noexcept {
    return at < text_.size() ? text_.substr(at) : std::string_view();
  }

 private:
  std::string_view text_;
};

/// Scans a source: anything with `Size` and `ViewFrom`. Every "<" starts a tag; comments and
/// processing instructions end at their own marks, all other tags at the first ">" outside quotes.
template <class TSource>
class TTagScan {
 public:
  /// `noMark` is an offset from which on the text holds no "?>"; a search that fails lowers it, so
  /// that a text full of "<?" is not searched again and again.
  TTagScan(const TSource& source, size_t& noMark) : source_(source), noMark_(noMark) {}

  /// The first tag that starts at or behind the offset.
  TTagSpan Next(size_t from) {
    const size_t start = FindStart(from);
    return start == kNowhere ? TTagSpan() : TagAt(start);
  }

  /// The first "<" at or behind the offset, or kNowhere.
  size_t FindStart(size_t from) const noexcept { return Find('<', from); }

  /// The tag of the "<" there.
  TTagSpan TagAt(size_t start) {
    TTagSpan tag;
    tag.start = start;
    const char second = At(start + 1);
    if (second == '!' && StartsWith(start + 2, "--")) {
      tag.end = FindMark("-->", start + 1);
    } else {
      const bool isInstruction = second == '?' && IsLetter(At(start + 2));
      tag.end = isInstruction ? FindInstructionEnd(start + 2) : kNowhere;
      tag.loose = isInstruction && tag.end == kNowhere;
      if (tag.end == kNowhere) tag.end = FindTagEnd(start + 1);
    }
    tag.cutOff = tag.end == kNowhere;
    if (tag.cutOff) tag.end = source_.Size();
    return tag;
  }

  /// Behind the first ">" outside quotes from there on, or kNowhere.
  size_t FindTagEnd(size_t from) const noexcept {
    const std::string_view view = source_.ViewFrom(from);
    const size_t at = FindTagMark(view);
    const bool endsThere = at < view.size() && view[at] == '>';
    return endsThere ? from + at + 1 : FindTagEndBehindQuotes(from + at);
  }

 private:
  static bool IsLetter(char c) noexcept { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

  static size_t FindTagMark(std::string_view view) noexcept {
    const auto isMark = [](char c) { return kTagMarks[static_cast<unsigned char>(c)]; };
    const char* const end = view.data() + view.size();
    return static_cast<size_t>(std::find_if(view.data(), end, isMark) - view.data());
  }

  size_t FindTagEndBehindQuotes(size_t from) const noexcept {
    for (std::string_view view; !(view = source_.ViewFrom(from)).empty();) {
      const size_t at = FindTagMark(view);
      from += at;
      if (at == view.size()) continue;
      if (view[at] == '>') return from + 1;
      from = Find(view[at], from + 1);
      if (from == kNowhere) break;
      ++from;
    }
    return kNowhere;
  }

  char At(size_t at) const noexcept {
    const std::string_view view = source_.ViewFrom(at);
    return view.empty() ? '\0' : view.front();
  }

  bool StartsWith(size_t at, std::string_view text) const noexcept {
    for (const char c : text) {
      if (At(at++) != c) return false;
    }
    return true;
  }

  size_t Find(char c, size_t from) const noexcept {
    while (true) {
      const std::string_view view = source_.ViewFrom(from);
      if (view.empty()) return kNowhere;
      if (view.front() == c) return from;  // a tag often stands right behind another
      const size_t at = view.find(c);
      if (at != std::string_view::npos) return from + at;
      from += view.size();
    }
  }

  /// Behind the first occurrence of the mark, which ends with its only ">".
  size_t FindMark(std::string_view mark, size_t from) const noexcept {
    const size_t before = mark.size() - 1;
    for (size_t at = from + before; (at = Find('>', at)) != kNowhere; ++at) {
      if (StartsWith(at - before, mark.substr(0, before))) return at + 1;
    }
    return kNowhere;
  }

  size_t FindInstructionEnd(size_t from) noexcept {
    if (from >= noMark_) return kNowhere;
    const size_t end = FindMark("?>", from);
    if (end == kNowhere) noMark_ = from;
    return end;
  }

  const TSource& source_;
  size_t& noMark_;
};

}  // namespace quarda
