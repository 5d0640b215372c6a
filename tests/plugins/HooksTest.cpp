// The administrator's own programs: when they run, and that nothing they do changes the verdict.
#include <PlatformError.h>
#include <PluginAppExec.h>

#include <cerrno>

#include "TestPrograms.h"

namespace quarda {
namespace {

class Hooks : public TProgramTest {
 protected:
  Hooks() { Program("note"); }

  std::string Note(const std::string& text) const {
    return scan_->folder.Path("note") + " " + text + "\r\n";
  }
  /// Each section notes its name.
  void WriteHooks(const TTestInstance& scan, const std::string& prefix = "") const {
    std::string text;
    for (const std::string section :
         {"Before All", "Before VirusScan", "After All", "Normal Exit", "Virus Exit"}) {
      text += "[" + section + "]\r\n" + Note('"' + prefix + section + '"');
    }
    scan.folder.Write("Quarda.app", text);
  }
  void Scan(IQuardaInstance* scan, bool passed) {
    EXPECT_TRUE(plugin_->Init(scan));
    EXPECT_TRUE(plugin_->Execute(scan));
    plugin_->Done(scan, passed);
  }

  const TRef<TPluginAppExec> plugin_ = MakeRef<TPluginAppExec>();
};

TEST_F(Hooks, RunAtTheirPoints) {
  Scan(scan_.Get(), true);
  EXPECT_EQ(Content("Quarda.app"),
            "[Before All]\r\n\r\n[Before VirusScan]\r\n\r\n[After All]\r\n\r\n[Normal Exit]\r\n\r\n"
            "[Virus Exit]\r\n\r\n");
  EXPECT_EQ(scan_->LogText() + Content("ran"), "");
  WriteHooks(*scan_);
  Scan(scan_.Get(), true);
  const std::string common = "Before All\nBefore VirusScan\nAfter All\n";
  EXPECT_EQ(Content("ran"), common + "Normal Exit\n");
  Scan(scan_.Get(), false);
  EXPECT_EQ(Content("ran"), common + "Normal Exit\n" + common + "Virus Exit\n");
}

TEST_F(Hooks, RunOneAfterTheOther) {
  Program("slow");
  const std::string missing = "C:\\no-such-program\r\n";
  scan_->folder.Write("Quarda.app", "[before all]\r\n;" + Note("comment") + "\r\n  \r\n  ;" +
                                        Note("comment") + scan_->folder.Path("slow") + " 1\r\n" +
                                        missing + Note("2 $onlyattachment$") +
                                        Note("3 $onlymail$"));
  scan_->mail = nullptr;
  Scan(scan_.Get(), true);
  EXPECT_EQ(Content("ran"), "") << "no mail, no hooks";
  scan_->mail = MailFromText("Subject: x\n\n");
  Scan(scan_.Get(), true);
  EXPECT_EQ(Content("ran"), "1\n3\n");
  EXPECT_EQ(scan_->LogText(), "Error|AppExec|Execute error: " + platform::ErrorText(ENOENT) + "\n");
  scan_->fileType = ftAttachment;
  Scan(scan_.Get(), true);
  EXPECT_EQ(Content("ran"), "1\n3\n1\n2\n");
}

TEST_F(Hooks, OfANestedScanAreItsOwn) {
  WriteHooks(*scan_);
  EXPECT_TRUE(plugin_->Init(scan_.Get()));
  const auto nested = MakeScan("");
  nested->mail = scan_->mail;
  nested->config = MakeRef<TConfig>(nested->folder.Path("Quarda.ini"), nested->app.Get());
  WriteHooks(*nested, "nested ");
  Scan(nested.Get(), false);
  EXPECT_TRUE(plugin_->Execute(scan_.Get()));
  plugin_->Done(scan_.Get(), true);
  EXPECT_EQ(Content("ran"),
            "Before All\nnested Before All\nnested Before VirusScan\nnested After All\n"
            "nested Virus Exit\nBefore VirusScan\nAfter All\nNormal Exit\n");
  EXPECT_TRUE(plugin_->Execute(scan_.Get())) << "over";
  EXPECT_FALSE(Content("ran").ends_with("Before VirusScan\n"));
}

TEST_F(Hooks, ThatFailLeaveTheScanAlone) {
  scan_->folder.Write("Quarda.app", "[Before All]\r\n" + Note("1 $savemail$") + Note("2"));
  scan_->mail->SetSubject("changed");  // there is no file to save it to
  EXPECT_TRUE(plugin_->Init(scan_.Get()));
  EXPECT_EQ(Content("ran"), "2\n");
  EXPECT_EQ(scan_->LogText().find("Error|AppExec|Exception class "), 0u) << scan_->LogText();

  Renew("");
  std::filesystem::create_directory(Native("Quarda.app"));  // can be neither read nor written
  Scan(scan_.Get(), true);
  EXPECT_EQ(scan_->LogText().find("Error|AppExec|Exception class EPlatformError"), 0u);
}

}  // namespace
}  // namespace quarda
