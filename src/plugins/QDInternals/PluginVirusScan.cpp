#include "PluginVirusScan.h"

#include <CodePage.h>
#include <Utils.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "ExitCodeProgram.h"
#include "Messages.h"
#include "PatternList.h"

namespace quarda {
namespace {

constexpr std::string_view kNoScanner = "No VirusScanner available";
constexpr std::string_view kNotInList = "passed (extension is \"%s\" not in the list)";
constexpr std::string_view kNotScanned = "passed (extension \"%s\" is not scanned)";
constexpr std::string_view kPassed = "passed";

constexpr TExitCodeMessages kScannerMessages = {
    "%s: no virus found",
    "%s: Virus found (ExitCode: %d)",
    "%s: Scanner crashed (ExitCode: %d)",
    &IQuardaInstance::VirusReason,
    "Could not execute virus scanner: %s [%s]",
};

bool HasExtension(IStringList* extensions, std::string_view extension) {
  return std::ranges::any_of(LinesOf(extensions), [&](const std::string& item) {
    return platform::SameAnsiText(item.starts_with('.') ? item : "." + item, extension);
  });
}

/// Why the file scanners leave a file out; nothing when they do not.
std::optional<std::string> WhyLeftOut(IConfig& config, std::string_view extension) {
  switch (config.GetScanOnlyExtensions()) {
    case soeExt:
      if (HasExtension(config.GetVirusScanFileExts().Get(), extension)) break;
      return FillIn(kNotInList, {extension});
    case soeNotExt:
      if (!HasExtension(config.GetNoVirusScanFileExts().Get(), extension)) break;
      return FillIn(kNotScanned, {extension});
    case soeOff:
      break;
  }
  return std::nullopt;
}

}  // namespace

bool VirusScannerConfigured(IConfig& config) {
  return !config.GetVirusScan().IsEmpty() || !config.GetVirusScan2().IsEmpty() ||
         !config.GetMailVirusScan().IsEmpty();
}

bool TPluginVirusScan::DoExecute(IQuardaInstance& instance) {
  const TRef<IConfig> config = instance.GetConfig();
  if (!VirusScannerConfigured(*config)) {
    instance.LogDebug(this, kNoScanner);
    return true;
  }
  const bool isMail = instance.GetFileType() != ftAttachment;
  if (!isMail || !config->GetIntelliVirusScan()) {
    if (const auto why = WhyLeftOut(*config, instance.GetArguments()->GetFileExt())) {
      instance.LogOK(this, *why);
      return true;
    }
    if (!PassesFileScanners(instance, *config)) return false;
  }
  if (isMail && !PassesMailScanner(instance, *config)) return false;
  instance.LogOK(this, kPassed);
  return true;
}

bool TPluginVirusScan::PassesFileScanners(IQuardaInstance& instance, IConfig& config) {
  const TExitCodeProgram first = {"Virus Scan 1", config.GetVirusScan().Str(),
                                  config.GetVirusScanExitCode().Str()};
  const TExitCodeProgram second = {"Virus Scan 2", config.GetVirusScan2().Str(),
                                   config.GetVirusScan2ExitCode().Str()};
  return RunExitCodeProgram(instance, this, first, kScannerMessages) &&
         RunExitCodeProgram(instance, this, second, kScannerMessages);
}

bool TPluginVirusScan::PassesMailScanner(IQuardaInstance& instance, IConfig& config) {
  const TExitCodeProgram scanner = {"Mail Virus Scan", config.GetMailVirusScan().Str(),
                                    config.GetMailVirusScanExitCode().Str()};
  return RunExitCodeProgram(instance, this, scanner, kScannerMessages);
}

}  // namespace quarda
