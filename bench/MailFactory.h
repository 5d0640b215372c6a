// Mails to measure with: ordinary ones of several sizes, and shapes that are cheap to send and
// expensive to read. Made from a fixed seed, so every run measures the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quarda::bench {

/// A small generator with the same numbers on every system.
class TRandom {
 public:
  explicit TRandom(uint64_t seed) : state_(seed * 2862933555777941757u + 3037000493u) {}
  uint32_t Below(uint32_t limit);

 private:
  uint64_t state_;
};

/// The piece that many times.
std::string Repeat(std::string_view piece, size_t count);

/// Ordinary mails of about the given size: many header fields, a text as plain and as HTML, and an
/// attachment where the size leaves room for one.
std::vector<std::string> OrdinaryMails(size_t count, size_t size, uint64_t seed);
/// A short text and one base64 attachment of about `size` encoded bytes.
std::string AttachmentMail(size_t size, uint64_t seed);
/// A TNEF container of that many files of `size` bytes, as mail programs pack their attachments.
std::string Container(size_t files, size_t size, uint64_t seed);
/// A short text and such a container in base64.
std::string ContainerMail(size_t files, size_t size, uint64_t seed);
/// That many attached mails of one line each.
std::string AttachedMailsMail(size_t mails);
/// A mail with that one attached.
std::string MailAround(const std::string& mail);
/// That many attachments of one content.
std::string SameAttachments(size_t n);
/// A container of that many files of one byte.
std::string SmallFilesMail(size_t files);
/// Many of the hostile shapes, one behind the other, as one mail.
std::string AllShapesMail(size_t n);
/// A multipart of that many small parts.
std::string ManyPartsMail(size_t parts, uint64_t seed);

/// About `size` bytes of base64 in lines of 76 characters, ended by CR LF.
std::string Base64Lines(size_t size, uint64_t seed);
/// About `size` bytes of quoted-printable as mail programs write it for western languages.
std::string QuotedPrintableLines(size_t size, uint64_t seed);

/// A shape that asks for a reader with a quadratic step. `make(n)` grows linearly with n.
struct TShape {
  std::string_view name;
  size_t n;  // the largest size to measure
  std::string (*make)(size_t n);
};
std::vector<TShape> HostileShapes();

}  // namespace quarda::bench
