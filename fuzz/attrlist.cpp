// An attribute text that was read and written comes back the same when it is read and written
// again, and the attributes keep their names and values.
#include <MiniHtmlParser.h>

#include <string>
#include <vector>

#include "Fuzz.h"

namespace {

std::string Written(std::string_view text, quarda::TAttrList& list) {
  list.SetAsString(std::string(text));
  quarda::fuzz::Require(list.GetAsString() == text, "an unread text stays");
  list.GetCount();
  return list.GetAsString();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace quarda;
  const std::string_view text = fuzz::AsText(data, size);
  TAttrList list;
  const std::string proper = (list.SetAsString(std::string(text)), list.GetAsProperString());
  fuzz::Require(proper.find_first_of("\r\n") == proper.npos, "one line");
  fuzz::Require(proper.size() <= text.size(), "nothing added");
  const std::string once = Written(text, list);
  for (int32_t i = 0; i < list.GetCount(); ++i) {
    const std::string name = list.GetNames(i), attribute = list.GetAttrStrings(i);
    const std::string value = list.GetValues(i);
    fuzz::Require(attribute == (value.empty() ? name : name + "=" + value), "name and value");
    const int32_t first = list.FindAttribute(name, false);
    fuzz::Require(first >= 0 && first <= list.FindAttribute(name, true), "the first of its name");
  }
  TAttrList again;
  fuzz::Require(Written(once, again).size() <= once.size(), "writing again adds nothing");
  while (list.Delete(0)) {
  }
  fuzz::Require(list.GetAsString().empty(), "all deleted");
  std::string tag = "<x " + once + ">", name, rest;
  TagStringToComponents(tag, name, rest);
  fuzz::Require(name == "x", "the name before the attributes");
  return 0;
}
