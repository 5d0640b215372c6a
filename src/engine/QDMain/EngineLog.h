// The engine's log "Quarda.log": one entry, one write.
#pragma once

#include <Clock.h>
#include <QDIntf.h>

#include <string>
#include <string_view>

namespace quarda {

/// The folder of all logs, with a trailing backslash: the setting LogFilePath, or the base folder.
std::string LogFolder(IConfig& config, std::string_view baseFolder);

/// Renames a log above the size limit of the settings to its ".bak" name, replacing an older one.
/// Returns whether the log exists afterwards.
bool LimitLogFile(const std::string& path, IConfig& config);

/// The log of one scan. It knows whether the scan has written its header in the layout for people.
class TEngineLog {
 public:
  explicit TEngineLog(const platform::TClock& clock) : clock_(clock) {}

  /// Writes one entry for the scan, or nothing when the settings filter it out. An entry that
  /// cannot be written is lost without notice.
  void Write(IQuardaInstance& scan, IPlugin* plugin, int32_t priority, std::string_view message);

 private:
  std::string SingleLine(IQuardaInstance& scan, IPlugin* plugin, int32_t priority,
                         std::string_view message) const;
  std::string Header(IQuardaInstance& scan, bool newFile, int32_t logMode) const;

  const platform::TClock& clock_;
  bool isInOrder_ = false;  // the file is there and was not too large
  bool headerWritten_ = false;
};

/// The plug-in column of the log: the name and, for outside plug-ins, "@" and the library's place.
std::string PluginColumn(IPlugin& plugin, std::string_view baseFolder);

}  // namespace quarda
