#include "MailFactory.h"

#include <algorithm>
#include <array>

namespace quarda::bench {

namespace {

constexpr std::string_view kBase64 =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::string_view, 24> kWords = {
    "the",   "server", "mail",     "Monday", "report",  "please", "and",  "contract",
    "of",    "garden", "invoice",  "to",     "meeting", "answer", "with", "question",
    "price", "a",      "delivery", "for",    "in",      "summer", "late", "customer"};

std::string Text(TRandom& random, size_t size) {
  std::string text;
  size_t lineStart = 0;
  while (text.size() < size) {
    text += kWords[random.Below(kWords.size())];
    if (text.size() - lineStart > 64) {
      text += "\r\n";
      lineStart = text.size();
    } else {
      text += ' ';
    }
  }
  return text + "\r\n";
}

std::string Number(size_t value) { return std::to_string(value); }

std::string LittleEndian(uint64_t value, int bytes) {
  std::string text;
  for (; bytes > 0; --bytes, value >>= 8) text += static_cast<char>(value);
  return text;
}

/// A record of an attachment.
std::string TnefRecord(uint32_t attribute, const std::string& data) {
  uint32_t sum = 0;
  for (const char c : data) sum += static_cast<unsigned char>(c);
  return '\2' + LittleEndian(attribute, 4) + LittleEndian(data.size(), 4) + data +
         LittleEndian(sum, 2);
}

/// In lines of 76 characters.
std::string Base64Of(std::string bytes) {
  const size_t fill = (3 - bytes.size() % 3) % 3;
  bytes.append(fill, '\0');
  std::string text;
  text.reserve(bytes.size() / 57 * 78 + 80);
  for (size_t at = 0; at < bytes.size(); at += 3) {
    if (at > 0 && at % 57 == 0) text += "\r\n";
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(bytes[at + i]); };
    const int group = byte(0) << 16 | byte(1) << 8 | byte(2);
    for (int shift = 18; shift >= 0; shift -= 6) {
      text += kBase64[static_cast<size_t>(group >> shift & 63)];
    }
  }
  return text.replace(text.size() - fill, fill, fill, '=') + "\r\n";
}

std::string HtmlText(TRandom& random, size_t size) {
  std::string html = "<html><head><title>Mail</title></head><body>\r\n";
  while (html.size() < size) {
    html +=
        "<p style=3D\"margin:0\">" + QuotedPrintableLines(160, random.Below(1u << 30)) + "</p>\r\n";
  }
  return html + "</body></html>\r\n";
}

std::string Header(TRandom& random, std::string_view contentType) {
  std::string id = Number(random.Below(1u << 30));
  std::string header;
  // No sender of a domain that the default settings take for a faked one: its mail would be
  // changed.
  header += "Return-Path: <sender-" + id + "@sender.example>\r\n";
  for (int hop = 0; hop < 3; ++hop) {
    header += "Received: from relay" + Number(random.Below(100)) + ".example.com (192.0.2." +
              Number(random.Below(255)) + ")\r\n\tby mx" + Number(random.Below(10)) +
              ".example.org with ESMTP id " + Number(random.Below(1u << 30)) +
              ";\r\n\tTue, 3 Mar 2026 09:1" + Number(random.Below(10)) + ":00 +0100\r\n";
  }
  header += "From: \"Sender " + id + "\" <sender-" + id + "@sender.example>\r\n";
  header +=
      "To: =?iso-8859-1?Q?Andr=E9?= <andre@sender.example>, Ben Muster <ben@sender.example>\r\n";
  header += "Subject: =?utf-8?Q?Gr=C3=BC=C3=9Fe?= " + Text(random, 20);
  header += "Date: Tue, 3 Mar 2026 09:10:00 +0100\r\nMessage-ID: <" + id + "@sender.example>\r\n";
  header += "MIME-Version: 1.0\r\nX-Mailer: Sample Mailer 1.0\r\nContent-Type: ";
  header += contentType;
  return header + "\r\n\r\n";
}

std::string Alternative(TRandom& random, std::string_view boundary, size_t size) {
  const std::string open = "--" + std::string(boundary);
  std::string body = open +
                     "\r\nContent-Type: text/plain; charset=iso-8859-1\r\n"
                     "Content-Transfer-Encoding: quoted-printable\r\n\r\n";
  body += QuotedPrintableLines(size / 3, random.Below(1u << 30));
  body += open +
          "\r\nContent-Type: text/html; charset=iso-8859-1\r\n"
          "Content-Transfer-Encoding: quoted-printable\r\n\r\n";
  body += HtmlText(random, size - size / 3);
  return body + open + "--\r\n";
}

std::string Attachment(std::string_view boundary, std::string_view content) {
  std::string part = "--" + std::string(boundary) +
                     "\r\nContent-Type: application/pdf; name=\"report.pdf\"\r\n"
                     "Content-Transfer-Encoding: base64\r\n"
                     "Content-Disposition: attachment;\r\n\tfilename=\"report.pdf\"\r\n\r\n";
  part += content;
  return part;
}

std::string OrdinaryMail(TRandom& random, size_t size) {
  constexpr size_t kHeaderSize = 900;
  const size_t room = size > kHeaderSize ? size - kHeaderSize : 0;
  if (room < 4096) {
    return Header(random, "multipart/alternative;\r\n\tboundary=\"=_alt_1\"") +
           Alternative(random, "=_alt_1", room > 400 ? room - 400 : 0);
  }
  std::string mail = Header(random, "multipart/mixed;\r\n\tboundary=\"=_mix_1\"");
  mail += "--=_mix_1\r\nContent-Type: multipart/alternative; boundary=\"=_alt_1\"\r\n\r\n";
  mail += Alternative(random, "=_alt_1", room / 2);
  mail += Attachment("=_mix_1", Base64Lines(room / 2 - 400, random.Below(1u << 30)));
  return mail + "--=_mix_1--\r\n";
}

// The shapes. Each is one step of a reader, repeated.

std::string WithField(std::string_view name, std::string_view value) {
  std::string mail(name);
  mail += ": ";
  mail += value;
  return mail + "\r\nContent-Type: text/plain\r\n\r\nbody\r\n";
}

std::string Semicolons(size_t n) { return WithField("X-Values", Repeat(";", n)); }
std::string Parameters(size_t n) {
  return WithField("Content-Disposition", "attachment" + Repeat(";a=b", n));
}
std::string WordStarts(size_t n) { return WithField("Subject", Repeat("=?", n)); }
std::string EncodedWords(size_t n) {
  return WithField("Subject", Repeat("=?iso-8859-1?Q?a=E4?= ", n));
}
std::string FoldedAddresses(size_t n) {
  return WithField("To", Repeat("somebody@sender.example,\r\n\t", n) + "last@sender.example");
}

std::string Nested(size_t n) {
  std::string mail;
  for (size_t i = 0; i < n; ++i) {
    mail += "Content-Type: multipart/mixed; boundary=b" + Number(i) + "\r\n\r\n--b" + Number(i) +
            "\r\n";
  }
  return mail + "Content-Type: text/plain\r\n\r\ninnermost\r\n";
}

std::string Siblings(size_t n) {
  return "Content-Type: multipart/mixed; boundary=b\r\n\r\n" +
         Repeat("--b\r\nContent-Type: text/plain\r\n\r\nx\r\n", n) + "--b--\r\n";
}

std::string UnnamedAttachments(size_t n) {
  return "Content-Type: multipart/mixed; boundary=b\r\n\r\n" +
         Repeat("--b\r\nContent-Disposition: attachment\r\n\r\nx\r\n", n) + "--b--\r\n";
}

std::string OpenBoundaries(size_t n) {
  return Nested(200) + Repeat("--no boundary of these\r\n", n);
}

std::string ManyFields(size_t n) {
  std::string mail;
  for (size_t i = 0; i < n; ++i) mail += "X-Field-" + Number(i) + ": value\r\n";
  return mail + "\r\nbody\r\n";
}

std::string OneLongField(size_t n) { return "X-All: " + std::string(n, 'x'); }
std::string FoldedForever(size_t n) { return "X-Folded: a" + Repeat("\r\n b", n); }
std::string LongLine(size_t n) { return "Subject: x\r\n\r\n" + std::string(n, 'x'); }
std::string EmptyLines(size_t n) { return "Subject: x\r\n\r\n" + Repeat("\n", n); }

std::string QuotedEnds(size_t n) {
  return "Content-Transfer-Encoding: quoted-printable\r\n\r\n" + Repeat("=\r\n", n);
}

}  // namespace

std::string Repeat(std::string_view piece, size_t count) {
  std::string text;
  text.reserve(piece.size() * count);
  for (size_t i = 0; i < count; ++i) text += piece;
  return text;
}

uint32_t TRandom::Below(uint32_t limit) {
  state_ ^= state_ << 13;
  state_ ^= state_ >> 7;
  state_ ^= state_ << 17;
  return static_cast<uint32_t>((state_ >> 32) % limit);
}

std::vector<std::string> OrdinaryMails(size_t count, size_t size, uint64_t seed) {
  TRandom random(seed);
  std::vector<std::string> mails;
  for (size_t i = 0; i < count; ++i) mails.push_back(OrdinaryMail(random, size));
  return mails;
}

std::string AttachmentMail(size_t size, uint64_t seed) {
  TRandom random(seed);
  std::string mail = Header(random, "multipart/mixed; boundary=\"=_mix_1\"");
  mail += "--=_mix_1\r\nContent-Type: text/plain\r\n\r\n" + Text(random, 500);
  mail += Attachment("=_mix_1", Base64Lines(size, seed));
  return mail + "--=_mix_1--\r\n";
}

std::string Container(size_t files, size_t size, uint64_t seed) {
  TRandom random(seed);
  std::string container = LittleEndian(0x223E9F78, 4) + LittleEndian(1, 2);
  for (size_t i = 0; i < files; ++i) {
    std::string data(size, '\0');
    for (char& c : data) c = static_cast<char>(random.Below(256));
    container += TnefRecord(0x00069002, std::string(14, '\1'));
    container += TnefRecord(0x00018010, "file" + Number(i) + ".doc" + '\0');
    container += TnefRecord(0x0006800F, data);
  }
  return container;
}

std::string ContainerMail(size_t files, size_t size, uint64_t seed) {
  TRandom random(seed);
  std::string mail = Header(random, "multipart/mixed; boundary=\"=_mix_1\"");
  mail += "--=_mix_1\r\nContent-Type: text/plain\r\n\r\n" + Text(random, 500);
  mail +=
      "--=_mix_1\r\nContent-Type: application/ms-tnef; name=\"winmail.dat\"\r\n"
      "Content-Transfer-Encoding: base64\r\n\r\n";
  return mail + Base64Of(Container(files, size, seed)) + "--=_mix_1--\r\n";
}

std::string AttachedMailsMail(size_t mails) {
  std::string mail = "Subject: x\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n";
  for (size_t i = 0; i < mails; ++i) {  // no two the same, or the copies would go
    mail +=
        "--b\r\nContent-Disposition: attachment; filename=m.eml\r\n\r\n"
        "Subject: y\r\n\r\nText " +
        Number(i) + "\r\n";
  }
  return mail + "--b--\r\n";
}

std::string MailAround(const std::string& mail) {
  return "Subject: x\r\nMIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=around\r\n\r\n"
         "--around\r\nContent-Type: message/rfc822; name=m.eml\r\n"
         "Content-Disposition: attachment; filename=m.eml\r\n\r\n" +
         mail + "\r\n--around--\r\n";
}

std::string SameAttachments(size_t n) {
  return "Subject: x\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n" +
         Repeat("--b\r\nContent-Disposition: attachment; filename=a.txt\r\n\r\nthe same\r\n", n) +
         "--b--\r\n";
}

std::string SmallFilesMail(size_t files) { return ContainerMail(files, 1, 5); }

std::string AllShapesMail(size_t n) {
  std::string mail =
      "Content-Type: multipart/mixed; boundary=all\r\nTo: " + Repeat("a@b,\r\n\t", n) +
      "last@sender.example\r\nX-Values: " + Repeat(";", n) +
      "\r\nSubject: " + Repeat("=?iso-8859-1?Q?a?= ", n) + "\r\n";
  for (size_t i = 0; i < n; ++i) mail += "X-" + Number(i) + ": v\r\n";
  mail += "\r\n--all\r\nContent-Type: text/html\r\n\r\n" +
          Repeat("<script><object><iframe>&lt", n) + "\r\n--all\r\n" + QuotedEnds(n);
  mail += "--all\r\n" + Siblings(n / 4) + "--all\r\n" + EmptyLines(n) + "--all\r\n";
  return mail + Nested(n / 4);
}

std::string ManyPartsMail(size_t parts, uint64_t seed) {
  TRandom random(seed);
  std::string mail = Header(random, "multipart/mixed; boundary=\"=_mix_1\"");
  for (size_t i = 0; i < parts; ++i) {
    mail +=
        "--=_mix_1\r\nContent-Type: text/plain; charset=us-ascii\r\n"
        "Content-Transfer-Encoding: 7bit\r\n\r\n" +
        Text(random, 300);
  }
  return mail + "--=_mix_1--\r\n";
}

std::string Base64Lines(size_t size, uint64_t seed) {
  TRandom random(seed);
  std::string text;
  text.reserve(size + 80);
  while (text.size() < size) {
    for (int i = 0; i < 76; ++i) text += kBase64[random.Below(64)];
    text += "\r\n";
  }
  return text;
}

std::string QuotedPrintableLines(size_t size, uint64_t seed) {
  TRandom random(seed);
  std::string text;
  size_t lineStart = 0;
  while (text.size() < size) {
    text += kWords[random.Below(kWords.size())];
    if (random.Below(6) == 0) text += "=E4";
    text += ' ';
    if (text.size() - lineStart > 62) {
      text += random.Below(4) == 0 ? "\r\n" : "=\r\n";
      lineStart = text.size();
    }
  }
  return text + "\r\n";
}

std::vector<TShape> HostileShapes() {
  return {
      {"semicolons in one field", 500000, Semicolons},
      {"parameters \";a=b\" in one field", 250000, Parameters},
      {"\"=?\" in the subject", 1000000, WordStarts},
      {"encoded words in the subject", 100000, EncodedWords},
      {"folded addresses", 40000, FoldedAddresses},
      {"multiparts inside each other", 100000, Nested},
      {"parts beside each other", 100000, Siblings},
      {"attachments without a name", 100000, UnnamedAttachments},
      {"lines \"--\" below 200 boundaries", 200000, OpenBoundaries},
      {"header fields", 100000, ManyFields},
      {"one field, nothing else", 4000000, OneLongField},
      {"continuation lines, nothing else", 500000, FoldedForever},
      {"one body line", 50000000, LongLine},
      {"empty body lines", 4000000, EmptyLines},
      {"quoted-printable soft breaks", 1000000, QuotedEnds},
  };
}

}  // namespace quarda::bench
