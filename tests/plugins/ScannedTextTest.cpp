// The notice in outgoing mails: when it is added, where, with which text, and when it is not.
#include <CurrentApp.h>
#include <PluginScannedText.h>
#include <gtest/gtest.h>

#include <string>

#include "TestMail.h"
#include "TestScan.h"

namespace quarda {
namespace {

class TMorning final : public platform::TClock {
 public:
  platform::TLocalTime Now() const override { return {2026, 3, 1, 9, 5, 59, 0}; }
};

std::string Settings(const std::string& lines) {
  return "[Scanned Text]\nShow=1\nOnlyWithVirusScan=0\n" + lines;
}
std::string Text(const std::string& text) { return Settings("Text=" + text + "\n"); }

const std::string kPassed = "Passed|ScannedText|passed\n";
const std::string kNow = "2026-03-01 09:05: ";
const std::string kDefault = "This mail has passed a server-based virus scan.";

std::string PlainNotice(const std::string& text, const std::string& prefix = kNow) {
  return "\r\n\r\n" + std::string(text.size(), '-') + "\r\n" + prefix + text + "\r\n";
}
std::string HtmlNotice(const std::string& text, const std::string& prefix = kNow) {
  return "\r\n<br /><hr /><div style=\"font-size: 8pt; font-family: arial,verdana, helvetica;\">" +
         prefix + text + "</div>\r\n";
}
std::string Mail(const std::string& type, const std::string& body) {
  return "Content-Type: " + type + "\n\n" + body;
}
const std::string kPlainMail = Mail("text/plain", "hello");
const std::string kHtmlMail = Mail("text/html", "<b>hello");
const std::string kMixed =
    "Content-Type: multipart/mixed; boundary=b\n\n"
    "--b\nContent-Type: text/plain\n\n1\n--b\nContent-Type: text/html\n\n2\n"
    "--b\nContent-Type: text/enriched\n\n3\n--b\nContent-Disposition: attachment; filename=a.txt\n"
    "\n4\n--b--\n";

// Two files for the macros: in a scan's base folder, which stands for "@" in the rows.
std::string InFolder(std::string text, const std::string& folder) {
  for (size_t at; (at = text.find('@')) != std::string::npos;) text.replace(at, 1, folder);
  return text;
}

const struct {
  const char* row;
  std::string settings;
  std::string mail;
  std::string outcome;  // the log, then each text, then the header field
} kRows[] = {
    {"text", Settings(""), kPlainMail, kPassed + "hello" + PlainNotice(kDefault) + "|"},
    {"page", Settings(""), kHtmlMail, kPassed + "<b>hello" + HtmlNotice(kDefault) + "|"},
    {"every text, but no file", Settings(""), kMixed,
     kPassed + "1" + PlainNotice(kDefault) + "|2" + HtmlNotice(kDefault) + "|3|"},
    {"short notices go into any text", Text("ok"), kMixed,
     kPassed + "1" + PlainNotice("ok") + "|2" + HtmlNotice("ok") + "|3" + PlainNotice("ok") + "|"},

    {"switched off", "[Scanned Text]\nShow=0\n", kPlainMail, "hello|"},
    {"without a scanner", "[Scanned Text]\nShow=1\n", kPlainMail,
     "Debug|ScannedText|No VirusScan executed\nhello|"},
    {"with a scanner", "[Scanned Text]\nShow=1\nText=ok\n[VirusScan]\nMailScan=x\n", kPlainMail,
     kPassed + "hello" + PlainNotice("ok") + "|"},

    {"as header field", Settings("XHeader=XHeader\nText=Scanned\n"), kPlainMail,
     kPassed + "hello|Scanned|"},
    {"as header field and text", Settings("XHeader=Both\nText=Scanned\n"),
     "X-Virusscan: before\n" + kPlainMail,
     kPassed + "hello" + PlainNotice("Scanned") + "|before|Scanned|"},

    {"there already", Settings(""), Mail("text/plain", "> " + kDefault + " <"),
     kPassed + "> " + kDefault + " <|"},
    {"there already in a page", Settings(""), Mail("text/html", kDefault),
     kPassed + kDefault + "|"},
    {"short one there already", Text("hell"), kPlainMail, kPassed + "hello|"},
    {"short one again in a page", Text("hell"), kHtmlMail,
     kPassed + "<b>hello" + HtmlNotice("hell") + "|"},
    {"in other letters", Text("HELL"), kPlainMail, kPassed + "hello" + PlainNotice("HELL") + "|"},

    {"date", Text("On $date$"), kPlainMail,
     kPassed + "hello" + PlainNotice("On 2026-03-01", "") + "|"},
    {"time", Text("At $TIME$ $DATES$"), kPlainMail,
     kPassed + "hello" + PlainNotice("At 09:05 $DATES$", "") + "|"},
    {"lines of files", Text("$1$$FILE(@\\a)$$2$, $File(@\\b)$$1$$2$$FILE(@\\c)$$1$$99999999999$"),
     kPlainMail, kPassed + "hello" + PlainNotice("a2, b1") + "|"},
    {"what is no line", Text("$FILE(@\\a)$$0$$3$$-1$$+1$$$x$1$"), kPlainMail,
     kPassed + "hello" + PlainNotice("$-1$$+1$$$xa1") + "|"},
    {"stamps of files", Text("$FILEDATE(@\\a)$ $filetime(@\\a)$ $FILEDATETIME(@\\a)$"), kPlainMail,
     kPassed + "hello" + PlainNotice("2004-05-17 18:30 2004-05-17 18:30") + "|"},
    {"stamps of no files", Text("-$FILEDATE(@\\c)$$FILETIME(@)$$FILEDATETIME()$-"), kPlainMail,
     kPassed + "hello" + PlainNotice("--") + "|"},
    {"bracket in a name", Text("$FILE(a (1).txt)$!"), kPlainMail,
     kPassed + "hello" + PlainNotice("$FILE(a (1).txt)$!") + "|"},

    {"own frames",
     Settings("Text=ok\nPlainTextFormat=\"[$scannedtext$|$ScannedText$]\\n\"\n"
              "HtmlTextFormat=<i>$ScannedText$\n"),
     kMixed,
     kPassed + "1\r\n[" + kNow + "ok|$ScannedText$]|2\r\n<i>" + kNow + "ok|3\r\n[" + kNow +
         "ok|$ScannedText$]|"},
    {"date in a frame, file of the text unknown there",
     Settings("Text=$FILE(@\\a)$$1$\nPlainTextFormat=$DATE$$1$\nHtmlTextFormat=\"\"\n"), kMixed,
     kPassed + "1\r\n2026-03-01|2" + HtmlNotice("a1", "") + "|3\r\n2026-03-01|"},
    {"frame without its placeholder", Settings("Text=\nPlainTextFormat=checked\n"), kPlainMail,
     kPassed + "hello\r\nchecked|"},
    {"neither text nor frame", Settings("Text=\n"), kPlainMail, "hello|"},
    {"unreadable text beside another", Text("ok"),
     "Content-Type: multipart/mixed; boundary=b\n\n--b\nContent-Type: text/plain\n"
     "Content-Transfer-Encoding: x-odd\n\n1\n--b\nContent-Type: text/plain\n\n2\n--b--\n",
     "Error|ScannedText|Exception class EMailDecodeError: Cannot decode mail part. "
     "[ContentTransferEncoding: x-odd]\n" +
         kPassed + "?|2" + PlainNotice("ok") + "|"},
};

TRef<TTestInstance> MakeOutgoingScan(const std::string& settings, const std::string& mail) {
  const auto scan = MakeScan("");
  scan->folder.Write("a", "a1\r\na2\r\n");
  scan->folder.Write("b", "b1\n");
  platform::SetFileStamp(scan->folder.Path("a"),
                         platform::ToDosStamp({2004, 5, 17, 18, 30, 58, 0}));
  scan->config->SetLines(LinesOf(InFolder(settings, scan->BaseFolder())).Get());
  scan->fileType = ftOutMail;
  scan->mail = MailFromText(mail);
  return scan;
}

std::string Outcome(TTestInstance& scan, bool passed) {
  static const TMorning morning;
  const TCurrentAppGuard current;
  SetQuardaApp(scan.app);
  const auto plugin = MakeRef<TPluginScannedText>(morning);
  EXPECT_TRUE(plugin->Execute(&scan));
  plugin->Done(&scan, passed);
  std::string outcome = scan.LogText();
  for (int32_t i = 0; i < scan.mail->GetTextCount(); ++i) {
    const TRef<IMailText> part = scan.mail->GetTexts(i);
    outcome += (part->GetEncodeType() == eUnknown ? "?" : part->GetText().Str()) + "|";
  }
  const TRef<IHeader> header = scan.mail->GetHeader();
  for (int32_t i = 0; i < header->GetCount(); ++i) {
    if (header->GetItems(i)->GetName() == "X-Virusscan") {
      outcome += header->GetItems(i)->GetValue().Str() + "|";
    }
  }
  return outcome;
}

TEST(ScannedText, IsPutIntoOutgoingMails) {
  for (const auto& row : kRows) {
    const auto scan = MakeOutgoingScan(row.settings, row.mail);
    EXPECT_EQ(Outcome(*scan, true), InFolder(row.outcome, scan->BaseFolder())) << row.row;
  }
}

TEST(ScannedText, IsForMailsThatPassAndGoOutAlone) {
  const auto scan = MakeOutgoingScan(Text("ok"), kPlainMail);
  EXPECT_EQ(Outcome(*scan, false), "hello|");
  for (const TOvraMailFileType type : {ftInMail, ftAttachment}) {
    scan->fileType = type;
    EXPECT_EQ(Outcome(*scan, true), "hello|") << type;
  }
  scan->fileType = ftOutMail;
  scan->app->instances.push_back(scan.Get());
  EXPECT_EQ(Outcome(*scan, true), "hello|") << "nested scan";
}

// The mail as its receiver reads it.
TRef<IMail> SavedMail(TTestInstance& scan) {
  const std::string path = scan.folder.Path("saved");
  scan.mail->SaveToFile(path);
  return MailFromText(platform::ReadWholeFile(path));
}

TEST(ScannedText, KeepsEncodingAndIsNotRepeated) {
  const std::string notice = "Gepr\xFC\x66t = ja, alles";
  const std::string before = "x\xE4 = " + std::string(100, '=');
  const struct {
    std::string mail, frame;
  } kinds[] = {{kPlainMail, PlainNotice(notice)}, {kHtmlMail, HtmlNotice(notice)}};
  for (const auto& kind : kinds) {
    for (const TEncodeType encoding : {e8bit, e7bit, eQuotedPrintable, eBase64, eUUE}) {
      SCOPED_TRACE(kind.mail + std::to_string(encoding));
      const auto scan = MakeOutgoingScan(Text(notice), kind.mail);
      scan->mail->GetTexts(0)->SetContent(encoding, before.data(),
                                          static_cast<uint32_t>(before.size()));
      for (int times = 0; times < 2; ++times) {
        Outcome(*scan, true);
        const TRef<IMail> saved = SavedMail(*scan);
        const TRef<IMailText> part = saved->GetTexts(0);
        EXPECT_EQ(part->GetEncodeType(), encoding);
        EXPECT_EQ(std::string(TrimRight(part->GetText())),
                  std::string(TrimRight(before + kind.frame)));
      }
    }
  }
}

}  // namespace
}  // namespace quarda
