// The checks of subjects: what is blocked, what is noted in the subject, and what is said about it.
#include <PluginSubject.h>
#include <gtest/gtest.h>

#include <string>

#include "TestMail.h"
#include "TestScan.h"

namespace quarda {
namespace {

const std::string kVirus = "[Subject Checks]\nBlockOnVirus=1\n[Virus Subjects]\n";
const std::string kLove = kVirus + "*i love you*\n";
const std::string kSuspicious = "[Subject Checks]\nWarnOnSuspicious=1\n[Suspicious Subjects]\n";
const std::string kMoney = kSuspicious + "*money*\n";
const std::string kBoth = kLove + kMoney;

// What a scan leaves behind: the log, then the reason, then what the subject gained.
const std::string kPassed = "Passed|Subject|passed\n||";
const std::string kNoted = "Warning|Subject|Suspicious subject found and noted in subject\n" +
                           kPassed + "Quarda suspicious: ";
const std::string kNotedAlready =
    "Warning|Subject|Suspicious subject found but was already noted in subject\n" + kPassed;
std::string Blocked(const std::string& pattern) {
  return "Warning|Subject|Virus subject found \"" + pattern +
         "\" and marked as virus\n|Virus subject found: " + pattern + "|";
}

const struct {
  const char* row;
  std::string settings;
  std::string subject;
  std::string outcome;
  std::string checkList = "";
} kRows[] = {
    {"no check is on", "[Virus Subjects]\n*\n[Suspicious Subjects]\n*\n", "x", kPassed},
    {"virus in any case", kLove, "Re: I LOVE YOU", Blocked("*i love you*")},
    {"blanks count", kLove, "ILOVEYOU", kPassed},
    {"whole subjects only", kVirus + "love\n", "love?", kPassed},
    {"no wildcards", kVirus + "love\n", "Love", Blocked("love")},
    {"exception", kLove + "[No Virus Subjects]\nre:*\n", "Re: i love you", kPassed},
    {"listed exception", kLove, "Re: i love you", kPassed, "[No Virus Subjects]\nre:*\n"},
    {"list before settings", kLove, "i love you", Blocked("*you"), "[Virus Subjects]\n*you\n*\n"},
    {"comment in the list", kVirus, "// love", kPassed, "[Virus Subjects]\n// love\n"},
    {"suspicious", kMoney, "Win money", kNoted},
    {"listed as suspicious", kSuspicious, "Win money", kNoted, "[Warning Subjects]\nwin*\n"},
    {"noted already", kMoney, "Re: Quarda suspicious: money", kNotedAlready},
    {"a note in other letters is none", kMoney, "quarda suspicious: money", kNoted},
    {"not suspicious", kMoney + "[No Suspicious Subjects]\nmy*\n", "my money", kPassed},
    {"virus before suspicious", kBoth, "money, i love you", Blocked("*i love you*")},
    {"no virus, but suspicious", kBoth + "[No Virus Subjects]\n*\n", "money, i love you", kNoted},
};

TEST(Subject, IsComparedWithPatterns) {
  for (const auto& row : kRows) {
    const auto scan = MakeScan(row.settings);
    scan->folder.Write("Quarda.clf", row.checkList);
    scan->mail = MailWithSubject(row.subject);
    const bool passed = MakeRef<TPluginSubject>()->Execute(scan.Get());
    EXPECT_EQ(scan->LogText() + "|" + std::string(scan->globals.Value("VirusReason")) + "|" +
                  scan->mail->GetSubject().Str(),
              row.outcome + row.subject)
        << row.row;
    EXPECT_EQ(passed, row.outcome.find("Virus subject") == std::string::npos) << row.row;
  }
}

TEST(Subject, OfAnAttachmentFileIsLeftAlone) {
  const auto scan = MakeScan(kLove);
  scan->fileType = ftAttachment;
  scan->mail = MailWithSubject("i love you");
  EXPECT_TRUE(MakeRef<TPluginSubject>()->Execute(scan.Get()));
  EXPECT_EQ(scan->LogText(), "");
}

}  // namespace
}  // namespace quarda
