// The HTML checks do to any page, and tell in the log, what the slow ones over plain strings say.
// The first byte of the input and its size choose the rules, the rest is the page.
#include "SimpleHtmlCheck.h"

using namespace quarda;

namespace {

THtmlLog LogInto(std::string& log) {
  return [&log](int32_t priority, std::string_view message) {
    log += Concat({PriNames[priority], " ", message, "\n"});
  };
}

TCheckedPage Neutralise(const std::string& html, const THtmlRules& rules) {
  TCheckedPage page;
  page.text = NeutraliseHtml(html, rules, LogInto(page.log)).value_or(html);
  return page;
}

TCheckedPage CheckIFrames(const std::string& html, TIFrameBlockMode mode) {
  TCheckedPage page;
  const TIFrameResult result = BlockIFrames(html, mode, LogInto(page.log));
  page.text = result.html.value_or(html);
  page.isVirus = result.isVirus;
  return page;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const size_t choice = data[0] + size;
  const std::string html(fuzz::AsText(data + 1, size - 1));
  const THtmlRules rules{
      (choice & 8) != 0, (choice & 16) != 0, (choice & 32) != 0, {"evil", "Evil"}};
  fuzz::Require(Neutralise(html, rules) == SimpleNeutralise(html, rules), "neutralised");
  const auto mode = static_cast<TIFrameBlockMode>(ibmMarkAsVirus + static_cast<int>(choice % 5));
  fuzz::Require(CheckIFrames(html, mode) == SimpleIFrames(html, mode), "frames");
  return 0;
}
