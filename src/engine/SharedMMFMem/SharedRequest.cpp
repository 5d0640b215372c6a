// Behind the command line: a mark for the state, a hash of the line, the circumstances, the folder.
#include "SharedRequest.h"

#include <HashText.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace quarda {
namespace {

constexpr std::string_view kAsked = "as-asked:";
constexpr std::string_view kAccepted = "accepted:";
static_assert(kAsked.size() == kAccepted.size());
constexpr size_t kLineDigits = 8;
constexpr size_t kDigits = 16;
constexpr size_t kTermsSize = kAsked.size() + kLineDigits + kDigits;  // without the folder

/// The text that begins there, up to its NUL or the end of the field.
std::string_view TextAt(const SharedEngineRecord& record, size_t at) {
  const auto& field = record.RequestCommandLine;
  if (at >= std::size(field)) return {};
  return {field + at, std::find(field + at, std::end(field), '\0')};
}

/// Where what stands behind the command line begins.
size_t TermsStart(const SharedEngineRecord& record) { return TextAt(record, 0).size() + 1; }

/// Stands for a command line in its terms. Those of an earlier request can lie behind a line of the
/// same length from somebody who writes the line alone.
std::string LineMark(std::string_view line) {
  return platform::HashText(line).substr(0, kLineDigits);
}

bool IsTerms(std::string_view text, std::string_view line) {
  return text.size() > kTermsSize && (text.starts_with(kAsked) || text.starts_with(kAccepted)) &&
         text.substr(kAsked.size(), kLineDigits) == LineMark(line);
}

}  // namespace

bool FitsRequest(const TSharedRequest& request) noexcept {
  return request.line.size() + 1 + kTermsSize + request.folder.size() <=
         sizeof(SharedEngineRecord::RequestCommandLine);
}

void WriteRequest(SharedEngineRecord& record, const TSharedRequest& request) {
  std::string text = request.line;
  text.append(1, '\0').append(kAsked).append(LineMark(request.line));
  text.append(request.circumstances).append(request.folder);
  std::memset(record.RequestCommandLine, 0, sizeof record.RequestCommandLine);
  std::memcpy(record.RequestCommandLine, text.data(), text.size());
}

TSharedRequest ReadRequest(const SharedEngineRecord& record) {
  TSharedRequest request{std::string(TextAt(record, 0)), {}, {}};
  std::string_view terms = TextAt(record, TermsStart(record));
  if (IsTerms(terms, request.line)) {
    terms.remove_prefix(kAsked.size() + kLineDigits);
    request.circumstances = terms.substr(0, kDigits);
    request.folder = terms.substr(kDigits);
  }
  return request;
}

void AcceptRequest(SharedEngineRecord& record) {
  const size_t at = TermsStart(record);
  if (!IsTerms(TextAt(record, at), TextAt(record, 0))) return;
  std::memcpy(record.RequestCommandLine + at, kAccepted.data(), kAccepted.size());
}

bool IsAcceptedRequest(const SharedEngineRecord& record, const TSharedRequest& request) {
  return TextAt(record, TermsStart(record)).starts_with(kAccepted) &&
         ReadRequest(record) == request;
}

}  // namespace quarda
