#include "EngineFixture.h"

#include <PlatformError.h>

#include <random>

namespace quarda::test {

TEngineTest::TEngineTest(const std::filesystem::path& parent) {
  std::random_device random;
  native_ = parent / ("quarda-engine-" + std::to_string(random()) + std::to_string(random()));
  folder_ = platform::WindowsPath(native_.string());
  std::filesystem::create_directories(native_ / "base");
}

TEngineTest::~TEngineTest() { std::filesystem::remove_all(native_); }

void TEngineTest::Write(const std::string& path, std::string_view content) const {
  platform::ReplaceFileContent(path, content);
}

std::string TEngineTest::Mail(std::string_view name, std::string_view content) const {
  const std::string path = Path(name);
  Write(path, content);
  return path;
}

TFakePlugin& TEngineTest::Plugin(const std::string& name) {
  plugins_.push_back(MakeRef<TFakePlugin>(name));
  return *plugins_.back();
}

int32_t TEngineTest::Run(const std::string& commandLine) {
  const auto app = MakeRef<TQuardaApp>(TEngineEnvironment{Path("base"), &clock_});
  SetQuardaApp(app);
  int32_t exitCode = 0;
  try {
    app->Start();
    for (const auto& plugin : plugins_) app->GetPlugins()->Add(plugin.Get(), 0);
    exitCode = app->RunInstance(commandLine);
  } catch (const platform::EPlatformError&) {
    // The settings cannot be written: no mail is blocked for that.
  }
  app->Close();
  SetQuardaApp(nullptr);
  return exitCode;
}

}  // namespace quarda::test
