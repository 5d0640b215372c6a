// Any bytes as an incoming and as an outgoing mail, scanned whole with every check on: the scan
// ends with a verdict, its temporary files are gone, and a mail that was refused is kept or
// reported.
#include <Application.h>
#include <Files.h>
#include <TempFolder.h>

#include <string>

#include "Fuzz.h"

using namespace quarda;

namespace {

constexpr std::string_view kSettings =
    "[Common]\r\nInformOnVirus=1\r\nAdminAddress=a@b\r\n"
    "[Logging]\r\nLogMode=4\r\nLogInOut=1\r\n"
    "[VirusScan]\r\nIntelliVirusScan=1\r\n"
    "[Attachment Extensions]\r\nBlockInvalid=1\r\nInvalidExts=exe\r\nBlockDouble=1\r\n"
    "AllowedDoubleExts=*.*\r\n"
    "[Invalid Attachments Checks]\r\nBlockMode=MarkAsVirus\r\n"
    "[Invalid Attachments]\r\n*.scr=screen saver\r\n"
    "[Subject Checks]\r\nBlockOnVirus=1\r\nWarnOnSuspicious=1\r\n"
    "[Virus Subjects]\r\n*prize*\r\n[Suspicious Subjects]\r\n*free*\r\n"
    "[text/html Checks]\r\nIFrameBlockMode=Remove\r\nDisableActiveX=1\r\nDisableScripts=1\r\n"
    "CheckHtmlAttachments=1\r\n"
    "[Scanned Text]\r\nShow=1\r\nXHeader=Both\r\nOnlyWithVirusScan=0\r\n";

std::string NamesIn(const std::string& folder) {
  std::string names;
  for (const auto& file : platform::FindFiles(folder + "\\*")) names += file.name + " ";
  return names;
}

/// Takes the report of a virus mail out of the administrator's account; empty without one.
std::string TakeReport(const std::string& base) {
  const std::string path = base + "\\z\\In_00001.mai";
  if (!platform::FileExists(path)) return {};
  const std::string report = platform::ReadWholeFile(path);
  platform::RemoveFile(path);
  return report;
}

void Scan(const TTempFolder& folder, const std::string& name, const std::string& text) {
  static const std::string base = folder.Path();
  const std::string mail = folder.Write(name, text);
  const int32_t exitCode = RunCommandLine("engine.exe \"" + mail + "\"", {base});
  fuzz::Require(exitCode == 0 || exitCode == 1, "a verdict");
  fuzz::Require(exitCode == 0 || platform::ReadWholeFile(mail) == text, "a refused mail is kept");
  const std::string report = TakeReport(base);
  fuzz::Require(report.empty() || (exitCode == 0 && report.find(text) != report.npos),
                "a report holds the mail");
  fuzz::Require(NamesIn(base + "\\Temp") == "Quarda.mai Statistic.txt ", "no file is left behind");
  fuzz::Require(NamesIn(base + "\\z") == "a@b ", "none in the account either");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const TTempFolder folder;
  folder.Write("z/a@b", "");
  folder.Write("QDVirusMail.txt", "$VirusReason$\r\n");
  platform::RemoveFile(folder.Path("Quarda.log"));
  folder.Write("Quarda.ini", std::string(kSettings));
  const std::string text(fuzz::AsText(data, size));
  for (const char* const name : {"in_1.inp", "out_1.inp"}) Scan(folder, name, text);
  return 0;
}
