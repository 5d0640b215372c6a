// Taking a configured command line apart into its program and its arguments.
#pragma once

#include <string>
#include <string_view>

namespace quarda {

/// The program of a command line. A program between double quotes may hold blanks; without the
/// second quote the rest of the line, followed by one blank, is the program.
std::string ExtractCmdFileName(std::string_view command);

/// The arguments behind the program, trimmed.
std::string ExtractCmdArguments(std::string_view command);

}  // namespace quarda
