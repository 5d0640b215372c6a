// Senders of the own domain: who may use them, and what happens to a faked one.
#include <PluginASmtpCheck.h>
#include <gtest/gtest.h>

#include <string>

#include "TestMail.h"
#include "TestScan.h"

namespace quarda {
namespace {

const std::string kFrom = "From: Boss <Boss@Own.x>\nSubject: hi\n";
const std::string kFaked = "Warning|ASmtpCheck|faked asmtp sender: \"Boss@Own.x\".\n";
const std::string kPassed = "Passed|ASmtpCheck|passed\n";

const struct {
  const char* row;
  std::string header;
  bool faked;
} kRows[] = {
    {"foreign sender", "From: x@own.x.y\n", false},
    {"no received field", kFrom, true},
    {"authenticated", "Received: from a by b WITH ASMTP ; Mon\n" + kFrom, false},
    {"behind a semicolon", "Received: from a; with asmtp id 1\n" + kFrom, true},
    {"no blank behind", "Received: from a with asmtp\n" + kFrom, true},
    {"plain", "Received: from a with esmtp ; Mon\n" + kFrom, true},
    {"the last of the first run", "Received: a\nreceived: b with asmtp c\n" + kFrom, false},
    {"not the first of the run", "Received: b with asmtp c\nReceived: a\n" + kFrom, true},
    {"fields before", "X: y\nReceived: b with asmtp c\nX: y\nReceived: a\n" + kFrom, false},
    {"not a later run", "Received: a\n" + kFrom + "Received: b with asmtp c\n", true},
};

TEST(ASmtp, ProtectsTheOwnAddresses) {
  for (const auto& row : kRows) {
    for (const char* const mode : {"MarkAsVirus", "SubjectNote"}) {
      SCOPED_TRACE(std::string(row.row) + ", " + mode);
      const auto scan = MakeScan(std::string("[ASmtp Checks]\nBlockMode=") + mode +
                                 "\n[ASmtp Adresses]\n*@elsewhere\n*@own.x\n");
      scan->mail = MailFromText(row.header + "\nbody\n");
      const std::string subject = scan->mail->GetSubject().Str();
      const bool blocks = row.faked && std::string(mode) == "MarkAsVirus";
      EXPECT_EQ(MakeRef<TPluginASmtpCheck>()->Execute(scan.Get()), !blocks);
      EXPECT_EQ(scan->LogText(), (row.faked ? kFaked : "") + (blocks ? "" : kPassed));
      EXPECT_EQ(scan->globals.Value(kVirusReason),
                row.faked ? "faked asmtp sender: \"Boss@Own.x\"." : "");
      EXPECT_EQ(scan->mail->GetSubject().Str(),
                (row.faked && !blocks ? "Quarda - faked sender: " : "") + subject);
    }
  }
}

TEST(ASmtp, NotesOnce) {
  const std::string own = "[ASmtp Adresses]\n*@own.x\n";  // a note is the default
  for (const std::string subject : {"Re: Quarda - faked sender: hi", "quarda - faked sender: hi"}) {
    const auto scan = MakeScan(own);
    scan->mail = MailFromText("From: Boss@Own.x\nSubject: " + subject + "\n\n");
    EXPECT_TRUE(MakeRef<TPluginASmtpCheck>()->Execute(scan.Get()));
    EXPECT_EQ(scan->LogText(), kFaked + kPassed);
    const bool noted = subject.starts_with("Re");
    EXPECT_EQ(scan->mail->GetSubject().Str(), (noted ? "" : "Quarda - faked sender: ") + subject);
  }
}

TEST(ASmtp, LooksAtIncomingMailOnly) {
  for (const TOvraMailFileType type : {ftOutMail, ftAttachment, ftInMail}) {
    const auto scan =
        MakeScan(std::string("[ASmtp Checks]\nBlockMode=") +
                 (type == ftInMail ? "None" : "MarkAsVirus") + "\n[ASmtp Adresses]\n*\n");
    scan->fileType = type;
    scan->mail = MailFromText(kFrom + "\n");
    EXPECT_TRUE(MakeRef<TPluginASmtpCheck>()->Execute(scan.Get()));
    EXPECT_EQ(scan->LogText(), "");
  }
}

}  // namespace
}  // namespace quarda
