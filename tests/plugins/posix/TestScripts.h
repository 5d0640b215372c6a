// Scans that start shell scripts, which the tests write into the base folder of the scan: for what
// a test does with signals, standard handles and processes of this system.
#pragma once

#include "TestPrograms.h"

namespace quarda {

class TScriptTest : public TProgramTest {
 protected:
  /// Writes a script and returns its path in quotes.
  std::string Script(const std::string& name, const std::string& body) const {
    const std::string path = scan_->folder.Write(name, "#!/bin/sh\n" + body + "\n");
    std::filesystem::permissions(scan_->folder.Native() / name, std::filesystem::perms::owner_all);
    return '"' + path + '"';
  }
  /// A script that writes its arguments, each in brackets, into the file "shown".
  std::string ShowScript() const {
    return Script("show.sh", "cd \"${0%/*}\" && printf '[%s]' \"$@\" > shown");
  }
};

}  // namespace quarda
