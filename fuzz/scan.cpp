// Any bytes as an incoming mail, scanned whole with every check on: the scan ends with a verdict,
// its temporary files are gone, and a refused mail keeps its bytes.
#include <Application.h>
#include <Files.h>
#include <TempFolder.h>

#include <string>

#include "Fuzz.h"

using namespace quarda;

namespace {

constexpr std::string_view kSettings =
    "[Logging]\r\nLogMode=4\r\nLogInOut=1\r\n"
    "[VirusScan]\r\nIntelliVirusScan=1\r\n"
    "[Attachment Extensions]\r\nBlockInvalid=1\r\nInvalidExts=exe\r\nBlockDouble=1\r\n"
    "AllowedDoubleExts=*.*\r\n"
    "[Invalid Attachments Checks]\r\nBlockMode=MarkAsVirus\r\n"
    "[Invalid Attachments]\r\n*.scr=screen saver\r\n"
    "[Subject Checks]\r\nBlockOnVirus=1\r\nWarnOnSuspicious=1\r\n"
    "[Virus Subjects]\r\n*virus*\r\n[Suspicious Subjects]\r\n*free*\r\n"
    "[text/html Checks]\r\nBlockIFrames=Remove\r\nDisableActiveX=1\r\nDisableScripts=1\r\n"
    "CheckHtmlAttachments=1\r\n"
    "[Scanned Text]\r\nShowScannedText=1\r\n";

std::string NamesIn(const std::string& folder) {
  std::string names;
  for (const auto& file : platform::FindFiles(folder + "\\*")) names += file.name + " ";
  return names;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const TTempFolder folder;
  static const std::string base = platform::WindowsPath(folder.Native().string());
  const std::string_view text = fuzz::AsText(data, size);
  const std::string mail = base + "\\in_1.inp";
  platform::RemoveFile(base + "\\Quarda.log");
  folder.Write("Quarda.ini", std::string(kSettings));
  folder.Write("in_1.inp", std::string(text));

  const int32_t exitCode = RunCommandLine("engine.exe \"" + mail + "\"", {base});
  fuzz::Require(exitCode == 0 || exitCode == 1, "a verdict");
  fuzz::Require(exitCode == 0 || platform::ReadWholeFile(mail) == text, "a refused mail is kept");
  fuzz::Require(NamesIn(base + "\\Temp") == "Quarda.mai Statistic.txt ", "no file is left behind");
  return 0;
}
