// Copies of attachments leave the mail; the expected rest comes from comparing every pair.
#include <PluginRemoveDblAttachments.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestMail.h"
#include "TestScan.h"

namespace quarda {
namespace {

const std::string kOn = "[VirusScan]\nIntelliVirusScan=1\n";

std::string Part(const std::string& body, const std::string& type = "application/x",
                 const std::string& encoding = "7bit") {
  return "Content-Type: " + type + "\nContent-Transfer-Encoding: " + encoding +
         "\nContent-Disposition: attachment; filename=" +
         std::to_string(body.size() + type.size()) + "\n\n" + body + "\n";
}

TRef<TTestInstance> ScanOf(const std::vector<std::string>& parts) {
  const auto scan = MakeScan(kOn);
  std::string text = "Content-Type: multipart/mixed; boundary=b\n\n";
  for (const std::string& part : parts) text += "--b\n" + part;
  scan->mail = MailFromText(text + "--b--\n");
  return scan;
}

// What stays, as the first line of each body, after an `Init`.
std::string Rest(TTestInstance& scan) {
  EXPECT_FALSE(MakeRef<TPluginRemoveDblAttachments>()->Init(&scan));
  std::string rest;
  for (int32_t i = 0; i < scan.mail->GetAttachmentCount(); ++i) {
    rest += scan.mail->GetAttachments(i)->GetBody()->GetStrings(0).Str() + " ";
  }
  return rest;
}

std::string Log(int warnings) {
  std::string log;
  while (warnings-- > 0) log += "Warning|RemoveDblAttachments|Double attachment removed\n";
  return log + "Passed|RemoveDblAttachments|passed\n";
}

TEST(RemoveDblAttachments, KeepsTheFirstOfEachGroup) {
  // An attachment with attachments below it: its body alone decides, and they go with it.
  const auto family = [](const std::string& child) {
    return Part("f", "application/x; boundary=i") + "--i\n" + Part(child) + "--i--\n";
  };
  const struct {
    const char* row;
    std::vector<std::string> parts;
    int removed;
    std::string rest;
  } kRows[] = {
      {"none the same",
       {Part("0"), Part("1"), Part("2"), Part("3"), Part("4"), Part("5"), Part("6"), Part("7"),
        Part("8"), Part("8\n")},
       0,
       "0 1 2 3 4 5 6 7 8 8 "},
      {"two groups",
       {Part("a"), Part("b"), Part("a"), Part("c"), Part("b"), Part("a"), Part("d"), Part("e"),
        Part("f"), Part("g"), Part("b"), Part("h")},
       4,
       "a b c d e f g h "},
      {"type and encoding count exactly",
       {Part("a"), Part("a", "Application/x"), Part("a", "application/x", "7BIT"),
        Part("a", "application/x", "8bit"), Part("a", "APPLICATION/X"), Part("A"), Part("b"),
        Part("b"), Part("b"), Part("b")},
       3,
       "a a a a a A b "},
      {"lines count, also where the content is the same",
       {Part("QUJD", "application/x", "base64"), Part("QU\nJD", "application/x", "base64"),
        Part("QU\nJD", "application/x", "base64"), Part("QUJD", "application/x", "base64"),
        Part(""), Part("\n"), Part(""), Part("1"), Part("2"), Part("3")},
       3,
       "QUJD QU   1 2 3 "},
      {"a copy takes what lies below it along, and leaves its later twin",
       {family("x"), family("y"), Part("y"), Part("1"), Part("2"), Part("3"), Part("4"), Part("5"),
        Part("6"), Part("1")},
       2,
       "f x y 1 2 3 4 5 6 "},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.row);
    const auto scan = ScanOf(row.parts);
    EXPECT_EQ(Rest(*scan), row.rest);
    EXPECT_EQ(scan->LogText(), Log(row.removed));
  }
}

TEST(RemoveDblAttachments, LeavesOtherMailsAlone) {
  const std::vector<std::string> twins(10, Part("a"));
  const struct {
    const char* row;
    size_t count;
    TOvraMailFileType fileType;
    bool on;
  } kRows[] = {{"too few", 9, ftInMail, true},
               {"outgoing", 10, ftOutMail, true},
               {"attachment file", 10, ftAttachment, true},
               {"switched off", 10, ftInMail, false}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.row);
    const auto scan = ScanOf({twins.begin(), twins.begin() + static_cast<ptrdiff_t>(row.count)});
    scan->fileType = row.fileType;
    scan->config->SetIntelliVirusScan(row.on);
    Rest(*scan);
    EXPECT_EQ(scan->mail->GetAttachmentCount(), static_cast<int32_t>(row.count));
    EXPECT_EQ(scan->LogText(), "");
  }
}

TEST(RemoveDblAttachments, TakesCopiesOutOfManyAttachments) {
  constexpr int kCount = 12000;
  std::vector<std::string> parts;
  for (int i = 0; i < kCount; ++i) parts.push_back(Part(std::to_string(i % 3 ? i : 0)));
  const auto scan = ScanOf(parts);
  Rest(*scan);
  EXPECT_EQ(scan->mail->GetAttachmentCount(), kCount - kCount / 3 + 1);
}

}  // namespace
}  // namespace quarda
