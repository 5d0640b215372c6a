// An engine in a base folder of its own, with a clock that the test sets and plug-ins that do what
// the test says.
#pragma once

#include <Application.h>
#include <CurrentApp.h>
#include <Files.h>
#include <PluginList.h>
#include <QDIntf.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quarda::test {

class TTestClock : public platform::TClock {
 public:
  platform::TLocalTime Now() const override { return now; }
  platform::TLocalTime now{2004, 5, 17, 14, 3, 59, 0};
};

/// A plug-in made of functions; those left out do what the base of the plug-ins does.
class TFakePlugin : public TRefCounted<IPlugin> {
 public:
  explicit TFakePlugin(std::string name) : name_(std::move(name)) {}

  AnsiString QDCALL GetFileName() override { return library; }
  AnsiString QDCALL GetName() override { return name_; }
  int32_t QDCALL GetVersionMajor() override { return 1; }
  int32_t QDCALL GetVersionMinor() override { return 0; }
  bool QDCALL Init(IQuardaInstance* scan) override { return init ? init(*scan) : true; }
  bool QDCALL Execute(IQuardaInstance* scan) override { return execute ? execute(*scan) : true; }
  void QDCALL Done(IQuardaInstance* scan, bool passed) override {
    if (done) done(*scan, passed);
  }
  bool QDCALL ConfirmResult(IQuardaInstance*, IPlugin* other, bool later, bool passed) override {
    return confirm ? confirm(other->GetName().Str(), later, passed) : true;
  }
  AnsiString QDCALL GetDialogOptions(IQuardaInstance*) override { return {}; }

  std::string library;
  std::function<bool(IQuardaInstance&)> init;
  std::function<bool(IQuardaInstance&)> execute;
  std::function<void(IQuardaInstance&, bool)> done;
  std::function<bool(const std::string&, bool, bool)> confirm;

 private:
  std::string name_;
};

class TEngineTest : public testing::Test {
 protected:
  explicit TEngineTest(
      const std::filesystem::path& parent = std::filesystem::temp_directory_path());
  ~TEngineTest() override;

  /// A path below the test's folder, in the engine's form.
  std::string Path(std::string_view name) const { return folder_ + "\\" + std::string(name); }
  std::string BasePath(std::string_view name) const {
    return Path("base") + "\\" + std::string(name);
  }
  /// The test's folder as this system writes it.
  const std::filesystem::path& Native() const { return native_; }
  void Write(const std::string& path, std::string_view content) const;
  std::string Read(const std::string& path) const { return platform::ReadWholeFile(path); }
  /// Writes a mail file and returns its path.
  std::string Mail(std::string_view name,
                   std::string_view content = "Subject: x\r\n\r\nText\r\n") const;
  void Settings(std::string_view ini) const { Write(BasePath("Quarda.ini"), ini); }
  std::string Log() const { return Read(BasePath("Quarda.log")); }
  bool LogHas(std::string_view text) const { return Log().find(text) != std::string::npos; }
  /// The names of the files that fit the pattern, a blank behind each.
  std::string NamesIn(const std::string& pattern) const {
    std::string names;
    for (const auto& file : platform::FindFiles(pattern)) names += file.name + " ";
    return names;
  }

  /// Runs one request for a file: a fresh application with the test's plug-ins behind the internal
  /// ones.
  int32_t Scan(const std::string& file) { return Run("engine.exe \"" + file + "\""); }
  int32_t Run(const std::string& commandLine);
  /// A plug-in that the next requests run.
  TFakePlugin& Plugin(const std::string& name);

  TTestClock clock_;

 private:
  std::string folder_;
  std::filesystem::path native_;
  std::vector<TRef<TFakePlugin>> plugins_;
};

}  // namespace quarda::test
