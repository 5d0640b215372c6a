// A plug-in library whose errors cross the boundary in both directions, with a run-time library of
// its own. The subject of the mail tells it what to do.
#include <PluginLibrary.h>
#include <QDIntf.h>

#include <stdexcept>
#include <string>

namespace {

using namespace quarda;

class TRaisingPlugin final : public TRefCounted<IPlugin> {
 public:
  AnsiString QDCALL GetFileName() override { return PluginLibraryPath(); }
  AnsiString QDCALL GetName() override { return "Raising"; }
  int32_t QDCALL GetVersionMajor() override { return 1; }
  int32_t QDCALL GetVersionMinor() override { return 0; }
  bool QDCALL Init(IQuardaInstance*) override { return true; }
  bool QDCALL Execute(IQuardaInstance* instance) override {
    const std::string subject = instance->GetMail()->GetSubject().Str();
    if (subject == "raise") throw std::runtime_error("out of order");
    if (subject == "pass") RaiseInEngine(*instance);
    if (subject == "catch") {
      try {
        RaiseInEngine(*instance);
      } catch (const std::exception& error) {
        instance->LogWarn(this, std::string("caught: ") + error.what());
      }
    }
    return true;
  }
  void QDCALL Done(IQuardaInstance*, bool) override {}
  bool QDCALL ConfirmResult(IQuardaInstance*, IPlugin*, bool, bool) override { return true; }
  AnsiString QDCALL GetDialogOptions(IQuardaInstance*) override { return {}; }

 private:
  /// There is no line with that number.
  static void RaiseInEngine(IQuardaInstance& instance) { instance.NewStringList()->GetStrings(7); }
};

}  // namespace

extern "C" QDEXPORT void QDCALL cepEntryPoint(quarda::IPlugin** plugin) {
  const auto made = quarda::MakeRef<TRaisingPlugin>();
  made->AddRef();
  *plugin = made.Get();
}
