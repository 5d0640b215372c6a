// The HTML checks: what happens to pages, in which order it is told, and what a mail looks like
// behind them.
#include <CurrentApp.h>
#include <PluginTextHtml.h>
#include <gtest/gtest.h>

#include <string>

#include "TestMail.h"
#include "TestScan.h"

namespace quarda {
namespace {

std::string Settings(const std::string& lines) { return "[text/html Checks]\n" + lines; }
const std::string kPlain = Settings("MakePlainText=1\n");
const std::string kActiveX = Settings("DisableActiveX=1\n");
const std::string kScripts = Settings("DisableScripts=1\n");
std::string Frames(const std::string& mode) { return Settings("IFrameBlockMode=" + mode + "\n"); }

std::string Part(const std::string& fields, const std::string& body) {
  return "--b\nContent-Type: " + fields + "\n\n" + body + "\n";
}
std::string Html(const std::string& body) { return Part("text/html", body); }
std::string Mail(const std::string& parts) {
  return "Content-Type: multipart/mixed; boundary=b\n\n" + parts + "--b--\n";
}
std::string File(const std::string& name, const std::string& body) {
  return Part("application/octet-stream\nContent-Disposition: attachment; filename=" + name, body);
}

std::string Line(const std::string& level, const std::string& message) {
  return level + "|text/html|" + message + "\n";
}
const std::string kPassed = Line("Passed", "passed");
const std::string kConverted = Line("Extended", "Converted to text/plain");
const std::string kObject = Line("Warning", "ActiveX element deactivated.");
const std::string kScript = Line("Warning", "Script removed.");
const std::string kRetagged = Line("Warning", "iframe found and changed to a comment.");
const std::string kRemoved = Line("Warning", "iframe found and removed.");
const std::string kIgnored = Line("Extended", "Http-iframe found and ignored.");
const std::string kVirus = Line("Warning", "iframe found and marked as virus.");
const std::string kReason = "iframe-Tag found|";
const std::string kUnreadable = Line("Error",
                                     "Exception class EMailDecodeError: Cannot decode mail part. "
                                     "[ContentTransferEncoding: x-odd]");
const std::string kOdd = "text/html\nContent-Transfer-Encoding: x-odd";

const std::string kHttp = "<iframe src='HTTP://x' width=1>y</IFRAME>z";
const std::string kHttps = "<iframe src=https://x>y</iframe>z";
const std::string kBlocked = "<block_iframe src='HTTP://x' width=1>y</block_iframe>z";
const std::string kWriting =
    "<script>document.write('<iframe src=EVIL>')<object classid=x></script>";

const struct {
  const char* row;
  std::string settings;
  std::string mail;
  std::string outcome;  // the log, the reason, then each text and each attachment
} kRows[] = {
    {"no check is on", "", Mail(Html(kHttp + "<script>")),
     kPassed + "|html:" + kHttp + "<script>|"},

    {"page alone made plain", kPlain, Mail(Html("<b>1 &lt; 2</b><br>x")),
     kConverted + kPassed + "|plain:1 < 2\r\nx|"},
    {"page behind a text relabelled", kPlain, Mail(Part("text/plain", "t") + Html("<b>x</b>")),
     kConverted + kPassed + "|plain:t|plain:<b>x</b>|"},
    {"page before a text", kPlain, Mail(Html("<b>x</b>") + Part("text/PLAIN", "<b>t</b>")),
     kConverted + kPassed + "|plain:x|PLAIN:<b>t</b>|"},
    {"other texts keep their content", kPlain, Mail(Part("text/richtext", "<b>x</b>")),
     kConverted + kPassed + "|plain:<b>x</b>|"},
    {"unreadable page beside another", kPlain, Mail(Part(kOdd, "<b>") + Html("<b>x</b>")),
     kUnreadable + kConverted + kPassed + "|html:?|plain:x|"},
    {"made plain, so no script and no frame",
     Settings("MakePlainText=1\nDisableScripts=1\n"
              "IFrameBlockMode=MarkAsVirus\n"),
     Mail(Part("text/plain", "t") + Html("<script>" + kHttp) + File("a.htm", "<script>x")),
     kConverted + kScript + kPassed + "|plain:t|plain:<script>" + kHttp + "|x|"},

    {"object", kActiveX, Mail(Html("<object classid='clsid:X' width=1>x</object>y")),
     kObject + kPassed + "|html:<block_object classid=\"\" width=1>x</block_object>y|"},
    {"object without class", kActiveX, Mail(Html("<object></object><object classid=>x</object>")),
     kPassed + "|html:<object></object><object classid=>x</object>|"},

    {"scripts", kScripts, Mail(Html("1<SCRIPT src=x>a<b></script >2<script/>3<script")),
     kScript + kScript + kScript + kPassed + "|html:123|"},
    {"object in a removed script", Settings("DisableScripts=1\nDisableActiveX=1\n"),
     Mail(Html("<script><object classid=a></object></script><object classid=b>")),
     kScript + kObject + kPassed + "|html:<block_object classid=\"\">|"},
    {"writing script in a page", kScripts, Mail(Html(kWriting)), kScript + kPassed + "|html:|"},
    {"writing script in a file", Settings("DisableScripts=1\nDisableActiveX=1\n"),
     Mail(File("a.HTML", kWriting)), kPassed + "|" + kWriting + "|"},
    {"files are not looked at", Settings("DisableScripts=1\nCheckHtmlAttachments=0\n"),
     Mail(File("a.htm", "<script>")), kPassed + "|<script>|"},
    {"no page by its name", kScripts, Mail(File("a.txt", "<script>")), kPassed + "|<script>|"},
    {"unreadable pages", Settings("DisableScripts=1\nIFrameBlockMode=Remove\n"),
     Mail(Part(kOdd, "<script>") + Html("<script>" + kHttp)),
     kUnreadable + kScript + kUnreadable + kRemoved + kPassed + "|html:?|html:z|"},
    {"unreadable file ends the check", Settings("DisableScripts=1\nIFrameBlockMode=Remove\n"),
     Mail(Html("<script>" + kHttp) + File("a.htm\nContent-Transfer-Encoding: x-odd", "<script>")),
     kScript + kUnreadable + "|html:" + kHttp + "|?|"},

    {"frame: virus", Frames("MarkAsVirus"), Mail(Html(kHttp)),
     kVirus + kReason + "html:" + kHttp + "|"},
    {"frame: http allowed", Frames("AllowHttp"), Mail(Html(kHttp + kHttp)),
     kIgnored + kIgnored + kPassed + "|html:" + kHttp + kHttp + "|"},
    {"frame: https not allowed", Frames("AllowHttp"), Mail(Html(kHttp + kHttps)),
     kIgnored + kVirus + kReason + "html:" + kHttp + kHttps + "|"},
    {"frame: any becomes a comment", Frames("CommentAll"), Mail(Html(kHttp + "<iframe/>" + kHttp)),
     kRetagged + kRetagged + kRetagged + kPassed + "|html:" + kBlocked + "<block_iframe>" +
         kBlocked + "|"},
    {"frame: only http becomes a comment", Frames("CommentHttp"), Mail(Html(kHttp) + Html(kHttp)),
     kRetagged + kRetagged + kPassed + "|html:" + kBlocked + "|html:" + kBlocked + "|"},
    {"frame: changes before the verdict", Frames("CommentHttp"),
     Mail(Html(kHttp) + Html(kHttp + kHttps) + Html(kHttp)),
     kRetagged + kRetagged + kVirus + kReason + "html:" + kBlocked + "|html:" + kHttp + kHttps +
         "|html:" + kHttp + "|"},
    {"frame: removed", Frames("Remove"), Mail(Html("1" + kHttp + "2<IFrame>3")),
     kRemoved + kRemoved + kPassed + "|html:1z23|"},
    {"frame in no page", Frames("MarkAsVirus"),
     Mail(Part("text/plain", kHttp) + File("a.htm", kHttp)),
     kPassed + "|plain:" + kHttp + "|" + kHttp + "|"},
};

std::string TextOf(IMailText& part) {
  try {
    return part.GetText().Str();
  } catch (const EError&) {
    return "?";
  }
}

std::string ContentsOf(IMail& mail) {
  std::string contents;
  for (int32_t i = 0; i < mail.GetTextCount(); ++i) {
    const TRef<IMailText> part = mail.GetTexts(i);
    contents += part->GetContentTypeSubType().Str() + ":" + TextOf(*part) + "|";
  }
  for (int32_t i = 0; i < mail.GetAttachmentCount(); ++i) {
    contents += TextOf(*mail.GetAttachments(i).As<IMailText>()) + "|";
  }
  return contents;
}

// The log, the reason and the contents that the check leaves behind.
std::string Outcome(TTestInstance& scan, const std::string& mail) {
  const TCurrentAppGuard current;
  SetQuardaApp(scan.app);
  scan.mail = MailFromText(mail);
  const bool passed = MakeRef<TPluginTextHtml>()->Execute(&scan);
  EXPECT_EQ(passed, scan.globals.Value("VirusReason").empty());
  return scan.LogText() + std::string(scan.globals.Value("VirusReason")) + "|" +
         ContentsOf(*scan.mail);
}

TEST(TextHtml, MakesMailsHarmless) {
  for (const auto& row : kRows) {
    EXPECT_EQ(Outcome(*MakeScan(row.settings), row.mail), row.outcome) << row.row;
  }
}

TEST(TextHtml, BlockedScriptsAreReadAnewAndComparedWithSmallLetters) {
  const auto scan = MakeScan(kScripts);
  const std::string kept = Mail(File("a.htm", kWriting));
  const struct {
    const char* row;
    const char* entries;
    bool isRemoved;
  } rows[] = {{"capital letters", "Evil\r\n", false},
              {"between blanks and empty lines", "\r\n \t evil \r\n", true},
              {"any of them", "x\ny\nevil", true},
              {"only blanks", "   \r\n\r\n", false}};
  for (const auto& row : rows) {
    scan->log.clear();
    scan->folder.Write("BlockedScripts.dat", row.entries);
    EXPECT_EQ(Outcome(*scan, kept),
              row.isRemoved ? kScript + kPassed + "||" : kPassed + "|" + kWriting + "|")
        << row.row;
  }
}

TEST(TextHtml, KeepsTheTransferEncoding) {
  for (const TEncodeType encoding : {e8bit, e7bit, eQuotedPrintable, eBase64, eUUE}) {
    const auto scan = MakeScan(Settings("DisableScripts=1\nIFrameBlockMode=Remove\n"));
    const std::string page = "\xE4 = <b>x</b> ";
    scan->mail = MailFromText(Mail(Html("")));
    const std::string hostile = page + "<script></script>" + page + "<iframe></iframe>" + page;
    scan->mail->GetTexts(0)->SetContent(encoding, hostile.data(),
                                        static_cast<uint32_t>(hostile.size()));
    EXPECT_TRUE(MakeRef<TPluginTextHtml>()->Execute(scan.Get()));
    EXPECT_EQ(scan->mail->GetTexts(0)->GetEncodeType(), encoding);
    EXPECT_EQ(scan->mail->GetTexts(0)->GetText(), page + page + page) << encoding;
  }
}

TEST(TextHtml, PassesAttachmentFilesUnseen) {
  const auto scan = MakeScan(Frames("MarkAsVirus") + "MakePlainText=1\nDisableScripts=1\n");
  scan->fileType = ftAttachment;
  EXPECT_EQ(Outcome(*scan, Mail(Html(kHttp))), "|html:" + kHttp + "|");
  EXPECT_TRUE(MakeRef<TPluginTextHtml>()->CheckIFrames(*scan));
}

}  // namespace
}  // namespace quarda
