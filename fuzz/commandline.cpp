// Command lines: those of a scan, and those of programs to be started.
#include <Arguments.h>
#include <CommandLine.h>
#include <Process.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Fuzz.h"

namespace {

using namespace quarda;
using platform::SplitProgramLine;

void SplitsWithoutInventing(std::string_view line) {
  size_t total = 0;
  for (const std::string& argument : SplitCommandLine(line)) {
    fuzz::Require(!argument.empty(), "an argument is never empty");
    fuzz::Require(line.find(argument) != std::string_view::npos, "an argument is part of the line");
    total += argument.size();
  }
  fuzz::Require(total <= line.size(), "arguments do not overlap");
}

/// Quotes an argument so that the Windows rules give it back.
std::string Quoted(std::string_view argument) {
  std::string quoted = "\"";
  size_t backslashes = 0;
  for (const char c : argument) {
    if (c == '"') quoted.append(backslashes + 1, '\\');
    backslashes = c == '\\' ? backslashes + 1 : 0;
    quoted += c;
  }
  return quoted.append(backslashes, '\\') + '"';
}

void QuotedArgumentsComeBack(std::string_view text) {
  const std::string first(text.substr(0, text.size() / 2));
  const std::string second(text.substr(text.size() / 2));
  const std::vector<std::string> expected{"program", first, second};
  fuzz::Require(SplitProgramLine("program " + Quoted(first) + "\t " + Quoted(second)) == expected,
                "quoted arguments come back");
}

void ProgramAndArgumentsComeApart(std::string_view line) {
  const std::string program = ExtractCmdFileName(line);
  const std::string arguments = ExtractCmdArguments(line);
  fuzz::Require(arguments.empty() || line.find(arguments) != std::string_view::npos,
                "the arguments are part of the line");
  const bool quoted = line.starts_with('"');
  fuzz::Require(quoted || program.find(' ') == std::string::npos,
                "only a quoted program holds blanks");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return fuzz::AllowErrors([&] {
    const std::string_view text = fuzz::AsText(data, size);
    SplitsWithoutInventing(text);
    QuotedArgumentsComeBack(text);
    ProgramAndArgumentsComeApart(text);
    SplitProgramLine(text);
    HasSwitch(SplitCommandLine(text), text.substr(0, 4), true);
  });
}
