#include "PifFile.h"

#include <Files.h>
#include <RawResource.h>
#include <Utils.h>

#include <algorithm>
#include <cstddef>

namespace quarda {
namespace {

constexpr std::string_view kTemplateName = "PIFTEMPLATE";

/// A field of a PIF that the copy of the template gets anew.
struct TField {
  size_t offset;
  size_t size;
  size_t longestText;
  char filler;
};

constexpr TField kTitle = {2, 30, 30, ' '};
constexpr TField kProgramName = {36, 63, 62, '\0'};  // its text ends inside the field
constexpr TField kWorkingFolder = {101, 64, 63, '\0'};
constexpr TField kParameters = {165, 64, 63, '\0'};

void Fill(std::string& pif, const TField& field, std::string_view text) {
  std::string content(text.substr(0, field.longestText));
  content.resize(field.size, field.filler);
  pif.replace(field.offset, field.size, content);
}

std::string MakePif(std::string_view program) {
  std::string pif(platform::RawResource(kTemplateName));
  Fill(pif, kTitle, ChangeFileExt(ExtractFileName(program), ""));
  Fill(pif, kProgramName, program);
  Fill(pif, kWorkingFolder, {});
  Fill(pif, kParameters, {});
  return pif;
}

}  // namespace

std::string PifName(std::string_view program) {
  std::string name(program);
  std::ranges::replace(name, '/', '\\');
  return ChangeFileExt(name, ".pif");
}

std::string CreatePifFile(std::string_view program) {
  std::string name = PifName(program);
  const std::string pif = MakePif(platform::FullPath(program));
  platform::ClearAttributes(name);
  platform::ReplaceFileContent(name, pif);
  return name;
}

}  // namespace quarda
