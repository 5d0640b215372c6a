// Mails in mails and containers: which files nested scans see, what becomes of their verdicts and
// changes, and that nothing of them stays behind.
#include <Encodings.h>
#include <Errors.h>
#include <FileNames.h>
#include <MailRead.h>
#include <TnefBuilder.h>

#include <algorithm>
#include <new>
#include <vector>

#include "EngineFixture.h"

namespace quarda::test {
namespace {

std::string Attached(const std::string& header, const std::string& content) {
  return "--b\r\n" + header + "\r\n\r\n" + content + "\r\n";
}
std::string Eml(const std::string& content) {
  return Attached(
      "Content-Type: message/rfc822; name=m.eml\r\n"
      "Content-Disposition: attachment; filename=m.eml",
      content);
}
std::string File(const std::string& name, const std::string& content) {
  return Attached(
      "Content-Type: application/x\r\nContent-Disposition: attachment; filename=\"" + name + "\"",
      content);
}
std::string MailOf(const std::string& parts) {
  return "Subject: s\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n" + parts + "--b--\r\n";
}
/// A mail in a mail; each with a boundary of its own, so that they need no encoding.
std::string NestedMails(int depth, const std::string& text = "Text") {
  std::string mail = "Subject: innermost\r\n\r\n" + text + "\r\n";
  for (int i = 0; i < depth; ++i) {
    const std::string boundary = "b" + std::to_string(i);
    std::string parts = Eml("");
    parts.resize(parts.size() - 2);
    parts.replace(0, 3, "--" + boundary);
    mail.insert(0, "Subject: s\r\nContent-Type: multipart/mixed; boundary=" + boundary +
                       "\r\n\r\n" + parts);
    mail += "\r\n--" + boundary + "--\r\n";
  }
  return mail;
}

std::string AttachedContainer(const std::string& content) {
  return Attached(
      "Content-Type: Application/MS-TNEF; name=winmail.dat\r\n"
      "Content-Transfer-Encoding: base64",
      TextEncode(content, meBase64));
}

class NestedScanTest : public TEngineTest {
 protected:
  NestedScanTest() {
    Settings("[Logging]\r\nLogMode=4\r\n");
    TFakePlugin& probe = Plugin("Probe");
    probe.execute = [this](IQuardaInstance& scan) {
      const std::string name = scan.GetArguments()->GetName().Str();
      files_ += name + " ";
      deepest_ = std::max(deepest_, scan.GetApp()->GetInstanceCount());
      if (scan.GetApp()->GetInstanceCount() == 1) {
        reason_ = scan.GetGlobalData(kVirusReason).Str();
        return true;
      }
      return onFile_ ? onFile_(scan, Read(scan.GetArguments()->GetFilename().Str())) : true;
    };
    probe.done = [this](IQuardaInstance& scan, bool) {
      if (scan.GetApp()->GetInstanceCount() == 1) {
        reason_ = scan.GetGlobalData(kVirusReason).Str();
      }
    };
  }
  ~NestedScanTest() override {
    EXPECT_EQ(NamesIn(BasePath("Temp\\*")), "Quarda.mai Statistic.txt ");
    EXPECT_EQ(Read(BasePath("Temp\\Quarda.mai")), "inmail\r\n" + Path("in_1.inp") + "\r\n");
  }
  int32_t ScanText(const std::string& mail) { return Scan(Mail("in_1.inp", mail)); }
  /// Whether the texts, with bars between them, stand in the log in this order.
  testing::AssertionResult LogHas(std::string_view texts) const {
    const std::string log = Log();
    for (size_t at = 0; !texts.empty();) {
      const std::string_view text = texts.substr(0, texts.find('|'));
      at = log.find(text, at);
      if (at == log.npos) return testing::AssertionFailure() << text << "\nnot in\n" << log;
      texts.remove_prefix(std::min(text.size() + 1, texts.size()));
    }
    return testing::AssertionSuccess();
  }

  std::function<bool(IQuardaInstance&, const std::string&)> onFile_;
  std::string files_;
  std::string reason_;
  int32_t deepest_ = 0;
};

TEST_F(NestedScanTest, OpensMailsAndContainers) {
  const std::string inner = MailOf(File("x.exe", "X") + File("y", "") + File("z.tXt", "Z"));
  const std::string container = TnefContainer({{"one.doc", "1"}, {"two", "2"}});
  const std::string winmail = Read(platform::WindowsPath(QD_TEST_DATA "/tnef/t5.tnef"));
  const struct {
    const char* row;
    std::string mail;
    std::string files;
    const char* log;
  } kRows[] = {
      {"plain", "Subject: s\r\n\r\n", "", "ExtractEml\tpassed"},
      {"mail", MailOf(Eml(NestedMails(0))), "In_00001.inp ", ""},
      {"mail in a mail", MailOf(Eml(NestedMails(1))), "In_00002.inp In_00001.inp Temp0001.eml ",
       ""},
      {"files of a mail",
       MailOf(Attached("Content-Disposition: attachment; filename=M.EML\r\n"
                       "Content-Transfer-Encoding: base64",
                       TextEncode(inner, meBase64))),
       "In_00001.inp Temp0001.exe Temp0001.tXt ",
       "--- begin eml attachment \"M.EML\" ---------------\r\n|In_00001.inp|Temp0001.tXt|--- end "
       "eml attachment \"M.EML\" -----------------\r\n|ExtractEml\tpassed"},
      {"not a mail", MailOf(Eml("From here\r\n\r\n")), "",
       "begin eml|Invalid eml attachment|end eml|ExtractEml\tpassed"},
      {"empty", MailOf(Attached("Content-Disposition: attachment; filename=m.eml", "")), "",
       "Attachments\tpassed|ExtractEml\tpassed"},
      {"container", MailOf(AttachedContainer(container)), "Temp0001.doc Temp0001 ",
       "--- begin ms-tnef attachment \"winmail.dat\" ---------------\r\n|Temp0001.doc|--- end "
       "ms-tnef attachment \"winmail.dat\" -----------------\r\n"},
      {"a real one", MailOf(AttachedContainer(winmail)),
       "Temp0001.doc Temp0001.html Temp0001.pdf Temp0001.txt Temp0001.xml ", ""},
      {"broken container", MailOf(AttachedContainer(container + "?")), "",
       "Warning\tExtractEml\tError extracting ms-tnef attachment: Invalid lvl type|end ms"},
      {"a container in a mail in a container is a file like any other",
       MailOf(AttachedContainer(TnefContainer({{"m.eml", MailOf(AttachedContainer(container))}}))),
       "Temp0001.eml ", ""},
      {"the program hides behind the name",
       MailOf(Eml("MZ" + std::string(70, ' ') + "\r\nSubject: x\r\n\r\n")), "",
       "hidden executable: \"m.eml\"|end eml"},
      {"names are no paths",
       MailOf(AttachedContainer(TnefContainer({{"a.e/x\"e ", "1"},
                                               {"..\\..\\b.com", "2"},
                                               {"c:.d", "3"},
                                               {"e." + std::string(500, 'f'), "4"}}))),
       "Temp0001.exe Temp0001.com Temp0001.d Temp0001." + std::string(31, 'f') + " ", ""},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.row);
    platform::RemoveFile(BasePath("Quarda.log"));
    files_.clear();
    EXPECT_EQ(ScanText(row.mail), 0);
    EXPECT_EQ(files_, row.files + "in_1.inp ");
    EXPECT_TRUE(LogHas(row.log));
  }
}

TEST_F(NestedScanTest, AVirusInsideEndsTheScan) {
  const auto virus = [](IQuardaInstance&, const std::string& content) {
    return content.find("EVIL") == content.npos;
  };
  const struct {
    const char* row;
    std::string parts;
    std::string files;
  } kRows[] = {
      {"in a mail", Eml("Subject: EVIL\r\n\r\n") + Eml(NestedMails(0)), "In_00001.inp "},
      {"in a file of a mail",
       Attached("Content-Disposition: attachment; filename=m.eml\r\n"
                "Content-Transfer-Encoding: base64",
                TextEncode(MailOf(Attached("Content-Disposition: attachment; filename=a.b\r\n"
                                           "Content-Transfer-Encoding: base64",
                                           TextEncode("EVIL", meBase64))),
                           meBase64)),
       "In_00001.inp Temp0001.b "},
      {"in a container", AttachedContainer(TnefContainer({{"a", "x"}, {"b.c", "EVIL"}, {"d", ""}})),
       "Temp0001 Temp0001.c "},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.row);
    onFile_ = virus;
    files_.clear();
    platform::RemoveFile(BasePath("Quarda.log"));
    EXPECT_EQ(ScanText(MailOf(row.parts)), 1);
    EXPECT_EQ(files_, row.files);
    EXPECT_TRUE(LogHas("--- begin |returned ExitCode: 1|--- end |returned ExitCode: 1"));
  }
}

TEST_F(NestedScanTest, AFailingNestedScanIsNoVirus) {
  onFile_ = [](IQuardaInstance& scan, const std::string&) -> bool {
    platform::RemoveFile(scan.GetArguments()->GetFilename());
    throw EError("inside");
  };
  EXPECT_EQ(ScanText(MailOf(Eml(NestedMails(1)))), 0);
  EXPECT_TRUE(LogHas("EError: inside|--- end eml|ExtractEml\tpassed"));
}

TEST_F(NestedScanTest, AScannerThatDiesIsNoCleanResult) {
  Settings("[VirusScan]\r\nCommand1=\"" QD_CRASHING_PROGRAM "\"\r\n[Logging]\r\nLogMode=4\r\n");
  EXPECT_EQ(ScanText(MailOf(Eml(NestedMails(1)))), 1);
  EXPECT_TRUE(LogHas("--- begin eml|Temp0001.eml|Scanner crashed|--- end eml"));
}

TEST_F(NestedScanTest, ChangesGoBackInTheAttachmentsOwnEncoding) {
  onFile_ = [](IQuardaInstance& scan, const std::string&) {
    if (scan.GetFileType() == ftInMail) scan.GetMail()->SetSubject("clean");
    return true;
  };
  for (const TEncodeType encoding : {e7bit, e8bit, eQuotedPrintable, eBase64}) {
    const std::string name(mail::EncodeTypeNames[encoding]);
    SCOPED_TRACE(name);
    platform::RemoveFile(BasePath("Quarda.log"));
    std::string content = "Subject: x\r\n\r\nText=\r\n";
    if (encoding == eBase64) content = TextEncode(content, meBase64);
    if (encoding == eQuotedPrintable) content = AnsiToQuotedPrintable(content, false);
    ScanText(
        MailOf(Attached("Content-Disposition: attachment; filename=m.eml\r\n"
                        "Content-Transfer-Encoding: " +
                            name,
                        content)));
    TMail mail;
    mail.LoadFromFile(Path("in_1.inp"));
    ASSERT_EQ(mail.GetAttachmentCount(), 1u);
    EXPECT_EQ(mail.GetAttachments(0).GetContentTransferEncoding(), name);
    EXPECT_TRUE(mail.GetAttachments(0).DecodedContent().starts_with("Subject: clean\r\n\r\nText="))
        << mail.GetAttachments(0).DecodedContent();
    EXPECT_TRUE(LogHas("* Replacing content of \"" + Path("in_1.inp") +
                       "\" by the content of the temporary file \"" +
                       BasePath("Temp\\In_00001.inp") + "\"\r\n"));
    EXPECT_EQ(Log().find("* Replacing"), Log().rfind("* Replacing")) << "once";
  }
}

TEST_F(NestedScanTest, OpensAHundredLevels) {
  for (const auto& [depth, code] : {std::pair(100, 0), std::pair(101, 1), std::pair(3000, 1)}) {
    SCOPED_TRACE(depth);
    deepest_ = 0;
    EXPECT_EQ(ScanText(NestedMails(depth)), code);
    EXPECT_EQ(deepest_ > 0, code == 0) << "the probe stands behind the refusal";
    EXPECT_EQ(reason_.starts_with("Attachments nested more than 100 deep"), code == 1) << reason_;
    if (code == 0) {
      EXPECT_EQ(deepest_, 101);
    }
  }
}

TEST_F(NestedScanTest, AnotherEnginesMailTypeIsNotTakenForOurs) {
  std::string mails;
  onFile_ = [&](IQuardaInstance& scan, const std::string&) {
    mails += ExtractFileName(scan.GetMail()->GetMailFileName()) + " ";
    Write(BasePath("Temp\\Quarda.mai"), "outmail\r\n" + Path("out_2.inp") + "\r\n");
    return true;
  };
  Settings("[Common]\r\nMailCheckMode=Incomming\r\n");
  ScanText(
      MailOf(Eml(NestedMails(1)) + AttachedContainer(TnefContainer({{"a", "1"}, {"b", "2"}}))));
  EXPECT_EQ(files_, "In_00002.inp In_00001.inp Temp0001.eml Temp0001 Temp0001 in_1.inp ");
  EXPECT_EQ(mails, "In_00002.inp In_00001.inp In_00001.inp in_1.inp in_1.inp ");
  Write(BasePath("Temp\\Quarda.mai"), "inmail\r\n" + Path("in_1.inp") + "\r\n");
}

TEST_F(NestedScanTest, AnotherEnginesMailIsNotTakenForOurs) {
  std::string mails;
  onFile_ = [&](IQuardaInstance& scan, const std::string& content) {
    if (content == "1") Write(BasePath("Temp\\In_00001.inp"), NestedMails(0));
    if (content.size() == 1) mails += ExtractFileName(scan.GetMail()->GetMailFileName()) + " ";
    return true;
  };
  ScanText(
      MailOf(Eml(NestedMails(0)) + AttachedContainer(TnefContainer({{"a", "1"}, {"b", "2"}}))));
  EXPECT_EQ(mails, "in_1.inp in_1.inp ");
  platform::RemoveFile(BasePath("Temp\\In_00001.inp"));
}

TEST_F(NestedScanTest, NeedsNoMoreRoomThanTenTimesTheMail) {
  const std::string text((64 << 20) / 80, 'x');  // 80 of them fit
  EXPECT_EQ(ScanText(NestedMails(70, text)), 0);
  EXPECT_EQ(ScanText(NestedMails(90, text)), 1);
  EXPECT_EQ(reason_, "Attachments nested in each other are too large to be opened: \"m.eml\"");
  const std::string large((64 << 20) / 8, 'x');
  EXPECT_EQ(ScanText(NestedMails(9, large)), 0);
  EXPECT_EQ(ScanText(NestedMails(11, large)), 1);
}

TEST_F(NestedScanTest, ALackOfMemoryInsideHidesNoVirus) {
  const std::vector<std::string> mails = {MailOf(Eml(NestedMails(1))),
                                          MailOf(AttachedContainer(TnefContainer({{"a", "b"}})))};
  for (const std::string& mail : mails) {
    onFile_ = [](IQuardaInstance&, const std::string&) -> bool { throw std::bad_alloc(); };
    EXPECT_EQ(ScanText(mail), 1);
    EXPECT_EQ(reason_, "Not enough memory to check what is attached");
  }
}

TEST_F(NestedScanTest, OptsOut) {
  Settings("[Common]\r\nScanEmlAttachments=0\r\n[Logging]\r\nLogMode=4\r\n");
  EXPECT_EQ(ScanText(MailOf(Eml(NestedMails(1)))), 0);
  EXPECT_EQ(files_, "in_1.inp ");
  EXPECT_EQ(Log().find("ExtractEml"), std::string::npos);
}

TEST_F(NestedScanTest, OtherNamesInTheFolderAreLeftAlone) {
  const std::vector<std::string> taken = {"In_00001.inp", "Quarda.001", "Temp0001.txt"};
  platform::CreateFolders(BasePath("Temp"));
  for (const auto& name : taken) Write(BasePath("Temp\\" + name), name);
  ScanText(MailOf(Eml(NestedMails(0)) + AttachedContainer(TnefContainer({{".txt", "1"}}))));
  EXPECT_EQ(files_, "In_00002.inp Temp0002.txt in_1.inp ");
  for (const auto& name : taken) {
    EXPECT_EQ(Read(BasePath("Temp\\" + name)), name);
    platform::RemoveFile(BasePath("Temp\\" + name));
  }
}

}  // namespace
}  // namespace quarda::test
