#include "PluginExtractEml.h"

#include <Clock.h>
#include <CodePage.h>
#include <Errors.h>
#include <Files.h>
#include <MailReadTnef.h>
#include <Utils.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <new>
#include <optional>
#include <utility>

#include "Messages.h"
#include "NumberedFiles.h"

namespace quarda {
namespace {

constexpr std::string_view kBeginMail = "--- begin eml attachment \"%s\" ---------------";
constexpr std::string_view kInvalidMail = "Invalid eml attachment";
constexpr std::string_view kEndMail = "--- end eml attachment \"%s\" -----------------";
constexpr std::string_view kBeginContainer = "--- begin ms-tnef attachment \"%s\" ---------------";
constexpr std::string_view kEndContainer = "--- end ms-tnef attachment \"%s\" -----------------";
constexpr std::string_view kHiddenExecutable = "hidden executable: \"%s\"";
constexpr std::string_view kReplacing =
    "* Replacing content of \"%s\" by the content of the temporary file \"%s\"";
constexpr std::string_view kBadContainer = "Error extracting ms-tnef attachment: %s";
constexpr std::string_view kNestedError = "ERROR: Exception %s: %s";
constexpr std::string_view kTooDeep =
    "Attachments nested more than 100 deep are not opened: \"%s\"";
constexpr std::string_view kTooLarge =
    "Attachments nested in each other are too large to be opened: \"%s\"";
constexpr std::string_view kNoMemory = "Not enough memory to open the attachment: \"%s\"";
constexpr std::string_view kPassed = "passed";

constexpr int32_t kDeepestNesting = 100;
constexpr size_t kLongestExtension = 32;
/// How much the mails that are open inside each other may take together: so many times the size of
/// the outermost mail, though always this much.
constexpr uint64_t kMostTimesTheMail = 10;
constexpr uint64_t kAlwaysAllowed = 64 << 20;

TMemoryStream DecodedContentOf(IMailPart& part) {
  TTextBlock block(part.DecodedContent(nullptr));
  const size_t size = block.Size() == 0 ? 0 : part.DecodedContent(block.Data());
  TMemoryStream content(std::move(block));
  content.SetSize(size);
  return content;
}

bool IsTooLarge(IQuardaInstance& instance, uint64_t size) {
  const TRef<IQuardaApp> app = instance.GetApp();
  const auto sizeOf = [&](int32_t scan) -> uint64_t {
    return static_cast<uint32_t>(app->GetInstances(scan)->GetArguments()->GetFileSize());
  };
  for (int32_t i = app->GetInstanceCount() - 1; i > 0; --i) size += sizeOf(i);
  return size > kAlwaysAllowed && size / kMostTimesTheMail > sizeOf(0);
}

std::string TempPath(IQuardaInstance& instance, std::string_view name) {
  return Concat({instance.GetQuardaPath(), "\\Temp\\", name});
}

// The extension of a name that the sender chose, fit for a file of ours and for a command line.
std::string SafeExtension(std::string_view name) {
  const std::string written = ExtractFileExt(name);
  std::string extension;
  for (const char c : std::string_view(written).substr(0, kLongestExtension)) {
    const bool unsafe = static_cast<unsigned char>(c) < ' ' || c == '\x7F' ||
                        std::string_view("\\/:*?\"<>|").find(c) != std::string_view::npos;
    if (!unsafe) extension += c;
  }
  // The system may drop dots and blanks at the end of a name by itself.
  const size_t end = extension.find_last_not_of(". ");
  return end == extension.npos ? std::string() : extension.substr(0, end + 1);
}

TNumberedNames InnerFileNames(IQuardaInstance& instance, std::string_view attachmentName) {
  return {TempPath(instance, "Temp"), 4, SafeExtension(attachmentName)};
}

TNumberedNames MailFileNames(IQuardaInstance& instance) {
  const bool incoming = instance.GetFileType() == ftInMail;
  return {TempPath(instance, incoming ? "In_" : "Out_"), 5, ".inp"};
}

// Writes the line that closes an attachment's lines in the log, however its scan ends.
class TEndLine {
 public:
  TEndLine(IQuardaInstance& instance, IPlugin* plugin, std::string line)
      : instance_(instance), plugin_(plugin), line_(std::move(line)) {}
  TEndLine(const TEndLine&) = delete;
  TEndLine& operator=(const TEndLine&) = delete;
  ~TEndLine() {
    try {
      instance_.LogExtra(plugin_, line_);
    } catch (...) {
      LogException(plugin_);
    }
  }

 private:
  IQuardaInstance& instance_;
  IPlugin* const plugin_;
  const std::string line_;
};

}  // namespace

// Keeps the mail-type file of the running scan aside while nested scans write their own: from the
// first of several attached mails until it is wanted back. Other engines write and move the same
// file: what they took away cannot be kept, and what they put in its place is newer than what was
// kept. Neither may hinder the scan.
class TMailTypeAside {
 public:
  explicit TMailTypeAside(std::string path) : path_(std::move(path)) {}
  TMailTypeAside(const TMailTypeAside&) = delete;
  TMailTypeAside& operator=(const TMailTypeAside&) = delete;
  ~TMailTypeAside() { PutBack(); }

  void Take() {
    if (std::exchange(isAside_, true) || !platform::FileExists(path_)) return;
    TNumberedNames names{ChangeFileExt(path_, "."), 3, ""};
    try {
      saved_ = MoveToFreeName(path_, names);
    } catch (const std::exception&) {
      // The nested scans replace it.
    }
  }
  void PutBack() noexcept {
    if (!std::exchange(isAside_, false)) return;
    platform::RemoveFile(path_);
    if (saved_ && !platform::RenameFile(*saved_, path_)) platform::RemoveFile(*saved_);
    saved_.reset();
  }

 private:
  const std::string path_;
  std::optional<std::string> saved_;
  bool isAside_ = false;
};

// An embedded mail in a file of its own. A nested scan that saves the file gives it a new stamp.
class TNestedMail {
 public:
  TNestedMail(IQuardaInstance& instance, IMailAttachment& attachment, std::string_view content)
      : attachment_(attachment), file_(MailFileNames(instance), content) {
    MarkAsSeen();
  }

  const std::string& Path() const noexcept { return file_.Path(); }
  IMailAttachment& Attachment() const noexcept { return attachment_; }

  bool IsModified() const {
    const auto stamp = platform::FileStamp(Path());
    return stamp && stamp != seen_;
  }
  // One unit back, so that a change in the same two seconds shows too.
  void MarkAsSeen() {
    if (const auto stamp = platform::FileStamp(Path())) {
      platform::SetFileStamp(Path(), platform::AddToDosStamp(*stamp, -1));
    }
    seen_ = platform::FileStamp(Path());
  }

 private:
  IMailAttachment& attachment_;
  const TTempFile file_;
  std::optional<uint32_t> seen_;
};

bool TPluginExtractEml::DoExecute(IQuardaInstance& instance) {
  if (!instance.GetConfig()->GetScanEmlAttachments()) return true;
  if (instance.GetFileType() == ftAttachment) return true;
  const TRef<IMail> mail = instance.GetMail();
  const int32_t count = mail->GetAttachmentCount();
  TMailTypeAside mailType(TempPath(instance, "Quarda.mai"));
  for (int32_t i = 0; i < count; ++i) {
    try {
      if (!CheckAttachment(instance, *mail->GetAttachments(i), mailType)) return false;
    } catch (...) {
      LogException(this);
      if (RefuseIfOutOfMemory(instance, mail->GetMailFileName())) return false;
    }
  }
  instance.LogOK(this, kPassed);
  return true;
}

bool TPluginExtractEml::CheckAttachment(IQuardaInstance& instance, IMailAttachment& attachment,
                                        TMailTypeAside& mailType) {
  const AnsiString name = attachment.GetFileName();
  if (platform::SameAnsiText(ExtractFileExt(name), ".eml")) {
    return CheckMail(instance, attachment, name, mailType);
  }
  if (platform::SameAnsiText(attachment.GetContentType(), "application/ms-tnef")) {
    mailType.PutBack();
    return CheckContainer(instance, attachment, name);
  }
  return true;
}

bool TPluginExtractEml::CheckMail(IQuardaInstance& instance, IMailAttachment& attachment,
                                  const AnsiString& name, TMailTypeAside& mailType) {
  TMemoryStream content = DecodedContentOf(attachment);
  if (content.Size() == 0) return true;
  instance.LogExtra(this, FillIn(kBeginMail, {name}));
  const TEndLine endLine(instance, this, FillIn(kEndMail, {name}));
  if (!IsEmailFile(content.View())) {
    instance.LogExtra(this, kInvalidMail);
    return true;
  }
  return !ScanMail(instance, attachment, std::move(content), mailType);
}

bool TPluginExtractEml::CheckContainer(IQuardaInstance& instance, IMailAttachment& attachment,
                                       const AnsiString& name) {
  TMemoryStream content = DecodedContentOf(attachment);
  if (content.Size() == 0) return true;
  instance.LogExtra(this, FillIn(kBeginContainer, {name}));
  const TEndLine endLine(instance, this, FillIn(kEndContainer, {name}));
  try {
    return !ScanContainer(instance, std::move(content));
  } catch (...) {
    // What cannot be written out is left to the checks of the mail itself.
    return !RefuseIfOutOfMemory(instance, name);
  }
}

bool TPluginExtractEml::ScanMail(IQuardaInstance& instance, IMailAttachment& attachment,
                                 TMemoryStream content, TMailTypeAside& mailType) {
  const AnsiString name = attachment.GetFileName();
  if (IsTooLarge(instance, content.Size())) return Refuse(instance, kTooLarge, name);
  bool virus = false;
  // What cannot be written out is left to the checks of the mail itself, silently.
  try {
    mailType.Take();
    platform::CreateFolders(TempPath(instance, ""));
    TNestedMail mail(instance, attachment, content.View());
    content = TMemoryStream();  // nested scans need the memory
    try {
      virus = ScanMailFile(instance, mail);
    } catch (...) {
      // The change is taken over all the same.
      virus = RefuseIfOutOfMemory(instance, name);
    }
    TakeOverChange(instance, mail);
  } catch (...) {
    virus |= RefuseIfOutOfMemory(instance, name);
  }
  return virus;
}

bool TPluginExtractEml::ScanMailFile(IQuardaInstance& instance, TNestedMail& mail) {
  if (GetFileInfo(mail.Path()) != kNoProgram) {
    instance.LogWarn(this, FillIn(kHiddenExecutable, {mail.Attachment().GetFileName()}));
    return false;
  }
  if (ScanFile(instance, mail.Path())) return true;
  TakeOverChange(instance, mail);
  return ScanAttachmentsOf(instance, mail.Path());
}

void TPluginExtractEml::TakeOverChange(IQuardaInstance& instance, TNestedMail& mail) {
  if (!mail.IsModified()) return;
  instance.LogDebug(this, FillIn(kReplacing, {instance.GetMail()->GetMailFileName(), mail.Path()}));
  const std::string content = platform::ReadWholeFile(mail.Path());
  if (content.size() > UINT32_MAX) throw EError("The embedded mail is too large.");
  mail.Attachment().SetContent(eCurrent, content.data(), static_cast<uint32_t>(content.size()));
  mail.MarkAsSeen();
}

bool TPluginExtractEml::ScanAttachmentsOf(IQuardaInstance& instance, const std::string& mailFile) {
  const TRef<IMail> mail = instance.LoadMailFromFile(mailFile);
  const int32_t count = mail ? mail->GetAttachmentCount() : 0;
  for (int32_t i = 0; i < count; ++i) {
    try {
      const TRef<IMailAttachment> attachment = mail->GetAttachments(i);
      TMemoryStream content = DecodedContentOf(*attachment);
      if (content.Size() == 0) continue;
      const TTempFile file(InnerFileNames(instance, attachment->GetFileName()), content.View());
      content = TMemoryStream();
      if (ScanFile(instance, file.Path())) return true;
    } catch (...) {
      LogException(this);
      if (RefuseIfOutOfMemory(instance, mailFile)) return true;
    }
  }
  return false;
}

bool TPluginExtractEml::ScanContainer(IQuardaInstance& instance, TMemoryStream content) {
  TTnef container;
  try {
    container.LoadFromStream(content);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {
    instance.LogWarn(this, FillIn(kBadContainer, {DescribeCurrentError().message}));
    return false;
  }
  platform::CreateFolders(TempPath(instance, ""));
  for (size_t i = 0; i < container.GetCount(); ++i) {
    const TTnefAttachment& item = container.GetItems(i);
    const TTempFile file(InnerFileNames(instance, item.GetFileName()), item.GetData());
    if (ScanFile(instance, file.Path())) return true;
  }
  return false;
}

bool TPluginExtractEml::ScanFile(IQuardaInstance& instance, const std::string& path) {
  const TRef<IQuardaApp> app = instance.GetApp();
  if (app->GetInstanceCount() > kDeepestNesting) {
    return Refuse(instance, kTooDeep, ExtractFileName(path));
  }
  const AnsiString program = instance.GetArguments()->GetArguments(0);
  try {
    return app->RunInstance(Concat({"\"", program, "\" \"", path, "\""})) != 0;
  } catch (...) {
    const TErrorDescription error = DescribeCurrentError();
    instance.LogError(this, FillIn(kNestedError, {error.className, error.message}));
    return RefuseIfOutOfMemory(instance, ExtractFileName(path));
  }
}

// Always true: a virus. The scans around this one learn no more than that it failed, so they are
// told.
bool TPluginExtractEml::Refuse(IQuardaInstance& instance, std::string_view reason,
                               std::string_view name) {
  const std::string text = FillIn(reason, {name});
  instance.VirusReason(this, text);
  const TRef<IQuardaApp> app = instance.GetApp();
  const int32_t count = app->GetInstanceCount();
  for (int32_t i = 0; i < count; ++i) app->GetInstances(i)->SetGlobalData(kVirusReason, text);
  return true;
}

// To be called where an error was caught. How much memory is needed is up to the sender, who must
// not get a virus through by asking for too much.
bool TPluginExtractEml::RefuseIfOutOfMemory(IQuardaInstance& instance, std::string_view name) {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return Refuse(instance, kNoMemory, name);
  } catch (...) {
    return false;
  }
}

}  // namespace quarda
