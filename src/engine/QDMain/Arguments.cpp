#include "Arguments.h"

#include <CodePage.h>
#include <Files.h>
#include <Program.h>
#include <Utils.h>

#include <algorithm>

namespace quarda {
namespace {

bool IsSwitch(std::string_view argument) {
  return !argument.empty() && (argument[0] == '-' || argument[0] == '/');
}

std::string_view StripQuotes(std::string_view token) {
  if (token.front() != '"') return token;
  token.remove_prefix(1);
  if (!token.empty() && token.back() == '"') token.remove_suffix(1);
  return token;
}

std::string FindFileArgument(const std::vector<std::string>& arguments) {
  for (size_t i = 1; i < arguments.size(); ++i) {
    const std::string_view argument = Trim(arguments[i]);
    if (argument.empty() || IsSwitch(argument)) continue;
    if (!platform::FileExists(argument)) continue;
    std::string fileName(argument);
    std::ranges::replace(fileName, '/', '\\');  // so that folder and name come apart everywhere
    return fileName;
  }
  return {};
}

}  // namespace

std::vector<std::string> SplitCommandLine(std::string_view commandLine) {
  std::vector<std::string> arguments;
  size_t at = 0;
  while ((at = commandLine.find_first_not_of(' ', at)) != std::string_view::npos) {
    bool quoted = false;
    size_t end = at;
    for (; end < commandLine.size() && (quoted || commandLine[end] != ' '); ++end) {
      if (commandLine[end] == '"') quoted = !quoted;
    }
    const std::string_view argument = StripQuotes(commandLine.substr(at, end - at));
    if (!argument.empty()) arguments.emplace_back(argument);
    at = end;
  }
  return arguments;
}

bool HasSwitch(const std::vector<std::string>& arguments, std::string_view name, bool ignoreCase) {
  for (size_t i = 1; i < arguments.size(); ++i) {
    if (!IsSwitch(arguments[i])) continue;
    const std::string_view given = std::string_view(arguments[i]).substr(1);
    if (ignoreCase ? platform::SameAnsiText(given, name) : given == name) return true;
  }
  return false;
}

TArguments::TArguments(const AnsiString& commandLine) : commandLine_(commandLine) {
  arguments_ = commandLine.IsEmpty() ? platform::ProgramArguments() : SplitCommandLine(commandLine);
  fileName_ = FindFileArgument(arguments_);
}

int32_t TArguments::GetArgumentCount() { return static_cast<int32_t>(arguments_.size()) - 1; }

AnsiString TArguments::GetArguments(int32_t index) {
  if (index < 0 || static_cast<size_t>(index) >= arguments_.size()) RaiseListIndex(index);
  return arguments_[static_cast<size_t>(index)];
}

AnsiString TArguments::GetFileExt() { return platform::LowerAnsi(ExtractFileExt(fileName_)); }

AnsiString TArguments::GetShortFileName() { return platform::ShortPath(fileName_); }

AnsiString TArguments::GetName() { return ExtractFileName(fileName_); }

int32_t TArguments::GetFileSize() { return FileGetSize(fileName_); }

bool TArguments::FindCmdLineSwitch(const AnsiString& name, bool ignoreCase) {
  return HasSwitch(arguments_, name, ignoreCase);
}

}  // namespace quarda
