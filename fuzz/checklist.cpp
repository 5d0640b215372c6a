// Any text is a check list; what is written of it is read again as the same lists.
#include <CheckListFile.h>

#include <array>
#include <string>

#include "Fuzz.h"
#include "TestInstance.h"

using quarda::IStringList;
using quarda::TClfFile;
using quarda::fuzz::Require;

namespace {

std::array<IStringList*, 5> ListsOf(const TClfFile& file) {
  return {file.GetInvalidAttachments(), file.GetSuspiciousSubjects(),
          file.GetNoSuspiciousSubjects(), file.GetVirusSubjects(), file.GetNoVirusSubjects()};
}

std::string Rules(const TClfFile& file) {
  std::string rules = file.GetFileTime();
  for (IStringList* list : ListsOf(file)) rules += "\n\n" + file.NormalList(list)->GetText().Str();
  return rules;
}

std::string Lines(const TClfFile& file) {
  std::string lines = file.GetFileTime();
  for (IStringList* list : ListsOf(file)) lines += "\n\n" + list->GetText().Str();
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const auto scan = quarda::MakeRef<quarda::TTestInstance>();
  const std::string path = scan->folder.Path("Quarda.clf");
  const auto lines = scan->NewStringList();
  lines->SetText(quarda::fuzz::AsText(data, size));

  TClfFile read(*scan);
  read.LoadFromStrings(lines.Get());
  read.Save(path);
  TClfFile once(*scan);
  once.Load(path);
  Require(Rules(once) == Rules(read), "a saved list has the same rules");

  // The first saving ends each list with an empty line, which a comment at its end keeps.
  once.Save(path);
  TClfFile twice(*scan);
  twice.Load(path);
  Require(Lines(twice) == Lines(once), "a saved list has the same lines");
  return 0;
}
