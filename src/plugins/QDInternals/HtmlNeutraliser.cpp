// Edits never change where the tags behind them begin and end, nor which closing tag belongs to
// which start tag: an element is renamed or removed as a whole, and whoever walks forward has the
// edits behind him, but for closing tags that were renamed together with their start tags. So each
// page is scanned once, the wanted tags are paired like brackets, and what comes out is copied from
// the page around the edits. The cost is one scan, whatever the page holds.
#include "HtmlNeutraliser.h"

#include <CodePage.h>
#include <MiniHtmlParser.h>
#include <TagText.h>
#include <Utils.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <deque>
#include <utility>

namespace quarda {
namespace {

constexpr std::string_view kObjectDeactivated = "ActiveX element deactivated.";
constexpr std::string_view kScriptRemoved = "Script removed.";
constexpr std::string_view kFrameRetagged = "iframe found and changed to a comment.";
constexpr std::string_view kFrameJudged = "iframe found and marked as virus.";
constexpr std::string_view kFrameIgnored = "Http-iframe found and ignored.";
constexpr std::string_view kFrameRemoved = "iframe found and removed.";

// What becomes of an attribute of a renamed tag.
constexpr std::optional<std::string_view> kUnchanged;
constexpr std::optional<std::string_view> kNoValue = "=\"\"";

// What makes an object an ActiveX one.
constexpr std::string_view kClass = "classid";

// An element that is made harmless, and the name that no browser knows. All names have six letters.
struct TElement {
  std::string_view name;
  std::string_view newStart;
  std::string_view newClosingTag;
};
constexpr TElement kObject = {"object", "<block_object ", "</block_object>"};
constexpr TElement kScript = {"script", "<block_script ", "</block_script>"};
constexpr TElement kFrame = {"iframe", "<block_iframe ", "</block_iframe>"};

constexpr size_t kNameSize = kObject.name.size();
static_assert(kScript.name.size() == kNameSize && kFrame.name.size() == kNameSize);

// Of one size, known to the compiler, which then copies it without a call.
std::string_view NewStart(const TElement& element) {
  constexpr size_t kSize = kObject.newStart.size();
  static_assert(kScript.newStart.size() == kSize && kFrame.newStart.size() == kSize);
  return {element.newStart.data(), kSize};
}

// The first letters of a text as one number, letter case apart: it equals that of a name only when
// the letters do.
uint64_t SmallLetters(const char* text) noexcept {
  uint32_t first;
  uint16_t rest;
  static_assert(sizeof first + sizeof rest == kNameSize);
  std::memcpy(&first, text, sizeof first);
  std::memcpy(&rest, text + sizeof first, sizeof rest);
  return (first | uint64_t{rest} << 32) | 0x202020202020u;
}

// What a renamed tag mostly grows by: its new name is longer, and so may be a class in quotes.
constexpr size_t kGrowth = 8;

// What a script may write that a page needs.
constexpr std::string_view kWrittenElements[] = {"<object", "<iframe", "<script"};

// A tag that opens or closes a wanted element. A page has many of them: offsets stay small.
struct TWantedTag {
  uint32_t start = 0;
  uint32_t end = 0;
  uint32_t partner = 0;  // its closing tag; a start tag left open has the one open before it
  uint8_t element = 0;
  bool closes = false;
  bool renamed = false;
};

// It grows without moving: a page of nothing but tags fills more memory with them than it has.
using TWantedTags = std::deque<TWantedTag>;

// Whether the text goes on like that, which is in small letters.
bool GoesOnWith(std::string_view text, size_t at, std::string_view small) {
  return at + small.size() <= text.size() &&
         std::ranges::equal(text.substr(at, small.size()), small,
                            [](char c, char other) { return platform::LowerAnsi(c) == other; });
}

// The rest of a tag behind its name. A slash there counts to the name.
inline std::string_view AttributesBehind(std::string_view html, size_t nameEnd, size_t tagEnd) {
  std::string_view rest = html.substr(nameEnd, tagEnd - nameEnd);
  if (rest.ends_with('>')) rest.remove_suffix(1);
  if (rest.starts_with('/')) rest.remove_prefix(1);
  return rest;
}

using TElements = std::vector<const TElement*>;

// Finds and pairs the tags of the given elements, whose names differ in the first letter.
class TTagFinder {
 public:
  TTagFinder(std::string_view html, const TElements& elements)
      : html_(html), open_(elements.size(), 0) {
    kinds_['/'] = kSlash;
    kinds_['!'] = kinds_['?'] = kMarked;  // may begin a comment or an instruction
    for (const TElement* element : elements) {
      letters_.push_back(SmallLetters(element->name.data()));
      const char first = element->name.front();
      for (const char c : {first, platform::UpperAnsi(first)}) {
        kinds_[static_cast<unsigned char>(c)] = static_cast<uint8_t>(letters_.size());
      }
    }
  }

  // In their order, from 1.
  TWantedTags Find() {
    const TStringSource source(html_);
    size_t noMark = kNowhere;
    TScan scan(source, noMark);
    for (size_t at = 0; (at = scan.FindStart(at)) != kNowhere;) {
      // Most tags are of no interest and end like any tag.
      at = KindOf(at + 1) == 0 ? scan.FindTagEnd(at + 1) : PassTag(scan, at);
    }
    return std::move(tags_);
  }

 private:
  using TScan = TTagScan<TStringSource>;
  static constexpr uint8_t kSlash = 254;
  static constexpr uint8_t kMarked = 255;

  char CharAt(size_t at) const noexcept { return at < html_.size() ? html_[at] : '\0'; }
  uint8_t KindOf(size_t at) const noexcept {
    return kinds_[static_cast<unsigned char>(CharAt(at))];
  }

  // Notes the tag when it is wanted. Gives the place behind it.
  size_t PassTag(TScan& scan, size_t at) {
    if (KindOf(at + 1) == kMarked) return scan.TagAt(at).end;
    const bool closes = html_[at + 1] == '/';
    const size_t nameStart = at + (closes ? 2 : 1);
    const uint8_t element = ElementAt(nameStart);
    if (element == 0) return scan.FindTagEnd(nameStart);
    const size_t nameEnd = nameStart + kNameSize;
    const bool endsNext = CharAt(nameEnd) == '>';
    const size_t end = endsNext ? nameEnd + 1 : std::min(scan.FindTagEnd(nameEnd), html_.size());
    if (endsNext || IsNameEnd(nameEnd, end)) {
      Add({.start = static_cast<uint32_t>(at),
           .end = static_cast<uint32_t>(end),
           .element = static_cast<uint8_t>(element - 1),
           .closes = closes});
    }
    return end;
  }

  // The element, from 1, whose name stands there; 0 for none.
  uint8_t ElementAt(size_t at) const noexcept {
    const uint8_t element = KindOf(at);
    const bool isWhole = element != 0 && element < kSlash && html_.size() - at >= kNameSize &&
                         SmallLetters(&html_[at]) == letters_[element - 1];
    return isWhole ? element : uint8_t{0};
  }

  bool IsNameEnd(size_t nameEnd, size_t tagEnd) const {
    const std::string_view rest = AttributesBehind(html_, nameEnd, tagEnd);
    return rest.empty() || EndsTagName(rest.front());
  }

  // A closing tag belongs to the last start tag of its name that is still open.
  void Add(TWantedTag tag) {
    const auto added = static_cast<uint32_t>(tags_.size());
    uint32_t& open = open_[tag.element];
    if (!tag.closes) {
      tag.partner = std::exchange(open, added);
    } else if (open != 0) {
      open = std::exchange(tags_[open].partner, added);
    }
    tags_.push_back(tag);
  }

  const std::string_view html_;
  std::vector<uint64_t> letters_;  // of the names
  // By the letter behind "<": elements, from 1, by the first letter of the name; or a mark.
  std::array<uint8_t, 256> kinds_{};
  std::vector<uint32_t> open_;  // for each element: the last start tag that nothing closed so far
  TWantedTags tags_ = TWantedTags(1);  // 0 is none
};

// Walks through the start tags of the given elements and builds the changed page. Borrows the page,
// which is smaller than 4 GB.
class TPageWalk {
 public:
  TPageWalk(std::string_view html, TElements elements)
      : html_(html), elements_(std::move(elements)), tags_(TTagFinder(html, elements_).Find()) {}

  // Goes to the next start tag that is still there.
  bool Next() {
    while (++current_ != tags_.end()) {
      ++at_;
      const TWantedTag& tag = *current_;
      if (tag.start < done_) continue;  // removed with its element
      if (!tag.closes && tag.start >= passedUpTo_) return Show(tag);
      if (!tag.renamed) continue;
      StartReplacing(tag);
      changed_ += elements_[tag.element]->newClosingTag;
      Finish(tag.end);
    }
    return false;
  }

  const TElement& Element() const { return *elements_[current_->element]; }
  std::string_view Attributes() const { return attributes_; }
  bool IsClosed() const { return current_->partner > at_; }

  // What stands in a closed element, with the edits made so far.
  std::string Content() const {
    std::string content;
    const uint32_t closing = current_->partner;
    size_t done = current_->end;
    for (uint32_t i = at_ + 1; i < closing; ++i) {
      const TWantedTag& tag = tags_[i];
      if (!tag.renamed) continue;
      content.append(html_.substr(done, tag.start - done));
      content.append(elements_[tag.element]->newClosingTag);
      done = tag.end;
    }
    return content.append(html_.substr(done, tags_[closing].start - done));
  }

  // Gives the element its new name; the start tag is written anew.
  void Rename() {
    StartReplacing(*current_);
    AppendTag(changed_, NewStart(Element()), attributes_,
              [](const TAttrView&) { return kUnchanged; });
    FinishRenaming();
  }

  // Does so with an element whose first attribute of that name has a value, which gets lost. False,
  // and nothing happens, without one.
  bool RenameWithout(std::string_view name) {
    if (attributes_.empty()) return false;
    StartReplacing(*current_);
    const size_t before = changed_.size();
    std::optional<bool> hadValue;
    AppendTag(changed_, NewStart(Element()), attributes_, [&](const TAttrView& attribute) {
      const bool isNamed = attribute.name == name || platform::SameAnsiText(attribute.name, name);
      if (hadValue || !isNamed) return kUnchanged;
      hadValue = !attribute.value.empty();
      return kNoValue;
    });
    if (hadValue.value_or(false)) {
      FinishRenaming();
      return true;
    }
    changed_.resize(before);
    return false;
  }

  // Removes the element, or the start tag alone when nothing closes it.
  void Remove() {
    StartReplacing(*current_);
    Finish(EndOfElement());
  }

  // Shows nothing of what stands in a closed element.
  void Pass() { passedUpTo_ = EndOfElement(); }

  // The changed page, when the walk is over; nothing without a change.
  std::optional<std::string> Result() {
    if (!modified_) return std::nullopt;
    return std::move(changed_.append(html_.substr(done_)));
  }

 private:
  bool Show(const TWantedTag& tag) {
    attributes_ = AttributesBehind(html_, tag.start + 1 + kNameSize, tag.end);
    return true;
  }
  size_t EndOfElement() const { return IsClosed() ? tags_[current_->partner].end : current_->end; }

  // Copies what stands in front of the tag.
  void StartReplacing(const TWantedTag& tag) {
    if (!modified_) changed_.reserve(html_.size() + tags_.size() * kGrowth);
    if (tag.start > done_) changed_.append(html_.substr(done_, tag.start - done_));
    done_ = tag.start;
  }
  void FinishRenaming() {
    if (IsClosed()) tags_[current_->partner].renamed = true;
    Finish(current_->end);
  }
  void Finish(size_t end) {
    modified_ = true;
    done_ = end;
  }

  const std::string_view html_;
  const TElements elements_;
  TWantedTags tags_;
  TWantedTags::const_iterator current_ = tags_.begin();
  uint32_t at_ = 0;              // its index
  std::string_view attributes_;  // of the current tag
  size_t passedUpTo_ = 0;
  std::string changed_;
  size_t done_ = 0;  // up to there the page is copied, changed or removed
  bool modified_ = false;
};

TElements ElementsFor(const THtmlRules& rules) {
  TElements elements;
  if (rules.disableActiveX) elements.push_back(&kObject);
  if (rules.disableScripts) elements.push_back(&kScript);
  return elements;
}

bool WritesElements(std::string_view script) {
  for (size_t at = 0; (at = script.find('<', at)) != std::string_view::npos; ++at) {
    if (std::ranges::any_of(kWrittenElements, [&](std::string_view written) {
          return GoesOnWith(script, at, written);
        })) {
      return true;
    }
  }
  return false;
}

bool IsBlocked(std::string_view script, const std::vector<std::string>& entries) {
  if (entries.empty()) return false;
  const std::string text = platform::LowerAnsi(script);
  return std::ranges::any_of(
      entries, [&](const std::string& entry) { return text.find(entry) != std::string::npos; });
}

bool MayStay(const TPageWalk& script, const THtmlRules& rules) {
  if (rules.alwaysRemoveScripts || !script.IsClosed()) return false;
  const std::string text = script.Content();
  return WritesElements(text) && !IsBlocked(text, rules.blockedScripts);
}

enum class TFrameAction { kIgnore, kJudge, kRetag, kRemove };

TFrameAction ActionFor(TIFrameBlockMode mode, bool isHttp) noexcept {
  switch (mode) {
    case ibmAllowHttp:
      return isHttp ? TFrameAction::kIgnore : TFrameAction::kJudge;
    case ibmCommentAll:
      return TFrameAction::kRetag;
    case ibmCommentHttp:
      return isHttp ? TFrameAction::kRetag : TFrameAction::kJudge;
    case ibmRemove:
      return TFrameAction::kRemove;
    default:
      return TFrameAction::kJudge;
  }
}

bool HasHttpSource(std::string_view attributes) {
  if (attributes.empty()) return false;
  const std::string source = DelQuotes(ValueOf(attributes, "src"));
  return platform::SameAnsiText(std::string_view(source).substr(0, 7), "http://");
}

}  // namespace

std::optional<std::string> NeutraliseHtml(std::string_view html, const THtmlRules& rules,
                                          const THtmlLog& log) {
  TPageWalk walk(html, ElementsFor(rules));
  while (walk.Next()) {
    if (&walk.Element() == &kObject) {
      if (!walk.RenameWithout(kClass)) continue;
      log(kLogWarning, kObjectDeactivated);
    } else if (MayStay(walk, rules)) {
      walk.Pass();
    } else {
      walk.Remove();
      log(kLogWarning, kScriptRemoved);
    }
  }
  return walk.Result();
}

TIFrameResult BlockIFrames(std::string_view html, TIFrameBlockMode mode, const THtmlLog& log) {
  TPageWalk walk(html, {&kFrame});
  while (walk.Next()) {
    switch (ActionFor(mode, HasHttpSource(walk.Attributes()))) {
      case TFrameAction::kIgnore:
        log(kLogExtended, kFrameIgnored);
        break;
      case TFrameAction::kJudge:
        log(kLogWarning, kFrameJudged);
        return {.isVirus = true, .html = std::nullopt};
      case TFrameAction::kRetag:
        walk.Rename();
        log(kLogWarning, kFrameRetagged);
        break;
      case TFrameAction::kRemove:
        log(kLogWarning, kFrameRemoved);
        walk.Remove();
    }
  }
  return {.isVirus = false, .html = walk.Result()};
}

}  // namespace quarda
