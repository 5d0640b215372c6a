#include <ExecutableHeader.h>
#include <Shell.h>

#include "TestFolder.h"

namespace quarda::platform {
namespace {

constexpr uint32_t kSegmented = 'N' | 'E' << 8;
constexpr uint32_t kPortable = 'P' | 'E' << 8;

using Shell = TTestFolder;

/// A program whose old header points to a new one at `offset`, with words set in the new one.
std::string Image(uint32_t offset, const std::string& signature,
                  const std::vector<std::pair<size_t, int>>& words = {}, size_t newSize = 96) {
  std::string image(64, '\0');
  image.replace(0, 2, "MZ");
  for (size_t i = 0; i < 4; ++i) image[0x3C + i] = static_cast<char>(offset >> (8 * i));
  if (offset > 4096) return image;
  image.resize(offset + newSize);
  image.replace(offset, signature.size(), signature);
  for (const auto& [at, word] : words) {
    image[offset + at] = static_cast<char>(word);
    image[offset + at + 1] = static_cast<char>(word >> 8);
  }
  return image;
}

/// Asked for another name than the file's own: the headers decide, on every system.
TEST_F(Shell, TellsTheTypeByTheHeaders) {
  const std::string pe("PE\0\0", 4);
  const std::string graphical = Image(128, pe, {{92, 2}, {72, 4}, {74, 0}});
  const struct {
    const char *row, *name;
    std::string content;
    uint32_t type;
  } kRows[] = {
      {"graphical", "a.exe", graphical, kPortable | 0x0400u << 16},
      {"newer, capital", "A.EXE", Image(64, pe, {{92, 2}, {72, 6}, {74, 2}}),
       kPortable | 0x0602u << 16},
      {"screen saver", "a.scr", graphical, kPortable | 0x0400u << 16},
      {"graphical without version", "a.exe", Image(64, pe, {{92, 2}}), kPortable | 0x0400u << 16},
      {"console", "a.exe", Image(200, pe, {{92, 3}, {72, 4}}), kPortable},
      {"native", "a.exe", Image(200, pe, {{92, 1}, {72, 4}}), kPortable},
      {"cut before the subsystem", "a.exe", Image(64, pe, {}, 80), kPortable},
      {"16-bit", "a.exe", Image(64, "NE", {{0x36, 2}, {0x3E, 0x030A}}), kSegmented | 0x030Au << 16},
      {"16-bit without version", "a.exe", Image(64, "NE", {{0x36, 2}}), kSegmented | 0x0300u << 16},
      {"16-bit, other system", "a.exe", Image(64, "NE", {{0x36, 1}, {0x3E, 0x030A}}), kSegmented},
      {"headers overlap", "a.exe", Image(2, pe, {}, 96), kPortable},
      {"offset 0", "a.exe", Image(0, ""), kDosProgram},
      {"offset beyond the end", "a.exe", Image(0xFFFFFFFF, pe), kDosProgram},
      {"signature cut", "a.exe", Image(64, "PE", {}, 3), kDosProgram},
      {"unknown signature", "a.exe", Image(64, "LX"), kDosProgram},
      {"short", "a.exe", "MZ", kDosProgram},
      {"command", "a.com", graphical, kDosProgram},
      {"no program", "a.exe", "text", 0},
      {"empty", "a.exe", "", 0},
      {"library", "a.dll", graphical, 0},
      {"two extensions", "a.exe.txt", graphical, 0},
      {"no extension", "exe", graphical, 0}};
  for (const auto& r : kRows) {
    Put("image", r.content);
    EXPECT_EQ(ExecutableType(Path("image"), r.name), r.type) << r.row;
  }
}

TEST_F(Shell, TellsTheTypeOfPrograms) {
  const std::string pe("PE\0\0", 4);
  const struct {
    const char* name;
    std::string content;
    uint32_t type;
  } kRows[] = {{"a.exe", Image(128, pe, {{92, 2}, {72, 4}, {74, 0}}), kPortable | 0x0400u << 16},
               {"a.scr", Image(128, pe, {{92, 2}, {72, 6}, {74, 2}}), kPortable | 0x0602u << 16},
               {"console.exe", Image(200, pe, {{92, 3}, {72, 4}}), kPortable},
               {"dos.exe", Image(0, ""), kDosProgram},
               {"text.exe", "text", 0},
               {"empty.exe", "", 0},
               {"a.dll", Image(128, pe, {{92, 2}, {72, 4}}), 0},
               {"a.bat", "echo", kDosProgram},
               {"a.CMD", "", kDosProgram},
               {"a.com", "x", kDosProgram},
               {"a.pif", "", kDosProgram}};
  for (const auto& r : kRows) {
    Put(r.name, r.content);
    EXPECT_EQ(ExecutableType(Path(r.name)), r.type) << r.name;
  }
  std::filesystem::create_directory(Native("folder.exe"));
  std::filesystem::create_directory(Native("folder.bat"));
  for (const char* name : {"folder.exe", "folder.bat", "missing.exe", "missing.bat"}) {
    EXPECT_EQ(ExecutableType(Path(name)), 0u) << name;
  }
}

}  // namespace
}  // namespace quarda::platform
