// The settings: defaults, rules, older keys, the rebuilt file, and the manual that describes them.
#include <PlatformError.h>
#include <SettingsCatalogue.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "ConfigFolder.h"

namespace quarda {
namespace {

const char kFresh[] =
    "[Common]\r\nMailCheckMode=All\r\nScanEmlAttachments=1\r\nInformOnVirus=0\r\nAdminAddress=\r\n"
    "MaxExecWaitTime=20\r\n\r\n"
    "[Logging]\r\nLogging=1\r\nLogMode=1\r\nLogFilePath=\r\nLogMaxFileSize=128\r\n"
    "LogBackupFile=1\r\nLogSingleLine=1\r\nLogInOut=0\r\n\r\n"
    "[VirusScan]\r\nCommand1=\r\nCommand1VirusExitCode=1-99\r\nCommand2=\r\n"
    "Command2VirusExitCode=1-99\r\nMailScan=\r\nMailScanVirusExitCode=1-99\r\n"
    "IntelliVirusScan=1\r\nScanOnlyExtensions=Off\r\n"
    "ScanFileExts=exe/pif/com/bat/js/vbs/hta/cmd/jse/lnk/reg/wsh\r\n"
    "NoScanFileExts=.ini/.pdf/.php/.php3/.txt\r\n\r\n"
    "[Attachment Extensions]\r\nBlockInvalid=0\r\n"
    "InvalidExts=exe/bat/cmd/com/hta/jse/js/lnk/pif/plx/rb0/reg/scr/shs/vbe/vbs/wsf/wsh/ttf\r\n"
    "BlockDouble=0\r\nAllowedDoubleExts=exe/*.ace/*.rar/*.zip/tar.gz/*.tgz/*.doc/*.ppt/*.pps/"
    "*.xls/*.txt/*.ini/*.jpg/*.jpeg/*.gif/*.png/*.bmp\r\nInvalidDoubleExts=*.exe\r\n\r\n"
    "[Invalid Attachments Checks]\r\nBlockMode=None\r\n\r\n"
    "[Invalid Attachments]\r\n\r\n"
    "[text/html Checks]\r\nMakePlainText=0\r\nIFrameBlockMode=None\r\nDisableActiveX=0\r\n"
    "DisableScripts=0\r\nCheckHtmlAttachments=1\r\n\r\n"
    "[Subject Checks]\r\nBlockOnVirus=0\r\nWarnOnSuspicious=0\r\n\r\n"
    "[Virus Subjects]\r\n\r\n[No Virus Subjects]\r\n\r\n"
    "[Suspicious Subjects]\r\n\r\n[No Suspicious Subjects]\r\n\r\n"
    "[ASmtp Checks]\r\nBlockMode=SubjectNote\r\n\r\n"
    "[ASmtp Adresses]\r\n*@example.com\r\n*@example.org\r\n\r\n"
    "[Scanned Text]\r\nShow=0\r\nText=This mail has passed a server-based virus scan.\r\n"
    "XHeader=Append\r\nPlainTextFormat=\r\nHtmlTextFormat=\r\nOnlyWithVirusScan=1\r\n\r\n"
    "[Plugins]\r\n\r\n"
    "[Red Alert]\r\nVirusMailCount=0\r\nMinuteSpan=120\r\nAction=\r\n\r\n";

TEST(Settings, AFreshFileHoldsEveryDefault) {
  const TConfigFolder folder;
  const auto config = folder.OpenSettings();
  EXPECT_EQ(folder.Read("Quarda.ini"), kFresh) << "written when the file is missing";
  EXPECT_EQ(config->GetSpamFilterExitCode(), "1-99");
  EXPECT_EQ(config->GetSpamFilterMailAddress(), "spam@localhost");
  EXPECT_EQ(config->GetSpamFilter(), "");
}

// Every value differs from its default, so an accessor of the wrong key or form shows.
TEST(Settings, EveryAccessorWritesAndReadsItsOwnKey) {
  const TConfigFolder folder;
  const auto config = folder.OpenSettings();
  std::vector<std::string> seen;
  const auto check = [&](const char* name, std::string_view inFile, auto value, auto get,
                         auto set) {
    const TSetting* row = nullptr;
    for (const TSetting& setting : catalogue::kSettings) {
      if (setting.name == name) row = &setting;
    }
    ASSERT_NE(row, nullptr) << name;
    (config.Get()->*set)(value);
    const AnsiString key(row->key), section(row->section);
    EXPECT_EQ(row->key.empty() ? Joined(config->ReadSection(section))
                               : config->ReadString(section, key, "missing").Str(),
              inFile)
        << name;
    const auto read = (config.Get()->*get)();
    if constexpr (std::is_same_v<decltype(value), IStringList*>) {
      EXPECT_EQ(Joined(read), Joined(TRef<IStringList>(value))) << name;
    } else {
      EXPECT_EQ(read, value) << name;
    }
    seen.push_back(name);
  };
  const auto items = ListOf({"one", "two"});
#define CHECK(name, inFile, value) \
  check(#name, inFile, value, &IConfig::Get##name, &IConfig::Set##name)
#define CHECK_BOOL(name)   \
  CHECK(name, "0", false); \
  CHECK(name, "1", true)
#define CHECK_TEXT(name) CHECK(name, "my " #name, AnsiString("my " #name))
#define CHECK_ITEMS(name) CHECK(name, "one/two", items.Get())
#define CHECK_LINES(name) CHECK(name, "one|two|", items.Get())
  CHECK(MailCheckMode, "Incomming", mcmIncomming);
  CHECK_BOOL(ScanEmlAttachments);
  CHECK(MaxExecWaitTime, "-7", -7);
  CHECK_BOOL(InformOnVirus);
  CHECK_TEXT(AdminAddress);
  CHECK_BOOL(Logging);
  CHECK(LogMode, "4", 4);
  CHECK_TEXT(LogFilePath);
  CHECK(LogMaxFileSize, "4294967295", UINT32_MAX);
  CHECK_BOOL(LogBackupFile);
  CHECK_BOOL(LogSingleLine);
  CHECK_BOOL(LogInOut);
  CHECK_TEXT(VirusScan);
  CHECK_TEXT(VirusScanExitCode);
  CHECK_TEXT(VirusScan2);
  CHECK_TEXT(VirusScan2ExitCode);
  CHECK_TEXT(MailVirusScan);
  CHECK_TEXT(MailVirusScanExitCode);
  CHECK_BOOL(IntelliVirusScan);
  CHECK(ScanOnlyExtensions, "NotExt", soeNotExt);
  CHECK_ITEMS(VirusScanFileExts);
  CHECK_ITEMS(NoVirusScanFileExts);
  CHECK_TEXT(SpamFilter);
  CHECK_TEXT(SpamFilter2);
  CHECK_TEXT(SpamFilterExitCode);
  CHECK_TEXT(SpamFilter2ExitCode);
  CHECK_TEXT(SpamFilterMailAddress);
  CHECK_BOOL(BlockInvalidAttachmentExts);
  CHECK_ITEMS(InvalidAttachmentExts);
  CHECK_BOOL(BlockOnDoubleAttachmentExts);
  CHECK_ITEMS(AllowedDoubleAttachmentExts);
  CHECK_ITEMS(InvalidDoubleAttachmentExts);
  CHECK(BlockInvalidAttachments, "Remove", abmRemove);
  CHECK_LINES(InvalidAttachments);
  CHECK_BOOL(MakePlainText);
  CHECK(BlockIFrames, "CommentHttp", ibmCommentHttp);
  CHECK_BOOL(DisableActiveX);
  CHECK_BOOL(DisableScripts);
  CHECK_BOOL(CheckHtmlAttachments);
  CHECK_BOOL(BlockOnVirusSubjects);
  CHECK_LINES(VirusSubjects);
  CHECK_LINES(NoVirusSubjects);
  CHECK_BOOL(WarnOnSuspiciousSubjects);
  CHECK_LINES(SuspiciousSubjects);
  CHECK_LINES(NoSuspiciousSubjects);
  CHECK(ASmtpBlockMode, "MarkAsVirus", asbmMarkAsVirus);
  CHECK_LINES(ASmtpAdresses);
  CHECK_BOOL(ShowScannedText);
  CHECK_TEXT(ScannedText);
  CHECK(ScannedTextAsXHeader, "Both", stxhBoth);
  CHECK_TEXT(ScannedTextPlainTextFormat);
  CHECK_TEXT(ScannedTextHtmlTextFormat);
  CHECK_BOOL(ScannedTextOnlyWithVirusScan);
  CHECK_LINES(PluginList);
  CHECK(RedAlertVirusMailCount, "2", 2);
  CHECK(RedAlertMinuteSpan, "1", 1);
  CHECK_TEXT(RedAlertAction);
  std::sort(seen.begin(), seen.end());
  seen.erase(std::unique(seen.begin(), seen.end()), seen.end());
  EXPECT_EQ(seen.size(), std::size(catalogue::kSettings));
  const std::string changed = config->GetLines()->GetText().Str();
  config->Save();
  EXPECT_EQ(folder.Read("Quarda.ini"), changed);
}

// What a line of an old file becomes, and what stands in its place after a rebuild.
TEST(Settings, ReadAndRebuildByTheirRules) {
  using TGet = std::string (*)(IConfig&);
  const TGet mode = [](IConfig& c) { return std::to_string(c.GetMailCheckMode()); };
  const TGet wait = [](IConfig& c) { return std::to_string(c.GetMaxExecWaitTime()); };
  const TGet logMode = [](IConfig& c) { return std::to_string(c.GetLogMode()); };
  const TGet size = [](IConfig& c) { return std::to_string(c.GetLogMaxFileSize()); };
  const TGet only = [](IConfig& c) { return std::to_string(c.GetScanOnlyExtensions()); };
  const TGet exts = [](IConfig& c) { return Joined(c.GetVirusScanFileExts()); };
  const TGet code = [](IConfig& c) { return c.GetVirusScanExitCode().Str(); };
  const TGet count = [](IConfig& c) { return std::to_string(c.GetRedAlertVirusMailCount()); };
  const TGet span = [](IConfig& c) { return std::to_string(c.GetRedAlertMinuteSpan()); };
  const TGet admin = [](IConfig& c) { return c.GetAdminAddress().Str(); };
  const TGet text = [](IConfig& c) { return c.GetScannedText().Str(); };
  const TGet smtp = [](IConfig& c) { return Joined(c.GetASmtpAdresses()); };
  const TGet virus = [](IConfig& c) { return Joined(c.GetVirusSubjects()); };
  const struct {
    const char* before;
    TGet get;
    const char* value;
    const char* after;  // a piece of the rebuilt file
  } rows[] = {
      {"[common]\nmailcheckmode=OUTGOING", mode, "2", "[common]\r\nMailCheckMode=Outgoing\r\n"},
      {"[Common]\nMailCheckMode = Outgoing ", mode, "2", "\nMailCheckMode=Outgoing\r\n"},
      {"[Common]\nMailCheckMode=mcmOutgoing", mode, "0", "\nMailCheckMode=All\r\n"},
      {"[Common]\nMailCheckMode=", mode, "0", "\nMailCheckMode=All\r\n"},
      {"[Logging]\nMaxExecWaitTime=45", wait, "45", "MaxExecWaitTime=45\r\n\r\n[VirusScan]"},
      {"[Common]\nMaxExecWaitTime=9\n[Logging]\nMaxExecWaitTime=45", wait, "9", "Time=9\r\n"},
      {"[Common]\nMaxExecWaitTime=x\n[Logging]\nMaxExecWaitTime=45", wait, "20", "Time=20\r\n"},
      {"[Logging]\nLogMode=-1", logMode, "0", "\nLogMode=0\r\n"},
      {"[Logging]\nLogMode=x", logMode, "1", "\nLogMode=1\r\n"},
      {"[Logging]\nLogMaxFileSize=3000000000", size, "3000000000", "Size=3000000000\r\n"},
      {"[Logging]\nLogMaxFileSize=-1", size, "4294967295", "Size=4294967295\r\n"},
      {"[Logging]\nLogMaxFileSize=4294967296", size, "128", "Size=128\r\n"},
      {"[VirusScan]\nScanOnlyExecutables=1\nScanOnlyExtensions=NotExt", only, "1",
       "\nScanOnlyExtensions=Ext\r\n"},
      {"[VirusScan]\nScanOnlyExecutables=\nScanOnlyExtensions=NotExt", only, "0",
       "\nScanOnlyExtensions=Off\r\n"},
      {"[VirusScan]\nScanFileExts=", exts, "", "\nScanFileExts=\r\n"},
      {"[VirusScan]\nScanFileExts=exe//com/ / a/", exts, "exe|com| a|",
       "\nScanFileExts=exe/com/ a\r\n"},
      {"[VirusScan]\nCommand1VirusExitCode=  ", code, "1-99", "\nCommand1VirusExitCode=1-99\r\n"},
      {"[VirusScan]\nCommand1VirusExitCode= 3 ", code, "3", "\nCommand1VirusExitCode=3\r\n"},
      {"[Red Alert]\nVirusMailCount=1", count, "0", "\nVirusMailCount=0\r\n"},
      {"[Red Alert]\nVirusMailCount=-5", count, "0", "\nVirusMailCount=0\r\n"},
      {"[Red Alert]\nVirusMailCount=2", count, "2", "\nVirusMailCount=2\r\n"},
      {"[Red Alert]\nMinuteSpan=0", span, "1", "\nMinuteSpan=1\r\n"},
      {"[Common]\nAdminAddress= a@b ", admin, "a@b", "\nAdminAddress=a@b\r\n"},
      {"[Scanned Text]\nText=  ", text, "", "\nText=This mail has passed"},
      {"[ASmtp Adresses]\n \n\t\n", smtp, "*@example.com|*@example.org|", "\n*@example.com\r\n"},
      {"[ASmtp Adresses]\n*@a", smtp, "*@a|", "[ASmtp Adresses]\r\n*@a\r\n\r\n"},
      {"[virus subjects]\nb = 1 \n\na", virus, "b = 1 |a|",
       "[Virus Subjects]\r\nb = 1 \r\na\r\n\r\n[No Virus"},
  };
  for (const auto& row : rows) {
    const TConfigFolder folder;
    folder.Write("Quarda.ini", row.before);
    EXPECT_EQ(row.get(*folder.OpenSettings()), row.value) << row.before;
    const std::string after = folder.Rebuilt(row.before);
    EXPECT_NE(after.find(row.after), std::string::npos) << row.before << " gave " << after;
    EXPECT_EQ(after.find("ScanOnlyExecutables"), std::string::npos) << row.before;
    EXPECT_EQ(after.find("MaxExecWaitTime"), after.rfind("MaxExecWaitTime")) << row.before;
    const std::string again = folder.Rebuilt(after);  // the sections of lines move once more
    EXPECT_EQ(folder.Rebuilt(again), again) << row.before;
  }
}

TEST(Settings, SettersCorrectWhatTheyWrite) {
  const TConfigFolder folder;
  const auto config = folder.OpenSettings();
  config->SetScannedText("");
  EXPECT_EQ(config->GetScannedText(), "This mail has passed a server-based virus scan.");
  config->SetScannedText(" x ");
  config->SetAdminAddress(" a@b ");
  config->SetMailCheckMode(static_cast<TMailCheckMode>(9));
  config->SetVirusScanFileExts(nullptr);
  config->SetPluginList(nullptr);
  EXPECT_EQ(config->ReadString("Scanned Text", "Text", ""), "x");
  EXPECT_EQ(config->ReadString("Common", "AdminAddress", ""), "a@b");
  EXPECT_EQ(config->GetMailCheckMode(), mcmAll);
  EXPECT_EQ(config->ReadString("VirusScan", "ScanFileExts", "missing"), "");
  EXPECT_EQ(Joined(config->ReadSection("Plugins")), "");
  EXPECT_TRUE(config->SectionExists("Plugins"));
}

TEST(Settings, ReadingANegativeLogModeWritesItBack) {
  const TConfigFolder folder;
  folder.Write("Quarda.ini", "[Logging]\nLogMode=-4\n");
  folder.OpenSettings()->GetLogMode();
  EXPECT_EQ(folder.Read("Quarda.ini"), "[Logging]\r\nLogMode=0\r\n\r\n");
}

TEST(Settings, ARebuildKeepsWhatIsNotItsOwn) {
  const TConfigFolder folder;
  EXPECT_EQ(folder.Rebuilt("[My Plugin]\nk=1\n[SpamFilter]\nExitCode=\n[Plugins]\np.dll\n")
                .find("[My Plugin]\r\nk=1\r\n\r\n[SpamFilter]\r\nExitCode=\r\n\r\n[Common]\r\n"),
            0u);
  const std::string text = folder.Read("Quarda.ini");
  EXPECT_LT(text.find("[Red Alert]"), text.size());
  EXPECT_NE(text.find("[Plugins]\r\np.dll\r\n\r\n[Red Alert]"), std::string::npos);
  // On a complete file only the sections of lines move behind the others.
  const std::string again = folder.Rebuilt(text);
  EXPECT_LT(again.find("[Red Alert]"), again.find("[Invalid Attachments]"));
  EXPECT_TRUE(
      again.ends_with("[ASmtp Adresses]\r\n*@example.com\r\n*@example.org\r\n\r\n"
                      "[Plugins]\r\np.dll\r\n\r\n"));
  EXPECT_EQ(folder.Rebuilt(again), again);
}

TEST(Settings, OpenOtherFilesInTheBaseFolder) {
  const TConfigFolder folder;
  folder.Write("other.ini", "[s]\nk=1\n");
  const auto other = folder.OpenSettings()->OpenConfigFile("other.ini");
  EXPECT_EQ(other->ReadInteger("s", "k", 0), 1);
  EXPECT_EQ(other.As<IConfig>(), nullptr);
  EXPECT_NE(folder.OpenSettings().As<IConfigFile>(), nullptr);
}

TEST(Settings, AFailedRebuildIsReported) {
  const TConfigFolder folder;
  EXPECT_THROW(MakeRef<TConfig>("missing\\Quarda.ini", folder.app.Get()), platform::EPlatformError);
}

// ---- The manual

std::string Unquoted(std::string cell) {
  std::erase(cell, '`');
  const size_t first = cell.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return cell.substr(first, cell.find_last_not_of(' ') + 1 - first);
}

// Section -> key -> default, as the tables of the manual tell it.
std::map<std::string, std::map<std::string, std::string>> ReadManual() {
  std::ifstream file(QD_TEST_DATA "/../../docs/settings.md");
  std::map<std::string, std::map<std::string, std::string>> manual;
  std::string section;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("### [")) section = line.substr(5, line.rfind(']') - 5);
    if (line.starts_with("## ")) section.clear();
    if (section.empty() || !line.starts_with("| `")) continue;
    std::istringstream cells(line.substr(1));
    std::string key, fallback;
    std::getline(cells, key, '|');
    std::getline(cells, fallback, '|');
    manual[section][Unquoted(key)] = Unquoted(fallback);
  }
  return manual;
}

TEST(Settings, TheManualNamesThemAll) {
  std::map<std::string, std::map<std::string, std::string>> code;
  for (const TSetting& setting : catalogue::kSettings) {
    const std::string key(setting.key.empty() ? "lines" : setting.key);
    const std::string fallback(setting.fallback.empty() ? "empty" : setting.fallback);
    code[std::string(setting.section)][key] = fallback;
  }
  EXPECT_EQ(ReadManual(), code);
}

}  // namespace
}  // namespace quarda
