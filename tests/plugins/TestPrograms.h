// Scans that start programs, which lie in the base folder of the scan (TestProgram.cpp).
#pragma once

#include <CurrentApp.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "TestMail.h"
#include "TestScan.h"

namespace quarda {

class TProgramTest : public testing::Test {
 protected:
  TProgramTest() { Renew(""); }

  /// A new current scan of an incoming mail. "~" in the settings stands for the base folder.
  void Renew(std::string_view settings) {
    scan_ = MakeScan({});
    std::string text;
    for (const char c : settings) text += c == '~' ? scan_->BaseFolder() + '\\' : std::string(1, c);
    scan_->config->SetLines(LinesOf(text).Get());
    scan_->arguments->file = scan_->folder.Write("in_1.inp", "Subject: x\n\n");
    scan_->mail = MailFromText("Subject: x\n\n");
    SetQuardaApp(scan_->app);
  }
  /// Puts the test program into the base folder under a name that says what it does, and returns
  /// its path in quotes.
  std::string Program(const std::string& name) const {
    const std::filesystem::path target = scan_->folder.Native() / name;
    std::error_code failed;  // when the temporary folder is on another file system
    std::filesystem::create_hard_link(QD_PLUGIN_PROGRAM, target, failed);
    if (failed) std::filesystem::copy_file(QD_PLUGIN_PROGRAM, target);
    return '"' + scan_->folder.Path(name) + '"';
  }
  std::string Content(const std::string& name) const {
    std::ifstream file(scan_->folder.Native() / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }
  std::string Native(const std::string& name) const {
    return (scan_->folder.Native() / name).string();
  }

  const TCurrentAppGuard current_;
  TRef<TTestInstance> scan_;
};

}  // namespace quarda
