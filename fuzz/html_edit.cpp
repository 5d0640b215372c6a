// Any series of edits leaves the same text and place as on one plain string. The first part of the
// input (up to a NUL, else all but its end) is the page, the rest chooses the operations.
#include "HtmlReference.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace quarda;
  const std::string_view input = fuzz::AsText(data, size);
  const size_t end = std::min(input.find('\0'), input.size() - std::min<size_t>(size / 2, 600));
  const std::string_view html = input.substr(0, end);
  std::string_view choices = input.substr(end);
  PlayHtmlEdits(std::string(html), static_cast<int>(choices.size() / 3), [&](size_t limit) {
    if (choices.empty()) return size_t{0};
    const auto choice = static_cast<unsigned char>(choices.front());
    choices.remove_prefix(1);
    return choice * (1 + limit / 256) % limit;
  });
  return 0;
}
