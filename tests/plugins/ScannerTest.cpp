// External virus scanners and spam filters: which of them run for which file, and what their exit
// codes mean for the mail. They are named after the way they end; each adds its first argument to
// the file "ran".
#include <PlatformError.h>
#include <PluginSpamFilter.h>
#include <PluginVirusScan.h>
#include <Process.h>

#include <cerrno>
#include <vector>

#include "TestPrograms.h"

namespace quarda {
namespace {

class Scanners : public TProgramTest {
 protected:
  void Configure(const std::string& settings) {
    Renew(settings);
    for (const char* const name : {"0", "3", "7", "100", "crash", "sleep"}) Program(name);
  }
  /// The exit code by which this system says that a program crashed.
  static std::string CrashCode() {
    platform::TProcess program({"\"" QD_CRASHING_PROGRAM "\"", {}, true});
    program.Wait(std::nullopt);
    return std::to_string(static_cast<int32_t>(program.ExitCode()));
  }
  bool ScanForViruses() { return MakeRef<TPluginVirusScan>()->Execute(scan_.Get()); }
  bool FilterSpam() { return MakeRef<TPluginSpamFilter>()->Execute(scan_.Get()); }
  /// The log without its debug lines.
  std::string Log() const {
    std::string text;
    for (const std::string& line : scan_->log) {
      if (!line.starts_with("Debug")) text += line + "\n";
    }
    return text;
  }
};

TEST_F(Scanners, RunForTheirKindOfFile) {
  const std::string all = "[VirusScan]\nCommand1=~0 1\nCommand2=~0 2\nMailScan=~0 mail\n";
  const std::string plain = all + "IntelliVirusScan=0\n";
  const struct {
    const char* row;
    std::string settings;
    const char* file;
    const char* ran;
    const char* passed = "passed";
  } kRows[] = {
      {"mail", all, "in_1.inp", "mail\n"},
      {"attachment", all, "x.txt", "1\n2\n"},
      {"mail, every scanner", plain, "in_1.inp", "1\n2\nmail\n"},
      {"mail, file scanner", "[VirusScan]\nCommand1=~0 1\n", "in_1.inp", ""},
      {"attachment, mail scanner", "[VirusScan]\nMailScan=~0 mail\n", "x.txt", ""},
      {"listed", all + "ScanOnlyExtensions=Ext\n", "x.EXE", "1\n2\n"},
      {"not listed", all + "ScanOnlyExtensions=Ext\n", "y.pdf", "",
       "passed (extension is \".pdf\" not in the list)"},
      {"no extension", all + "ScanOnlyExtensions=Ext\n", "y", "",
       "passed (extension is \"\" not in the list)"},
      {"whole items", all + "ScanOnlyExtensions=Ext\nScanFileExts=.exe1/ex\n", "y.exe", "",
       "passed (extension is \".exe\" not in the list)"},
      {"left out", all + "ScanOnlyExtensions=NotExt\n", "report.PDF", "",
       "passed (extension \".pdf\" is not scanned)"},
      {"left out, the mail scanner too", plain + "ScanOnlyExtensions=NotExt\nNoScanFileExts=inp\n",
       "in_1.inp", "", "passed (extension \".inp\" is not scanned)"},
      {"not left out", all + "ScanOnlyExtensions=NotExt\n", "x.exe", "1\n2\n"},
      {"whole mails know no filter", all + "ScanOnlyExtensions=Ext\n", "in_1.inp", "mail\n"},
  };
  for (const auto& row : kRows) {
    Configure(row.settings);
    scan_->fileType = std::string(row.file) == "in_1.inp" ? ftInMail : ftAttachment;
    scan_->arguments->file = scan_->folder.Write(row.file, "");
    EXPECT_TRUE(ScanForViruses()) << row.row;
    EXPECT_EQ(Content("ran"), row.ran) << row.row;
    EXPECT_EQ(scan_->log.back(), std::string("Passed|VirusScan|") + row.passed) << row.row;
  }
}

TEST_F(Scanners, JudgeByTheirExitCode) {
  const struct {
    const char *row, *code, *list;
    bool clean;
    const char* text = "Virus found";
  } kRows[] = {{"default list", "3", "", false},
               {"clean", "0", "1-99", true},
               {"above the list", "100", "1-99", true},
               {"other number", "3", "1", true},
               {"0 may be a virus", "0", "0", false},
               {"list invalid before the number, not 0", "7", "5;x", false},
               {"list invalid before the number, 0", "0", "5;x", true},
               {"list invalid behind the number", "3", "1-3;x", false},
               {"crash", "crash", "", false, "Scanner crashed"},
               {"crash beside the list", "crash", "1", false, "Scanner crashed"}};
  for (const auto& row : kRows) {
    Configure(std::string("[VirusScan]\nMailScan=~") + row.code +
              " $NAME$ \nMailScanVirusExitCode=" + row.list + "\n");
    EXPECT_EQ(ScanForViruses(), row.clean) << row.row;
    const std::string code = row.code == std::string("crash") ? CrashCode() : row.code;
    const std::string reason =
        row.clean ? "" : std::string("Mail Virus Scan: ") + row.text + " (ExitCode: " + code + ")";
    const std::string debug = "Debug|VirusScan|Mail Virus Scan: ";
    EXPECT_EQ(scan_->LogText(),
              debug + scan_->folder.Path(row.code) + " in_1.inp\n" +
                  (row.clean ? "Passed|VirusScan|Mail Virus Scan: no virus found\n"
                             : "Warning|VirusScan|" + reason + "\n") +
                  debug + "ExitCode: " + code + "\n" +
                  (row.clean ? "Passed|VirusScan|passed\n" : ""))
        << row.row;
    EXPECT_EQ(scan_->globals.Value(kVirusReason), reason) << row.row;
  }
}

TEST_F(Scanners, AreNotAvailableOrFail) {
  EXPECT_TRUE(ScanForViruses());
  EXPECT_EQ(scan_->LogText(), "Debug|VirusScan|No VirusScanner available\n");

  const std::string text = platform::ErrorText(ENOENT);
  for (const char* const command : {"C:\\no-such-program $FILE$", "\"\"", "\" \"", "$NoExit$"}) {
    Configure(std::string("[VirusScan]\nMailScan=") + command + "$ChDir$ x\n");
    EXPECT_FALSE(ScanForViruses()) << command;
    const std::string configured = command + std::string(" x");
    EXPECT_EQ(Log(), "Error|VirusScan|" + text + " [" + configured + "]\n");
    EXPECT_EQ(scan_->globals.Value(kVirusReason),
              "Could not execute virus scanner: " + text + " [" + configured + "]");
  }

  Configure("[VirusScan]\nCommand1=~3 1\nCommand2=~0 2\nMailScan=~0 mail\nIntelliVirusScan=0\n");
  EXPECT_FALSE(ScanForViruses());
  EXPECT_EQ(Content("ran"), "1\n") << "the first finding ends it";

  Configure("[VirusScan]\nMailScan=~sleep 30\n[Common]\nMaxExecWaitTime=1\n");
  EXPECT_TRUE(ScanForViruses()) << "one that was ended has the exit code 0";
}

TEST_F(Scanners, StartInTheFolderOfTheFile) {
  for (const char* const flag : {"$CHDIR$", "", "$chdir$ $noexit$"}) {
    Configure(std::string("[VirusScan]\nMailScan=~where ") + flag + "\n");
    Program("where");
    scan_->folder.Write("in/in_1.inp", "");
    scan_->arguments->file = scan_->folder.Path("in\\in_1.inp");
    EXPECT_EQ(ScanForViruses(), std::string(flag).ends_with("$noexit$")) << flag;
    const std::filesystem::path wanted =
        *flag != '\0' ? scan_->folder.Native() / "in" : std::filesystem::current_path();
    EXPECT_EQ(std::filesystem::path(Content("shown")), wanted) << flag;
  }
}

constexpr const char* kMail =
    "From: a@b.c\nTo: me@here.x, you@here.x\nCc: them@here.x\nSubject: x\n\nbody\n";

TEST_F(Scanners, FilterSpam) {
  const std::string spam = "Warning|SpamFilter|SpamFilter ";
  const std::string clean = "Passed|SpamFilter|SpamFilter 1: no spam found\n";
  const std::string detected = "Warning|SpamFilter|Spam detected\n";
  const std::string text = platform::ErrorText(ENOENT);
  const struct {
    const char* row;
    std::string settings, ran, log;
  } kRows[] = {
      {"none", "", "", ""},
      {"clean", "SpamFilter=~0 1\nSpamFilter2=~100 2\n", "1\n2\n",
       clean + "Passed|SpamFilter|SpamFilter 2: no spam found\nPassed|SpamFilter|passed\n"},
      {"first", "SpamFilter=~3 1\nSpamFilter2=~0 2\n", "1\n",
       spam + "1: Spam found (ExitCode: 3)\n" + detected},
      {"second", "SpamFilter=~3 1\nSpamFilter2=~7 2\nExitCode=4-5\n", "1\n2\n",
       clean + spam + "2: Spam found (ExitCode: 7)\n" + detected},
      {"invalid list", "SpamFilter=~3 1\nExitCode=x\n", "1\n",
       spam + "1: Spam found (ExitCode: 3)\n" + detected},
      {"crash", "SpamFilter=~crash 1\nExitCode=1\n", "1\n",
       spam + "1: Filter crashed (ExitCode: " + CrashCode() + ")\n" + detected},
      {"not startable", "SpamFilter=C:\\no $chdir$ x\nSpamFilter2=~0 2\n", "",
       "Error|SpamFilter|" + text + " [C:\\no  x]\n" + detected},
  };
  for (const auto& row : kRows) {
    const bool isSpam = row.log.ends_with(detected);
    for (const std::string mailbox : {"spam@here.x", ""}) {
      Configure("[SpamFilter]\n" + row.settings + "MailAddress=" + mailbox + "\n");
      scan_->mail = MailFromText(kMail);
      EXPECT_EQ(FilterSpam(), !isSpam || !mailbox.empty()) << row.row;
      EXPECT_EQ(Content("ran"), row.ran) << row.row;
      EXPECT_EQ(Log(), row.log) << row.row;
      EXPECT_EQ(scan_->globals.Value(kVirusReason), "") << row.row;
      const bool redirected = isSpam && !mailbox.empty();
      const TRef<IHeader> header = scan_->mail->GetHeader();
      EXPECT_EQ(scan_->mail->GetTo(), redirected ? "spam@here.x" : "me@here.x, you@here.x")
          << row.row;
      EXPECT_EQ(scan_->mail->GetCc(), redirected ? "" : "them@here.x") << row.row;
      EXPECT_EQ(header->GetHeaderStr("X-Spam-To"), redirected ? "me@here.x, you@here.x" : "");
      EXPECT_EQ(header->GetHeaderStr("X-Spam-Cc"), redirected ? "them@here.x" : "");
    }
  }
}

TEST_F(Scanners, FilterNoOtherMail) {
  for (const TOvraMailFileType type : {ftOutMail, ftAttachment, ftInMail}) {
    Configure("[SpamFilter]\nSpamFilter=~3 1\n");
    scan_->fileType = type;
    if (type == ftInMail) scan_->app->instances.push_back(scan_.Get());  // a nested scan
    EXPECT_TRUE(FilterSpam());
    EXPECT_EQ(scan_->LogText() + Content("ran"), "");
  }
}

}  // namespace
}  // namespace quarda
