// Whether the time for a byte stays the same when a mail of a hostile shape grows: each shape at a
// quarter, a half and the whole of its size. Meant to run on a small stack, so that recursion along
// the nesting would show as well.
#include <MailRead.h>
#include <Utils.h>

#include <cstdio>
#include <cstring>

#include "MailFactory.h"
#include "Measure.h"

namespace quarda::bench {

namespace {

// A quadratic step costs four times as much for a byte at n as at n/4; the caches, which the larger
// mails no longer fit into, explain up to twice.
constexpr double kLinearUpTo = 2.5;

/// Everything that a chain of checks does with a mail.
size_t ReadWholly(const TTextBlock& block) {
  TMemoryStream stream(block);
  TMail mail;
  mail.LoadFromStream(stream);
  size_t seen = mail.GetSubject().size() + mail.GetFrom().size();
  TStringList addresses;
  mail.GetToList(addresses);
  seen += addresses.Count();
  for (size_t i = 0; i < mail.GetAttachmentCount(); ++i) {
    seen += mail.GetAttachments(i).GetFileName().size();
    seen += mail.GetAttachments(i).DecodedContent().size();
  }
  for (size_t i = 0; i < mail.GetTextCount(); ++i) {
    seen += mail.GetTexts(i).DecodedContent().size();
  }
  TMemoryStream saved;
  mail.SaveToStream(saved);
  return seen + saved.View().size();
}

TTextBlock Block(const std::string& text) {
  TTextBlock block(text.size());
  std::memcpy(block.Data(), text.data(), text.size());
  return block;
}

/// Nanoseconds per byte at one size.
double MailCost(const TShape& shape, size_t n) {
  const TTextBlock block = Block(shape.make(n));
  const double seconds = MedianSeconds({{"", [&] { return ReadWholly(block); }}}, 3)[0];
  return seconds * 1e9 / static_cast<double>(block.Size());
}

double PatternCost(size_t n) {
  const std::string text(n, 'a');
  std::string pattern;
  for (size_t i = 0; i < n / 2; ++i) pattern += "*a";
  pattern += 'b';
  const double seconds =
      MedianSeconds({{"", [&] { return static_cast<size_t>(MatchText(text, pattern)); }}}, 3)[0];
  return seconds * 1e9 / static_cast<double>(text.size() + pattern.size());
}

template <class Cost>
void PrintGrowth(std::string_view name, size_t n, const Cost& cost) {
  const double first = cost(n / 4);
  const double second = cost(n / 2);
  const double third = cost(n);
  const auto text = [](double value) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.2f", value);
    return std::string(buffer);
  };
  PrintRow({std::string(name), std::to_string(n), text(first), text(second), text(third),
            third / first <= kLinearUpTo ? "linear" : "x " + text(third / first)});
}

}  // namespace

}  // namespace quarda::bench

int main() {
  using namespace quarda::bench;
  PrintTitle("Load, walk, decode, save: nanoseconds per byte as a hostile mail grows");
  PrintRow({"shape", "n", "at n/4", "at n/2", "at n", "goal: linear"});
  for (const TShape& shape : HostileShapes()) {
    PrintGrowth(shape.name, shape.n, [&](size_t n) { return MailCost(shape, n); });
  }
  PrintGrowth("wildcard pattern of stars", 1000000, PatternCost);
}
