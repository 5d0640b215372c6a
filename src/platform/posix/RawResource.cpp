// This system has no resources in its program files, so the data is laid out at compile time from
// the stretches of it that are not zero.
#include "RawResource.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace quarda::platform {
namespace {

using namespace std::string_view_literals;

/// A program information file for a windowed DOS program, with sample texts in the fields that a
/// copy fills in.
constexpr std::string_view kPifTemplateName = "PIFTEMPLATE";
constexpr size_t kPifTemplateSize = 967;

struct TRun {
  size_t offset;
  std::string_view bytes;
};

constexpr TRun kPifTemplateRuns[] = {
    {1, "xTITLE                         \x80\x02\x00\x00Lw:\\Folder\\Program.exe"sv},
    {99, "\x10\x00Lw:\\WorkingDir"sv},
    {230, "\x01\x00\xFF\x19P\x00\x00\x07"sv},
    {369,
     "MICROSOFT PIFEX\x00\x87\x01\x00\x00q\x01WINDOWS 386 "
     "3.0\x00\x05\x02\x9D\x01h\x00\x80\x02\x00\x00"
     "d\x00"
     "2\x00\xFF\xFF\x00\x00\xFF\xFF\x00\x00\x02\x10\x02\x00\x1F"sv},
    {517, "WINDOWS VMM 4.0\x00\xFF\xFF\x1B\x02\xAC\x01"sv},
    {627, "Lw:\\Folder\\IconFile.ico"sv},
    {709, "\x02"sv},
    {721, "2\x00\x01"sv},
    {735, "\x01"sv},
    {739, "\x05\x00\x19\x00\x03\x00\xC8\x00\xE8\x03\x02\x00\x0A\x00\x01"sv},
    {761, "\x1C"sv},
    {769, "\x08\x00\x0C\x00Terminal"sv},
    {805, "Lucida Console"sv},
    {839, "\x03"sv},
    {843, "P\x00\x19\x00\x80\x02,\x01"sv},
    {855, "\x16"sv},
    {965, "\x01"sv},
};

constexpr std::array<char, kPifTemplateSize> MakePifTemplate() {
  std::array<char, kPifTemplateSize> data{};
  for (const TRun& run : kPifTemplateRuns) {
    std::ranges::copy(run.bytes, data.begin() + static_cast<ptrdiff_t>(run.offset));
  }
  return data;
}

constexpr std::array<char, kPifTemplateSize> kPifTemplate = MakePifTemplate();

}  // namespace

std::string_view RawResource(std::string_view name) noexcept {
  if (name == kPifTemplateName) return {kPifTemplate.data(), kPifTemplate.size()};
  return {};
}

}  // namespace quarda::platform
