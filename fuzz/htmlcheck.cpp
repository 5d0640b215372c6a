// The HTML check of a whole mail does to every part, and tells in the log, what the slow one over
// plain strings says. The first two bytes of the input choose the settings, the rest is the mail.
#include <CurrentApp.h>
#include <PluginTextHtml.h>
#include <QDConfig.h>

#include <memory>
#include <string>

#include "Fuzz.h"
#include "SimpleHtmlCheck.h"
#include "TestMail.h"
#include "TestScan.h"

using namespace quarda;

namespace {

// What the scan should leave behind: worked out part by part on a second copy of the mail.
class TSimpleCheck {
 public:
  TSimpleCheck(IMail& mail, IConfig& config) : mail_(mail), config_(config) {}

  bool Run() {
    if (config_.GetMakePlainText()) MakePlain();
    if (config_.GetDisableActiveX() || config_.GetDisableScripts()) {
      EachPage([&](IMailText& part) { Neutralise(part, true); });
      try {
        if (config_.GetCheckHtmlAttachments()) EachFile();
      } catch (const EError& error) {
        AddError(error);
        return true;
      }
    }
    if (config_.GetBlockIFrames() != ibmNone) {
      EachPage([&](IMailText& part) {
        if (!isVirus) CheckFrames(part);
      });
    }
    if (!isVirus) log += "Passed passed\n";
    return !isVirus;
  }

  std::string log;
  bool isVirus = false;

 private:
  static bool Is(IMailPart& part, const char* subType) {
    return platform::LowerAnsi(part.GetContentTypeSubType()) == subType;
  }

  void AddError(const EError& error) {
    log += std::string("Error Exception class ") + error.ClassName() + ": " + error.what() + "\n";
  }

  template <class TWork>
  void EachText(const TWork& work) {
    for (int32_t i = 0; i < mail_.GetTextCount() && !isVirus; ++i) {
      try {
        work(*mail_.GetTexts(i));
      } catch (const EError& error) {
        AddError(error);
      }
    }
  }

  template <class TWork>
  void EachPage(const TWork& work) {
    EachText([&](IMailText& part) {
      if (Is(part, "html")) work(part);
    });
  }

  void EachFile() {
    for (int32_t i = 0; i < mail_.GetAttachmentCount(); ++i) {
      const TRef<IMailAttachment> file = mail_.GetAttachments(i);
      const std::string extension = platform::LowerAnsi(ExtractFileExt(file->GetFileName().View()));
      if (extension == ".htm" || extension == ".html" || extension == ".shtml") {
        Neutralise(*file.As<IMailText>(), false);
      }
    }
  }

  void MakePlain() {
    bool plainSeen = false;
    EachText([&](IMailText& part) {
      plainSeen = plainSeen || Is(part, "plain");
      if (Is(part, "plain")) return;
      if (Is(part, "html") && !plainSeen) part.SetText(RemoveHtmlTags(part.GetText()));
      part.SetContentTypeSubType("plain");
      log += "Extended Converted to text/plain\n";
    });
  }

  void Neutralise(IMailText& part, bool always) {
    const std::string text = part.GetText().Str();
    const TCheckedPage page = SimpleNeutralise(
        text, {config_.GetDisableActiveX(), config_.GetDisableScripts(), always, {"evil"}});
    log += page.log;
    if (!page.log.empty()) part.SetText(page.text);
  }

  void CheckFrames(IMailText& part) {
    const TCheckedPage page = SimpleIFrames(part.GetText().Str(), config_.GetBlockIFrames());
    log += page.log;
    isVirus = page.isVirus;
    if (!isVirus && page.log.find("Warning") != std::string::npos) part.SetText(page.text);
  }

  IMail& mail_;
  IConfig& config_;
};

void Choose(IConfig& config, unsigned choice) {
  config.SetBlockIFrames(static_cast<TIFrameBlockMode>(choice % 6));
  config.SetDisableActiveX((choice & 8) != 0);
  config.SetDisableScripts((choice & 16) != 0);
  config.SetCheckHtmlAttachments((choice & 32) != 0);
  config.SetMakePlainText((choice & 64) != 0);
}

// A mail for the check, whose model stays at hand: saving it to a file would flush it to the disk.
struct TFuzzedMail {
  explicit TFuzzedMail(std::string_view text) {
    auto loaded = std::make_unique<TMail>();
    TMemoryStream stream(text);
    loaded->LoadFromStream(stream);
    model = loaded.get();
    mail = MailAdapterOwned(std::move(loaded));
  }

  std::string Saved() const {
    std::string text;
    TStringStream stream(text);
    model->SaveToStream(stream);
    return text;
  }

  TMail* model;
  TRef<IMail> mail;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const auto scan = MakeScan("");
  static const std::string blocked = scan->folder.Write("BlockedScripts.dat", "evil\nEVIL\n");
  if (size < 1) return 0;
  const std::string_view mail = fuzz::AsText(data + 1, size - 1);
  return fuzz::AllowErrors([&] {
    const TCurrentAppGuard current;
    SetQuardaApp(scan->app);
    scan->log.clear();
    Choose(*scan->config, data[0]);
    const TFuzzedMail checked(mail), copy(mail);
    scan->mail = checked.mail;
    TSimpleCheck simple(*copy.mail, *scan->config);
    fuzz::Require(MakeRef<TPluginTextHtml>()->Execute(scan.Get()) == simple.Run(), "verdict");
    std::string log;
    for (const std::string& line : scan->log) {
      const size_t bar = line.find('|');
      log += line.substr(0, bar) + " " + line.substr(line.find('|', bar + 1) + 1) + "\n";
    }
    fuzz::Require(log == simple.log, "log");
    fuzz::Require(checked.Saved() == copy.Saved(), "mail");
  });
}
