// The file that carries the direction of a mail to the later scans of its attachment files.
#pragma once

#include <QDIntf.h>

#include <string>
#include <string_view>

namespace quarda {

struct TMailTypeRecord {
  bool operator==(const TMailTypeRecord&) const = default;

  TOvraMailType mailType = mtUnknown;
  std::string mailFile;  ///< full path of the mail; empty when unknown
};

/// "Temp\Quarda.mai" below the base folder: the word "inmail" or "outmail", then the mail file.
class TMailTypeFile {
 public:
  explicit TMailTypeFile(std::string_view baseFolder);

  /// A missing or unreadable file gives an empty record.
  TMailTypeRecord Read() const;
  /// Creates the folder when needed. Raises EPlatformError.
  void Write(const TMailTypeRecord& record) const;

 private:
  std::string folder_;
  std::string path_;
};

}  // namespace quarda
