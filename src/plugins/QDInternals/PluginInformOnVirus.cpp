#include "PluginInformOnVirus.h"

#include <CodePage.h>
#include <Errors.h>
#include <Files.h>
#include <Utils.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <utility>

#include "Messages.h"
#include "NumberedFiles.h"
#include "StaleFiles.h"

namespace quarda {
namespace {

constexpr std::string_view kMoved = "Moved .vir file to the admin's mail account. (%s)";
constexpr std::string_view kNoNotice = "QDVirusMail.txt does not exist.";
constexpr std::string_view kNoAdmin =
    "Admin Address \"%s\" does not exist. No user inform mail generated.";
constexpr std::string_view kToAdmin =
    "Admin Address \"%s\" is in the \"%s\" list. No user inform mail generated.";
constexpr std::string_view kNoReportText = "QDVirusAdminMail.txt does not exist.";
constexpr std::string_view kReplaced = "File replaced: %s";
constexpr std::string_view kNotRegistered =
    "Could not add mail to SQLite database. No user inform mail generated.";
constexpr std::string_view kTooManyMails =
    "Too many mails in mail folder. No user inform mail generated.";
constexpr std::string_view kCannotFlush = "The report \"%s\" cannot be written to the disk.";
constexpr std::string_view kPassed = "passed";

constexpr std::string_view kNoticeFile = "QDVirusMail.txt";
constexpr std::string_view kReportTextFile = "QDVirusAdminMail.txt";
/// Who sends the reports: a mailbox of the site. docs/checks.md tells where to change it.
constexpr std::string_view kReportSender = "mailer-daemon@localhost";
constexpr std::string_view kReasonMacro = "$VIRUSREASON$";
/// In the subject of a mail that was a notification before.
constexpr std::string_view kVirusSubject = "VIRUS: ";
constexpr int32_t kLastMailNumber = 99997;
constexpr size_t kCopyBlock = 256 << 10;

TNumberedNames MailNames(const std::string& accountDir, std::string suffix = ".mai") {
  return {accountDir + "\\In_", 5, std::move(suffix), 1, kLastMailNumber};
}

std::string MailFolder(IQuardaInstance& instance) {
  return ExtractFileDir(platform::FullPath(instance.GetArguments()->GetFilename()));
}

std::string BasePath(IQuardaInstance& instance, std::string_view name) {
  return Concat({instance.GetQuardaPath(), "\\", name});
}

/// The text in a file of the base folder, with the reason in place of its macro.
std::string FilledTemplate(IQuardaInstance& instance, std::string_view name) {
  const std::string reason = instance.GetGlobalData(kVirusReason).Str();
  return ReplaceMacrosEx(platform::ReadWholeFile(BasePath(instance, name)),
                         [&reason](std::string& macro) {
                           if (!platform::SameAnsiText(macro, kReasonMacro)) return false;
                           macro = reason;
                           return true;
                         });
}

std::string HeaderLines(IHeader& header) {
  std::string lines;
  const int32_t count = header.GetCount();
  for (int32_t i = 0; i < count; ++i) {
    const TRef<IHeaderItem> item = header.GetItems(i);
    lines += Concat({item->GetName(), ": ", item->GetValuesAsText(), "\r\n"});
  }
  return lines;
}

/// A decoded value may hold line breaks that would begin another field.
std::string OneLine(std::string_view value) {
  std::string line(value);
  std::ranges::replace_if(
      line, [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
  return line;
}

std::string ReportHeader(IMail& mail) {
  return Concat({"Message-Id: ", OneLine(mail.GetMessageID()), "\r\n", "From: \"Quarda\" <",
                 kReportSender, ">\r\n", "To: ", OneLine(mail.GetTo()), "\r\n",
                 "Date: ", OneLine(mail.GetDate()), "\r\n",
                 "Subject: Virus: ", OneLine(mail.GetSubject()), "!\r\n",
                 "MIME-Version: 1.0\r\n"
                 "Content-Type: multipart/mixed;\r\n"
                 "    boundary=\"----=_NextPart_Quarda\"\r\n"
                 "X-Mailer: Quarda\r\n"
                 "\r\n"
                 "This is a multi-part message in MIME format.\r\n"
                 "------=_NextPart_Quarda\r\n"
                 "Content-Type: text/plain;\r\n"
                 "    charset=\"iso-8859-1\"\r\n"
                 "Content-Transfer-Encoding: 8bit\r\n"
                 "\r\n"});
}

constexpr std::string_view kAttachedMailHeader =
    "------=_NextPart_Quarda\r\n"
    "Content-Type: message/rfc822;\r\n"
    "    name=\"OrginalEmail.eml\"\r\n"
    "Content-Transfer-Encoding: 7bit\r\n"
    "Content-Disposition: attachment;\r\n"
    "    filename=\"OrginalEmail.eml\"\r\n"
    "\r\n";
constexpr std::string_view kReportEnd = "------=_NextPart_Quarda--\r\n";

/// Appends the bytes of a file, of whatever size; returns whether a line ends with the last one.
bool AppendFile(platform::TFile& target, std::string_view path) {
  platform::TFile source(path, platform::TOpenMode::kRead);
  std::string buffer(kCopyBlock, '\0');
  char last = '\0';
  while (const size_t size = source.Read(buffer.data(), buffer.size())) {
    target.Write(buffer.data(), size);
    last = buffer[size - 1];
  }
  return last == '\n';
}

/// All of the report that begins with these lines, down to the disk.
void WriteReportTo(std::string_view path, std::string_view beginning, std::string_view virusMail) {
  platform::TFile report(path, platform::TOpenMode::kAppend);
  report.Write(beginning.data(), beginning.size());
  const std::string_view lineEnd = AppendFile(report, virusMail) ? "" : "\r\n";
  const std::string end = Concat({lineEnd, kReportEnd});
  report.Write(end.data(), end.size());
  report.Flush();
}

/// The mail that the recipient gets in place of the virus mail.
TRef<IMail> MakeNotice(IQuardaInstance& instance, IMail& mail) {
  constexpr std::string_view kEmptyMail = "\r\n";
  TRef<IMail> notice =
      instance.LoadMailFromMemory(kEmptyMail.data(), static_cast<int32_t>(kEmptyMail.size()));
  if (!notice) throw EError("Cannot make a mail.");
  const TRef<IHeader> header = mail.GetHeader();
  notice->GetHeader()->Assign(header.Get());
  notice->SetContentType("text/plain");
  notice->SetSubject(Concat({"Quarda - Virus: ", mail.GetSubject()}));
  notice->SetText(FilledTemplate(instance, kNoticeFile) + HeaderLines(*header));
  return notice;
}

/// Removes unfinished reports and copies of scans that were killed.
void TidyUp(IQuardaInstance& instance, const std::string& adminDir) {
  const platform::TClock& clock = platform::SystemClock();
  if (IsFirstScanOfDay(platform::FileStamp(StatisticsPath(instance)), clock)) {
    RemoveStaleFiles(adminDir, {{"In_", 5, ".tmp"}}, clock);
  }
}

bool HoldsAddress(const TRef<IStringList>& list, const std::string& address) {
  const int32_t count = list->GetCount();
  for (int32_t i = 0; i < count; ++i) {
    if (platform::LowerAnsi(list->GetStrings(i)).find(address) != std::string::npos) return true;
  }
  return false;
}

}  // namespace

std::string TPluginInformOnVirus::FindMailAdminDir(IQuardaInstance& instance) {
  const std::string address = instance.GetConfig()->GetAdminAddress().Str();
  const std::string mailFolder = MailFolder(instance);
  if (address.empty()) return {};
  for (const std::string& name : platform::FindFolders(mailFolder)) {
    std::string account = JoinPath(mailFolder, name);
    if (platform::FileExists(Concat({account, "\\", address}))) return account;
  }
  return {};
}

bool TPluginInformOnVirus::AddMailFileToMailDb(IQuardaInstance&, const std::string& fileName,
                                               std::string_view) {
  return platform::FileExists(fileName);
}

bool TPluginInformOnVirus::DoExecute(IQuardaInstance& instance) {
  try {
    MoveQuarantined(instance);
  } catch (...) {
    // They stay where they are until a later scan; no mail waits for that.
  }
  return true;
}

void TPluginInformOnVirus::MoveQuarantined(IQuardaInstance& instance) {
  if (instance.GetApp()->GetInstanceCount() > 1) return;
  const std::string adminDir = FindMailAdminDir(instance);
  if (adminDir.empty()) return;
  TidyUp(instance, adminDir);
  TNumberedNames names = MailNames(adminDir);
  const std::string mailFolder = MailFolder(instance);
  for (const platform::TFileRecord& file : platform::FindFiles(JoinPath(mailFolder, "*.vir"))) {
    if ((file.attributes & platform::kFolder) != 0) continue;
    if (!MoveToAdmin(instance, JoinPath(mailFolder, file.name), names)) return;
  }
}

// False when no name is left. A file that cannot be moved does not hold up those behind it.
bool TPluginInformOnVirus::MoveToAdmin(IQuardaInstance& instance, const std::string& file,
                                       TNumberedNames& names) {
  try {
    const auto moved = MoveToFreeName(file, names);
    if (moved) instance.LogDebug(this, FillIn(kMoved, {ExtractFileName(*moved)}));
    return moved.has_value();
  } catch (const std::exception&) {
    return true;
  }
}

void TPluginInformOnVirus::Done(IQuardaInstance* instance, bool passed) {
  if (passed || !IsWanted(*instance)) return;
  const std::string adminDir = FindMailAdminDir(*instance);
  if (adminDir.empty()) {
    instance->LogWarn(this, FillIn(kNoAdmin, {instance->GetConfig()->GetAdminAddress()}));
    return;
  }
  if (!IsToAdmin(*instance, *instance->GetMail())) Inform(*instance, adminDir);
}

bool TPluginInformOnVirus::IsWanted(IQuardaInstance& instance) {
  if (instance.GetApp()->GetInstanceCount() > 1 || instance.GetMailType() != mtInMail ||
      !instance.GetConfig()->GetInformOnVirus()) {
    return false;
  }
  if (!platform::FileExists(BasePath(instance, kNoticeFile))) {
    instance.LogDebug(this, kNoNotice);
    return false;
  }
  return instance.GetMail()->GetSubject().View().find(kVirusSubject) == std::string_view::npos;
}

bool TPluginInformOnVirus::IsToAdmin(IQuardaInstance& instance, IMail& mail) {
  const AnsiString address = instance.GetConfig()->GetAdminAddress();
  const std::string lower = platform::LowerAnsi(address);
  std::string_view list;
  if (HoldsAddress(mail.GetToList(), lower)) {
    list = "TO:";
  } else if (HoldsAddress(mail.GetCcList(), lower)) {
    list = "CC:";
  } else if (HoldsAddress(mail.GetBccList(), lower)) {
    list = "BCC:";
  }
  if (!list.empty()) instance.LogWarn(this, FillIn(kToAdmin, {address, list}));
  return !list.empty();
}

// The report is complete and on the disk before the mail is touched.
void TPluginInformOnVirus::Inform(IQuardaInstance& instance, const std::string& adminDir) {
  const TRef<IMail> mail = instance.GetMail();
  const TRef<IMail> notice = MakeNotice(instance, *mail);
  if (WriteReport(instance, *mail, adminDir)) {
    const AnsiString mailFile = mail->GetMailFileName();
    mail->Assign(notice.Get());
    mail->SaveToFile(mailFile);
    instance.LogDebug(this, FillIn(kReplaced, {mailFile}));
    instance.SetGlobalData(kIgnoreResult, "1");
  }
  instance.LogOK(this, kPassed);
}

bool TPluginInformOnVirus::WriteReport(IQuardaInstance& instance, IMail& mail,
                                       const std::string& adminDir) {
  TidyUp(instance, adminDir);
  // The server takes every ".mai" file for a mail, so it gets that name when it is one.
  TTempFile file(MailNames(adminDir, ".tmp"), {});
  WriteReportTo(file.Path(),
                Concat({ReportHeader(mail), ReportText(instance, mail),
                        HeaderLines(*mail.GetHeader()), kAttachedMailHeader}),
                mail.GetMailFileName());
  TNumberedNames names = MailNames(adminDir);
  const auto mailFile = file.MoveTo(names);
  if (!mailFile) {
    instance.LogError(this, kTooManyMails);
    return false;
  }
  if (!platform::FlushFolder(adminDir)) {
    platform::RemoveFile(*mailFile);
    throw EError(FillIn(kCannotFlush, {*mailFile}));
  }
  if (AddMailFileToMailDb(instance, *mailFile, {})) return true;
  platform::RemoveFile(*mailFile);
  instance.LogError(this, kNotRegistered);
  return false;
}

std::string TPluginInformOnVirus::ReportText(IQuardaInstance& instance, IMail& mail) {
  if (platform::FileExists(BasePath(instance, kReportTextFile))) {
    return FilledTemplate(instance, kReportTextFile);
  }
  instance.LogDebug(this, kNoReportText);
  return Concat({mail.GetTo(), " has received an virus.\r\nReason: ",
                 instance.GetGlobalData(kVirusReason), "\r\n\r\noriginal Mail-Header:\r\n"});
}

}  // namespace quarda
