// The list of attributes holds, finds and writes what the slow reader over a plain string says, and
// so does the reading of a tag in place; what was read and written comes back the same.
#include <MiniHtmlParser.h>
#include <TagText.h>

#include <string>

#include "Fuzz.h"
#include "SimpleTag.h"

using namespace quarda;

namespace {

void CompareList(const std::string& text) {
  TAttrList list;
  list.SetAsString(text);
  const std::string proper = list.GetAsProperString();
  fuzz::Require(proper.find_first_of("\r\n") == proper.npos, "one line");
  fuzz::Require(list.GetAsString() == text, "an unread text stays");
  const std::vector<TSimpleAttr> simple = ReadSimpleAttrs(text);
  fuzz::Require(static_cast<size_t>(list.GetCount()) == simple.size(), "count");
  for (size_t i = 0; i < simple.size(); ++i) {
    const auto index = static_cast<int32_t>(i);
    fuzz::Require(list.GetNames(index) == simple[i].name, "name");
    fuzz::Require(list.GetValues(index) == simple[i].value, "value");
    fuzz::Require(list.GetAttrStrings(index) == simple[i].Text(), "attribute");
  }
  fuzz::Require(list.GetAsString() == WriteSimpleAttrs(simple), "written anew");
}

void CompareTag(const std::string& tagText) {
  TSimpleTag simple(tagText);
  std::pair<std::string, std::string> parts, single;
  TagStringToComponents(tagText, parts.first, parts.second);
  fuzz::Require(parts == SplitSimpleTag(tagText), "name and attributes");
  TAttrList::ParseOne(parts.second, single.first, single.second);
  const TSimpleAttr split = SplitSimpleAttr(parts.second);
  fuzz::Require(single == std::pair(split.name, split.value), "one attribute");
  const TAttrListGuardRef tag = ParseTag(tagText, 1, 2);
  fuzz::Require(tag->GetTagName() == simple.name, "the tag's name");
  for (const TSimpleAttr& each : simple.attributes) {
    const std::string name = platform::UpperAnsi(each.name);
    fuzz::Require(tag->GetAttrList().GetValue(name) == simple.ValueOf(name), "value by name");
    fuzz::Require(ValueOf(SplitTag(tagText).attributes, name) == simple.ValueOf(name), "in place");
  }
  fuzz::Require(tag->GetAsString() == simple.Text(), "tag");
  // One attribute changes: the others keep their text, whichever way the tag is written.
  std::string written;
  size_t left = simple.attributes.size() / 2;
  AppendTag(written, "<" + simple.name + " ", SplitTag(tagText).attributes, [&](const TAttrView&) {
    return left-- == 0 ? std::optional<std::string_view>("=v") : std::nullopt;
  });
  if (!simple.attributes.empty()) {
    TSimpleAttr& changed = simple.attributes[simple.attributes.size() / 2];
    changed = {changed.name, "v"};
  }
  fuzz::Require(written == simple.Text(), "tag written in place");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(fuzz::AsText(data, size));
  CompareList(text);
  CompareTag(text);
  CompareTag("<x " + text + ">");
  return 0;
}
