// The command line of a scan.
#pragma once

#include <QDIntf.h>

#include <string>
#include <vector>

namespace quarda {

/// Splits a command line once, at creation, and finds the file to scan in it: the first argument
/// that is no switch and names an existing file. An empty command line stands for the arguments of
/// the process. An index outside 0 .. count raises EListError.
class TArguments : public TRefCounted<IArguments> {
 public:
  explicit TArguments(const AnsiString& commandLine);

  int32_t QDCALL GetArgumentCount() override;
  AnsiString QDCALL GetArguments(int32_t index) override;
  AnsiString QDCALL GetFilename() override { return fileName_; }
  AnsiString QDCALL GetFileExt() override;
  AnsiString QDCALL GetShortFileName() override;
  AnsiString QDCALL GetName() override;
  int32_t QDCALL GetFileSize() override;
  bool QDCALL FindCmdLineSwitch(const AnsiString& name, bool ignoreCase) override;
  AnsiString QDCALL GetCommandLine() override { return commandLine_; }

 private:
  AnsiString commandLine_;
  std::vector<std::string> arguments_;
  std::string fileName_;
};

/// Splits at blanks outside double quotes. A pair of quotes around an argument goes, quotes inside
/// it stay; an argument that is empty then is dropped.
std::vector<std::string> SplitCommandLine(std::string_view commandLine);

/// Whether one of the arguments behind argument 0 is the switch: "-" or "/" and the name.
bool HasSwitch(const std::vector<std::string>& arguments, std::string_view name, bool ignoreCase);

}  // namespace quarda
