// Any series of edits leaves the same text and place as on one plain string. The first part of the
// input (up to a NUL) is the page, the rest chooses the operations.
#include "HtmlReference.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace quarda;
  const std::string_view input = fuzz::AsText(data, size);
  const std::string_view html = input.substr(0, input.find('\0'));
  std::string_view choices = input.substr(std::min(html.size() + 1, input.size()));
  PlayHtmlEdits(std::string(html), static_cast<int>(choices.size() / 3), [&](size_t limit) {
    if (choices.empty()) return size_t{0};
    const auto choice = static_cast<unsigned char>(choices.front());
    choices.remove_prefix(1);
    return choice * (1 + limit / 256) % limit;
  });
  return 0;
}
