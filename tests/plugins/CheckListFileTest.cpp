// The check-list file: what is read into which list, and what is written.
#include <CheckListFile.h>
#include <Files.h>
#include <PlatformError.h>
#include <QDStringsAdapters.h>
#include <gtest/gtest.h>

#include <string>

#include "TestScan.h"

namespace quarda {
namespace {

struct TFixedClock final : platform::TClock {
  platform::TLocalTime Now() const override { return {.year = 2004, .month = 5, .day = 7}; }
};

// Stamp and lists in one line; the lines of a list stand between commas.
std::string Shown(const TClfFile& file) {
  std::string shown = file.GetFileTime();
  for (IStringList* list :
       {file.GetInvalidAttachments(), file.GetSuspiciousSubjects(), file.GetNoSuspiciousSubjects(),
        file.GetVirusSubjects(), file.GetNoVirusSubjects()}) {
    shown += "|" + list->GetSeparateText(",").Str();
  }
  return shown;
}

class CheckListFile : public testing::Test {
 protected:
  const TRef<TTestInstance> scan_ = MakeRef<TTestInstance>();
  const TFixedClock clock_{};
  TClfFile file_{*scan_, clock_};
  const std::string path_ = scan_->folder.Path("Quarda.clf");
};

TEST_F(CheckListFile, SortsLinesIntoLists) {
  const struct {
    const char* row;
    const char* text;
    const char* shown;
  } rows[] = {
      {"no header", "a\r\nb\nc\rd", "|a,b,c,d||||"},
      {"stamp", "// filetime:  2020-01-02 \na", "2020-01-02|a||||"},
      {"not quite a stamp", "// FileTime:x\n// FileTime: y", "|// FileTime:x,// FileTime: y||||"},
      {"every section",
       "[No Virus Subjects]\na\n[VIRUS subjects]\nb\n[No Warning Subjects]\nc\n"
       "[No Suspicious Subjects]\nd\n[Warning Subjects]\ne\n[Suspicious Subjects]\nf\n"
       "[Invalid Attachments]\ng",
       "|g|e,f|c,d|b|a"},
      {"blanks around headers", "[Virus Subjects] \t\na\n [No Virus Subjects]\nb",
       "||||a, [No Virus Subjects],b|"},
      {"unknown sections", "[Other]\na\n[\nb\n[]\nc\n[Virus Subjects\nd\n[Virus Subjects]\ne",
       "||||e|"},
      {"blank lines", " a \n\n//b\n \n\nc\n  // d\n\n", "| a ,//b, ,c,  // d,||||"},
      {"blank line behind a header", "//a\n[Virus Subjects]\n\nb", "|//a|||b|"},
  };
  for (const auto& row : rows) {
    TClfFile file(*scan_);
    file.LoadFromStrings(LinesOf(row.text).Get());
    EXPECT_EQ(Shown(file), row.shown) << row.row;
  }
}

TEST_F(CheckListFile, KeepsItsStampUntilTheListIsEmpty) {
  file_.LoadFromStrings(LinesOf("// FileTime: then\na\n").Get());
  file_.LoadFromStrings(LinesOf("b\n").Get());
  EXPECT_EQ(Shown(file_), "then|b||||");
  file_.Load(path_);  // there is none
  EXPECT_EQ(Shown(file_), "|||||");
  EXPECT_EQ(file_.GetFileName(), path_);
}

TEST_F(CheckListFile, IsWrittenInFixedOrder) {
  file_.LoadFromStrings(LinesOf("*.a=x\n[No Virus Subjects]\nn\n[Virus Subjects]\nv\n"
                                "[Warning Subjects]\nw\n//c\n\n[No Warning Subjects]\nm")
                            .Get());
  file_.Save(path_);
  EXPECT_EQ(platform::ReadWholeFile(path_),
            "// FileTime: 2004-05-07\r\n\r\n[Invalid Attachments]\r\n*.a=x\r\n\r\n"
            "[Suspicious Subjects]\r\nw\r\n//c\r\n\r\n\r\n[No Suspicious Subjects]\r\nm\r\n\r\n"
            "[Virus Subjects]\r\nv\r\n\r\n[No Virus Subjects]\r\nn\r\n\r\n");
  const std::string shown = Shown(file_);
  file_.SetFileTime("gone");
  file_.Load(path_);
  EXPECT_EQ(Shown(file_), shown);
  file_.SetFileTime("then");
  file_.Save(path_);
  file_.Load(path_);
  EXPECT_EQ(file_.GetFileTime(), "then");
  EXPECT_THROW(file_.Save(path_ + "\\x\\y"), platform::EPlatformError);
}

TEST_F(CheckListFile, LeavesOutCommentsAndBlankLines) {
  const TRef<IStringList> list = LinesOf("//a\n\n b//\n \t\n  // c\n/d\n");
  EXPECT_EQ(file_.NormalList(list.Get())->GetText(), " b//\r\n/d\r\n");
  EXPECT_EQ(list->GetCount(), 6);
  EXPECT_EQ(file_.NormalList(nullptr)->GetCount(), 0);
}

}  // namespace
}  // namespace quarda
