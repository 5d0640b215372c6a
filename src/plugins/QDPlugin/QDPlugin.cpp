#include "QDPlugin.h"

#include <CurrentApp.h>
#include <Errors.h>
#include <Program.h>

#include <string>

namespace quarda {

TPlugin::TPlugin(std::string_view name, int32_t versionMajor, int32_t versionMinor)
    : name_(name), versionMajor_(versionMajor), versionMinor_(versionMinor) {}

AnsiString TPlugin::GetFileName() { return platform::ModulePath(); }

bool TPlugin::Execute(IQuardaInstance* instance) {
  try {
    return DoExecute(*instance);
  } catch (...) {
    LogException(this);
    return true;
  }
}

void LogException(IPlugin* plugin) noexcept {
  try {
    const TErrorDescription error = DescribeCurrentError();
    const TRef<IQuardaApp> app = GetQuardaApp();
    const int32_t scans = app ? app->GetInstanceCount() : 0;
    if (scans == 0) return;
    app->GetInstances(scans - 1)->LogError(
        plugin, "Exception class " + error.className + ": " + error.message);
  } catch (...) {
    // There is nowhere left to tell it.
  }
}

}  // namespace quarda
