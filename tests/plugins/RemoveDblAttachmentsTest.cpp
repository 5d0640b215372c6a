// Copies of attachments leave the mail; the expected rest comes from comparing every pair.
#include <PluginRemoveDblAttachments.h>
#include <gtest/gtest.h>

#include <string>

#include "TestMail.h"
#include "TestScan.h"

namespace quarda {
namespace {

std::string Part(const std::string& body, const std::string& type = "application/x",
                 const std::string& encoding = "7bit") {
  return "--b\nContent-Type: " + type + "\nContent-Transfer-Encoding: " + encoding +
         "\nContent-Disposition: attachment; filename=" +
         std::to_string(body.size() + type.size()) + "\n\n" + body + "\n";
}
std::string Parts(std::string_view bodies) {
  std::string parts;
  for (const char body : bodies) parts += Part(std::string(1, body));
  return parts;
}

TRef<TTestInstance> ScanOf(const std::string& parts) {
  const auto scan = MakeScan("[VirusScan]\nIntelliVirusScan=1\n");
  scan->mail = MailFromText("Content-Type: multipart/mixed; boundary=b\n\n" + parts + "--b--\n");
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
  if (warnings < 0) return {};
  std::string log;
  while (warnings-- > 0) log += "Warning|RemoveDblAttachments|Double attachment removed\n";
  return log + "Passed|RemoveDblAttachments|passed\n";
}

TEST(RemoveDblAttachments, KeepsTheFirstOfEachGroup) {
  // An attachment with attachments below it: its body alone decides, and they go with it.
  const auto family = [](const std::string& child) {
    return Part("f", "application/x; boundary=i") + "--i\n" + Part(child).substr(4) + "--i--\n";
  };
  const auto encoded = [](const std::string& body) {
    return Part(body, "application/x", "base64");
  };
  const struct {
    const char* row;
    std::string parts;
    int removed;  // -1: nobody looks
    std::string rest;
  } kRows[] = {
      {"none the same", Parts("012345678") + Part("8\n"), 0, "0 1 2 3 4 5 6 7 8 8 "},
      {"two groups", Parts("abacbadefgbh"), 4, "a b c d e f g h "},
      {"type and encoding count exactly",
       Part("a") + Part("a", "Application/x") + Part("a", "application/x", "7BIT") +
           Part("a", "application/x", "8bit") + Part("a", "APPLICATION/X") + Parts("Abbbb"),
       3, "a a a a a A b "},
      {"lines count, also where the content is the same",
       encoded("QUJD") + encoded("QU\nJD") + encoded("QU\nJD") + encoded("QUJD") + Part("") +
           Part("\n") + Part("") + Parts("123"),
       3, "QUJD QU   1 2 3 "},
      {"a copy takes what lies below it along, and leaves its later twin",
       family("x") + family("y") + Parts("y1234561"), 2, "f x y 1 2 3 4 5 6 "},
      {"too few", Parts("aaaaaaaaa"), -1, "a a a a a a a a a "},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.row);
    const auto scan = ScanOf(row.parts);
    EXPECT_EQ(Rest(*scan), row.rest);
    EXPECT_EQ(scan->LogText(), Log(row.removed));
  }
}

TEST(RemoveDblAttachments, LeavesOtherMailsAlone) {
  for (const TOvraMailFileType type : {ftInMail, ftOutMail, ftAttachment}) {
    const auto scan = ScanOf(Parts("aaaaaaaaaa"));
    scan->fileType = type;
    scan->config->SetIntelliVirusScan(type != ftInMail);
    Rest(*scan);
    EXPECT_EQ(scan->mail->GetAttachmentCount(), 10) << type;
    EXPECT_EQ(scan->LogText(), "") << type;
  }
}

TEST(RemoveDblAttachments, TakesCopiesOutOfManyAttachments) {
  constexpr int kCount = 12000;
  std::string parts;
  for (int i = 0; i < kCount; ++i) parts += Part(std::to_string(i % 3 ? i : 0));
  const auto scan = ScanOf(parts);
  Rest(*scan);
  EXPECT_EQ(scan->mail->GetAttachmentCount(), kCount - kCount / 3 + 1);
}

}  // namespace
}  // namespace quarda
