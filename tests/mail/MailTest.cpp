// The part tree: how it is read, listed, changed and written.
#include <MailRead.h>
#include <Streams.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "MailTestTools.h"

namespace quarda {
namespace {

constexpr const char* kMixed =
    "Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\npreamble\r\n\r\n--B\r\n"
    "Content-Type: multipart/alternative;\r\n boundary=C\r\n\r\n--c\r\nX: 1\r\n\r\nplain\r\n--C\r\n"
    "Content-Type: text/html\r\n\r\n<p>\r\n--C--\r\n\r\n--b\r\n"
    "Content-Disposition: attachment\r\nContent-Transfer-Encoding: base64\r\n\r\nQQ==\r\n--B--\r\n"
    "epilogue\r\n";

// The tree in one line: type[body lines](children).
std::string Shape(TMailPart& part) {
  std::string shape = part.GetContentType() + "[" + part.GetBody().SeparateText("|") + "]";
  for (size_t i = 0; i < part.GetCount(); ++i) {
    shape += (i == 0 ? "(" : " ") + Shape(part.GetParts(i));
  }
  return part.GetCount() > 0 ? shape + ")" : shape;
}

// Both lists as the content types of their parts.
std::string Lists(TMail& mail) {
  std::string lists;
  for (size_t i = 0; i < mail.GetAttachmentCount(); ++i) {
    lists += mail.GetAttachments(i).GetContentType() + " ";
  }
  lists += "|";
  for (size_t i = 0; i < mail.GetTextCount(); ++i) lists += " " + mail.GetTexts(i).GetContentType();
  return lists;
}

TEST(MailTree, FollowsTheBoundaries) {
  const struct {
    const char* row;
    const char* text;
    const char* shape;
  } kRows[] = {
      {"nested, any case, epilogue dropped", kMixed,
       "multipart/mixed[preamble|](multipart/alternative[](text/plain[plain] text/html[<p>]) "
       "[QQ==])"},
      {"never opened", "Content-Type: a/b; boundary=B\n\nx\n--B--\n--Bx\n --B\n--B \ny",
       "a/b[x|--B--|--Bx| --B|--B |y]"},
      {"never closed", "Content-Type: a/b; boundary=B\n\n--B\n\nx\n--B\n\ny\n",
       "a/b[](text/plain[x] text/plain[y])"},
      {"opened at the end", "Content-Type: a/b; boundary=B\n\nx\n--B", "a/b[x]"},
      {"empty children are none", "Content-Type: a/b; boundary=B\n\n--B\n\n--B\n\n\n--B--\n",
       "a/b[](text/plain[])"},
      {"any type", "Content-Type: text/plain; boundary='B'\n\n--B\n\nx\n--B--\n",
       "text/plain[](text/plain[x])"},
      {"text behind an inner end is a part",
       "Content-Type: a/b; boundary=B\n\n--B\nContent-Type: c/d; boundary=C\n\n--C\n\nx\n--C--\n"
       "tail: 1\n\nmore\n--B--\n",
       "a/b[](c/d[](text/plain[x]) text/plain[more])"},
      {"an outer boundary that is not the parent's is text",
       "Content-Type: a/b; boundary=B\n\n--B\nContent-Type: c/d; boundary=C\n\n--C\n"
       "Content-Type: e/f; boundary=D\n\n--B\n--D\n\nx\n--B--\n--C\n--D--\n--C\n\ny\n",
       "a/b[](c/d[](e/f[--B](text/plain[x|--B--|--C]) text/plain[y]))"},
      {"one boundary for two ends both",
       "Content-Type: a/b; boundary=B\n\n--B\nContent-Type: c/d; boundary=C\n\n--C\n"
       "Content-Type: e/f; boundary=c\n\nx\n--C--\nrest\n--B\n\ny\n",
       "a/b[](c/d[](e/f[x]) text/plain[y])"},
      {"a boundary that ends in dashes",
       "Content-Type: a/b; boundary=B\n\n--B\nContent-Type: c/d; boundary=B--\n\nx\n--B--\ny\n",
       "a/b[](c/d[x])"},
      {"the header has no end", "Subject: x\nContent-Type: text/x", "text/x[]"},
      {"nothing", "", "text/plain[]"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.row);
    ForEachKindOfStream(row.text, [&](TStream& stream) {
      TMail mail;
      mail.LoadFromStream(stream);
      EXPECT_EQ(Shape(mail), row.shape);
      EXPECT_FALSE(mail.GetModified());
    });
  }
}

TEST(MailTree, WritesItsNormalForm) {
  const auto mail = Loaded(kMixed);
  const std::string text = Saved(*mail);
  EXPECT_EQ(
      text,
      "Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\npreamble\r\n\r\n--B\r\n"
      "Content-Type: multipart/alternative;\r\n\tboundary=C\r\n\r\n--C\r\nX: 1\r\n\r\nplain\r\n"
      "--C\r\nContent-Type: text/html\r\n\r\n<p>\r\n--C--\r\n\r\n--B\r\n"
      "Content-Disposition: attachment\r\nContent-Transfer-Encoding: base64\r\n\r\nQQ==\r\n"
      "--B--\r\n\r\n");
  const std::string again = Saved(*mail);
  EXPECT_NE(again.find("X: 1\r\nContent-Type: \r\n"), std::string::npos)
      << "a part without a type gets an empty one by being written";

  const auto stale = Loaded("Content-Type: text/plain; boundary=B; a=b\n\nx");
  EXPECT_EQ(Saved(*stale), "Content-Type: text/plain; boundary=B; a=b\r\n\r\nx\r\n");
  EXPECT_EQ(Saved(*stale), "Content-Type: text/plain; a=b\r\n\r\nx\r\n");
  EXPECT_FALSE(stale->GetModified());
}

TEST(MailTree, ListsAttachmentsAndTexts) {
  const struct {
    const char* header;
    const char* lists;
  } kRows[] = {
      {"", "| text/plain"},
      {"Content-Type: TEXT/x", "| TEXT/x"},
      {"Content-Type: application/pdf", "application/pdf |"},
      {"Content-Type: multipart/x", "|"},
      {"Content-Type: charset=x", "| text/plain"},
      {"Content-Type: text/plain\nContent-Disposition: Attachment", "text/plain |"},
      {"Content-Type: text/plain\nContent-Disposition: attachment ", "text/plain |"},
      {"Content-Type: text/plain\nContent-Disposition: attachment ;x=y", "| text/plain"},
      {"Content-Type: text/plain\nContent-Disposition: x; FILENAME=a", "text/plain |"},
      {"Content-Type: text/plain\nContent-Disposition: x; filename=\"\"", "| text/plain"},
      {"Content-Type: text/plain; name=a\nContent-Disposition: x", "text/plain |"},
      {"Content-Type: text/plain; name=a", "| text/plain"},
      {"Content-Disposition: inline", " |"},
      {"Content-Type: image/gif\nContent-Disposition: inline", "image/gif |"},
      {"Content-Type: text/html\nContent-Disposition: inline", "| text/html"},
      {"Content-Type: Text/html\nContent-Disposition: inline", "Text/html |"},
      {"Content-Type: text\nContent-Disposition: inline", "text |"},
      {"Content-Type: text/html\nContent-Disposition: inline; filename=a.txt", "text/html |"},
  };
  for (const auto& row : kRows) EXPECT_EQ(Lists(*Loaded(row.header)), row.lists) << row.header;
  EXPECT_EQ(Lists(*Loaded(kMixed)), " | text/plain text/html");
}

// After every step the lists must be what listing all parts anew gives.
TEST(MailTree, ListsFollowEveryChange) {
  const auto mail = Loaded(kMixed);
  TMailPart& alternative = mail->GetParts(0);
  const auto expect = [&](const char* step) {
    const std::string lists = Lists(*mail);
    mail->UpdateMailPartList();
    EXPECT_EQ(lists, Lists(*mail)) << step;
  };
  alternative.GetParts(1).SetContentType("image/gif");
  expect("a text became an attachment");
  alternative.GetParts(1).SetContentType("text/css");
  expect("and a text again");
  mail->Add().SetContentType("image/png");
  mail->Add().SetFileName("x");
  expect("two parts at the end");
  alternative.Add().SetContentType("image/bmp");
  expect("one in the middle");
  alternative.GetParts(0).GetHeader().Clear();
  alternative.GetParts(0).GetHeader().Add("Content-Type", "a/b");
  EXPECT_EQ(mail->GetTexts(0).GetContentType(), "a/b") << "nobody told the mail";
  mail->Add();
  mail->Move(3, 0);
  expect("moved");
  mail->Exchange(0, 2);
  expect("exchanged");
  mail->DeleteAttachment(mail->GetAttachments(0));
  expect("one deleted");
  TMemoryStream text(std::string_view("Content-Type: image/jpeg\n\nx"));
  TTextStreamer streamer(text, TStreamerMode::kRead);
  mail->GetParts(0).LoadFromTextStreamer(streamer);
  expect("one read anew");
  mail->SetParts(0, *mail);
  expect("assigned from its own parent");
  mail->Delete(0);
  expect("a subtree deleted");
  mail->Clear();
  expect("cleared");
  EXPECT_EQ(Lists(*mail), "|");
  mail->SetMultipartSection(false);
  EXPECT_EQ(Lists(*mail), "| text/plain");
  EXPECT_THROW(mail->DeleteText(mail->GetTexts(0)), EError);
}

TEST(MailTree, AssignCopiesWholeTrees) {
  const auto source = Loaded(kMixed);
  TMail target;
  target.Assign(*source);
  EXPECT_EQ(Shape(target), Shape(*source));
  EXPECT_EQ(Lists(target), Lists(*source));
  EXPECT_TRUE(target.GetModified());
  EXPECT_TRUE(target.GetParts(0).GetParts(1).GetModified());
  target.Assign(target.GetParts(0));
  EXPECT_EQ(Shape(target), Shape(source->GetParts(0))) << "from below itself";
  TMail empty;
  target.Assign(empty);
  EXPECT_EQ(Shape(target), "text/plain[]");
  target.SetHeader(source->GetParts(1).GetHeader());
  target.SetBody(source->GetParts(1).GetBody());
  target.SetBody(target.GetBody());
  EXPECT_EQ(target.DecodedContent(), "A");
  EXPECT_THROW(target.GetParts(0), EListError);
}

TEST(MailTree, MarksEveryPartAboveAChange) {
  const auto mail = Loaded(kMixed);
  TMailPart& leaf = mail->GetParts(0).GetParts(0);
  leaf.GetHeader().SetHeaderStr("X", "2");
  EXPECT_TRUE(leaf.GetModified());
  EXPECT_FALSE(mail->GetModified()) << "a field alone marks only its own part";
  leaf.SetContent(mail::eCurrent, std::string_view("x"));
  EXPECT_TRUE(mail->GetModified());
  Saved(*mail);
  EXPECT_FALSE(mail->GetModified() || leaf.GetModified() || mail->GetParts(0).GetModified());
}

TEST(MailPart, ReadsAndWritesItsFields) {
  const auto mail = Loaded(
      "Content-Type: a=b; Text/Plain; boundary='x y'; name=\"=?x?Q?n_1?=\"\n"
      "Content-Transfer-Encoding: BASE64; x\n\n");
  EXPECT_EQ(mail->GetContentTypeType() + " " + mail->GetContentTypeSubType(), "Text Plain");
  EXPECT_EQ(mail->GetBoundary() + mail->BoundaryBegin() + mail->BoundaryEnd(), "x y--x y--x y--");
  EXPECT_EQ(mail->GetName(), "n 1");
  EXPECT_EQ(mail->GetEncodeType(), mail::eBase64);
  EXPECT_EQ(mail->GetFileName(), "");
  mail->SetContentTypeSubType("css");
  mail->SetName("m");
  mail->SetBoundary("");
  mail->SetFileName("f;");
  mail->SetContentID("<1>");
  EXPECT_EQ(mail->GetContentID(), "<1>");
  EXPECT_EQ(Saved(*mail),
            "Content-Type: a=b; Text/css; name=\"m\"\r\nContent-Transfer-Encoding: BASE64; x\r\n"
            "Content-Disposition: attachment; filename=\"f;\"\r\nContent-ID: <1>\r\n\r\n");
  mail->SetContentID("");
  mail->SetFileName("");
  mail->GetHeader().GetHeader("Content-Type")->SetValue("x=y");
  mail->SetContentTypeType("image");
  EXPECT_EQ(Saved(*mail),
            "Content-Type: image/plain; x=y\r\nContent-Transfer-Encoding: BASE64; x\r\n\r\n");

  TMail plain;
  EXPECT_EQ(plain.GetEncodeType(), mail::e7bit);
  for (const char* unknown : {"x-uuencode", "", "7bit "}) {
    plain.SetContentTransferEncoding(unknown);
    EXPECT_EQ(plain.GetEncodeType(), mail::eUnknown) << unknown;
  }
  for (int i = 0; i < 3; ++i) plain.Add().GetHeader().Add("Content-Disposition", "attachment");
  EXPECT_EQ(plain.GetParts(2).GetFileName(), "Att00002.txt");
  plain.Delete(0);
  EXPECT_EQ(plain.GetParts(1).GetFileName(), "Att00001.txt");
  EXPECT_EQ(plain.GetFileName(), "") << "the mail itself has no place among parts";
}

TEST(MailPart, DecodesItsContent) {
  const struct {
    const char* encoding;
    const char* body;
    const char* raw;
    const char* decoded;
    size_t size;
  } kRows[] = {
      {"7bit", "a\n\nb\n", "a\r\n\r\nb", "a\r\n\r\nb", 6},
      {"8bit", "", "", "", 0},
      {"base64", "\n\nQQ\n\n==\n\n", "QQ==", "A", 3},
      {"base64", "\n", "", "", 0},
      {"quoted-printable", "a=3D=\nb\n", "a=3D=\r\nb", "a=b", 3},
      {"uuencode", "#86)C\n", "#86)C", "\r\x85\x89", 3},
      {"uuencode", "x\nbegin 644 f\n86)C\n`\nend\n", "86)C", "abc", 3},
      {"uuencode", "begin 644 f\n", "begin 644 f", nullptr, 6},
      {"uuencode", "86)C\nENDE\n", "86)CENDE", nullptr, 6},
      {"uuencode", "86)C\n\n", "", "", 0},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.body);
    const auto mail =
        Loaded("Content-Transfer-Encoding: " + std::string(row.encoding) + "\n\n" + row.body);
    EXPECT_EQ(mail->GetFileContent(), row.raw);
    EXPECT_EQ(mail->DecodedContent(nullptr), row.size);
    if (!row.decoded) continue;
    EXPECT_EQ(mail->DecodedContent(), row.decoded);
    std::string streamed;
    TStringStream stream(streamed);
    mail->DecodedContentStream(stream);
    EXPECT_EQ(streamed, row.decoded);
  }
  try {
    Loaded("Content-Transfer-Encoding: x\n\nbody")->DecodedContent();
    ADD_FAILURE();
  } catch (const EMailDecodeError& error) {
    EXPECT_STREQ(error.what(), "Cannot decode mail part. [ContentTransferEncoding: x]");
  }
}

TEST(MailPart, ReplacesItsContent) {
  const std::string text = "line=\r\n\xE9\r\n";
  const std::string wide(100, 'w');
  TMail mail;
  mail.SetContent(mail::eBase64, wide.data(), wide.size());
  ASSERT_EQ(mail.GetBody().Count(), 2u);
  EXPECT_EQ(mail.GetBody()[0].size(), 76u);
  EXPECT_EQ(mail.GetBody()[1].size(), 60u);
  for (const auto encoding : {mail::eBase64, mail::eCurrent, mail::eQuotedPrintable, mail::eUUE}) {
    mail.SetContent(encoding, text);
    EXPECT_EQ(mail.DecodedContent(), encoding == mail::eQuotedPrintable ? "line=\r\n\xE9" : text);
  }
  EXPECT_EQ(mail.GetContentTransferEncoding(), "uuencode");
  mail.SetContent(mail::eUnknown, std::string_view("a\rb\n"));
  EXPECT_EQ(mail.GetContentTransferEncoding(), "uuencode");
  EXPECT_EQ(mail.GetBody().Count(), 2u);
  TStringList lines;
  lines.Add("p");
  lines.Add("q");
  mail.SetContent(mail::e8bit, lines);
  EXPECT_EQ(mail.DecodedContent(), "p\r\nq");
  ForEachKindOfStream("skipped rest", [&](TStream& stream) {
    stream.SetPosition(8);
    mail.SetContent(mail::e7bit, &stream);
    EXPECT_EQ(mail.DecodedContent(), "rest");
    EXPECT_EQ(stream.Position(), 12u);
    mail.SetContent(mail::e7bit, &stream);
    EXPECT_EQ(mail.DecodedContent(), "");
  });
  mail.SetContent(mail::eBase64, nullptr, 5);
  EXPECT_TRUE(mail.GetBody().IsEmpty());
}

TEST(Mail, ReadsAndWritesItsAccessors) {
  const auto mail =
      Loaded("Subject: a; b\nFrom: =?x?Q?=E4?= <f@x>\nto: p, \"q, r\" <q@x>,,s@x\n\n");
  EXPECT_EQ(mail->GetSubject(), "a");
  EXPECT_EQ(mail->GetFrom(), "\xE4 <f@x>");
  TStringList list;
  mail->GetToList(list);
  EXPECT_EQ(list.SeparateText("|"), "p|\"q, r\" <q@x>||s@x");
  mail->SetCcList(list);
  mail->SetSubject("\xE4");
  EXPECT_EQ(mail->GetSubject(), "\xE4");
  EXPECT_EQ(mail->GetHeader().GetHeaderStr("Subject"), "=?iso-8859-1?Q?=E4?=");
  mail->SetSubject("a\r\n\r\nb=");
  EXPECT_EQ(Loaded(Saved(*mail))->GetSubject(), "a\r\n\r\nb=") << "its line breaks end no field";
  EXPECT_EQ(mail->GetCc(), "p\r\n\t\"q, r\" <q@x>\r\n\ts@x");
  EXPECT_EQ(Loaded(Saved(*mail))->GetCc(), "p\t\"q, r\" <q@x>\ts@x") << "one folded field";
}

}  // namespace
}  // namespace quarda
