// How fast mails are loaded and decoded, beside the libraries that do the same and a copy of
// memory.
#include <BodyLines.h>
#include <Encodings.h>
#include <StringList.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "MailFactory.h"
#include "Measure.h"
#include "Readers.h"

namespace quarda::bench {

namespace {

struct TMailSet {
  std::string name;
  std::vector<std::string> mails;
  // How many times faster than the others loading should be, and loading with decoding; 0 = no
  // goal.
  double loadGMime, loadMimetic, decodeGMime;
};

std::vector<TMailSet> MailSets() {
  return {{"2 KB mails", OrdinaryMails(50, 2048, 1), 20, 3, 0},
          {"20 KB mails", OrdinaryMails(50, 20480, 2), 6, 1.2, 5},
          {"10 MB base64 attachment", {AttachmentMail(10 << 20, 3)}, 1.5, 0, 2.5},
          {"1,000 parts", {ManyPartsMail(1000, 4)}, 10, 0, 0}};
}

size_t TotalSize(const std::vector<std::string>& mails) {
  size_t size = 0;
  for (const std::string& mail : mails) size += mail.size();
  return size;
}

std::string WithGoal(double ratio, double goal) {
  if (goal == 0) return Times(ratio);
  char text[48];
  std::snprintf(text, sizeof text, "%.2f x (%g)", ratio, goal);
  return text;
}

struct TReaders {
  std::unique_ptr<TReader> engine, gmime, mimetic;
};

/// A row: the speed of each reader, and the engine's lead over the others.
void PrintReaders(const TMailSet& set, const TReaders& readers, size_t (TReader::*job)() const,
                  double goalGMime, double goalMimetic) {
  std::vector<TWork> works;
  for (const TReader* reader : {readers.engine.get(), readers.gmime.get(), readers.mimetic.get()}) {
    if (reader != nullptr) works.push_back({"", [=] { return (reader->*job)(); }});
  }
  const std::vector<double> seconds = MedianSeconds(works);
  const double bytes = static_cast<double>(TotalSize(set.mails));
  std::vector<std::string> row = {set.name, MegabytesPerSecond(bytes, seconds[0])};
  std::vector<std::string> leads;
  size_t next = 1;
  const auto add = [&](const TReader* reader, double goal) {
    row.push_back(reader ? MegabytesPerSecond(bytes, seconds[next]) : "-");
    leads.push_back(reader ? WithGoal(seconds[next++] / seconds[0], goal) : "-");
  };
  add(readers.gmime.get(), goalGMime);
  add(readers.mimetic.get(), goalMimetic);
  row.insert(row.end(), leads.begin(), leads.end());
  PrintRow(row);
}

/// Readers that find different things would not be comparable.
void CompareResults(const TMailSet& set, const TReaders& readers) {
  const size_t parts = readers.engine->LoadAll();
  for (const TReader* other : {readers.gmime.get(), readers.mimetic.get()}) {
    if (other == nullptr || other->LoadAll() == parts) continue;
    std::printf("note: %s: the readers find %zu and %zu parts\n", set.name.c_str(), parts,
                other->LoadAll());
  }
}

void MeasureReaders() {
  const std::vector<TMailSet> sets = MailSets();
  std::vector<TReaders> readers;
  for (const TMailSet& set : sets) {
    readers.push_back({EngineReader(set.mails), GMimeReader(set.mails), MimeticReader(set.mails)});
    CompareResults(set, readers.back());
  }
  const std::vector<std::string> columns = {"",        "engine",         "GMime",
                                            "mimetic", "x GMime (goal)", "x mimetic (goal)"};
  PrintTitle("Load from memory into the tree of parts");
  PrintRow(columns);
  for (size_t i = 0; i < sets.size(); ++i) {
    PrintReaders(sets[i], readers[i], &TReader::LoadAll, sets[i].loadGMime, sets[i].loadMimetic);
  }
  PrintTitle("Load and decode every body");
  PrintRow(columns);
  for (size_t i = 0; i < sets.size(); ++i) {
    PrintReaders(sets[i], readers[i], &TReader::LoadAndDecodeAll, sets[i].decodeGMime, 0);
  }
}

TStringList Lines(const std::string& text) {
  TTextBlock block(text.size());
  std::memcpy(block.Data(), text.data(), text.size());
  TStringList lines;
  lines.SetText(std::move(block));
  return lines;
}

/// A row: decoding by the engine and by GMime and copying the same text.
void PrintDecoder(const std::string& name, const std::string& text, const TWork& engine,
                  const TWork& gmime, double goalCopy, double goalGMime, std::string& target) {
  const bool hasGMime = gmime.run() != 0;
  std::vector<TWork> works = {engine, {"memcpy", [&] {
                                         std::memcpy(target.data(), text.data(), text.size());
                                         return static_cast<size_t>(target[text.size() / 2]);
                                       }}};
  if (hasGMime) works.push_back(gmime);
  const std::vector<double> seconds = MedianSeconds(works, 25);
  const double bytes = static_cast<double>(text.size());
  PrintRow({name, MegabytesPerSecond(bytes, seconds[0]), MegabytesPerSecond(bytes, seconds[1]),
            hasGMime ? MegabytesPerSecond(bytes, seconds[2]) : "-",
            WithGoal(seconds[1] / seconds[0], goalCopy),
            hasGMime ? WithGoal(seconds[2] / seconds[0], goalGMime) : "-"});
}

void MeasureBase64(const std::string& name, size_t size) {
  const std::string text = Base64Lines(size, 5);
  const TStringList lines = Lines(text);
  std::string target(text.size(), '\0');
  const TWork engine = {"engine", [&] {
                          size_t capacity = target.size();
                          DecodeLines(TBodyLines(lines), target.data(), capacity, meBase64);
                          return capacity;
                        }};
  const TWork gmime = {"GMime", [&] { return GMimeDecodeBase64(text, target.data()); }};
  if (const size_t other = gmime.run(); other != 0 && engine.run() != other) {
    std::printf("note: the base64 decoders disagree: %zu and %zu bytes\n", engine.run(), other);
  }
  PrintDecoder(name, text, engine, gmime, 0.2, 0, target);
}

void MeasureQuotedPrintable(const std::string& name, size_t size) {
  const std::string text = QuotedPrintableLines(size, 6);
  const TStringList lines = Lines(text);
  std::string target(text.size(), '\0');
  const TWork byLine = {
      "engine",
      [&] { return DecodeQuotedPrintableLines(TBodyLines(lines), target.data(), target.size()); }};
  const TWork inOnePiece = {"engine", [&] { return QuotedPrintableToAnsi(text, false).size(); }};
  const TWork gmime = {"GMime", [&] { return GMimeDecodeQuotedPrintable(text, target.data()); }};
  PrintDecoder("quoted-printable, lines, " + name, text, byLine, gmime, 0, 2.5, target);
  PrintDecoder("quoted-printable, text, " + name, text, inOnePiece, gmime, 0, 2.5, target);
}

void MeasureDecoders() {
  PrintTitle("Decode in memory");
  PrintRow({"", "engine", "memcpy", "GMime", "x memcpy (goal)", "x GMime (goal)"});
  MeasureBase64("base64, 76 columns, 64 KB", 64 << 10);
  MeasureBase64("base64, 76 columns, 10 MB", 10 << 20);
  MeasureQuotedPrintable("64 KB", 64 << 10);
  MeasureQuotedPrintable("2 MB", 2 << 20);
}

}  // namespace

}  // namespace quarda::bench

int main() {
  quarda::bench::MeasureReaders();
  quarda::bench::MeasureDecoders();
}
