#include "CommandLine.h"

#include <Utils.h>

#include <algorithm>

namespace quarda {

std::string ExtractCmdFileName(std::string_view command) {
  const std::string line = std::string(command) + ' ';
  if (line.front() != '"') return line.substr(0, line.find(' '));
  const size_t quote = line.find('"', 1);
  return line.substr(1, quote == std::string::npos ? std::string::npos : quote - 1);
}

std::string ExtractCmdArguments(std::string_view command) {
  const std::string line = std::string(command) + ' ';
  if (line.front() != '"') return std::string(Trim(line.substr(line.find(' ') + 1)));
  const size_t quote = line.find('"', 1);
  // Without a second quote there is no program to take away: the whole rest counts as arguments.
  if (quote == std::string::npos) return std::string(Trim(std::string_view(line).substr(1)));
  return std::string(Trim(std::string_view(line).substr(std::min(quote + 2, line.size()))));
}

}  // namespace quarda
