// A scan for the tests of plug-ins, over a base folder of its own. What a plug-in does to the
// engine is written down for the test to read.
#pragma once

#include <CodePage.h>
#include <Files.h>
#include <QDIntf.h>
#include <QDStringsAdapters.h>
#include <TempFolder.h>
#include <TestApp.h>
#include <Utils.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quarda {

/// Writes down which libraries it is asked to load.
class TTestPluginList final : public TRefCounted<IPluginList> {
 public:
  std::vector<TRef<IPlugin>> plugins;
  std::vector<std::string> loaded;

  int32_t QDCALL GetCount() override { return static_cast<int32_t>(plugins.size()); }
  TRef<IPlugin> QDCALL GetPlugins(int32_t index) override {
    return plugins.at(static_cast<size_t>(index));
  }
  int32_t QDCALL Add(IPlugin* plugin, uintptr_t) override {
    plugins.emplace_back(plugin);
    return GetCount() - 1;
  }
  void QDCALL Delete(int32_t index) override { plugins.erase(plugins.begin() + index); }
  TRef<IPlugin> QDCALL LoadPlugin(const AnsiString& fileName) override {
    loaded.push_back(fileName.Str());
    return nullptr;
  }
  TRef<IPlugin> QDCALL FindPlugin(const AnsiString&) override { return nullptr; }
};

/// Borrows the scans; the settings of the oldest one are its own.
class TTestApp final : public TTestAppBase {
 public:
  using TTestAppBase::TTestAppBase;

  std::vector<IQuardaInstance*> instances;
  const TRef<TTestPluginList> plugins = MakeRef<TTestPluginList>();
  std::function<int32_t()> nestedScan;

  TRef<IConfig> QDCALL GetConfig() override { return instances.at(0)->GetConfig(); }
  int32_t QDCALL GetInstanceCount() override { return static_cast<int32_t>(instances.size()); }
  TRef<IQuardaInstance> QDCALL GetInstances(int32_t index) override {
    return TRef<IQuardaInstance>(instances.at(static_cast<size_t>(index)));
  }
  TRef<IPluginList> QDCALL GetPlugins() override { return plugins; }
  int32_t QDCALL RunInstance(const AnsiString&) override { return nestedScan(); }
};

/// The command line of a scan: one file.
class TTestArguments final : public TRefCounted<IArguments> {
 public:
  std::string file;

  int32_t QDCALL GetArgumentCount() override { return 1; }
  AnsiString QDCALL GetArguments(int32_t) override { return file; }
  AnsiString QDCALL GetFilename() override { return file; }
  AnsiString QDCALL GetFileExt() override { return platform::LowerAnsi(ExtractFileExt(file)); }
  AnsiString QDCALL GetShortFileName() override { return platform::ShortPath(file); }
  AnsiString QDCALL GetName() override { return ExtractFileName(file); }
  int32_t QDCALL GetFileSize() override { return FileGetSize(file); }
  bool QDCALL FindCmdLineSwitch(const AnsiString&, bool) override { return false; }
  AnsiString QDCALL GetCommandLine() override { return file; }
};

class TTestInstance final : public TRefCounted<IQuardaInstance> {
 public:
  const TTempFolder folder;
  const TRef<TTestApp> app = MakeRef<TTestApp>(BaseFolder());
  TOvraMailFileType fileType = ftInMail;
  TOvraMailType mailType = mtInMail;
  const TRef<TTestArguments> arguments = MakeRef<TTestArguments>();
  TRef<IConfig> config;
  TRef<IMail> mail;
  std::vector<std::string> log;  ///< "Priority|plug-in|message"
  TStringList globals;
  bool logFails = false;

  TTestInstance() { app->instances.push_back(this); }

  std::string BaseFolder() const { return folder.Path(); }
  /// The log in one text, a line each.
  std::string LogText() const {
    std::string text;
    for (const std::string& line : log) text += line + "\n";
    return text;
  }

  TRef<IArguments> QDCALL GetArguments() override { return arguments; }
  TRef<IPluginList> QDCALL GetPlugins() override { return app->plugins; }
  TRef<IConfig> QDCALL GetConfig() override { return config; }
  TOvraMailType QDCALL GetMailType() override { return mailType; }
  TOvraMailFileType QDCALL GetFileType() override { return fileType; }
  TRef<IMail> QDCALL GetMail() override { return mail; }
  AnsiString QDCALL GetQuardaPath() override { return BaseFolder(); }
  TRef<IQuardaApp> QDCALL GetApp() override { return app; }
  void QDCALL Log(IPlugin* plugin, int32_t priority, const AnsiString& message) override {
    if (logFails) throw EError("log");
    log.push_back(std::string(PriNames[priority]) + "|" + (plugin ? plugin->GetName().Str() : "") +
                  "|" + message.Str());
  }
  void QDCALL LogError(IPlugin* p, const AnsiString& text) override { Log(p, kLogError, text); }
  void QDCALL LogWarn(IPlugin* p, const AnsiString& text) override { Log(p, kLogWarning, text); }
  void QDCALL LogExtra(IPlugin* p, const AnsiString& text) override { Log(p, kLogExtended, text); }
  void QDCALL LogOK(IPlugin* p, const AnsiString& text) override { Log(p, kLogPassed, text); }
  void QDCALL LogDebug(IPlugin* p, const AnsiString& text) override { Log(p, kLogDebug, text); }
  void QDCALL VirusReason(IPlugin* plugin, const AnsiString& message) override {
    LogWarn(plugin, message);
    SetGlobalData(kVirusReason, message);
  }
  TRef<IStringList> QDCALL NewStringList() override { return NewStringListAdatper(); }
  TRef<IMail> QDCALL LoadMailFromMemory(const char*, int32_t) override { return nullptr; }
  TRef<IMail> QDCALL LoadMailFromFile(const AnsiString&) override { return nullptr; }
  void QDCALL SetGlobalData(const AnsiString& name, const AnsiString& value) override {
    globals.SetValue(name, value);
  }
  AnsiString QDCALL GetGlobalData(const AnsiString& name) override { return globals.Value(name); }
};

}  // namespace quarda
