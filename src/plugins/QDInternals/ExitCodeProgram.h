// What virus scanners and spam filters have in common: a configured program looks at the scanned
// file and tells by its exit code what it thinks of it.
#pragma once

#include <QDIntf.h>

#include <string>
#include <string_view>

namespace quarda {

/// How a kind of program is spoken of. "%s" stands for the title, "%d" for the exit code.
struct TExitCodeMessages {
  std::string_view clean;
  std::string_view found;
  std::string_view crashed;
  /// How a finding is told.
  void (QDCALL IQuardaInstance::*report)(IPlugin*, const AnsiString&);
  /// The reason of a mail that could not be checked (the system's text, the command); empty: none.
  std::string_view notStartedReason;
};

/// One program of the settings.
struct TExitCodeProgram {
  std::string_view title;
  std::string command;    ///< empty: there is none
  std::string exitCodes;  ///< those of a finding, as a number list; empty: all but 0
};

/// Runs the program for the scan and writes the log; true when there is none or it found nothing. A
/// program that cannot be started, or that crashes, never counts as having found nothing.
bool RunExitCodeProgram(IQuardaInstance& scan, IPlugin* plugin, const TExitCodeProgram& program,
                        const TExitCodeMessages& messages);

}  // namespace quarda
