#include "PluginSpamFilter.h"

#include <string_view>

#include "ExitCodeProgram.h"

namespace quarda {
namespace {

constexpr std::string_view kSpamDetected = "Spam detected";
constexpr std::string_view kPassed = "passed";

constexpr TExitCodeMessages kFilterMessages = {
    "%s: no spam found",
    "%s: Spam found (ExitCode: %d)",
    "%s: Filter crashed (ExitCode: %d)",
    &IQuardaInstance::LogWarn,
    "",
};

bool IsNested(IQuardaInstance& instance) {
  const TRef<IQuardaApp> app = instance.GetApp();
  return app && app->GetInstanceCount() > 1;
}

/// Sends the mail to the spam mailbox and keeps its recipients in fields of their own.
void Redirect(IMail& mail, const AnsiString& mailbox) {
  const TRef<IHeader> header = mail.GetHeader();
  header->Add("X-Spam-To", header->GetHeaderStr("To"));
  header->Add("X-Spam-Cc", header->GetHeaderStr("Cc"));
  mail.SetTo(mailbox);
  mail.SetCc("");
}

}  // namespace

bool TPluginSpamFilter::DoExecute(IQuardaInstance& instance) {
  if (instance.GetFileType() != ftInMail || IsNested(instance)) return true;
  const TRef<IConfig> config = instance.GetConfig();
  const TExitCodeProgram first = {"SpamFilter 1", config->GetSpamFilter().Str(),
                                  config->GetSpamFilterExitCode().Str()};
  const TExitCodeProgram second = {"SpamFilter 2", config->GetSpamFilter2().Str(),
                                   config->GetSpamFilter2ExitCode().Str()};
  if (first.command.empty() && second.command.empty()) return true;
  if (!RunExitCodeProgram(instance, this, first, kFilterMessages) ||
      !RunExitCodeProgram(instance, this, second, kFilterMessages)) {
    return HandleSpam(instance, *config);
  }
  instance.LogOK(this, kPassed);
  return true;
}

bool TPluginSpamFilter::HandleSpam(IQuardaInstance& instance, IConfig& config) {
  instance.LogWarn(this, kSpamDetected);
  const AnsiString mailbox = config.GetSpamFilterMailAddress();
  if (mailbox.IsEmpty()) return false;
  Redirect(*instance.GetMail(), mailbox);
  return true;
}

}  // namespace quarda
