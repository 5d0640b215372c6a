// The plug-ins of the application, in the order in which scans run them, and the libraries of the
// outside ones.
#pragma once

#include <Library.h>
#include <QDIntf.h>

#include <vector>

namespace quarda {

/// Owns a reference to each plug-in and the library that holds its code; a library is unloaded
/// after its plug-in left the list. While somebody else holds the plug-in its code must stay: its
/// library is then unloaded with the list, or never. An index outside the list raises EListError.
class TPluginList : public TRefCounted<IPluginList> {
 public:
  ~TPluginList() override;

  int32_t QDCALL GetCount() override { return static_cast<int32_t>(entries_.size()); }
  TRef<IPlugin> QDCALL GetPlugins(int32_t index) override;
  int32_t QDCALL Add(IPlugin* plugin, uintptr_t module) override;
  void QDCALL Delete(int32_t index) override;
  /// Nothing is logged when a library cannot be loaded or gives no plug-in.
  TRef<IPlugin> QDCALL LoadPlugin(const AnsiString& fileName) override;
  TRef<IPlugin> QDCALL FindPlugin(const AnsiString& name) override;

  /// Drops every plug-in first and unloads the libraries then, so that no code goes while the
  /// engine still refers to one of its objects.
  void Clear();

 private:
  struct TEntry {
    TRef<IPlugin> plugin;
    platform::TLibraryHandle module;  // 0 for none
  };

  static void Unload(std::vector<TEntry> entries);

  TEntry& Entry(int32_t index);

  std::vector<TEntry> entries_;
  std::vector<TEntry> deleted_;  // out of the list, but held by somebody else
};

}  // namespace quarda
