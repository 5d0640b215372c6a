// Edits never change where the tags behind them begin and end, nor which closing tag belongs to
// which start tag: an element is renamed or removed as a whole, and whoever walks forward has the
// edits behind him, but for closing tags that were renamed together with their start tags. So each
// page is scanned once, the wanted tags are paired like brackets, and what comes out is copied from
// the page around the edits. The cost is one scan, whatever the page holds.
#include "HtmlNeutraliser.h"

#include <CodePage.h>
#include <MiniHtmlParser.h>
#include <Utils.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace quarda {
namespace {

constexpr std::string_view kObjectDeactivated = "ActiveX element deactivated.";
constexpr std::string_view kScriptRemoved = "Script removed.";
constexpr std::string_view kFrameRetagged = "iframe found and changed to a comment.";
constexpr std::string_view kFrameJudged = "iframe found and marked as virus.";
constexpr std::string_view kFrameIgnored = "Http-iframe found and ignored.";
constexpr std::string_view kFrameRemoved = "iframe found and removed.";

constexpr std::string_view kObject = "object";
constexpr std::string_view kScript = "script";
constexpr std::string_view kFrame = "iframe";

// What a script may write that a page needs.
constexpr std::string_view kWrittenElements[] = {"<object", "<iframe", "<script"};

constexpr uint32_t kNone = UINT32_MAX;

// A tag that opens or closes an element of a wanted name.
struct TWantedTag {
  size_t start;
  size_t end;
  uint32_t name;
  uint32_t closing = kNone;  // the tag that closes the element
  bool closes = false;
  bool renamed = false;
};

// Walks through the start tags of the elements with the given names (in small letters) and builds
// the changed page. Borrows the page.
class TPageWalk {
 public:
  TPageWalk(std::string_view html, std::vector<std::string_view> names)
      : html_(html), names_(std::move(names)) {
    FindTags();
    PairTags();
  }

  // Goes to the next start tag that is still there.
  bool Next() {
    for (at_ = next_++; at_ < tags_.size(); at_ = next_++) {
      const TWantedTag& tag = tags_[at_];
      if (tag.start < done_) continue;  // removed with its element
      if (!tag.closes && tag.start >= passedUpTo_) return true;
      if (tag.renamed) Replace(tag.start, tag.end, RenamedClosing(tag));
    }
    return false;
  }

  std::string_view Name() const { return names_[tags_[at_].name]; }
  TAttrListGuardRef Tag() const {
    const TWantedTag& tag = tags_[at_];
    return ParseTag(html_.substr(tag.start, tag.end - tag.start),
                    static_cast<int32_t>(tag.start + 1), static_cast<int32_t>(tag.end));
  }
  bool IsClosed() const { return tags_[at_].closing != kNone; }

  // What stands in a closed element, with the edits made so far.
  std::string Content() const {
    std::string content;
    size_t done = tags_[at_].end;
    for (uint32_t i = at_ + 1; i < tags_[at_].closing; ++i) {
      const TWantedTag& tag = tags_[i];
      if (!tag.renamed) continue;
      content.append(html_.substr(done, tag.start - done)).append(RenamedClosing(tag));
      done = tag.end;
    }
    return content.append(html_.substr(done, tags_[tags_[at_].closing].start - done));
  }

  // Gives the element a name that no browser knows; the start tag is written anew.
  void Rename(IAttrListGuard& tag) {
    const TWantedTag& place = tags_[at_];
    if (IsClosed()) tags_[place.closing].renamed = true;
    tag.SetTagName(Concat({"block_", Name()}));
    Replace(place.start, place.end, tag.GetAsString());
  }

  // Removes the element, or the start tag alone when nothing closes it.
  void Remove() { Replace(tags_[at_].start, EndOfElement(), {}); }

  // Shows nothing of what stands in a closed element.
  void Pass() { passedUpTo_ = EndOfElement(); }

  // The changed page, when the walk is over; nothing without a change.
  std::optional<std::string> Result() {
    if (!modified_) return std::nullopt;
    return std::move(changed_.append(html_.substr(done_)));
  }

 private:
  void FindTags() {
    const TStringSource source(html_);
    size_t noMark = kNowhere;
    TTagScan scan(source, noMark);
    size_t from = 0;
    while (const TTagSpan tag = scan.Next(from)) {
      AddIfWanted(tag);
      from = tag.end;
    }
  }

  void AddIfWanted(const TTagSpan& tag) {
    const std::string_view text = html_.substr(tag.start, tag.end - tag.start);
    const size_t before = text.size() > 1 && text[1] == '/' ? 2 : 1;
    for (uint32_t i = 0; i < names_.size(); ++i) {
      // Most tags differ in the first letter; the whole name is looked at only when it can fit.
      const std::string_view name = names_[i];
      if (text.size() < before + name.size() || platform::LowerAnsi(text[before]) != name[0] ||
          !platform::SameAnsiText(text.substr(before, name.size()), name) ||
          TagNameOf(text).size() != before - 1 + name.size()) {
        continue;
      }
      tags_.push_back({.start = tag.start, .end = tag.end, .name = i, .closes = before == 2});
      return;
    }
  }

  // A closing tag belongs to the last start tag of its name that is still open.
  void PairTags() {
    std::vector<std::vector<uint32_t>> open(names_.size());
    for (uint32_t i = 0; i < tags_.size(); ++i) {
      std::vector<uint32_t>& stack = open[tags_[i].name];
      if (!tags_[i].closes) {
        stack.push_back(i);
      } else if (!stack.empty()) {
        tags_[stack.back()].closing = i;
        stack.pop_back();
      }
    }
  }

  size_t EndOfElement() const {
    return IsClosed() ? tags_[tags_[at_].closing].end : tags_[at_].end;
  }
  std::string RenamedClosing(const TWantedTag& tag) const {
    return Concat({"</block_", names_[tag.name], ">"});
  }

  void Replace(size_t from, size_t to, std::string_view text) {
    if (!modified_) changed_.reserve(html_.size());
    modified_ = true;
    changed_.append(html_.substr(done_, from - done_)).append(text);
    done_ = to;
  }

  const std::string_view html_;
  const std::vector<std::string_view> names_;
  std::vector<TWantedTag> tags_;
  uint32_t at_ = 0;
  uint32_t next_ = 0;
  size_t passedUpTo_ = 0;
  std::string changed_;
  size_t done_ = 0;  // up to there the page is copied, changed or removed
  bool modified_ = false;
};

std::vector<std::string_view> NamesFor(const THtmlRules& rules) {
  std::vector<std::string_view> names;
  if (rules.disableActiveX) names.push_back(kObject);
  if (rules.disableScripts) names.push_back(kScript);
  return names;
}

bool IsActiveX(IAttrListGuard& object) { return !object.GetAttrList().GetValue("classid").empty(); }

bool MayStay(const TPageWalk& script, const THtmlRules& rules) {
  if (rules.alwaysRemoveScripts || !script.IsClosed()) return false;
  const std::string text = platform::LowerAnsi(script.Content());
  const auto occurs = [&text](std::string_view part) {
    return text.find(part) != std::string::npos;
  };
  return std::ranges::any_of(kWrittenElements, occurs) &&
         std::ranges::none_of(rules.blockedScripts, occurs);
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

bool HasHttpSource(IAttrListGuard& tag) {
  const std::string source = DelQuotes(tag.GetAttrList().GetValue("src"));
  return platform::SameAnsiText(std::string_view(source).substr(0, 7), "http://");
}

}  // namespace

std::optional<std::string> NeutraliseHtml(std::string_view html, const THtmlRules& rules,
                                          const THtmlLog& log) {
  TPageWalk walk(html, NamesFor(rules));
  while (walk.Next()) {
    if (walk.Name() == kObject) {
      const TAttrListGuardRef tag = walk.Tag();
      if (!IsActiveX(*tag)) continue;
      tag->GetAttrList().SetValue("classid", "\"\"");
      walk.Rename(*tag);
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
  TPageWalk walk(html, {kFrame});
  while (walk.Next()) {
    const TAttrListGuardRef tag = walk.Tag();
    switch (ActionFor(mode, HasHttpSource(*tag))) {
      case TFrameAction::kIgnore:
        log(kLogExtended, kFrameIgnored);
        break;
      case TFrameAction::kJudge:
        log(kLogWarning, kFrameJudged);
        return {.isVirus = true, .html = std::nullopt};
      case TFrameAction::kRetag:
        walk.Rename(*tag);
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
