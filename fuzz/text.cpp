// Truths of the text functions.
#include <Utils.h>

#include <algorithm>
#include <string>

#include "Fuzz.h"

namespace {

/// What a text is after it went through its escaped form: CR LF and LF CR are CR LF, a lone CR is
/// LF, and a line-break character at the end that belongs to no pair is gone.
std::string AfterEscaping(std::string_view text) {
  std::string result;
  for (size_t i = 0; i < text.size(); ++i) {
    const std::string_view pair = text.substr(i, 2);
    if (pair == "\r\n" || pair == "\n\r") {
      result += "\r\n";
      ++i;
    } else if (text[i] != '\r' && text[i] != '\n') {
      result += text[i];
    } else if (i + 1 < text.size()) {
      result += '\n';
    }
  }
  return result;
}

bool HoldsNoTagOrEntity(std::string_view text) { return text.find_first_of("<&") == text.npos; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace quarda;
  const std::string_view text = fuzz::AsText(data, size);
  fuzz::Require(CTextToText(TextToCText(text)) == AfterEscaping(text), "escapes come back");

  const std::string plain = RemoveHtmlTags(text);
  fuzz::Require(plain.size() <= text.size(), "removing tags adds nothing");
  if (HoldsNoTagOrEntity(text)) fuzz::Require(plain == text, "text without a tag stays");
  if (text.find('&') == text.npos) {
    fuzz::Require(plain.find('<') == std::string::npos, "no tag is left");
  }
  fuzz::Require(RemoveHtmlTags(DelChars(text, "&") + "<a") == RemoveHtmlTags(DelChars(text, "&")),
                "an unclosed tag goes");
  fuzz::Require(ConvHtmlToUml(DelChars(text, ";")) == DelChars(text, ";"), "entities end in ;");

  std::string macros;
  const std::string same = ReplaceMacrosEx(text, [&](std::string& macro) {
    macros += macro;
    macro = "ignored";
    return false;
  });
  fuzz::Require(same == text, "unknown macros stay");
  const std::string without = ReplaceMacrosEx(text, [&](std::string& macro) {
    fuzz::Require(macro.size() >= 2 && std::ranges::count(macro, '$') == 2, "two $, at the ends");
    macro.clear();
    return true;
  });
  fuzz::Require(without.size() + macros.size() == text.size(), "macros go as a whole");
  fuzz::Require(std::ranges::count(without, '$') <= 1, "only an unclosed $ is left");

  std::string broken(text);
  LineBreakToBR(broken);
  fuzz::Require(broken.size() == text.size() + 12 + 5 * size_t(std::ranges::count(text, '\n')),
                "one <br> for each line feed");
  IsEmailFile(text);
  GetHtmlTagAttr(text, "src");
  return 0;
}
