// The plug-in contract: everything that a check plug-in sees of the engine, and the engine of a
// plug-in. An outside plug-in needs this header and nothing else.
//
// Every interface begins with QueryInterface, AddRef and Release (a parent's operations come before
// its own), then the operations in their fixed order: outside plug-ins call them by position.
// Strings are 8-bit, in the ANSI code page; indexes of lists count from 0. A returned interface is
// the caller's reference, an argument is borrowed and may be null unless an operation says
// otherwise.
#pragma once

#include <cstdint>

#include "AnsiString.h"
#include "QDCall.h"
#include "RefCounted.h"

namespace quarda {

enum TIFrameBlockMode : int32_t {
  ibmNone,
  ibmMarkAsVirus,
  ibmAllowHttp,
  ibmCommentAll,
  ibmCommentHttp,
  ibmRemove
};
enum TAttachmentBlockMode : int32_t { abmNone, abmMarkAsVirus, abmRemove };
enum TASmtpBlockMode : int32_t { asbmNone, asbmMarkAsVirus, asbmSubjectNote };
enum TScannedTextXHeader : int32_t { stxhAppend, stxhXHeader, stxhBoth };
enum TScanOnlyExtensions : int32_t { soeOff, soeExt, soeNotExt };
enum TOvraMailFileType : int32_t { ftInMail, ftOutMail, ftAttachment };
enum TOvraMailType : int32_t { mtUnknown, mtInMail, mtOutMail };
enum TMailCheckMode : int32_t { mcmAll, mcmIncomming, mcmOutgoing };
/// Content transfer encodings. `eCurrent` is only an argument: keep what the part has.
enum TEncodeType : int32_t { eCurrent, e8bit, e7bit, eQuotedPrintable, eBase64, eUUE, eUnknown };

/// Log priorities; smaller is more important.
inline constexpr int32_t kLogError = 0;
inline constexpr int32_t kLogWarning = 1;
inline constexpr int32_t kLogExtended = 2;
inline constexpr int32_t kLogPassed = 3;
inline constexpr int32_t kLogDebug = 4;
/// Their names in the log; a priority is clamped to this table.
inline constexpr const char* PriNames[6] = {"Error", "Warning", "Extended", "Passed", "Debug", ""};

/// Named values of a scan that the engine itself uses.
inline constexpr const char* kIgnoreResult = "IgnoreResult";
inline constexpr const char* kResult = "Result";
inline constexpr const char* kVirusReason = "VirusReason";

/// The name under which a plug-in library exports its entry point, and its type: it stores a
/// counted reference to its plug-in in the variable, which holds null.
inline constexpr const char* kPluginEntryPoint = "cepEntryPoint";
struct IPlugin;
extern "C" typedef void(QDCALL* TPluginEntryPoint)(IPlugin** plugin);

/// An ordered list of lines. Comparisons ignore letter case and take the first match; an index
/// outside the list raises a list-index error.
struct IStringList : IRefCounted {
  static constexpr TGuid kGuid{
      0xB417770C, 0x7DDD, 0x4671, {0x8F, 0x19, 0xDB, 0xF0, 0x8B, 0x60, 0x80, 0x7D}};

  virtual int32_t QDCALL GetCount() = 0;
  virtual AnsiString QDCALL
  GetValues(const AnsiString& name) = 0;  ///< value of the first line `name=value`
  virtual void QDCALL SetValues(const AnsiString& name,
                                const AnsiString& value) = 0;  ///< an empty value deletes the line
  virtual AnsiString QDCALL GetNames(int32_t index) = 0;
  virtual AnsiString QDCALL GetStrings(int32_t index) = 0;
  virtual void QDCALL SetStrings(int32_t index, const AnsiString& line) = 0;
  virtual AnsiString QDCALL GetText() = 0;  ///< every line ended by CR LF
  virtual void QDCALL SetText(const AnsiString& text) = 0;
  virtual void QDCALL Assign(IStringList* source) = 0;  ///< null clears
  virtual void QDCALL LoadFromFile(const AnsiString& fileName) = 0;
  virtual void QDCALL SaveToFile(const AnsiString& fileName) = 0;
  virtual void QDCALL Clear() = 0;
  virtual int32_t QDCALL Add(const AnsiString& line) = 0;
  virtual void QDCALL Insert(int32_t index, const AnsiString& line) = 0;
  virtual void QDCALL Delete(int32_t index) = 0;
  virtual int32_t QDCALL IndexOf(const AnsiString& line) = 0;      ///< -1 when there is none
  virtual int32_t QDCALL IndexOfName(const AnsiString& name) = 0;  ///< -1 when there is none
  virtual void QDCALL AddStrings(IStringList* source) = 0;         ///< null adds nothing
  virtual AnsiString QDCALL GetSeparateText(const AnsiString& separator) = 0;
  virtual void QDCALL SetSeparateText(const AnsiString& text, const AnsiString& separator) = 0;
  virtual void QDCALL EraseEmptyLines() = 0;
  virtual TRef<IStringList> QDCALL CopyList() = 0;

 protected:
  ~IStringList() = default;
};

/// An INI file held in memory. It is written back by `Save`, or when the last reference goes, and
/// only when something really changed.
struct IConfigFile : IRefCounted {
  static constexpr TGuid kGuid{
      0xE9A0E392, 0xDC6F, 0x4CAA, {0x88, 0x89, 0x68, 0x88, 0x89, 0x7F, 0x48, 0xE1}};

  virtual AnsiString QDCALL GetFileName() = 0;
  virtual AnsiString QDCALL ReadString(const AnsiString& section, const AnsiString& ident,
                                       const AnsiString& defaultValue) = 0;
  virtual int32_t QDCALL ReadInteger(const AnsiString& section, const AnsiString& ident,
                                     int32_t defaultValue) = 0;
  virtual bool QDCALL ReadBool(const AnsiString& section, const AnsiString& ident,
                               bool defaultValue) = 0;
  virtual void QDCALL WriteString(const AnsiString& section, const AnsiString& ident,
                                  const AnsiString& value) = 0;
  virtual void QDCALL WriteInteger(const AnsiString& section, const AnsiString& ident,
                                   int32_t value) = 0;
  virtual void QDCALL WriteBool(const AnsiString& section, const AnsiString& ident, bool value) = 0;
  virtual void QDCALL DeleteValue(const AnsiString& section, const AnsiString& ident) = 0;
  virtual void QDCALL DeleteSection(const AnsiString& section) = 0;
  virtual TRef<IStringList> QDCALL ReadSection(const AnsiString& section) = 0;
  virtual void QDCALL WriteSection(const AnsiString& section, IStringList* lines) = 0;
  virtual bool QDCALL SectionExists(const AnsiString& section) = 0;
  virtual bool QDCALL ValueExists(const AnsiString& section, const AnsiString& ident) = 0;
  virtual TRef<IStringList> QDCALL ReadSections() = 0;
  virtual void QDCALL Clear() = 0;
  virtual void QDCALL DeleteFile() = 0;
  virtual void QDCALL DiscardChanges() = 0;
  virtual TRef<IStringList> QDCALL GetLines() = 0;
  virtual void QDCALL SetLines(IStringList* lines) = 0;
  virtual void QDCALL Save() = 0;

 protected:
  ~IConfigFile() = default;
};

/// The settings: one getter and one setter for each. docs/settings.md tells what they mean. Lists
/// are copies that the caller owns.
struct IConfig : IConfigFile {
  static constexpr TGuid kGuid{
      0xDC5B268B, 0xFF1E, 0x4665, {0xB6, 0x10, 0xD7, 0x94, 0xB8, 0x56, 0xCE, 0x36}};

  virtual void QDCALL BuildConfigFile() = 0;
  virtual TRef<IConfigFile> QDCALL OpenConfigFile(const AnsiString& fileName) = 0;
  virtual TMailCheckMode QDCALL GetMailCheckMode() = 0;
  virtual void QDCALL SetMailCheckMode(TMailCheckMode value) = 0;
  virtual bool QDCALL GetScanEmlAttachments() = 0;
  virtual void QDCALL SetScanEmlAttachments(bool value) = 0;
  virtual int32_t QDCALL GetMaxExecWaitTime() = 0;
  virtual void QDCALL SetMaxExecWaitTime(int32_t value) = 0;
  virtual bool QDCALL GetInformOnVirus() = 0;
  virtual void QDCALL SetInformOnVirus(bool value) = 0;
  virtual AnsiString QDCALL GetAdminAddress() = 0;
  virtual void QDCALL SetAdminAddress(const AnsiString& value) = 0;
  virtual bool QDCALL GetLogging() = 0;
  virtual void QDCALL SetLogging(bool value) = 0;
  virtual int32_t QDCALL GetLogMode() = 0;
  virtual void QDCALL SetLogMode(int32_t value) = 0;
  virtual AnsiString QDCALL GetLogFilePath() = 0;
  virtual void QDCALL SetLogFilePath(const AnsiString& value) = 0;
  virtual uint32_t QDCALL GetLogMaxFileSize() = 0;
  virtual void QDCALL SetLogMaxFileSize(uint32_t value) = 0;
  virtual bool QDCALL GetLogBackupFile() = 0;
  virtual void QDCALL SetLogBackupFile(bool value) = 0;
  virtual bool QDCALL GetLogSingleLine() = 0;
  virtual void QDCALL SetLogSingleLine(bool value) = 0;
  virtual bool QDCALL GetLogInOut() = 0;
  virtual void QDCALL SetLogInOut(bool value) = 0;
  virtual AnsiString QDCALL GetVirusScan() = 0;
  virtual void QDCALL SetVirusScan(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetVirusScanExitCode() = 0;
  virtual void QDCALL SetVirusScanExitCode(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetVirusScan2() = 0;
  virtual void QDCALL SetVirusScan2(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetVirusScan2ExitCode() = 0;
  virtual void QDCALL SetVirusScan2ExitCode(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetMailVirusScan() = 0;
  virtual void QDCALL SetMailVirusScan(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetMailVirusScanExitCode() = 0;
  virtual void QDCALL SetMailVirusScanExitCode(const AnsiString& value) = 0;
  virtual bool QDCALL GetIntelliVirusScan() = 0;
  virtual void QDCALL SetIntelliVirusScan(bool value) = 0;
  virtual TScanOnlyExtensions QDCALL GetScanOnlyExtensions() = 0;
  virtual void QDCALL SetScanOnlyExtensions(TScanOnlyExtensions value) = 0;
  virtual TRef<IStringList> QDCALL GetVirusScanFileExts() = 0;
  virtual void QDCALL SetVirusScanFileExts(IStringList* value) = 0;
  virtual TRef<IStringList> QDCALL GetNoVirusScanFileExts() = 0;
  virtual void QDCALL SetNoVirusScanFileExts(IStringList* value) = 0;
  virtual AnsiString QDCALL GetSpamFilter() = 0;
  virtual void QDCALL SetSpamFilter(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetSpamFilter2() = 0;
  virtual void QDCALL SetSpamFilter2(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetSpamFilterExitCode() = 0;
  virtual void QDCALL SetSpamFilterExitCode(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetSpamFilter2ExitCode() = 0;
  virtual void QDCALL SetSpamFilter2ExitCode(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetSpamFilterMailAddress() = 0;
  virtual void QDCALL SetSpamFilterMailAddress(const AnsiString& value) = 0;
  virtual bool QDCALL GetBlockInvalidAttachmentExts() = 0;
  virtual void QDCALL SetBlockInvalidAttachmentExts(bool value) = 0;
  virtual TRef<IStringList> QDCALL GetInvalidAttachmentExts() = 0;
  virtual void QDCALL SetInvalidAttachmentExts(IStringList* value) = 0;
  virtual bool QDCALL GetBlockOnDoubleAttachmentExts() = 0;
  virtual void QDCALL SetBlockOnDoubleAttachmentExts(bool value) = 0;
  virtual TRef<IStringList> QDCALL GetAllowedDoubleAttachmentExts() = 0;
  virtual void QDCALL SetAllowedDoubleAttachmentExts(IStringList* value) = 0;
  virtual TRef<IStringList> QDCALL GetInvalidDoubleAttachmentExts() = 0;
  virtual void QDCALL SetInvalidDoubleAttachmentExts(IStringList* value) = 0;
  virtual TAttachmentBlockMode QDCALL GetBlockInvalidAttachments() = 0;
  virtual void QDCALL SetBlockInvalidAttachments(TAttachmentBlockMode value) = 0;
  virtual TRef<IStringList> QDCALL GetInvalidAttachments() = 0;
  virtual void QDCALL SetInvalidAttachments(IStringList* value) = 0;
  virtual bool QDCALL GetMakePlainText() = 0;
  virtual void QDCALL SetMakePlainText(bool value) = 0;
  virtual TIFrameBlockMode QDCALL GetBlockIFrames() = 0;
  virtual void QDCALL SetBlockIFrames(TIFrameBlockMode value) = 0;
  virtual bool QDCALL GetDisableActiveX() = 0;
  virtual void QDCALL SetDisableActiveX(bool value) = 0;
  virtual bool QDCALL GetDisableScripts() = 0;
  virtual void QDCALL SetDisableScripts(bool value) = 0;
  virtual bool QDCALL GetCheckHtmlAttachments() = 0;
  virtual void QDCALL SetCheckHtmlAttachments(bool value) = 0;
  virtual bool QDCALL GetBlockOnVirusSubjects() = 0;
  virtual void QDCALL SetBlockOnVirusSubjects(bool value) = 0;
  virtual TRef<IStringList> QDCALL GetVirusSubjects() = 0;
  virtual void QDCALL SetVirusSubjects(IStringList* value) = 0;
  virtual TRef<IStringList> QDCALL GetNoVirusSubjects() = 0;
  virtual void QDCALL SetNoVirusSubjects(IStringList* value) = 0;
  virtual bool QDCALL GetWarnOnSuspiciousSubjects() = 0;
  virtual void QDCALL SetWarnOnSuspiciousSubjects(bool value) = 0;
  virtual TRef<IStringList> QDCALL GetSuspiciousSubjects() = 0;
  virtual void QDCALL SetSuspiciousSubjects(IStringList* value) = 0;
  virtual TRef<IStringList> QDCALL GetNoSuspiciousSubjects() = 0;
  virtual void QDCALL SetNoSuspiciousSubjects(IStringList* value) = 0;
  virtual TASmtpBlockMode QDCALL GetASmtpBlockMode() = 0;
  virtual void QDCALL SetASmtpBlockMode(TASmtpBlockMode value) = 0;
  virtual TRef<IStringList> QDCALL GetASmtpAdresses() = 0;
  virtual void QDCALL SetASmtpAdresses(IStringList* value) = 0;
  virtual bool QDCALL GetShowScannedText() = 0;
  virtual void QDCALL SetShowScannedText(bool value) = 0;
  virtual AnsiString QDCALL GetScannedText() = 0;
  virtual void QDCALL SetScannedText(const AnsiString& value) = 0;
  virtual TScannedTextXHeader QDCALL GetScannedTextAsXHeader() = 0;
  virtual void QDCALL SetScannedTextAsXHeader(TScannedTextXHeader value) = 0;
  virtual AnsiString QDCALL GetScannedTextPlainTextFormat() = 0;
  virtual void QDCALL SetScannedTextPlainTextFormat(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetScannedTextHtmlTextFormat() = 0;
  virtual void QDCALL SetScannedTextHtmlTextFormat(const AnsiString& value) = 0;
  virtual bool QDCALL GetScannedTextOnlyWithVirusScan() = 0;
  virtual void QDCALL SetScannedTextOnlyWithVirusScan(bool value) = 0;
  virtual TRef<IStringList> QDCALL GetPluginList() = 0;
  virtual void QDCALL SetPluginList(IStringList* value) = 0;
  virtual int32_t QDCALL GetRedAlertVirusMailCount() = 0;
  virtual void QDCALL SetRedAlertVirusMailCount(int32_t value) = 0;
  virtual int32_t QDCALL GetRedAlertMinuteSpan() = 0;
  virtual void QDCALL SetRedAlertMinuteSpan(int32_t value) = 0;
  virtual AnsiString QDCALL GetRedAlertAction() = 0;
  virtual void QDCALL SetRedAlertAction(const AnsiString& value) = 0;

 protected:
  ~IConfig() = default;
};

/// One header field. Its first value is the main one, the others are its parameters.
struct IHeaderItem : IRefCounted {
  static constexpr TGuid kGuid{
      0xDECFAF2B, 0xA2C7, 0x4CF7, {0x8C, 0x24, 0xF9, 0xFF, 0x53, 0x60, 0xDE, 0x12}};

  virtual AnsiString QDCALL GetName() = 0;
  virtual AnsiString QDCALL GetValue() = 0;
  virtual void QDCALL SetValue(const AnsiString& value) = 0;
  virtual int32_t QDCALL GetCount() = 0;
  virtual TRef<IStringList> QDCALL GetValues() = 0;
  virtual void QDCALL SetValues(IStringList* values) = 0;
  virtual AnsiString QDCALL GetValuesAsText() = 0;
  virtual void QDCALL SetValuesAsText(const AnsiString& text) = 0;
  virtual void QDCALL Delete() = 0;  ///< removes the field from its header
  virtual int32_t QDCALL AddValue(const AnsiString& value) = 0;
  virtual void QDCALL DeleteValue(int32_t index) = 0;
  virtual void QDCALL ClearValues() = 0;

 protected:
  ~IHeaderItem() = default;
};

/// The header of a mail or of a part.
struct IHeader : IRefCounted {
  static constexpr TGuid kGuid{
      0xF031575C, 0x3A2C, 0x4363, {0x99, 0x43, 0x37, 0x49, 0x39, 0xEF, 0x0E, 0xDE}};

  virtual TRef<IHeaderItem> QDCALL GetItems(int32_t index) = 0;
  virtual TRef<IHeaderItem> QDCALL GetHeader(const AnsiString& name) = 0;  ///< null when absent
  virtual AnsiString QDCALL GetHeaderStr(const AnsiString& name) = 0;
  virtual void QDCALL SetHeaderStr(const AnsiString& name, const AnsiString& value) = 0;
  virtual int32_t QDCALL GetCount() = 0;
  virtual void QDCALL Assign(IHeader* source) = 0;
  virtual void QDCALL Clear() = 0;
  virtual TRef<IHeaderItem> QDCALL Add(const AnsiString& name, const AnsiString& value) = 0;
  virtual TRef<IHeaderItem> QDCALL Insert(int32_t index, const AnsiString& name,
                                          const AnsiString& value) = 0;
  virtual void QDCALL Delete(int32_t index) = 0;
  virtual void QDCALL DeleteByName(const AnsiString& name) = 0;
  virtual int32_t QDCALL IndexOf(const AnsiString& name) = 0;
  virtual int32_t QDCALL IndexOfItem(IHeaderItem* item) = 0;
  virtual TRef<IHeaderItem> QDCALL Replace(const AnsiString& name, const AnsiString& value) = 0;

 protected:
  ~IHeader() = default;
};

/// One MIME part.
struct IMailPart : IRefCounted {
  static constexpr TGuid kGuid{
      0x7F9E7E9E, 0x087E, 0x4DC7, {0xBC, 0xBF, 0x0A, 0x4B, 0x96, 0x6B, 0x09, 0x66}};

  virtual TRef<IHeader> QDCALL GetHeader() = 0;
  virtual TRef<IStringList> QDCALL GetBody() = 0;
  virtual AnsiString QDCALL GetContentTypeType() = 0;
  virtual void QDCALL SetContentTypeType(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetContentTypeSubType() = 0;
  virtual void QDCALL SetContentTypeSubType(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetContentType() = 0;
  virtual void QDCALL SetContentType(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetContentTransferEncoding() = 0;
  virtual void QDCALL SetContentTransferEncoding(const AnsiString& value) = 0;
  virtual TEncodeType QDCALL GetEncodeType() = 0;
  virtual bool QDCALL GetMultipartSection() = 0;
  virtual void QDCALL SetMultipartSection(bool value) = 0;
  virtual AnsiString QDCALL GetBoundary() = 0;
  virtual void QDCALL SetBoundary(const AnsiString& value) = 0;
  virtual int32_t QDCALL GetCount() = 0;
  virtual TRef<IMailPart> QDCALL GetParts(int32_t index) = 0;
  virtual TRef<IMailPart> QDCALL GetOwner() = 0;  ///< null for the mail itself
  virtual void QDCALL Assign(IMailPart* source) = 0;
  virtual TRef<IMailPart> QDCALL Add() = 0;
  virtual void QDCALL Delete(int32_t index) = 0;
  virtual void QDCALL Move(int32_t currentIndex, int32_t newIndex) = 0;
  virtual void QDCALL Exchange(int32_t index1, int32_t index2) = 0;
  virtual void QDCALL Clear() = 0;
  virtual bool QDCALL IsAttachment() = 0;
  virtual bool QDCALL IsText() = 0;
  // Byte count of the raw, still encoded body; with a buffer the body is copied there.
  virtual uint32_t QDCALL GetFileContent(void* buffer) = 0;
  // Byte count of the decoded body. With null an upper bound; with a buffer of that size the body
  // is written there and the exact count returned.
  virtual uint32_t QDCALL DecodedContent(void* buffer) = 0;
  virtual void QDCALL SetContent(TEncodeType encoding, const void* data, uint32_t size) = 0;

 protected:
  ~IMailPart() = default;
};

/// A part that is an attachment.
struct IMailAttachment : IMailPart {
  static constexpr TGuid kGuid{
      0x54F64997, 0x8E27, 0x4F00, {0x8A, 0xDA, 0xCD, 0xD4, 0x40, 0x1A, 0x32, 0x4A}};

  virtual AnsiString QDCALL GetContentID() = 0;
  virtual void QDCALL SetContentID(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetName() = 0;
  virtual void QDCALL SetName(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetFileName() = 0;
  virtual void QDCALL SetFileName(const AnsiString& value) = 0;

 protected:
  ~IMailAttachment() = default;
};

/// A part that is text.
struct IMailText : IMailPart {
  static constexpr TGuid kGuid{
      0xFA8338E6, 0x7459, 0x4B7B, {0x95, 0xEC, 0x2D, 0x65, 0x4B, 0x32, 0x4E, 0x02}};

  virtual AnsiString QDCALL GetText() = 0;                  ///< decoded
  virtual void QDCALL SetText(const AnsiString& text) = 0;  ///< encoded as the part was

 protected:
  ~IMailText() = default;
};

/// The whole mail.
struct IMail : IMailText {
  static constexpr TGuid kGuid{
      0x747C0CEE, 0x30D4, 0x4890, {0xAC, 0x90, 0x64, 0x81, 0x87, 0xAE, 0x0C, 0x82}};

  virtual AnsiString QDCALL GetMailFileName() = 0;
  virtual int32_t QDCALL GetAttachmentCount() = 0;
  virtual int32_t QDCALL GetTextCount() = 0;
  virtual TRef<IMailAttachment> QDCALL GetAttachments(int32_t index) = 0;
  virtual TRef<IMailText> QDCALL GetTexts(int32_t index) = 0;
  virtual AnsiString QDCALL GetSubject() = 0;
  virtual void QDCALL SetSubject(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetFrom() = 0;
  virtual void QDCALL SetFrom(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetTo() = 0;
  virtual void QDCALL SetTo(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetCc() = 0;
  virtual void QDCALL SetCc(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetBcc() = 0;
  virtual void QDCALL SetBcc(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetDate() = 0;
  virtual void QDCALL SetDate(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetMIMEVersion() = 0;
  virtual void QDCALL SetMimeVersion(const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetReturnPath() = 0;
  virtual AnsiString QDCALL GetMessageID() = 0;
  virtual void QDCALL Save() = 0;  ///< writes a changed mail back to its file
  virtual void QDCALL SaveToFile(const AnsiString& fileName) = 0;
  virtual void QDCALL Reset() = 0;  ///< loads the mail from its file again
  virtual void QDCALL DeleteAttachment(int32_t index) = 0;
  virtual void QDCALL DeleteText(int32_t index) = 0;
  virtual TRef<IStringList> QDCALL GetToList() = 0;
  virtual TRef<IStringList> QDCALL GetCcList() = 0;
  virtual TRef<IStringList> QDCALL GetBccList() = 0;
  virtual void QDCALL SetToList(IStringList* list) = 0;
  virtual void QDCALL SetCcList(IStringList* list) = 0;
  virtual void QDCALL SetBccList(IStringList* list) = 0;
  virtual AnsiString QDCALL ExtractEmailAddress(const AnsiString& text) = 0;
  virtual void QDCALL
  ExtractEmailAddresses(IStringList* list) = 0;  ///< each line becomes its bare address

 protected:
  ~IMail() = default;
};

struct IQuardaInstance;
struct IQuardaApp;

/// A check plug-in.
struct IPlugin : IRefCounted {
  static constexpr TGuid kGuid{
      0x9552B83A, 0x4BF8, 0x44E7, {0xA0, 0xA8, 0x4A, 0x1C, 0x17, 0x1B, 0xB4, 0xCD}};

  virtual AnsiString QDCALL
  GetFileName() = 0;  ///< full path of the library with the plug-in's code
  virtual AnsiString QDCALL GetName() = 0;
  virtual int32_t QDCALL GetVersionMajor() = 0;
  virtual int32_t QDCALL GetVersionMinor() = 0;
  virtual bool QDCALL
  Init(IQuardaInstance* instance) = 0;  ///< false: take no further part in this scan
  virtual bool QDCALL
  Execute(IQuardaInstance* instance) = 0;  ///< true: passed, false: virus or blocked
  virtual void QDCALL Done(IQuardaInstance* instance, bool passed) = 0;  ///< the scan is over
  // Asked about another plug-in's result; false overturns it. `later`: the asked one stands behind.
  virtual bool QDCALL ConfirmResult(IQuardaInstance* instance, IPlugin* plugin, bool later,
                                    bool passed) = 0;
  virtual AnsiString QDCALL
  GetDialogOptions(IQuardaInstance* instance) = 0;  ///< never called by the engine

 protected:
  ~IPlugin() = default;
};

/// The plug-ins in the order in which a scan runs them.
struct IPluginList : IRefCounted {
  static constexpr TGuid kGuid{
      0x6DB9A420, 0x141D, 0x4E4C, {0x80, 0x3E, 0x38, 0x7B, 0xCE, 0xA3, 0x47, 0xA8}};

  virtual int32_t QDCALL GetCount() = 0;
  virtual TRef<IPlugin> QDCALL GetPlugins(int32_t index) = 0;
  // `module` is the handle of the library to unload when the plug-in leaves the list, 0 for none.
  virtual int32_t QDCALL Add(IPlugin* plugin, uintptr_t module) = 0;
  virtual void QDCALL Delete(int32_t index) = 0;
  virtual TRef<IPlugin> QDCALL LoadPlugin(const AnsiString& fileName) = 0;  ///< null on failure
  virtual TRef<IPlugin> QDCALL FindPlugin(const AnsiString& name) = 0;      ///< null when absent

 protected:
  ~IPluginList() = default;
};

/// The command line of a scan.
struct IArguments : IRefCounted {
  static constexpr TGuid kGuid{
      0x46D1C181, 0x1D07, 0x4D4A, {0xA9, 0xA3, 0xCD, 0xA6, 0x37, 0x89, 0xD6, 0x39}};

  virtual int32_t QDCALL GetArgumentCount() = 0;  ///< without argument 0
  virtual AnsiString QDCALL GetArguments(int32_t index) = 0;
  virtual AnsiString QDCALL GetFilename() = 0;  ///< the file to scan, or empty
  virtual AnsiString QDCALL GetFileExt() = 0;   ///< lower case, with its dot
  virtual AnsiString QDCALL GetShortFileName() = 0;
  virtual AnsiString QDCALL GetName() = 0;  ///< without folder
  virtual int32_t QDCALL GetFileSize() = 0;
  virtual bool QDCALL FindCmdLineSwitch(const AnsiString& name, bool ignoreCase) = 0;
  virtual AnsiString QDCALL GetCommandLine() = 0;

 protected:
  ~IArguments() = default;
};

/// The scan of one file. A null plug-in stands for the engine itself.
struct IQuardaInstance : IRefCounted {
  static constexpr TGuid kGuid{
      0x83499D0D, 0x1F10, 0x4754, {0xA6, 0x80, 0x92, 0xAC, 0x38, 0x82, 0xFB, 0x73}};

  virtual TRef<IArguments> QDCALL GetArguments() = 0;
  virtual TRef<IPluginList> QDCALL GetPlugins() = 0;
  virtual TRef<IConfig> QDCALL GetConfig() = 0;
  virtual TOvraMailType QDCALL GetMailType() = 0;
  virtual TOvraMailFileType QDCALL GetFileType() = 0;
  virtual TRef<IMail> QDCALL GetMail() = 0;       ///< loaded on first use
  virtual AnsiString QDCALL GetQuardaPath() = 0;  ///< the base folder, without trailing backslash
  virtual TRef<IQuardaApp> QDCALL GetApp() = 0;
  virtual void QDCALL Log(IPlugin* plugin, int32_t priority, const AnsiString& message) = 0;
  virtual void QDCALL LogError(IPlugin* plugin, const AnsiString& message) = 0;
  virtual void QDCALL LogWarn(IPlugin* plugin, const AnsiString& message) = 0;
  virtual void QDCALL LogExtra(IPlugin* plugin, const AnsiString& message) = 0;
  virtual void QDCALL LogOK(IPlugin* plugin, const AnsiString& message) = 0;
  virtual void QDCALL LogDebug(IPlugin* plugin, const AnsiString& message) = 0;
  virtual void QDCALL VirusReason(
      IPlugin* plugin, const AnsiString& message) = 0;  ///< logs a warning and records the reason
  virtual TRef<IStringList> QDCALL NewStringList() = 0;
  virtual TRef<IMail> QDCALL LoadMailFromMemory(const char* data,
                                                int32_t size) = 0;              ///< null on failure
  virtual TRef<IMail> QDCALL LoadMailFromFile(const AnsiString& fileName) = 0;  ///< null on failure
  virtual void QDCALL SetGlobalData(const AnsiString& name, const AnsiString& value) = 0;
  virtual AnsiString QDCALL GetGlobalData(const AnsiString& name) = 0;

 protected:
  ~IQuardaInstance() = default;
};

/// What the application needs of a scan; not offered to plug-ins.
struct IQuardaInstanceEx : IQuardaInstance {
  static constexpr TGuid kGuid{
      0x9C7DA524, 0x0F29, 0x4876, {0x88, 0x2A, 0xD0, 0x6C, 0x2C, 0x98, 0x19, 0x7D}};

  virtual bool QDCALL Initialize() = 0;       ///< whether to scan
  virtual bool QDCALL Execute() = 0;          ///< true: passed
  virtual bool QDCALL AddRedAlertFile() = 0;  ///< false when a red alert is due
  virtual void QDCALL WriteStatistic(bool redAlert, int32_t exitCode) = 0;

 protected:
  ~IQuardaInstanceEx() = default;
};

/// The application of one request.
struct IQuardaApp : IRefCounted {
  static constexpr TGuid kGuid{
      0xA2F09600, 0x9312, 0x4AE9, {0xAD, 0x93, 0x23, 0x4F, 0x36, 0x01, 0x82, 0xB0}};

  virtual TRef<IConfig> QDCALL GetConfig() = 0;
  virtual int32_t QDCALL GetInstanceCount() = 0;
  virtual TRef<IQuardaInstance> QDCALL GetInstances(int32_t index) = 0;  ///< 0 is the oldest
  virtual AnsiString QDCALL GetQuardaPath() = 0;
  virtual TRef<IPluginList> QDCALL GetPlugins() = 0;
  virtual int32_t QDCALL
  RunInstance(const AnsiString& commandLine) = 0;  ///< scans one file; its exit code

 protected:
  ~IQuardaApp() = default;
};

}  // namespace quarda
