// Any text is a check list; what is written of it is read again as the same lists.
#include <CheckListFile.h>

#include <array>
#include <string>

#include "Fuzz.h"
#include "TestInstance.h"

using quarda::TClfFile;
using quarda::fuzz::Require;

namespace {

using TLists = std::array<quarda::IStringList*, 5>;

TLists ListsOf(const TClfFile& file) {
  return {file.GetInvalidAttachments(), file.GetSuspiciousSubjects(),
          file.GetNoSuspiciousSubjects(), file.GetVirusSubjects(), file.GetNoVirusSubjects()};
}

void RequireSameRules(const TClfFile& a, const TClfFile& b) {
  for (size_t i = 0; i < TLists().size(); ++i) {
    Require(a.NormalList(ListsOf(a)[i])->GetText() == b.NormalList(ListsOf(b)[i])->GetText(),
            "a saved list has the same rules");
  }
}

void RequireSameLines(const TClfFile& a, const TClfFile& b) {
  for (size_t i = 0; i < TLists().size(); ++i) {
    Require(ListsOf(a)[i]->GetText() == ListsOf(b)[i]->GetText(), "a saved list has its lines");
  }
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
  RequireSameRules(read, once);
  Require(once.GetFileTime() == read.GetFileTime(), "the stamp stays");

  // The first saving ends each list with an empty line, which a comment at its end keeps.
  once.Save(path);
  TClfFile twice(*scan);
  twice.Load(path);
  RequireSameLines(once, twice);
  return 0;
}
