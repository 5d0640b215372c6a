// Every setting of Quarda.ini: where it stands, its form, its default and the rules of its value.
// docs/settings.md tells administrators the same; a test compares the two.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

namespace quarda {

enum class TSettingForm {
  kBoolean,    ///< "1" or "0"
  kInteger,    ///< decimal
  kUnsigned,   ///< decimal, 32 bits without sign
  kText,       ///< the text itself
  kWord,       ///< one of some words
  kSlashList,  ///< items joined with "/"
  kSection,    ///< a section of its own, one item for each line
};

struct TSetting {
  std::string_view name;  ///< of the accessors, without Get and Set
  std::string_view section;
  std::string_view key;  ///< empty for a section of its own
  TSettingForm form;
  /// The default as the file holds it; that of a section joined with "/".
  std::string_view fallback;
  std::span<const std::string_view> words{};  ///< by ordinal

  /// An integer below `smallest` is read as `corrected`.
  int32_t smallest = std::numeric_limits<int32_t>::min();
  int32_t corrected = 0;
  bool correctsAtOnce = false;  ///< and the correction is written when it is read
  bool trimsOnRead = false;
  bool trimsOnWrite = false;
  bool emptyReadsFallback = false;   ///< the default stands for an empty text
  bool emptyWritesFallback = false;  ///< the default is written for an empty text
  bool onDemand = false;             ///< not in a rebuilt file unless somebody wrote it
  /// Where older files hold the setting; deleted when it is written. An integer is read from there
  /// when its present place is empty. For words it is a Boolean that outweighs the present place:
  /// true stands for the second word, false for the first.
  std::string_view olderSection{};
  std::string_view olderKey{};

  constexpr TSetting Raised(int32_t least, int32_t instead) const {
    TSetting setting = *this;
    setting.smallest = least;
    setting.corrected = instead;
    return setting;
  }
  constexpr TSetting CorrectedAtOnce() const {
    TSetting setting = *this;
    setting.correctsAtOnce = true;
    return setting;
  }
  constexpr TSetting Trimmed() const {
    TSetting setting = *this;
    setting.trimsOnRead = setting.trimsOnWrite = true;
    return setting;
  }
  constexpr TSetting NeverWrittenEmpty() const {
    TSetting setting = *this;
    setting.emptyWritesFallback = true;
    return setting;
  }
  constexpr TSetting OnDemand() const {
    TSetting setting = *this;
    setting.onDemand = true;
    return setting;
  }
  constexpr TSetting Older(std::string_view oldSection, std::string_view oldKey) const {
    TSetting setting = *this;
    setting.olderSection = oldSection;
    setting.olderKey = oldKey;
    return setting;
  }
};

namespace catalogue {

using TText = std::string_view;
using enum TSettingForm;

constexpr TSetting Boolean(TText name, TText section, TText key, bool fallback) {
  return {name, section, key, kBoolean, fallback ? "1" : "0"};
}
constexpr TSetting Integer(TText name, TText section, TText key, TText fallback) {
  return {name, section, key, kInteger, fallback};
}
constexpr TSetting Text(TText name, TText section, TText key, TText fallback = "") {
  return {name, section, key, kText, fallback};
}
constexpr TSetting Numbers(TText name, TText section, TText key) {
  TSetting setting{name, section, key, kText, "1-99"};
  setting.trimsOnRead = setting.emptyReadsFallback = true;
  return setting;
}
constexpr TSetting Word(TText name, TText section, TText key, TText fallback,
                        std::span<const TText> words) {
  return {name, section, key, kWord, fallback, words};
}
constexpr TSetting Items(TText name, TText section, TText key, TText fallback) {
  return {name, section, key, kSlashList, fallback};
}
constexpr TSetting Section(TText name, TText section, TText fallback = "") {
  return {name, section, "", kSection, fallback};
}

inline constexpr TText kMailCheckModes[] = {"All", "Incomming", "Outgoing"};
inline constexpr TText kScanOnlyExtensions[] = {"Off", "Ext", "NotExt"};
inline constexpr TText kAttachmentBlockModes[] = {"None", "MarkAsVirus", "Remove"};
inline constexpr TText kIFrameBlockModes[] = {"None",       "MarkAsVirus", "AllowHttp",
                                              "CommentAll", "CommentHttp", "Remove"};
inline constexpr TText kASmtpBlockModes[] = {"None", "MarkAsVirus", "SubjectNote"};
inline constexpr TText kScannedTextXHeaders[] = {"Append", "XHeader", "Both"};

inline constexpr TText kCommon = "Common";
inline constexpr TText kLogging = "Logging";
inline constexpr TText kVirusScan = "VirusScan";
inline constexpr TText kSpamFilter = "SpamFilter";
inline constexpr TText kExtensions = "Attachment Extensions";
inline constexpr TText kHtml = "text/html Checks";
inline constexpr TText kSubject = "Subject Checks";
inline constexpr TText kScannedText = "Scanned Text";
inline constexpr TText kRedAlert = "Red Alert";

/// All settings, in the order in which a rebuilt file is written.
inline constexpr TSetting kSettings[] = {
    Word("MailCheckMode", kCommon, "MailCheckMode", "All", kMailCheckModes),
    Boolean("ScanEmlAttachments", kCommon, "ScanEmlAttachments", true),
    Boolean("InformOnVirus", kCommon, "InformOnVirus", false),
    Text("AdminAddress", kCommon, "AdminAddress").Trimmed(),
    Boolean("Logging", kLogging, "Logging", true),
    Integer("LogMode", kLogging, "LogMode", "1").Raised(0, 0).CorrectedAtOnce(),
    Text("LogFilePath", kLogging, "LogFilePath"),
    {"LogMaxFileSize", kLogging, "LogMaxFileSize", kUnsigned, "128"},
    Boolean("LogBackupFile", kLogging, "LogBackupFile", true),
    Integer("MaxExecWaitTime", kCommon, "MaxExecWaitTime", "20").Older(kLogging, "MaxExecWaitTime"),
    Boolean("LogSingleLine", kLogging, "LogSingleLine", true),
    Boolean("LogInOut", kLogging, "LogInOut", false),

    Text("VirusScan", kVirusScan, "Command1"),
    Numbers("VirusScanExitCode", kVirusScan, "Command1VirusExitCode"),
    Text("VirusScan2", kVirusScan, "Command2"),
    Numbers("VirusScan2ExitCode", kVirusScan, "Command2VirusExitCode"),
    Text("MailVirusScan", kVirusScan, "MailScan"),
    Numbers("MailVirusScanExitCode", kVirusScan, "MailScanVirusExitCode"),
    Boolean("IntelliVirusScan", kVirusScan, "IntelliVirusScan", true),
    Word("ScanOnlyExtensions", kVirusScan, "ScanOnlyExtensions", "Off", kScanOnlyExtensions)
        .Older(kVirusScan, "ScanOnlyExecutables"),
    Items("VirusScanFileExts", kVirusScan, "ScanFileExts",
          "exe/pif/com/bat/js/vbs/hta/cmd/jse/lnk/reg/wsh"),
    Items("NoVirusScanFileExts", kVirusScan, "NoScanFileExts", ".ini/.pdf/.php/.php3/.txt"),

    Text("SpamFilter", kSpamFilter, "SpamFilter").OnDemand(),
    Text("SpamFilter2", kSpamFilter, "SpamFilter2").OnDemand(),
    Numbers("SpamFilterExitCode", kSpamFilter, "ExitCode").OnDemand(),
    Numbers("SpamFilter2ExitCode", kSpamFilter, "ExitCode2").OnDemand(),
    Text("SpamFilterMailAddress", kSpamFilter, "MailAddress", "spam@localhost").OnDemand(),

    Boolean("BlockInvalidAttachmentExts", kExtensions, "BlockInvalid", false),
    Items("InvalidAttachmentExts", kExtensions, "InvalidExts",
          "exe/bat/cmd/com/hta/jse/js/lnk/pif/plx/rb0/reg/scr/shs/vbe/vbs/wsf/wsh/ttf"),
    Boolean("BlockOnDoubleAttachmentExts", kExtensions, "BlockDouble", false),
    Items("AllowedDoubleAttachmentExts", kExtensions, "AllowedDoubleExts",
          "exe/*.ace/*.rar/*.zip/tar.gz/*.tgz/*.doc/*.ppt/*.pps/*.xls/*.txt/*.ini/*.jpg/*.jpeg/"
          "*.gif/*.png/*.bmp"),
    Items("InvalidDoubleAttachmentExts", kExtensions, "InvalidDoubleExts", "*.exe"),
    Word("BlockInvalidAttachments", "Invalid Attachments Checks", "BlockMode", "None",
         kAttachmentBlockModes),
    Section("InvalidAttachments", "Invalid Attachments"),

    Boolean("MakePlainText", kHtml, "MakePlainText", false),
    Word("BlockIFrames", kHtml, "IFrameBlockMode", "None", kIFrameBlockModes),
    Boolean("DisableActiveX", kHtml, "DisableActiveX", false),
    Boolean("DisableScripts", kHtml, "DisableScripts", false),
    Boolean("CheckHtmlAttachments", kHtml, "CheckHtmlAttachments", true),

    Boolean("BlockOnVirusSubjects", kSubject, "BlockOnVirus", false),
    Section("VirusSubjects", "Virus Subjects"),
    Section("NoVirusSubjects", "No Virus Subjects"),
    Boolean("WarnOnSuspiciousSubjects", kSubject, "WarnOnSuspicious", false),
    Section("SuspiciousSubjects", "Suspicious Subjects"),
    Section("NoSuspiciousSubjects", "No Suspicious Subjects"),

    Word("ASmtpBlockMode", "ASmtp Checks", "BlockMode", "SubjectNote", kASmtpBlockModes),
    Section("ASmtpAdresses", "ASmtp Adresses", "*@example.com/*@example.org"),

    Boolean("ShowScannedText", kScannedText, "Show", false),
    Text("ScannedText", kScannedText, "Text", "This mail has passed a server-based virus scan.")
        .Trimmed()
        .NeverWrittenEmpty(),
    Word("ScannedTextAsXHeader", kScannedText, "XHeader", "Append", kScannedTextXHeaders),
    Text("ScannedTextPlainTextFormat", kScannedText, "PlainTextFormat").Trimmed(),
    Text("ScannedTextHtmlTextFormat", kScannedText, "HtmlTextFormat").Trimmed(),
    Boolean("ScannedTextOnlyWithVirusScan", kScannedText, "OnlyWithVirusScan", true),
    Section("PluginList", "Plugins"),
    Integer("RedAlertVirusMailCount", kRedAlert, "VirusMailCount", "0").Raised(2, 0),
    Integer("RedAlertMinuteSpan", kRedAlert, "MinuteSpan", "120").Raised(1, 1),
    Text("RedAlertAction", kRedAlert, "Action"),
};

}  // namespace catalogue

/// A setting named in the code; a name that is not in the catalogue does not compile.
class TSettingName {
 public:
  consteval TSettingName(const char* name) : setting_(Find(name)) {}
  constexpr TSettingName(const TSetting& setting) : setting_(setting) {}
  constexpr const TSetting* operator->() const noexcept { return &setting_; }
  constexpr const TSetting& operator*() const noexcept { return setting_; }

 private:
  static consteval const TSetting& Find(std::string_view name) {
    for (const TSetting& setting : catalogue::kSettings) {
      if (setting.name == name) return setting;
    }
    throw "no such setting";
  }

  const TSetting& setting_;
};

}  // namespace quarda
