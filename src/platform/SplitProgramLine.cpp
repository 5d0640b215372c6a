#include "Process.h"

namespace quarda::platform {
namespace {

bool IsSeparator(char c) { return c == ' ' || c == '\t'; }

size_t SkipSeparators(std::string_view line, size_t at) {
  while (at < line.size() && IsSeparator(line[at])) ++at;
  return at;
}

size_t CountBackslashes(std::string_view text, size_t at) {
  const size_t end = text.find_first_not_of('\\', at);
  return (end == std::string_view::npos ? text.size() : end) - at;
}

/// Where the program's name ends: quotes only group.
size_t ProgramEnd(std::string_view line, size_t at) {
  bool quoted = false;
  for (; at < line.size() && (quoted || !IsSeparator(line[at])); ++at) {
    if (line[at] == '"') quoted = !quoted;
  }
  return at;
}

/// Where an argument ends: a quote behind an odd number of backslashes is an ordinary character.
size_t ArgumentEnd(std::string_view line, size_t at) {
  bool quoted = false;
  while (at < line.size() && (quoted || !IsSeparator(line[at]))) {
    const size_t backslashes = CountBackslashes(line, at);
    at += backslashes;
    if (at == line.size()) break;
    if (line[at] == '"') {
      if (backslashes % 2 == 0) quoted = !quoted;
      ++at;
    } else if (backslashes == 0) {
      ++at;
    }
  }
  return at;
}

std::string Program(std::string_view raw) {
  std::string program(raw);
  std::erase(program, '"');
  return program;
}

/// An argument without its escapes. A doubled quote inside quotes is a quote.
std::string Argument(std::string_view raw) {
  std::string argument;
  argument.reserve(raw.size());
  bool quoted = false;
  for (size_t at = 0; at < raw.size(); ++at) {
    const size_t backslashes = CountBackslashes(raw, at);
    at += backslashes;
    const bool beforeQuote = at < raw.size() && raw[at] == '"';
    argument.append(beforeQuote ? backslashes / 2 : backslashes, '\\');
    if (!beforeQuote) {
      if (at < raw.size()) argument += raw[at];
    } else if (backslashes % 2 == 1) {
      argument += '"';
    } else if (quoted && at + 1 < raw.size() && raw[at + 1] == '"') {
      argument += '"';
      ++at;
    } else {
      quoted = !quoted;
    }
  }
  return argument;
}

}  // namespace

std::vector<std::string_view> RawProgramLine(std::string_view commandLine) {
  std::vector<std::string_view> pieces;
  size_t at = 0;
  while ((at = SkipSeparators(commandLine, at)) < commandLine.size()) {
    const size_t end = pieces.empty() ? ProgramEnd(commandLine, at) : ArgumentEnd(commandLine, at);
    pieces.push_back(commandLine.substr(at, end - at));
    at = end;
  }
  return pieces;
}

std::vector<std::string> SplitProgramLine(std::string_view commandLine) {
  std::vector<std::string> pieces;
  for (const std::string_view raw : RawProgramLine(commandLine)) {
    pieces.push_back(pieces.empty() ? Program(raw) : Argument(raw));
  }
  return pieces;
}

std::string QuoteArgument(std::string_view argument) {
  std::string quoted = "\"";
  for (size_t at = 0; at <= argument.size(); ++at) {
    const size_t backslashes = CountBackslashes(argument, at);
    at += backslashes;
    const bool beforeQuote = at == argument.size() || argument[at] == '"';
    quoted.append(beforeQuote ? 2 * backslashes : backslashes, '\\');
    if (at == argument.size()) break;
    if (argument[at] == '"') quoted += '\\';
    quoted += argument[at];
  }
  return quoted += '"';
}

}  // namespace quarda::platform
