#include "SharedRequest.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace quarda {
namespace {

constexpr std::string_view kAsked = "as-asked:";
constexpr std::string_view kAccepted = "accepted:";
static_assert(kAsked.size() == kAccepted.size());
constexpr size_t kDigits = 16;

/// The text that begins there, up to its NUL or the end of the field.
std::string_view TextAt(const SharedEngineRecord& record, size_t at) {
  const auto& field = record.RequestCommandLine;
  if (at >= std::size(field)) return {};
  return {field + at, std::find(field + at, std::end(field), '\0')};
}

/// Where what stands behind the command line begins.
size_t TermsStart(const SharedEngineRecord& record) { return TextAt(record, 0).size() + 1; }

bool IsTerms(std::string_view text) {
  return text.size() > kAsked.size() + kDigits &&
         (text.starts_with(kAsked) || text.starts_with(kAccepted));
}

}  // namespace

bool FitsRequest(const TSharedRequest& request) noexcept {
  return request.line.size() + 1 + kAsked.size() + kDigits + request.folder.size() <=
         sizeof(SharedEngineRecord::RequestCommandLine);
}

void WriteRequest(SharedEngineRecord& record, const TSharedRequest& request) {
  std::string text = request.line;
  text.append(1, '\0').append(kAsked).append(request.circumstances).append(request.folder);
  std::memset(record.RequestCommandLine, 0, sizeof record.RequestCommandLine);
  std::memcpy(record.RequestCommandLine, text.data(), text.size());
}

TSharedRequest ReadRequest(const SharedEngineRecord& record) {
  TSharedRequest request{std::string(TextAt(record, 0)), {}, {}};
  std::string_view terms = TextAt(record, TermsStart(record));
  if (IsTerms(terms)) {
    terms.remove_prefix(kAsked.size());
    request.circumstances = terms.substr(0, kDigits);
    request.folder = terms.substr(kDigits);
  }
  return request;
}

void AcceptRequest(SharedEngineRecord& record) noexcept {
  const size_t at = TermsStart(record);
  if (!IsTerms(TextAt(record, at))) return;
  std::memcpy(record.RequestCommandLine + at, kAccepted.data(), kAccepted.size());
}

bool IsAcceptedRequest(const SharedEngineRecord& record, const TSharedRequest& request) {
  return TextAt(record, TermsStart(record)).starts_with(kAccepted) &&
         ReadRequest(record) == request;
}

}  // namespace quarda
