#include "PluginASmtpCheck.h"

#include <CodePage.h>
#include <Utils.h>

#include <string>
#include <string_view>

#include "Messages.h"
#include "PatternList.h"

namespace quarda {
namespace {

constexpr std::string_view kFakedSender = "faked asmtp sender: \"%s\".";
constexpr std::string_view kNote = "Quarda - faked sender: ";
constexpr std::string_view kPassed = "passed";
constexpr std::string_view kReceived = "Received";
// How the mail server notes a sender that authenticated itself.
constexpr std::string_view kAuthenticated = " with asmtp ";

/// The last field of the first unbroken run of "Received" fields, where the mail came in first.
/// Null when there is none.
TRef<IHeaderItem> FirstHop(IHeader& header) {
  TRef<IHeaderItem> found;
  const int32_t count = header.GetCount();
  for (int32_t i = 0; i < count; ++i) {
    TRef<IHeaderItem> item = header.GetItems(i);
    if (platform::SameAnsiText(item->GetName(), kReceived)) {
      found = item;
    } else if (found) {
      break;
    }
  }
  return found;
}

bool CameAuthenticated(IMail& mail) {
  const TRef<IHeaderItem> received = FirstHop(*mail.GetHeader());
  if (!received) return false;
  const AnsiString values = received->GetValues()->GetSeparateText(";");
  return platform::LowerAnsi(values).find(kAuthenticated) != std::string::npos;
}

bool IsProtected(IConfig& config, std::string_view sender) {
  TPatternList patterns;
  patterns.AddLines(config.GetASmtpAdresses().Get());
  return patterns.FirstMatch(sender).has_value();
}

void NoteInSubject(IMail& mail) {
  const AnsiString subject = mail.GetSubject();
  if (subject.View().find(kNote) != std::string_view::npos) return;
  mail.SetSubject(Concat({kNote, subject}));
}

}  // namespace

bool TPluginASmtpCheck::DoExecute(IQuardaInstance& instance) {
  const TRef<IConfig> config = instance.GetConfig();
  if (instance.GetFileType() != ftInMail || config->GetASmtpBlockMode() == asbmNone) return true;
  const TRef<IMail> mail = instance.GetMail();
  const AnsiString sender = mail->ExtractEmailAddress(mail->GetFrom());
  if (IsProtected(*config, sender) && !CameAuthenticated(*mail)) {
    instance.VirusReason(this, FillIn(kFakedSender, {sender}));
    if (config->GetASmtpBlockMode() == asbmMarkAsVirus) return false;
    NoteInSubject(*mail);
  }
  instance.LogOK(this, kPassed);
  return true;
}

}  // namespace quarda
