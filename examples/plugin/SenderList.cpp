// A plug-in library: mails from the domains on its list are blocked, mails from the domains that
// are trusted pass the check of subjects, and a mail that was looked at says so in its header. The
// lists stand in SenderList.ini in the engine's base folder:
//
//   [Options]
//   HeaderField=X-Sender-List
//   [Blocked]
//   spam.example
//   [Trusted]
//   partner.example
#include <PluginLibrary.h>
#include <QDIntf.h>

#include <string>
#include <string_view>

namespace {

using namespace quarda;

constexpr const char* kSettingsName = "SenderList.ini";
constexpr const char* kOptions = "Options";
constexpr const char* kHeaderField = "HeaderField";
constexpr const char* kDefaultField = "X-Sender-List";
constexpr const char* kBlocked = "Blocked";
constexpr const char* kTrusted = "Trusted";
constexpr const char* kTrustedCheck = "Subject";

bool IsMail(IQuardaInstance& scan) { return scan.GetFileType() != ftAttachment; }

/// The domain of the sender; empty when the mail names none.
std::string SenderDomain(IMail& mail) {
  const std::string address = mail.ExtractEmailAddress(mail.GetFrom()).Str();
  const size_t at = address.rfind('@');
  return at == std::string::npos ? std::string() : address.substr(at + 1);
}

/// Whether the section lists the domain or one above it: "spam.example" also stands for
/// "mail.spam.example".
bool Lists(IConfigFile& settings, const char* section, std::string_view domain) {
  const TRef<IStringList> lines = settings.ReadSection(section);
  while (!domain.empty()) {
    if (lines->IndexOf(domain) >= 0) return true;
    const size_t dot = domain.find('.');
    domain = dot == std::string_view::npos ? std::string_view() : domain.substr(dot + 1);
  }
  return false;
}

TRef<IConfigFile> OpenSettings(IQuardaInstance& scan) {
  return scan.GetConfig()->OpenConfigFile(kSettingsName);
}

class TSenderList final : public TRefCounted<IPlugin> {
 public:
  /// The log shows it as seen from the base folder, beside the name.
  AnsiString QDCALL GetFileName() override { return PluginLibraryPath(); }
  AnsiString QDCALL GetName() override { return "SenderList"; }
  int32_t QDCALL GetVersionMajor() override { return 1; }
  int32_t QDCALL GetVersionMinor() override { return 0; }

  /// Not called in the scan that loads the library, only in the scans of attached mails that
  /// follow. Nothing may depend on it; what is not for this check is declined here.
  bool QDCALL Init(IQuardaInstance* scan) override { return IsMail(*scan); }

  bool QDCALL Execute(IQuardaInstance* scan) override {
    if (!IsMail(*scan)) return true;
    const TRef<IMail> mail = scan->GetMail();
    const TRef<IConfigFile> settings = OpenSettings(*scan);
    const std::string domain = SenderDomain(*mail);
    if (Lists(*settings, kBlocked, domain)) {
      scan->VirusReason(this, "Mails from \"" + domain + "\" are blocked");
      return false;
    }
    mail->GetHeader()->SetHeaderStr(settings->ReadString(kOptions, kHeaderField, kDefaultField),
                                    Lists(*settings, kTrusted, domain) ? "trusted" : "not listed");
    scan->LogOK(this, "passed");
    return true;
  }

  /// A trusted sender may write about what he likes: the verdict on the subject is overturned.
  bool QDCALL ConfirmResult(IQuardaInstance* scan, IPlugin* plugin, bool, bool passed) override {
    if (passed || plugin->GetName() != kTrustedCheck || !IsMail(*scan)) return true;
    const TRef<IMail> mail = scan->GetMail();
    if (!Lists(*OpenSettings(*scan), kTrusted, SenderDomain(*mail))) return true;
    scan->LogWarn(this, "Trusted sender, whatever the subject");
    return false;
  }

  void QDCALL Done(IQuardaInstance* scan, bool passed) override {
    scan->LogDebug(this, passed ? "the mail goes on" : "the mail stays");
  }

  /// The engine never asks.
  AnsiString QDCALL GetDialogOptions(IQuardaInstance*) override { return {}; }
};

}  // namespace

/// The one thing a library must export. It hands over a counted reference.
extern "C" QDEXPORT void QDCALL cepEntryPoint(IPlugin** plugin) {
  *plugin = nullptr;
  const auto made = MakeRef<TSenderList>();
  made->AddRef();
  *plugin = made.Get();
}
