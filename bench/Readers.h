// The mail readers that are compared: the engine's own, and the libraries that were there when this
// was built.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quarda::bench {

/// Reads a set of mails that lies in memory. The results count what was read, so that no work can
/// be left out and a reader that stops early shows.
class TReader {
 public:
  virtual ~TReader() = default;
  virtual size_t Count() const = 0;
  /// Loads a mail into a tree of parts and takes the tree down again; returns the number of parts.
  virtual size_t Load(size_t mail) const = 0;
  /// The same, and decodes the body of every part that has no parts; returns the decoded bytes.
  virtual size_t LoadAndDecode(size_t mail) const = 0;

  size_t LoadAll() const;
  size_t LoadAndDecodeAll() const;
};

std::unique_ptr<TReader> EngineReader(const std::vector<std::string>& mails);
/// Nothing when the library was not there at build time.
std::unique_ptr<TReader> GMimeReader(const std::vector<std::string>& mails);
std::unique_ptr<TReader> MimeticReader(const std::vector<std::string>& mails);

/// GMime's decoders from buffer to buffer; 0 without the library. The target must be as large as
/// the text.
size_t GMimeDecodeBase64(std::string_view text, char* target);
size_t GMimeDecodeQuotedPrintable(std::string_view text, char* target);

}  // namespace quarda::bench
