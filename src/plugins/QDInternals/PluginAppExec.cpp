#include "PluginAppExec.h"

#include <Files.h>
#include <Utils.h>

#include <algorithm>
#include <string>

#include "CommandLauncher.h"
#include "PatternList.h"

namespace quarda {
namespace {

constexpr std::string_view kFileName = "Quarda.app";
constexpr std::string_view kBeforeAll = "Before All";
constexpr std::string_view kBeforeVirusScan = "Before VirusScan";
constexpr std::string_view kAfterAll = "After All";
constexpr std::string_view kNormalExit = "Normal Exit";
constexpr std::string_view kVirusExit = "Virus Exit";

void WriteDefaultFile(const std::string& path) {
  std::string text;
  for (const auto section : {kBeforeAll, kBeforeVirusScan, kAfterAll, kNormalExit, kVirusExit}) {
    text.append("[").append(section).append("]\r\n\r\n");
  }
  platform::ReplaceFileContent(path, text);
}

TRef<IConfigFile> OpenHooksFile(IQuardaInstance& instance) {
  const std::string path = Concat({instance.GetQuardaPath(), "\\", kFileName});
  if (!platform::FileExists(path)) WriteDefaultFile(path);
  return instance.GetConfig()->OpenConfigFile(kFileName);
}

bool IsCommand(std::string_view line) {
  const std::string_view text = Trim(line);
  return !text.empty() && text.front() != ';';
}

}  // namespace

bool TPluginAppExec::Init(IQuardaInstance* instance) {
  Close(*instance);
  try {
    files_.emplace_back(instance, OpenHooksFile(*instance));
  } catch (...) {
    LogException(this);  // hooks that cannot be read must not stop the scan
  }
  StartApps(*instance, kBeforeAll);
  return true;
}

bool TPluginAppExec::DoExecute(IQuardaInstance& instance) {
  StartApps(instance, kBeforeVirusScan);
  return true;
}

void TPluginAppExec::Done(IQuardaInstance* instance, bool passed) {
  StartApps(*instance, kAfterAll);
  StartApps(*instance, passed ? kNormalExit : kVirusExit);
  Close(*instance);
}

void TPluginAppExec::StartApps(IQuardaInstance& instance, std::string_view section) {
  const auto file = std::ranges::find(files_, &instance, &TOpenFile::first);
  if (file == files_.end()) return;
  for (const std::string& line : LinesOf(file->second->ReadSection(section).Get())) {
    if (!IsCommand(line)) continue;
    try {
      StartApplication(instance, this, line);
    } catch (...) {
      LogException(this);  // the next one follows
    }
  }
}

void TPluginAppExec::Close(const IQuardaInstance& instance) {
  std::erase_if(files_, [&](const TOpenFile& file) { return file.first == &instance; });
}

}  // namespace quarda
