// The mail as plug-ins see it: identity, ownership and the operations that decide something.
#include <Errors.h>
#include <QDMailAdapters.h>
#include <QDStringsAdapters.h>
#include <Streams.h>
#include <TempFolder.h>
#include <TestLists.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace quarda {
namespace {

constexpr const char* kMail =
    "Received: 1\r\nReceived: 2\r\nTo: a@b, \"C\" <c@d>\r\n"
    "Content-Type: multipart/mixed; boundary=B\r\n\r\npreamble\r\n--B\r\n"
    "Content-Transfer-Encoding: base64\r\nContent-Type: text/plain; name=n\r\n\r\nQUJD\r\n--B\r\n"
    "Content-Disposition: attachment; filename=f.txt\r\n\r\nx\r\n--B--\r\n\r\n";

class MailAdapterTest : public testing::Test {
 protected:
  MailAdapterTest() {
    TMemoryStream stream{std::string_view(kMail)};
    model_.LoadFromStream(stream);
  }

  TMail model_;
  TRef<IMail> mail_ = MailAdapter(model_);
};

TEST_F(MailAdapterTest, IsOneObjectBehindAllItsInterfaces) {
  const auto identity = [](const auto& ref) { return ref.template As<IRefCounted>().Get(); };
  const auto attachment = mail_.As<IMailAttachment>();
  const auto text = attachment.As<IMailText>();
  ASSERT_TRUE(attachment && text && text.As<IMail>());
  EXPECT_EQ(identity(attachment), identity(mail_));
  EXPECT_EQ(identity(attachment.As<IMailPart>()), identity(mail_));
  EXPECT_EQ(attachment.As<IMailPart>(), mail_.As<IMailPart>());
  EXPECT_FALSE(mail_.As<IHeader>());

  EXPECT_EQ(mail_->GetHeader(), mail_->GetHeader());
  EXPECT_EQ(mail_->GetBody(), mail_->GetBody());
  const TRef<IMailPart> one = mail_->GetParts(0);
  const TRef<IMailPart> other = mail_->GetParts(0);
  EXPECT_FALSE(one == other);
  one->SetContentType("text/html");
  EXPECT_EQ(other->GetContentType(), "text/html");
  EXPECT_EQ(one->GetOwner()->GetCount(), 2);
  EXPECT_FALSE(mail_->GetOwner());
}

// Each operation reaches the field that it is named after.
TEST_F(MailAdapterTest, WritesEachFieldAndReadsItBack) {
  const auto attachment = mail_->GetParts(1).As<IMailAttachment>();
  const TRef<IHeader> own = attachment->GetHeader();
  const auto check = [](const auto& object, const char* text, auto get, auto set) {
    (*object.*set)(text);
    EXPECT_EQ((*object.*get)(), text);
  };
#define OF(object, text, name)                                     \
  check(object, text, &std::decay_t<decltype(*object)>::Get##name, \
        &std::decay_t<decltype(*object)>::Set##name)
  OF(mail_, "f@x", From), OF(mail_, "t@x", To), OF(mail_, "c@x", Cc), OF(mail_, "b@x", Bcc);
  OF(mail_, "s", Subject), OF(mail_, "Mon, 1 Jan 2004", Date);
  mail_->SetMimeVersion("1.0");
  EXPECT_EQ(mail_->GetMIMEVersion(), "1.0");
  std::string fields;
  for (const char* name : {"From", "To", "Cc", "Bcc", "Subject", "Date", "MIME-Version"}) {
    fields += mail_->GetHeader()->GetHeaderStr(name).Str() + "|";
  }
  EXPECT_EQ(fields, "f@x|t@x|c@x|b@x|s|Mon, 1 Jan 2004|1.0|");
  mail_->GetHeader()->SetHeaderStr("Return-Path", "<r@x>");
  mail_->GetHeader()->SetHeaderStr("Message-ID", "<m@x>");
  EXPECT_EQ(mail_->GetReturnPath(), "<r@x>");
  EXPECT_EQ(mail_->GetMessageID(), "<m@x>");
  const TRef<IStringList> list = mail_->GetBccList();
  EXPECT_EQ(Joined(list), "b@x|");
  list->Add("e@x");
  mail_->SetBccList(list.Get());
  EXPECT_EQ(mail_->GetBcc(), "b@x\r\n\te@x");
  OF(attachment, "a/b", ContentType), OF(attachment, "image", ContentTypeType);
  OF(attachment, "gif", ContentTypeSubType), OF(attachment, "limit", Boundary);
  OF(attachment, "n", Name), OF(attachment, "g.gif", FileName), OF(attachment, "<1>", ContentID);
  OF(attachment, "8bit", ContentTransferEncoding);
  EXPECT_EQ(own->GetHeader("Content-Type")->GetValuesAsText(),
            "image/gif; boundary=\"limit\"; name=\"n\"");
  EXPECT_EQ(own->GetHeader("Content-Disposition")->GetValuesAsText(),
            "attachment; filename=\"g.gif\"");
  EXPECT_EQ(own->GetHeaderStr("Content-ID"), "<1>");
  EXPECT_TRUE(mail_->GetMultipartSection());
  mail_->SetMultipartSection(false);
  EXPECT_EQ(mail_->GetMultipartSection() || attachment->IsText(), false);
  char content[4] = {};
  EXPECT_EQ(attachment->GetFileContent(content), 1u);
  EXPECT_STREQ(content, "x");
  mail_->GetParts(0)->Clear();
  mail_->Clear();
  EXPECT_EQ(mail_->GetCount(), 0);
  EXPECT_EQ(mail_->GetMailFileName(), "");
}

TEST_F(MailAdapterTest, ChangesFieldsOneByOne) {
  const TRef<IHeader> header = mail_->GetHeader();
  const TRef<IHeaderItem> item = header->Insert(0, "X", "1");
  EXPECT_EQ(header->IndexOf("x"), 0);
  item->SetValuesAsText("a; b; c");
  item->DeleteValue(1);
  EXPECT_EQ(item->AddValue("d"), 2);
  EXPECT_EQ(item->GetValuesAsText(), "a; c; d");
  item->ClearValues();
  EXPECT_EQ(item->GetCount(), 0);
  item->SetValue("v");
  EXPECT_EQ(header->GetHeaderStr("X"), "v");
  EXPECT_EQ(header->Replace("X", "w")->GetValue(), "w");
  header->Delete(0);
  header->DeleteByName("received");
  EXPECT_EQ(header->GetItems(0)->GetValue(), "2");
  header->Clear();
  EXPECT_EQ(header->GetCount(), 0);
}

TEST_F(MailAdapterTest, ShowsFieldsAsLists) {
  const TRef<IHeader> header = mail_->GetHeader();
  const TRef<IHeaderItem> second = header->GetItems(1);
  EXPECT_EQ(second->GetValue(), "2");
  EXPECT_EQ(header->IndexOfItem(second.Get()), 0) << "found by its name";
  EXPECT_EQ(header->IndexOfItem(nullptr), -1);
  EXPECT_EQ(second->GetValues(), second->GetValues());
  second->GetValues()->Add("x=y");
  EXPECT_EQ(second->GetValuesAsText(), "2; x=y");
  second->SetValues(nullptr);
  EXPECT_EQ(second->GetCount(), 0);
  EXPECT_FALSE(header->GetHeader("none"));
  second->Delete();
  EXPECT_EQ(header->GetCount(), 3);
  EXPECT_THROW(second->GetName(), EError);
  EXPECT_THROW(header->GetItems(-1), EListError);
  const TRef<IHeader> copy = mail_->GetParts(0)->GetHeader();
  copy->Assign(header.Get());
  EXPECT_EQ(copy->GetHeaderStr("Content-Type"), "multipart/mixed");
  EXPECT_EQ(copy->GetHeader("content-type")->GetCount(), 2);
  copy->Assign(nullptr);
  EXPECT_EQ(copy->GetCount(), 0);
}

TEST_F(MailAdapterTest, ReadsAndReplacesTexts) {
  ASSERT_EQ(mail_->GetTextCount(), 1);
  const TRef<IMailText> text = mail_->GetTexts(0);
  EXPECT_EQ(text->GetText(), "ABC");
  text->SetText("abcd");
  EXPECT_EQ(text->GetBody()->GetStrings(0), "YWJjZA==");
  EXPECT_EQ(text->GetEncodeType(), eBase64);
  EXPECT_EQ(text->DecodedContent(nullptr), 6u);
  EXPECT_EQ(text.As<IMailAttachment>()->GetFileName(), "n") << "a text has its name only";
  EXPECT_EQ(mail_->GetAttachments(0)->GetFileName(), "f.txt");
  EXPECT_THROW(mail_->GetAttachments(1), EListError);
}

TEST_F(MailAdapterTest, CopiesAndTurnsWholeParts) {
  const TRef<IMailPart> part = mail_->Add();
  const auto copied = [&](const TRef<IMailPart>& target) {
    return target->GetCount() == 2 && target->GetBody()->GetText() == "preamble\r\n" &&
           target->GetParts(0)->GetBody()->GetText() == "QUJD\r\n" &&
           target->GetParts(1)->IsAttachment() && target->GetHeader()->GetCount() == 4;
  };
  auto other = std::make_unique<TMail>();
  TMemoryStream stream{std::string_view(kMail)};
  other->LoadFromStream(stream);
  const TRef<IMail> source = MailAdapterOwned(std::move(other));
  part->Assign(source.Get());
  EXPECT_TRUE(copied(part));
  part->Assign(source.Get());
  EXPECT_TRUE(copied(part)) << "over what was there";
  part->Assign(nullptr);
  EXPECT_EQ(part->GetCount() + part->GetBody()->GetCount() + part->GetHeader()->GetCount(), 0);
  part->Assign(mail_.Get());
  EXPECT_EQ(part->GetCount(), 3) << "the mail that it belongs to, and itself in there";
  EXPECT_EQ(part->GetParts(2)->GetCount(), 0);
  part->Assign(nullptr);
  mail_->Move(2, 0);
  EXPECT_EQ(mail_->GetParts(0)->GetHeader()->GetCount(), 0);
  mail_->Delete(0);
  mail_->Exchange(0, 1);
  EXPECT_TRUE(mail_->GetParts(0)->IsAttachment());
}

TEST_F(MailAdapterTest, ReadsAndWritesAddressLists) {
  const TRef<IStringList> list = mail_->GetToList();
  EXPECT_EQ(list->GetSeparateText("|"), "a@b|\"C\" <c@d>");
  mail_->ExtractEmailAddresses(list.Get());
  EXPECT_EQ(list->GetSeparateText("|"), "a@b|c@d");
  mail_->SetCcList(list.Get());
  EXPECT_EQ(mail_->GetCc(), "a@b\r\n\tc@d");
  mail_->SetToList(nullptr);
  EXPECT_EQ(mail_->GetTo(), "");
  EXPECT_GE(mail_->GetHeader()->IndexOf("To"), 0);
}

TEST_F(MailAdapterTest, APartIsNoMail) {
  const TRef<IMail> part = mail_->GetParts(1).As<IMail>();
  part->SetSubject("x");
  part->DeleteText(0);
  part->Reset();
  part->SetToList(nullptr);
  EXPECT_EQ(part->GetSubject(), "");
  EXPECT_EQ(part->GetAttachmentCount(), 0);
  EXPECT_FALSE(part->GetAttachments(0));
  EXPECT_FALSE(part->GetToList());
  EXPECT_EQ(part->GetHeader()->GetCount(), 1);
  const TRef<IStringList> list = ListOf({"J <j@b>"});
  part->ExtractEmailAddresses(list.Get());
  EXPECT_EQ(list->GetStrings(0), "J <j@b>");
  EXPECT_EQ(part->ExtractEmailAddress("J <j@b>"), "j@b");
}

TEST(MailAdapter, SavesWhatChangedAndForgetsItOnReset) {
  const TTempFolder folder;
  const std::string file = folder.Path("mail");
  const std::string original = std::string(kMail) + "dropped by writing";
  for (const bool keepBodies : {true, false}) {
    SCOPED_TRACE(keepBodies);
    folder.Write("mail", original);
    auto model = std::make_unique<TMail>();
    model->KeepBodies = keepBodies;
    model->LoadFromFile(file);
    const TRef<IMail> mail = MailAdapterOwned(std::move(model));
    const TRef<IStringList> body = mail->GetBody();
    mail->GetParts(1)->GetHeader()->SetHeaderStr("X", "y");
    mail->Save();
    EXPECT_TRUE(folder.Read("mail") == original) << "a part's field marks no mail";
    mail->SetSubject("s");
    body->Clear();
    mail->DeleteAttachment(0);
    EXPECT_EQ(mail->GetAttachmentCount(), 0);
    mail->Reset();
    EXPECT_EQ(mail->GetSubject(), "");
    EXPECT_EQ(mail->GetBody()->GetText(), "preamble\r\n");
    EXPECT_EQ(body->GetCount(), 1) << "the list given out before";
    EXPECT_EQ(mail->GetAttachmentCount(), 1);
    mail->SetSubject("s");
    mail->Save();
    std::string expected(kMail);
    expected.insert(expected.find("\r\n\r\n") + 2, "Subject: s\r\n");
    EXPECT_EQ(folder.Read("mail"), expected);
  }
}

}  // namespace
}  // namespace quarda
