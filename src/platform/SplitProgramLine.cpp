#include "Process.h"

namespace quarda::platform {
namespace {

bool IsSeparator(char c) { return c == ' ' || c == '\t'; }

size_t SkipSeparators(std::string_view line, size_t at) {
  while (at < line.size() && IsSeparator(line[at])) ++at;
  return at;
}

/// The program's name: quotes only group.
std::string TakeProgram(std::string_view line, size_t& at) {
  std::string program;
  bool quoted = false;
  for (; at < line.size() && (quoted || !IsSeparator(line[at])); ++at) {
    if (line[at] == '"') {
      quoted = !quoted;
    } else {
      program += line[at];
    }
  }
  return program;
}

/// An argument, with backslashes that escape quotes. A doubled quote inside quotes is a quote.
std::string TakeArgument(std::string_view line, size_t& at) {
  std::string argument;
  bool quoted = false;
  while (at < line.size() && (quoted || !IsSeparator(line[at]))) {
    size_t backslashes = 0;
    while (at < line.size() && line[at] == '\\') ++backslashes, ++at;
    const bool beforeQuote = at < line.size() && line[at] == '"';
    argument.append(beforeQuote ? backslashes / 2 : backslashes, '\\');
    if (!beforeQuote) {
      if (backslashes == 0) argument += line[at++];
      continue;
    }
    if (backslashes % 2 == 1) {
      argument += '"';
    } else if (quoted && at + 1 < line.size() && line[at + 1] == '"') {
      argument += '"';
      ++at;
    } else {
      quoted = !quoted;
    }
    ++at;
  }
  return argument;
}

}  // namespace

std::vector<std::string> SplitProgramLine(std::string_view commandLine) {
  std::vector<std::string> pieces;
  size_t at = SkipSeparators(commandLine, 0);
  if (at == commandLine.size()) return pieces;
  pieces.push_back(TakeProgram(commandLine, at));
  while ((at = SkipSeparators(commandLine, at)) < commandLine.size()) {
    pieces.push_back(TakeArgument(commandLine, at));
  }
  return pieces;
}

}  // namespace quarda::platform
