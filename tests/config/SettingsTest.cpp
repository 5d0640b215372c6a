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

TEST(Settings, AFreshFileHoldsEveryDefault) {
  const TConfigFolder folder;
  const auto config = folder.OpenSettings();
  EXPECT_EQ(folder.Read("Quarda.ini"),
            platform::ReadWholeFile(platform::WindowsPath(QD_TEST_DATA "/config/fresh.ini")))
      << "written when the file is missing";
  EXPECT_EQ(config->GetSpamFilterExitCode(), "1-99");
  EXPECT_EQ(config->GetSpamFilterMailAddress(), "spam@localhost");
  EXPECT_EQ(config->GetSpamFilter(), "");
}

template <class TGet, class TSet>
struct TAccessors {
  const char* name;
  TGet get;
  TSet set;
};
template <class TGet, class TSet>
TAccessors(const char*, TGet, TSet) -> TAccessors<TGet, TSet>;

// Every value differs from its default, so an accessor of the wrong key or form shows.
TEST(Settings, EveryAccessorWritesAndReadsItsOwnKey) {
  const TConfigFolder folder;
  const auto config = folder.OpenSettings();
  std::vector<std::string> seen;
  const auto check = [&](const auto& own, std::string_view inFile, auto value) {
    const auto row = std::ranges::find(catalogue::kSettings, own.name, &TSetting::name);
    ASSERT_NE(row, std::end(catalogue::kSettings)) << own.name;
    (config.Get()->*own.set)(value);
    const AnsiString key(row->key), section(row->section);
    EXPECT_EQ(row->key.empty() ? Joined(config->ReadSection(section))
                               : config->ReadString(section, key, "missing").Str(),
              inFile)
        << own.name;
    const auto read = (config.Get()->*own.get)();
    if constexpr (std::is_same_v<decltype(value), IStringList*>) {
      EXPECT_EQ(Joined(read), Joined(TRef<IStringList>(value))) << own.name;
    } else {
      EXPECT_EQ(read, value) << own.name;
    }
    seen.push_back(own.name);
  };
  const auto items = ListOf({"one", "two"});
  const auto text = [&](const auto& own) {
    check(own, std::string("my ") + own.name, AnsiString(std::string("my ") + own.name));
  };
  const auto truth = [&](const auto& own) { check(own, "0", false), check(own, "1", true); };
  const auto slashes = [&](const auto& own) { check(own, "one/two", items.Get()); };
  const auto lines = [&](const auto& own) { check(own, "one|two|", items.Get()); };
  const auto each = [](const auto& checks, const auto&... accessors) { (checks(accessors), ...); };
#define OF(name) TAccessors{#name, &IConfig::Get##name, &IConfig::Set##name}
  each(truth, OF(ScanEmlAttachments), OF(InformOnVirus), OF(Logging), OF(LogBackupFile),
       OF(LogSingleLine), OF(LogInOut), OF(IntelliVirusScan), OF(BlockInvalidAttachmentExts),
       OF(BlockOnDoubleAttachmentExts), OF(MakePlainText), OF(DisableActiveX), OF(DisableScripts),
       OF(CheckHtmlAttachments), OF(BlockOnVirusSubjects), OF(WarnOnSuspiciousSubjects),
       OF(ShowScannedText), OF(ScannedTextOnlyWithVirusScan));
  each(text, OF(AdminAddress), OF(LogFilePath), OF(VirusScan), OF(VirusScanExitCode),
       OF(VirusScan2), OF(VirusScan2ExitCode), OF(MailVirusScan), OF(MailVirusScanExitCode),
       OF(SpamFilter), OF(SpamFilter2), OF(SpamFilterExitCode), OF(SpamFilter2ExitCode),
       OF(SpamFilterMailAddress), OF(ScannedText), OF(ScannedTextPlainTextFormat),
       OF(ScannedTextHtmlTextFormat), OF(RedAlertAction));
  each(slashes, OF(VirusScanFileExts), OF(NoVirusScanFileExts), OF(InvalidAttachmentExts),
       OF(AllowedDoubleAttachmentExts), OF(InvalidDoubleAttachmentExts));
  each(lines, OF(InvalidAttachments), OF(VirusSubjects), OF(NoVirusSubjects),
       OF(SuspiciousSubjects), OF(NoSuspiciousSubjects), OF(ASmtpAdresses), OF(PluginList));
  check(OF(MailCheckMode), "Incomming", mcmIncomming);
  check(OF(MaxExecWaitTime), "-7", -7);
  check(OF(LogMode), "4", 4);
  check(OF(LogMaxFileSize), "4294967295", UINT32_MAX);
  check(OF(ScanOnlyExtensions), "NotExt", soeNotExt);
  check(OF(BlockInvalidAttachments), "Remove", abmRemove);
  check(OF(BlockIFrames), "CommentHttp", ibmCommentHttp);
  check(OF(ASmtpBlockMode), "MarkAsVirus", asbmMarkAsVirus);
  check(OF(ScannedTextAsXHeader), "Both", stxhBoth);
  check(OF(RedAlertVirusMailCount), "2", 2);
  check(OF(RedAlertMinuteSpan), "1", 1);
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
#define NUMBER(name) [](IConfig& c) { return std::to_string(c.Get##name()); }
#define TEXT(name) [](IConfig& c) { return c.Get##name().Str(); }
#define ITEMS(name) [](IConfig& c) { return Joined(c.Get##name()); }
  const TGet mode = NUMBER(MailCheckMode), wait = NUMBER(MaxExecWaitTime),
             logMode = NUMBER(LogMode), size = NUMBER(LogMaxFileSize),
             only = NUMBER(ScanOnlyExtensions), count = NUMBER(RedAlertVirusMailCount),
             span = NUMBER(RedAlertMinuteSpan), code = TEXT(VirusScanExitCode),
             admin = TEXT(AdminAddress), text = TEXT(ScannedText), exts = ITEMS(VirusScanFileExts),
             smtp = ITEMS(ASmtpAdresses), virus = ITEMS(VirusSubjects);
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

TEST(Settings, OpenTheirFiles) {
  const TConfigFolder folder;
  folder.Write("Quarda.ini", "[Logging]\nLogMode=-4\n");
  folder.OpenSettings()->GetLogMode();
  EXPECT_EQ(folder.Read("Quarda.ini"), "[Logging]\r\nLogMode=0\r\n\r\n") << "corrected at once";
  folder.Write("other.ini", "[s]\nk=1\n");
  const auto other = folder.OpenSettings()->OpenConfigFile("other.ini");
  EXPECT_EQ(other->ReadInteger("s", "k", 0), 1);
  EXPECT_EQ(other.As<IConfig>(), nullptr);
  EXPECT_NE(folder.OpenSettings().As<IConfigFile>(), nullptr);
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
