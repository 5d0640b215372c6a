// A plug-in that looks at a mail and leaves it alone, as most do with most mails.
#include <PluginLibrary.h>
#include <QDIntf.h>

#include <string>

namespace {

using namespace quarda;

class TBenchPlugin final : public TRefCounted<IPlugin> {
 public:
  AnsiString QDCALL GetFileName() override { return PluginLibraryPath(); }
  AnsiString QDCALL GetName() override { return "Bench"; }
  int32_t QDCALL GetVersionMajor() override { return 1; }
  int32_t QDCALL GetVersionMinor() override { return 0; }
  bool QDCALL Init(IQuardaInstance*) override { return true; }
  bool QDCALL Execute(IQuardaInstance* scan) override {
    const std::string from = scan->GetMail()->GetFrom().Str();
    return from.find("@spam.example") == std::string::npos;
  }
  void QDCALL Done(IQuardaInstance*, bool) override {}
  bool QDCALL ConfirmResult(IQuardaInstance*, IPlugin*, bool, bool) override { return true; }
  AnsiString QDCALL GetDialogOptions(IQuardaInstance*) override { return {}; }
};

}  // namespace

extern "C" QDEXPORT void QDCALL cepEntryPoint(IPlugin** plugin) {
  const auto made = MakeRef<TBenchPlugin>();
  made->AddRef();
  *plugin = made.Get();
}
