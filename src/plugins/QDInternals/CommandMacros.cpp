// A macro is first replaced by a mark: a NUL, which no command line can hold, and a letter for the
// macro. The marked text is taken apart into arguments as the system will do it, and the values are
// put into the arguments. An argument whose values would change how the line is taken apart is
// written anew, in quotes. Everything is linear in the line and the values.
#include "CommandMacros.h"

#include <CodePage.h>
#include <CurrentApp.h>
#include <Files.h>
#include <Process.h>
#include <Utils.h>

#include <algorithm>
#include <utility>

#include "CommandLine.h"

namespace quarda {
namespace {

constexpr char kMark = '\0';
constexpr size_t kMarkSize = 2;

std::string MarkOf(size_t macro) { return {kMark, static_cast<char>('a' + macro)}; }

/// The text with the first or every occurrence of a name (in small letters) replaced.
std::string ReplaceName(std::string_view text, std::string_view name, std::string_view by,
                        bool every) {
  const std::string folded = platform::LowerAnsi(text);
  std::string result;
  size_t done = 0;
  for (size_t at = folded.find(name); at != std::string::npos; at = folded.find(name, done)) {
    result.append(text.substr(done, at - done)).append(by);
    done = at + name.size();
    if (!every) break;
  }
  return result.append(text.substr(done));
}

/// Replaces the macros that are looked for in pairs of "$".
std::string MarkPairs(std::string_view text, std::span<const TCommandMacro> macros) {
  return ReplaceMacrosEx(text, [&](std::string& written) {
    const auto macro = std::ranges::find_if(macros, [&](const TCommandMacro& known) {
      return known.search == TMacroSearch::kPairs && platform::SameAnsiText(known.name, written);
    });
    if (macro == macros.end()) return false;
    written = MarkOf(static_cast<size_t>(macro - macros.begin()));
    return true;
  });
}

/// The pieces of a part of a command line that stands behind the program, or of the whole line.
std::vector<std::string> Split(std::string_view text, bool isProgram) {
  if (isProgram) return platform::SplitProgramLine(text);
  std::vector<std::string> pieces = platform::SplitProgramLine(Concat({"x ", text}));
  pieces.erase(pieces.begin());
  return pieces;
}

/// Whether the system reads the text as these arguments and what follows it as further ones: a
/// doubled quote may be read as it should and yet leave the quotes open.
bool ReadsAs(std::string_view text, std::vector<std::string> arguments, bool isProgram) {
  arguments.emplace_back("x");
  return Split(Concat({text, " x"}), isProgram) == arguments;
}

std::string Join(const std::vector<std::string>& arguments, bool isProgram) {
  std::string line;
  for (const std::string& argument : arguments) {
    const bool first = line.empty();
    if (!first) line += ' ';
    // The program's own name knows no escapes.
    line += first && isProgram ? Concat({"\"", DelChars(argument, "\""), "\""})
                               : platform::QuoteArgument(argument);
  }
  return line;
}

TRef<IQuardaInstance> NewestScan() {
  const TRef<IQuardaApp> app = GetQuardaApp();
  const int32_t scans = app ? app->GetInstanceCount() : 0;
  return scans == 0 ? nullptr : app->GetInstances(scans - 1);
}

/// A name without a folder lies in the current one.
std::string ScannedPath(IQuardaInstance& scan) {
  const std::string name = scan.GetArguments()->GetFilename().Str();
  return name.find('\\') == name.npos ? platform::FullPath(name) : name;
}

}  // namespace

std::string ArgumentText(std::string_view text) {
  return DelChars(text, std::string_view("\"\r\n\0", 4));
}

bool HasFlag(std::string_view command, std::string_view flag) {
  return platform::LowerAnsi(command).find(flag) != std::string::npos;
}

std::string RemoveFlag(std::string_view command, std::string_view flag) {
  return ReplaceName(command, flag, {}, true);
}

TExpandedCommand::TExpandedCommand(std::string_view program, std::string_view text,
                                   std::span<const TCommandMacro> macros)
    : values_(macros.size()) {
  // Trimmed before there are marks, which would count as blanks.
  std::string marked = MarkPairs(Trim(text.substr(0, text.find(kMark))), macros);
  for (size_t i = 0; i < macros.size(); ++i) {
    if (macros[i].search != TMacroSearch::kPairs) {
      marked =
          ReplaceName(marked, macros[i].name, MarkOf(i), macros[i].search == TMacroSearch::kEvery);
    }
    if (marked.find(MarkOf(i)) != std::string::npos) values_[i] = macros[i].value();
  }
  const bool isBoth = !program.empty() && !marked.empty();
  shape_ = Concat({program, isBoth ? " " : "", marked});
}

const TMacroValue& TExpandedCommand::ValueOf(std::string_view shape, size_t mark) const {
  return *values_[static_cast<size_t>(shape[mark + 1] - 'a')];
}

std::string TExpandedCommand::FillRaw(std::string_view text) const {
  std::string filled;
  size_t done = 0;
  for (size_t mark = text.find(kMark); mark != text.npos; mark = text.find(kMark, done)) {
    filled.append(text.substr(done, mark - done));
    done = mark + kMarkSize;
    const TMacroValue& value = ValueOf(text, mark);
    std::string_view separator = value.isList ? "\"" : "";
    for (const std::string& member : value.texts) {
      filled.append(separator).append(member);
      separator = "\" \"";
    }
    if (value.isList && !value.texts.empty()) filled += '"';
  }
  return filled.append(text.substr(done));
}

/// The arguments that one piece of the marked line stands for.
std::vector<std::string> TExpandedCommand::FillPiece(std::string_view piece, bool isProgram) const {
  std::vector<std::string> arguments(1);
  const std::string text = Split(piece, isProgram).at(0);
  size_t done = 0;
  for (size_t mark = text.find(kMark); mark != text.npos; mark = text.find(kMark, done)) {
    arguments.back().append(text, done, mark - done);
    done = mark + kMarkSize;
    bool first = true;
    for (const std::string& member : ValueOf(text, mark).texts) {
      if (!first) arguments.emplace_back();
      arguments.back() += member;
      first = false;
    }
  }
  arguments.back().append(text, done);
  return arguments;
}

bool TExpandedCommand::HoldsMailText(std::string_view piece) const {
  for (size_t mark = piece.find(kMark); mark != piece.npos;
       mark = piece.find(kMark, mark + kMarkSize)) {
    if (ValueOf(piece, mark).isMailText) return true;
  }
  return false;
}

std::string TExpandedCommand::AsWritten() const { return std::string(Trim(FillRaw(shape_))); }

std::string TExpandedCommand::ForStart() const {
  std::string line;
  size_t done = 0;
  bool isProgram = true;
  for (const std::string_view piece : platform::RawProgramLine(shape_)) {
    if (isProgram && HoldsMailText(piece)) return {};
    const size_t start = static_cast<size_t>(piece.data() - shape_.data());
    line.append(shape_, done, start - done);
    done = start + piece.size();
    std::string written = FillRaw(piece);
    if (piece.find(kMark) != piece.npos) {
      const std::vector<std::string> wanted = FillPiece(piece, isProgram);
      const bool isNothing = written.empty() && !isProgram;
      if (!isNothing && !ReadsAs(written, wanted, isProgram)) written = Join(wanted, isProgram);
    }
    line += written;
    isProgram = false;
  }
  return line.append(shape_, done);
}

std::vector<TCommandMacro> FileMacros() {
  const TRef<IQuardaInstance> scan = NewestScan();
  if (!scan) return {};
  const auto macro = [&scan](std::string_view name, bool shortForm, bool nameOnly) {
    return TCommandMacro{name, TMacroSearch::kPairs, [scan, shortForm, nameOnly] {
                           std::string path = ScannedPath(*scan);
                           if (shortForm) path = platform::ShortPath(path);
                           if (nameOnly) path = ExtractFileName(path);
                           return TMacroValue{{std::move(path)}};
                         }};
  };
  return {macro("$file$", false, false), macro("$file-sp$", true, false),
          macro("$name$", false, true), macro("$name-sp$", true, true)};
}

TExpandedCommand ExpandCommand(std::string_view command) {
  const std::string_view line = command.substr(0, command.find('\0'));
  std::string program = ExtractCmdFileName(line);
  if (program.find(' ') != program.npos) program = Concat({"\"", program, "\""});
  return {program, ExtractCmdArguments(line), FileMacros()};
}

std::string CmdMacrosToCmd(std::string_view command) { return ExpandCommand(command).AsWritten(); }

}  // namespace quarda
