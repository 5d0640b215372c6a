// The macros of configured command lines: finding them, and putting in what they stand for so that
// nothing that a mail brings along can start another program or add an argument.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quarda {

/// What a macro stands for.
struct TMacroValue {
  /// One text, or the members of a list. Each member is an argument of its own.
  std::vector<std::string> texts;
  /// A list is written with its members between double quotes, a blank between two of them.
  bool isList = false;
  /// Written by whoever sent the mail, so that it must not choose the program.
  bool isMailText = false;
};

/// How a macro is looked for. Letter case never counts.
enum class TMacroSearch {
  kPairs,  ///< as one of the texts between two "$", counted off from the start of the line
  kEvery,  ///< every occurrence of its name
  kFirst,  ///< the first occurrence of its name; the others stay
};

struct TCommandMacro {
  std::string_view name;  ///< in small letters, with both "$"
  TMacroSearch search;
  std::function<TMacroValue()> value;  ///< asked once, and only when the macro occurs
};

/// Text of a mail without the characters that could end an argument.
std::string ArgumentText(std::string_view text);

/// Whether a flag (its name in small letters, with both "$") occurs, in any letter case.
bool HasFlag(std::string_view command, std::string_view flag);
/// The command without any occurrence of the flag.
std::string RemoveFlag(std::string_view command, std::string_view flag);

/// A configured command line with its macros found. They are looked for in the configured text
/// alone, never in a value that was put in. A command line ends before its first NUL.
class TExpandedCommand {
 public:
  /// `program` is the part in front that stays as it is; it may be empty.
  TExpandedCommand(std::string_view program, std::string_view text,
                   std::span<const TCommandMacro> macros);

  /// With the values as they are: how the log shows it.
  std::string AsWritten() const;
  /// As it is started: text that came in by a value stays within its argument. Empty when a text of
  /// the mail stands in the place of the program.
  std::string ForStart() const;

 private:
  std::vector<std::string> FillPiece(std::string_view piece, bool isProgram) const;
  std::string FillRaw(std::string_view text) const;
  bool HoldsMailText(std::string_view piece) const;
  const TMacroValue& ValueOf(std::string_view shape, size_t mark) const;

  std::string shape_;  // with a mark of two characters in place of each value
  std::vector<std::optional<TMacroValue>> values_;
};

/// The macros that name the file of the newest scan: "$FILE$", "$FILE-SP$", "$NAME$", "$NAME-SP$".
/// None when there is no scan.
std::vector<TCommandMacro> FileMacros();

/// The command line of a scanner or filter with the macros of the scanned file in its arguments.
/// The program is taken as it is.
TExpandedCommand ExpandCommand(std::string_view command);
std::string CmdMacrosToCmd(std::string_view command);

}  // namespace quarda
