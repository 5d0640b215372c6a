// The checks of attachment names: which attachment is refused, by which rule, and for which reason.
#include <PluginAttachments.h>
#include <gtest/gtest.h>

#include <string>

#include "TestMail.h"
#include "TestScan.h"

namespace quarda {
namespace {

const std::string kExtensions = "[Attachment Extensions]\nBlockInvalid=1\n";
const std::string kDouble = "[Attachment Extensions]\nBlockDouble=1\n";
const std::string kNames =
    "[Invalid Attachments Checks]\nBlockMode=MarkAsVirus\n[Invalid Attachments]\n";

std::string Extension(const std::string& extension, const std::string& name) {
  return "Invalid attachment file extension: \"" + extension + "\" <=> \"" + name + "\"";
}
std::string Double(const std::string& pattern, const std::string& name) {
  return "Invalid attachment double file extension: \"" + pattern + "\" <=> \"" + name + "\"";
}
std::string Name(const std::string& pattern, const std::string& description) {
  return "Invalid filename: \"" + pattern + "\" => " + description;
}

const struct {
  const char* row;
  std::string settings;
  const char* names;   // between bars
  std::string reason;  // empty: the mail passes
  std::string checkList = "";
} kRows[] = {
    {"no check is on", "", "a.exe|a.b.c", "", "*"},
    {"no attachments", kExtensions + "BlockDouble=1\n" + kNames + "*\n", "", ""},

    {"any case", kExtensions, "Invoice.PDF.EXE", Extension(".EXE", "Invoice.PDF.EXE")},
    {"no dot", kExtensions + "InvalidExts=*\n", "exe", ""},
    {"only the last extension", kExtensions, "a.exe.txt", ""},
    {"item with dot", kExtensions + "InvalidExts=.vbs\n", "a.b|b.vbs", Extension(".vbs", "b.vbs")},
    {"wildcard", kExtensions + "InvalidExts=php?\n", "a.php|a.php3", Extension(".php3", "a.php3")},
    {"attachments before items", kExtensions, "b.vbs|a.exe", Extension(".vbs", "b.vbs")},

    {"allowed, but invalid", kDouble, "my.new.jpg.exe", Double("*.*.exe", "my.new.jpg.exe")},
    {"first invalid item", kDouble + "InvalidDoubleExts=*.zip/tar.gz/*.gz\n", "a.tar.gz",
     Double("*.tar.gz", "a.tar.gz")},
    {"allowed", kDouble, "archive.tar.gz|A.DOC.Zip", ""},
    {"fewer than two dots", kDouble, "a.b|.profile.txt|b", ""},
    {"nothing allows the second", kDouble, "a.doc.zip|b.txt.pif", Double("*.*.bmp", "b.txt.pif")},
    {"a leading dot is no extension", kDouble + "AllowedDoubleExts=x.b.c\n", "a.x.b.c|.x.b.c",
     Double("*.x.b.c", ".x.b.c")},
    {"nothing is allowed", kDouble + "AllowedDoubleExts=\n", "a.b.c", Double("", "a.b.c")},

    {"name", kNames + "*.scr=No savers=here\n", "Fun.SCR", Name("*.scr", "No savers=here")},
    {"quotes", kNames + "setup*=\"No setup\"\n", "a|setup.txt", Name("setup*", "No setup")},
    {"no description", kNames + "*.pif\n", "a.pif", Name("*.pif", "")},
    {"whole names only", kNames + "scr\nfun\n", "fun.scr", ""},
    {"attachments before lines", kNames + "one*=1\ntwo*=2\n", "two.b|one.a", Name("two*", "2")},
    {"check list", kNames, "a.txt|//n|a.doc", Name("*.doc", "x"),
     "//n\n*.doc=x\n[Virus Subjects]\n*.txt"},
    {"settings before check list", kNames + "*.doc=s\n", "a.doc", Name("*.doc", "s"), "*.doc=c"},
    {"removal blocks too", "[Invalid Attachments Checks]\nBlockMode=Remove\n", "a", Name("a", ""),
     "a"},

    {"extensions before all", kExtensions + "BlockDouble=1\n" + kNames + "*\n", "a.b.c|x.exe",
     Extension(".exe", "x.exe")},
    {"double extensions before names", kDouble + kNames + "*\n", "a|a.b.c",
     Double("*.*.bmp", "a.b.c")},
};

TEST(Attachments, AreJudgedByTheirNames) {
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.row);
    const auto scan = MakeScan(row.settings);
    scan->folder.Write("Quarda.clf", row.checkList);
    scan->mail = MailWithAttachments(row.names);
    const bool passes = row.reason.empty();
    EXPECT_EQ(MakeRef<TPluginAttachments>()->Execute(scan.Get()), passes);
    EXPECT_EQ(scan->LogText(),
              passes ? "Passed|Attachments|passed\n" : "Warning|Attachments|" + row.reason + "\n");
    EXPECT_EQ(scan->globals.Value("VirusReason"), row.reason);
  }
}

TEST(Attachments, FilesOfAMailAreNotJudged) {
  const auto scan = MakeScan(kNames + "*\n");
  scan->fileType = ftAttachment;
  scan->mail = MailWithAttachments("a.exe");
  EXPECT_TRUE(MakeRef<TPluginAttachments>()->Execute(scan.Get()));
  EXPECT_EQ(scan->LogText(), "");
}

}  // namespace
}  // namespace quarda
