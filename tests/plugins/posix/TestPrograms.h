// Scans that start programs: shell scripts in the base folder of the scan.
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
  /// Writes a script and returns its path in quotes.
  std::string Script(const std::string& name, const std::string& body) const {
    const std::string path = scan_->folder.Write(name, "#!/bin/sh\n" + body + "\n");
    std::filesystem::permissions(scan_->folder.Native() / name, std::filesystem::perms::owner_all);
    return '"' + path + '"';
  }
  /// A script that writes its arguments, each in brackets, into the file "shown".
  std::string ShowScript() const {
    return Script("show.sh", "cd \"${0%/*}\" && printf '[%s]' \"$@\" > shown");
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
