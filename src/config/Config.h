// The settings in Quarda.ini as plug-ins and the engine see them.
#pragma once

#include <QDIntf.h>

#include <cstdint>
#include <string_view>

#include "ConfigFile.h"
#include "SettingsStore.h"

namespace quarda {

/// The settings file: `MakeRef<TConfig>(name, app)`. A missing file is written with all defaults at
/// once. Nothing is cached: every getter reads the content in memory.
class TConfig final : public TConfigFileBase<IConfig, IConfigFile> {
 public:
  TConfig(std::string_view fileName, IQuardaApp* app);

  void QDCALL BuildConfigFile() override;
  TRef<IConfigFile> QDCALL OpenConfigFile(const AnsiString& fileName) override;

  TMailCheckMode QDCALL GetMailCheckMode() override {
    return settings_.Word<TMailCheckMode>("MailCheckMode");
  }
  void QDCALL SetMailCheckMode(TMailCheckMode value) override {
    settings_.SetWord("MailCheckMode", value);
  }
  bool QDCALL GetScanEmlAttachments() override { return settings_.Boolean("ScanEmlAttachments"); }
  void QDCALL SetScanEmlAttachments(bool value) override {
    settings_.SetBoolean("ScanEmlAttachments", value);
  }
  int32_t QDCALL GetMaxExecWaitTime() override { return settings_.Integer("MaxExecWaitTime"); }
  void QDCALL SetMaxExecWaitTime(int32_t value) override {
    settings_.SetInteger("MaxExecWaitTime", value);
  }
  bool QDCALL GetInformOnVirus() override { return settings_.Boolean("InformOnVirus"); }
  void QDCALL SetInformOnVirus(bool value) override {
    settings_.SetBoolean("InformOnVirus", value);
  }
  AnsiString QDCALL GetAdminAddress() override { return settings_.Text("AdminAddress"); }
  void QDCALL SetAdminAddress(const AnsiString& value) override {
    settings_.SetText("AdminAddress", value);
  }
  bool QDCALL GetLogging() override { return settings_.Boolean("Logging"); }
  void QDCALL SetLogging(bool value) override { settings_.SetBoolean("Logging", value); }
  int32_t QDCALL GetLogMode() override { return settings_.Integer("LogMode"); }
  void QDCALL SetLogMode(int32_t value) override { settings_.SetInteger("LogMode", value); }
  AnsiString QDCALL GetLogFilePath() override { return settings_.Text("LogFilePath"); }
  void QDCALL SetLogFilePath(const AnsiString& value) override {
    settings_.SetText("LogFilePath", value);
  }
  uint32_t QDCALL GetLogMaxFileSize() override { return settings_.Unsigned("LogMaxFileSize"); }
  void QDCALL SetLogMaxFileSize(uint32_t value) override {
    settings_.SetUnsigned("LogMaxFileSize", value);
  }
  bool QDCALL GetLogBackupFile() override { return settings_.Boolean("LogBackupFile"); }
  void QDCALL SetLogBackupFile(bool value) override {
    settings_.SetBoolean("LogBackupFile", value);
  }
  bool QDCALL GetLogSingleLine() override { return settings_.Boolean("LogSingleLine"); }
  void QDCALL SetLogSingleLine(bool value) override {
    settings_.SetBoolean("LogSingleLine", value);
  }
  bool QDCALL GetLogInOut() override { return settings_.Boolean("LogInOut"); }
  void QDCALL SetLogInOut(bool value) override { settings_.SetBoolean("LogInOut", value); }
  AnsiString QDCALL GetVirusScan() override { return settings_.Text("VirusScan"); }
  void QDCALL SetVirusScan(const AnsiString& value) override {
    settings_.SetText("VirusScan", value);
  }
  AnsiString QDCALL GetVirusScanExitCode() override { return settings_.Text("VirusScanExitCode"); }
  void QDCALL SetVirusScanExitCode(const AnsiString& value) override {
    settings_.SetText("VirusScanExitCode", value);
  }
  AnsiString QDCALL GetVirusScan2() override { return settings_.Text("VirusScan2"); }
  void QDCALL SetVirusScan2(const AnsiString& value) override {
    settings_.SetText("VirusScan2", value);
  }
  AnsiString QDCALL GetVirusScan2ExitCode() override {
    return settings_.Text("VirusScan2ExitCode");
  }
  void QDCALL SetVirusScan2ExitCode(const AnsiString& value) override {
    settings_.SetText("VirusScan2ExitCode", value);
  }
  AnsiString QDCALL GetMailVirusScan() override { return settings_.Text("MailVirusScan"); }
  void QDCALL SetMailVirusScan(const AnsiString& value) override {
    settings_.SetText("MailVirusScan", value);
  }
  AnsiString QDCALL GetMailVirusScanExitCode() override {
    return settings_.Text("MailVirusScanExitCode");
  }
  void QDCALL SetMailVirusScanExitCode(const AnsiString& value) override {
    settings_.SetText("MailVirusScanExitCode", value);
  }
  bool QDCALL GetIntelliVirusScan() override { return settings_.Boolean("IntelliVirusScan"); }
  void QDCALL SetIntelliVirusScan(bool value) override {
    settings_.SetBoolean("IntelliVirusScan", value);
  }
  TScanOnlyExtensions QDCALL GetScanOnlyExtensions() override {
    return settings_.Word<TScanOnlyExtensions>("ScanOnlyExtensions");
  }
  void QDCALL SetScanOnlyExtensions(TScanOnlyExtensions value) override {
    settings_.SetWord("ScanOnlyExtensions", value);
  }
  TRef<IStringList> QDCALL GetVirusScanFileExts() override {
    return ListOf(settings_.List("VirusScanFileExts"));
  }
  void QDCALL SetVirusScanFileExts(IStringList* value) override {
    settings_.SetList("VirusScanFileExts", LinesOf(value));
  }
  TRef<IStringList> QDCALL GetNoVirusScanFileExts() override {
    return ListOf(settings_.List("NoVirusScanFileExts"));
  }
  void QDCALL SetNoVirusScanFileExts(IStringList* value) override {
    settings_.SetList("NoVirusScanFileExts", LinesOf(value));
  }
  AnsiString QDCALL GetSpamFilter() override { return settings_.Text("SpamFilter"); }
  void QDCALL SetSpamFilter(const AnsiString& value) override {
    settings_.SetText("SpamFilter", value);
  }
  AnsiString QDCALL GetSpamFilter2() override { return settings_.Text("SpamFilter2"); }
  void QDCALL SetSpamFilter2(const AnsiString& value) override {
    settings_.SetText("SpamFilter2", value);
  }
  AnsiString QDCALL GetSpamFilterExitCode() override {
    return settings_.Text("SpamFilterExitCode");
  }
  void QDCALL SetSpamFilterExitCode(const AnsiString& value) override {
    settings_.SetText("SpamFilterExitCode", value);
  }
  AnsiString QDCALL GetSpamFilter2ExitCode() override {
    return settings_.Text("SpamFilter2ExitCode");
  }
  void QDCALL SetSpamFilter2ExitCode(const AnsiString& value) override {
    settings_.SetText("SpamFilter2ExitCode", value);
  }
  AnsiString QDCALL GetSpamFilterMailAddress() override {
    return settings_.Text("SpamFilterMailAddress");
  }
  void QDCALL SetSpamFilterMailAddress(const AnsiString& value) override {
    settings_.SetText("SpamFilterMailAddress", value);
  }
  bool QDCALL GetBlockInvalidAttachmentExts() override {
    return settings_.Boolean("BlockInvalidAttachmentExts");
  }
  void QDCALL SetBlockInvalidAttachmentExts(bool value) override {
    settings_.SetBoolean("BlockInvalidAttachmentExts", value);
  }
  TRef<IStringList> QDCALL GetInvalidAttachmentExts() override {
    return ListOf(settings_.List("InvalidAttachmentExts"));
  }
  void QDCALL SetInvalidAttachmentExts(IStringList* value) override {
    settings_.SetList("InvalidAttachmentExts", LinesOf(value));
  }
  bool QDCALL GetBlockOnDoubleAttachmentExts() override {
    return settings_.Boolean("BlockOnDoubleAttachmentExts");
  }
  void QDCALL SetBlockOnDoubleAttachmentExts(bool value) override {
    settings_.SetBoolean("BlockOnDoubleAttachmentExts", value);
  }
  TRef<IStringList> QDCALL GetAllowedDoubleAttachmentExts() override {
    return ListOf(settings_.List("AllowedDoubleAttachmentExts"));
  }
  void QDCALL SetAllowedDoubleAttachmentExts(IStringList* value) override {
    settings_.SetList("AllowedDoubleAttachmentExts", LinesOf(value));
  }
  TRef<IStringList> QDCALL GetInvalidDoubleAttachmentExts() override {
    return ListOf(settings_.List("InvalidDoubleAttachmentExts"));
  }
  void QDCALL SetInvalidDoubleAttachmentExts(IStringList* value) override {
    settings_.SetList("InvalidDoubleAttachmentExts", LinesOf(value));
  }
  TAttachmentBlockMode QDCALL GetBlockInvalidAttachments() override {
    return settings_.Word<TAttachmentBlockMode>("BlockInvalidAttachments");
  }
  void QDCALL SetBlockInvalidAttachments(TAttachmentBlockMode value) override {
    settings_.SetWord("BlockInvalidAttachments", value);
  }
  TRef<IStringList> QDCALL GetInvalidAttachments() override {
    return ListOf(settings_.List("InvalidAttachments"));
  }
  void QDCALL SetInvalidAttachments(IStringList* value) override {
    settings_.SetList("InvalidAttachments", LinesOf(value));
  }
  bool QDCALL GetMakePlainText() override { return settings_.Boolean("MakePlainText"); }
  void QDCALL SetMakePlainText(bool value) override {
    settings_.SetBoolean("MakePlainText", value);
  }
  TIFrameBlockMode QDCALL GetBlockIFrames() override {
    return settings_.Word<TIFrameBlockMode>("BlockIFrames");
  }
  void QDCALL SetBlockIFrames(TIFrameBlockMode value) override {
    settings_.SetWord("BlockIFrames", value);
  }
  bool QDCALL GetDisableActiveX() override { return settings_.Boolean("DisableActiveX"); }
  void QDCALL SetDisableActiveX(bool value) override {
    settings_.SetBoolean("DisableActiveX", value);
  }
  bool QDCALL GetDisableScripts() override { return settings_.Boolean("DisableScripts"); }
  void QDCALL SetDisableScripts(bool value) override {
    settings_.SetBoolean("DisableScripts", value);
  }
  bool QDCALL GetCheckHtmlAttachments() override {
    return settings_.Boolean("CheckHtmlAttachments");
  }
  void QDCALL SetCheckHtmlAttachments(bool value) override {
    settings_.SetBoolean("CheckHtmlAttachments", value);
  }
  bool QDCALL GetBlockOnVirusSubjects() override {
    return settings_.Boolean("BlockOnVirusSubjects");
  }
  void QDCALL SetBlockOnVirusSubjects(bool value) override {
    settings_.SetBoolean("BlockOnVirusSubjects", value);
  }
  TRef<IStringList> QDCALL GetVirusSubjects() override {
    return ListOf(settings_.List("VirusSubjects"));
  }
  void QDCALL SetVirusSubjects(IStringList* value) override {
    settings_.SetList("VirusSubjects", LinesOf(value));
  }
  TRef<IStringList> QDCALL GetNoVirusSubjects() override {
    return ListOf(settings_.List("NoVirusSubjects"));
  }
  void QDCALL SetNoVirusSubjects(IStringList* value) override {
    settings_.SetList("NoVirusSubjects", LinesOf(value));
  }
  bool QDCALL GetWarnOnSuspiciousSubjects() override {
    return settings_.Boolean("WarnOnSuspiciousSubjects");
  }
  void QDCALL SetWarnOnSuspiciousSubjects(bool value) override {
    settings_.SetBoolean("WarnOnSuspiciousSubjects", value);
  }
  TRef<IStringList> QDCALL GetSuspiciousSubjects() override {
    return ListOf(settings_.List("SuspiciousSubjects"));
  }
  void QDCALL SetSuspiciousSubjects(IStringList* value) override {
    settings_.SetList("SuspiciousSubjects", LinesOf(value));
  }
  TRef<IStringList> QDCALL GetNoSuspiciousSubjects() override {
    return ListOf(settings_.List("NoSuspiciousSubjects"));
  }
  void QDCALL SetNoSuspiciousSubjects(IStringList* value) override {
    settings_.SetList("NoSuspiciousSubjects", LinesOf(value));
  }
  TASmtpBlockMode QDCALL GetASmtpBlockMode() override {
    return settings_.Word<TASmtpBlockMode>("ASmtpBlockMode");
  }
  void QDCALL SetASmtpBlockMode(TASmtpBlockMode value) override {
    settings_.SetWord("ASmtpBlockMode", value);
  }
  TRef<IStringList> QDCALL GetASmtpAdresses() override {
    return ListOf(settings_.List("ASmtpAdresses"));
  }
  void QDCALL SetASmtpAdresses(IStringList* value) override {
    settings_.SetList("ASmtpAdresses", LinesOf(value));
  }
  bool QDCALL GetShowScannedText() override { return settings_.Boolean("ShowScannedText"); }
  void QDCALL SetShowScannedText(bool value) override {
    settings_.SetBoolean("ShowScannedText", value);
  }
  AnsiString QDCALL GetScannedText() override { return settings_.Text("ScannedText"); }
  void QDCALL SetScannedText(const AnsiString& value) override {
    settings_.SetText("ScannedText", value);
  }
  TScannedTextXHeader QDCALL GetScannedTextAsXHeader() override {
    return settings_.Word<TScannedTextXHeader>("ScannedTextAsXHeader");
  }
  void QDCALL SetScannedTextAsXHeader(TScannedTextXHeader value) override {
    settings_.SetWord("ScannedTextAsXHeader", value);
  }
  AnsiString QDCALL GetScannedTextPlainTextFormat() override {
    return settings_.Text("ScannedTextPlainTextFormat");
  }
  void QDCALL SetScannedTextPlainTextFormat(const AnsiString& value) override {
    settings_.SetText("ScannedTextPlainTextFormat", value);
  }
  AnsiString QDCALL GetScannedTextHtmlTextFormat() override {
    return settings_.Text("ScannedTextHtmlTextFormat");
  }
  void QDCALL SetScannedTextHtmlTextFormat(const AnsiString& value) override {
    settings_.SetText("ScannedTextHtmlTextFormat", value);
  }
  bool QDCALL GetScannedTextOnlyWithVirusScan() override {
    return settings_.Boolean("ScannedTextOnlyWithVirusScan");
  }
  void QDCALL SetScannedTextOnlyWithVirusScan(bool value) override {
    settings_.SetBoolean("ScannedTextOnlyWithVirusScan", value);
  }
  TRef<IStringList> QDCALL GetPluginList() override { return ListOf(settings_.List("PluginList")); }
  void QDCALL SetPluginList(IStringList* value) override {
    settings_.SetList("PluginList", LinesOf(value));
  }
  int32_t QDCALL GetRedAlertVirusMailCount() override {
    return settings_.Integer("RedAlertVirusMailCount");
  }
  void QDCALL SetRedAlertVirusMailCount(int32_t value) override {
    settings_.SetInteger("RedAlertVirusMailCount", value);
  }
  int32_t QDCALL GetRedAlertMinuteSpan() override {
    return settings_.Integer("RedAlertMinuteSpan");
  }
  void QDCALL SetRedAlertMinuteSpan(int32_t value) override {
    settings_.SetInteger("RedAlertMinuteSpan", value);
  }
  AnsiString QDCALL GetRedAlertAction() override { return settings_.Text("RedAlertAction"); }
  void QDCALL SetRedAlertAction(const AnsiString& value) override {
    settings_.SetText("RedAlertAction", value);
  }

 private:
  TSettingsStore settings_;
};

}  // namespace quarda
