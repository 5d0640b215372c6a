// Outside plug-ins call operations by their position, so the order of every interface is fixed.
#include <QDIntf.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

namespace quarda {
namespace {

constexpr int kCountingSlots = 3;

// The position that a call through the member pointer uses, not counting QueryInterface, AddRef and
// Release. All our compilers keep to the Itanium C++ ABI, where the first word of the pointer is
// the offset in the table of operations, on some processors plus one.
template <class TMember>
int SlotOf(TMember member) {
  static_assert(sizeof(member) == 2 * sizeof(ptrdiff_t));
  ptrdiff_t offset;
  std::memcpy(&offset, &member, sizeof(offset));
  return static_cast<int>(offset / static_cast<ptrdiff_t>(sizeof(void*))) - kCountingSlots;
}

struct TOperation {
  const char* name;
  int slot;
};

#define OP(name) \
  TOperation { #name, SlotOf(&I::name) }
#define PAIR(name) OP(Get##name), OP(Set##name)
#define ORDER(type, first, ...)      \
  TEST(SlotOrder, type) {            \
    using I = type;                  \
    ExpectOrder(first, __VA_ARGS__); \
  }

// The operations stand one behind the other, the first of them at `first`.
template <class... TOperations>
void ExpectOrder(int first, const TOperations&... operations) {
  const auto expect = [&first](const TOperation& operation) {
    EXPECT_EQ(operation.slot, first++) << operation.name;
  };
  (expect(operations), ...);
}

ORDER(IRefCounted, -kCountingSlots, OP(QueryInterface), OP(AddRef), OP(Release))

ORDER(IStringList, 0, OP(GetCount), OP(GetValues), OP(SetValues), OP(GetNames), OP(GetStrings),
      OP(SetStrings), OP(GetText), OP(SetText), OP(Assign), OP(LoadFromFile), OP(SaveToFile),
      OP(Clear), OP(Add), OP(Insert), OP(Delete), OP(IndexOf), OP(IndexOfName), OP(AddStrings),
      OP(GetSeparateText), OP(SetSeparateText), OP(EraseEmptyLines), OP(CopyList))

ORDER(IConfig, 0, OP(GetFileName), OP(ReadString), OP(ReadInteger), OP(ReadBool), OP(WriteString),
      OP(WriteInteger), OP(WriteBool), OP(DeleteValue), OP(DeleteSection), OP(ReadSection),
      OP(WriteSection), OP(SectionExists), OP(ValueExists), OP(ReadSections), OP(Clear),
      OP(DeleteFile), OP(DiscardChanges), OP(GetLines), OP(SetLines), OP(Save), OP(BuildConfigFile),
      OP(OpenConfigFile), PAIR(MailCheckMode), PAIR(ScanEmlAttachments), PAIR(MaxExecWaitTime),
      PAIR(InformOnVirus), PAIR(AdminAddress), PAIR(Logging), PAIR(LogMode), PAIR(LogFilePath),
      PAIR(LogMaxFileSize), PAIR(LogBackupFile), PAIR(LogSingleLine), PAIR(LogInOut),
      PAIR(VirusScan), PAIR(VirusScanExitCode), PAIR(VirusScan2), PAIR(VirusScan2ExitCode),
      PAIR(MailVirusScan), PAIR(MailVirusScanExitCode), PAIR(IntelliVirusScan),
      PAIR(ScanOnlyExtensions), PAIR(VirusScanFileExts), PAIR(NoVirusScanFileExts),
      PAIR(SpamFilter), PAIR(SpamFilter2), PAIR(SpamFilterExitCode), PAIR(SpamFilter2ExitCode),
      PAIR(SpamFilterMailAddress), PAIR(BlockInvalidAttachmentExts), PAIR(InvalidAttachmentExts),
      PAIR(BlockOnDoubleAttachmentExts), PAIR(AllowedDoubleAttachmentExts),
      PAIR(InvalidDoubleAttachmentExts), PAIR(BlockInvalidAttachments), PAIR(InvalidAttachments),
      PAIR(MakePlainText), PAIR(BlockIFrames), PAIR(DisableActiveX), PAIR(DisableScripts),
      PAIR(CheckHtmlAttachments), PAIR(BlockOnVirusSubjects), PAIR(VirusSubjects),
      PAIR(NoVirusSubjects), PAIR(WarnOnSuspiciousSubjects), PAIR(SuspiciousSubjects),
      PAIR(NoSuspiciousSubjects), PAIR(ASmtpBlockMode), PAIR(ASmtpAdresses), PAIR(ShowScannedText),
      PAIR(ScannedText), PAIR(ScannedTextAsXHeader), PAIR(ScannedTextPlainTextFormat),
      PAIR(ScannedTextHtmlTextFormat), PAIR(ScannedTextOnlyWithVirusScan), PAIR(PluginList),
      PAIR(RedAlertVirusMailCount), PAIR(RedAlertMinuteSpan), PAIR(RedAlertAction))

ORDER(IHeaderItem, 0, OP(GetName), OP(GetValue), OP(SetValue), OP(GetCount), OP(GetValues),
      OP(SetValues), OP(GetValuesAsText), OP(SetValuesAsText), OP(Delete), OP(AddValue),
      OP(DeleteValue), OP(ClearValues))

ORDER(IHeader, 0, OP(GetItems), OP(GetHeader), OP(GetHeaderStr), OP(SetHeaderStr), OP(GetCount),
      OP(Assign), OP(Clear), OP(Add), OP(Insert), OP(Delete), OP(DeleteByName), OP(IndexOf),
      OP(IndexOfItem), OP(Replace))

ORDER(IMailAttachment, 29, PAIR(ContentID), PAIR(Name), PAIR(FileName))

ORDER(IMail, 0, OP(GetHeader), OP(GetBody), PAIR(ContentTypeType), PAIR(ContentTypeSubType),
      PAIR(ContentType), PAIR(ContentTransferEncoding), OP(GetEncodeType), PAIR(MultipartSection),
      PAIR(Boundary), OP(GetCount), OP(GetParts), OP(GetOwner), OP(Assign), OP(Add), OP(Delete),
      OP(Move), OP(Exchange), OP(Clear), OP(IsAttachment), OP(IsText), OP(GetFileContent),
      OP(DecodedContent), OP(SetContent), PAIR(Text), OP(GetMailFileName), OP(GetAttachmentCount),
      OP(GetTextCount), OP(GetAttachments), OP(GetTexts), PAIR(Subject), PAIR(From), PAIR(To),
      PAIR(Cc), PAIR(Bcc), PAIR(Date), OP(GetMIMEVersion), OP(SetMimeVersion), OP(GetReturnPath),
      OP(GetMessageID), OP(Save), OP(SaveToFile), OP(Reset), OP(DeleteAttachment), OP(DeleteText),
      OP(GetToList), OP(GetCcList), OP(GetBccList), OP(SetToList), OP(SetCcList), OP(SetBccList),
      OP(ExtractEmailAddress), OP(ExtractEmailAddresses))

ORDER(IPlugin, 0, OP(GetFileName), OP(GetName), OP(GetVersionMajor), OP(GetVersionMinor), OP(Init),
      OP(Execute), OP(Done), OP(ConfirmResult), OP(GetDialogOptions))

ORDER(IPluginList, 0, OP(GetCount), OP(GetPlugins), OP(Add), OP(Delete), OP(LoadPlugin),
      OP(FindPlugin))

ORDER(IArguments, 0, OP(GetArgumentCount), OP(GetArguments), OP(GetFilename), OP(GetFileExt),
      OP(GetShortFileName), OP(GetName), OP(GetFileSize), OP(FindCmdLineSwitch), OP(GetCommandLine))

ORDER(IQuardaInstanceEx, 0, OP(GetArguments), OP(GetPlugins), OP(GetConfig), OP(GetMailType),
      OP(GetFileType), OP(GetMail), OP(GetQuardaPath), OP(GetApp), OP(Log), OP(LogError),
      OP(LogWarn), OP(LogExtra), OP(LogOK), OP(LogDebug), OP(VirusReason), OP(NewStringList),
      OP(LoadMailFromMemory), OP(LoadMailFromFile), OP(SetGlobalData), OP(GetGlobalData),
      OP(Initialize), OP(Execute), OP(AddRedAlertFile), OP(WriteStatistic))

ORDER(IQuardaApp, 0, OP(GetConfig), OP(GetInstanceCount), OP(GetInstances), OP(GetQuardaPath),
      OP(GetPlugins), OP(RunInstance))

TEST(SlotOrder, LeavesNoneOut) {
  EXPECT_EQ(SlotOf(&IConfig::GetMailCheckMode), 22);
  EXPECT_EQ(SlotOf(&IConfig::SetRedAlertAction), 135);
  EXPECT_EQ(SlotOf(&IMail::GetMailFileName), 31);
  EXPECT_EQ(SlotOf(&IMail::ExtractEmailAddresses), 64);
}

}  // namespace
}  // namespace quarda
