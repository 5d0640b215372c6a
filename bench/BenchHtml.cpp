// How fast pages are scanned and made harmless, beside libxml2's push parser; and whether hostile
// pages cost more for a byte than an ordinary one.
#include <HtmlNeutraliser.h>
#include <MiniHtmlParser.h>

#include <algorithm>
#include <cstdio>
#include <functional>

#include "HtmlPages.h"
#include "Libxml2Reader.h"
#include "Measure.h"

namespace quarda::bench {

namespace {

constexpr size_t kPageSize = 1 << 20;
constexpr double kScanLead = 12;
constexpr double kNeutraliseLead = kScanLead / 2;
constexpr double kHostileUpTo = 5;

size_t CountTags(const std::string& html) {
  THtmlParser parser;
  parser.SetText(html);
  size_t tags = 0;
  while (parser.Next()) ++tags;
  return tags;
}

/// Counts the log lines and the bytes left.
size_t Neutralise(const std::string& html, bool alwaysRemoveScripts) {
  size_t seen = 0;
  const THtmlRules rules = {true, true, alwaysRemoveScripts, {"evil", "worm"}};
  const auto changed = NeutraliseHtml(html, rules, [&](int32_t, std::string_view) { ++seen; });
  return seen + (changed ? changed->size() : html.size());
}

size_t RemoveFrames(const std::string& html, TIFrameBlockMode mode) {
  size_t seen = 0;
  const TIFrameResult result = BlockIFrames(html, mode, [&](int32_t, std::string_view) { ++seen; });
  return seen + (result.html ? result.html->size() : html.size());
}

struct TCheck {
  std::string name;
  std::function<size_t(const std::string&)> run;
};

std::vector<TCheck> Checks() {
  return {
      {"text part", [](const std::string& html) { return Neutralise(html, true); }},
      {"attachment", [](const std::string& html) { return Neutralise(html, false); }},
      {"frames: comment",
       [](const std::string& html) { return RemoveFrames(html, ibmCommentAll); }},
      {"frames: remove", [](const std::string& html) { return RemoveFrames(html, ibmRemove); }}};
}

std::string WithGoal(double figure, double goal) {
  char text[48];
  std::snprintf(text, sizeof text, "%.2f x (%g)", figure, goal);
  return text;
}

void MeasureSpeed() {
  const std::string page = FriendlyPage(kPageSize);
  const bool hasOther = Libxml2Elements(page) != 0;
  std::vector<TWork> works = {
      {"scan for tags", [&] { return CountTags(page); }},
      {"neutralise a text part", [&] { return Neutralise(page, true); }},
      {"neutralise an attachment", [&] { return Neutralise(page, false); }},
      {"remove inline frames", [&] { return RemoveFrames(page, ibmRemove); }}};
  if (hasOther) works.push_back({"libxml2 push parser", [&] { return Libxml2Elements(page); }});
  const std::vector<double> seconds = MedianSeconds(works);
  PrintTitle("An ordinary page of 1 MB");
  PrintRow({"", "speed", "x libxml2 (goal)"});
  for (size_t i = 0; i < works.size(); ++i) {
    const double goal = i == 0 ? kScanLead : kNeutraliseLead;
    const bool isOther = hasOther && i + 1 == works.size();
    PrintRow({works[i].name, MegabytesPerSecond(static_cast<double>(page.size()), seconds[i]),
              hasOther && !isOther ? WithGoal(seconds.back() / seconds[i], goal) : "-"});
  }
  if (!hasOther) std::printf("note: libxml2 was not there when this was built\n");
}

/// Nanoseconds for a byte: of an ordinary page, and of a hostile one at the same size and twice it.
struct TCost {
  double ordinary, hostile, twiceAsLong;
};

/// The three take turns: what else the machine does meets all of them alike.
TCost CostOf(const TCheck& check, const std::string& ordinary, const std::string& hostile,
             const std::string& twiceAsLong) {
  std::vector<TWork> works;
  for (const std::string* html : {&ordinary, &hostile, &twiceAsLong}) {
    works.push_back({"", [&check, html] { return check.run(*html); }});
  }
  const std::vector<double> seconds = MedianSeconds(works, 9);
  const auto perByte = [&](size_t i, const std::string& html) {
    return seconds[i] * 1e9 / static_cast<double>(html.size());
  };
  return {perByte(0, ordinary), perByte(1, hostile), perByte(2, twiceAsLong)};
}

void MeasureHostilePages() {
  PrintTitle(
      "Hostile pages: ns/byte at 1 MB, ns/byte at 2 MB, times an ordinary page of 1 MB (goal: 5)");
  std::vector<std::string> row = {""};
  for (const TCheck& check : Checks()) row.push_back(check.name);
  row.push_back("worst (goal)");
  PrintRow(row);
  const std::string ordinary = FriendlyPage(kPageSize);
  for (const TPage& page : HostilePages()) {
    const std::string html = page.make(kPageSize);
    const std::string longer = page.make(2 * kPageSize);
    row = {std::string(page.name)};
    double worst = 0;
    for (const TCheck& check : Checks()) {
      const TCost cost = CostOf(check, ordinary, html, longer);
      const double times = cost.hostile / cost.ordinary;
      char text[48];
      std::snprintf(text, sizeof text, "%.2f %.2f %.1f x", cost.hostile, cost.twiceAsLong, times);
      row.emplace_back(text);
      worst = std::max(worst, times);
    }
    row.push_back(WithGoal(worst, kHostileUpTo));
    PrintRow(row);
  }
}

}  // namespace

}  // namespace quarda::bench

int main() {
  quarda::bench::MeasureSpeed();
  quarda::bench::MeasureHostilePages();
}
