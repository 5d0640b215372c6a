#include "PluginList.h"

#include <CodePage.h>
#include <Utils.h>

#include <utility>

namespace quarda {
namespace {

/// Asks the library for its plug-in; null when it has none to give.
TRef<IPlugin> AskForPlugin(platform::TLibraryHandle library) {
  const auto entryPoint =
      reinterpret_cast<TPluginEntryPoint>(platform::FindExport(library, kPluginEntryPoint));
  if (!entryPoint) return {};
  IPlugin* stored = nullptr;
  bool failed = false;
  try {
    entryPoint(&stored);
  } catch (...) {  // whatever the library raises, the scan goes on without it
    failed = true;
  }
  TRef<IPlugin> plugin(stored);
  if (stored) stored->Release();  // the entry point took a reference for us
  if (failed) plugin.Reset();     // before its code is unloaded
  return plugin;
}

}  // namespace

TPluginList::~TPluginList() { Clear(); }

TPluginList::TEntry& TPluginList::Entry(int32_t index) {
  if (index < 0 || index >= GetCount()) RaiseListIndex(index);
  return entries_[static_cast<size_t>(index)];
}

TRef<IPlugin> TPluginList::GetPlugins(int32_t index) { return Entry(index).plugin; }

int32_t TPluginList::Add(IPlugin* plugin, uintptr_t module) {
  entries_.push_back({TRef<IPlugin>(plugin), module});
  return GetCount() - 1;
}

void TPluginList::Delete(int32_t index) {
  const platform::TLibraryHandle module = Entry(index).module;
  entries_.erase(entries_.begin() + index);
  if (module != 0) platform::UnloadLibrary(module);
}

void TPluginList::Clear() {
  std::vector<TEntry> entries = std::move(entries_);
  entries_.clear();
  for (TEntry& entry : entries) entry.plugin.Reset();
  for (const TEntry& entry : entries) {
    if (entry.module != 0) platform::UnloadLibrary(entry.module);
  }
}

TRef<IPlugin> TPluginList::LoadPlugin(const AnsiString& fileName) {
  const platform::TLibraryHandle library = platform::LoadLibraryFile(fileName);
  if (library == 0) return {};
  TRef<IPlugin> plugin = AskForPlugin(library);
  if (plugin) {
    Add(plugin.Get(), library);
  } else {
    platform::UnloadLibrary(library);
  }
  return plugin;
}

TRef<IPlugin> TPluginList::FindPlugin(const AnsiString& name) {
  for (const TEntry& entry : entries_) {
    if (entry.plugin && platform::SameAnsiText(entry.plugin->GetName(), name)) return entry.plugin;
  }
  return {};
}

}  // namespace quarda
