#include "TextStreamer.h"

#include <Errors.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "LineScan.h"

namespace quarda {

TTextStreamer::TTextStreamer(TStream& stream, TStreamerMode mode) : stream_(stream), mode_(mode) {
  Open();
}

TTextStreamer::TTextStreamer(std::unique_ptr<TStream> stream, TStreamerMode mode)
    : owned_(std::move(stream)), stream_(*owned_), mode_(mode) {
  Open();
}

void TTextStreamer::Open() {
  position_ = stream_.Position();
  if (mode_ == TStreamerMode::kWrite) {
    buffer_ = std::make_unique_for_overwrite<char[]>(kCacheSize);
    return;
  }
  content_ = stream_.Content();
  size_ = content_ ? content_->size() : stream_.Size();
  if (!content_) buffer_ = std::make_unique_for_overwrite<char[]>(kBlockSize);
}

TTextStreamer::~TTextStreamer() {
  try {
    Flush();
  } catch (...) {  // whoever wants to know has called Flush
  }
}

void TTextStreamer::RequireMode(TStreamerMode mode) const {
  if (mode_ == mode) return;
  throw EError(mode_ == TStreamerMode::kRead ? "TextStreamer was opened for read only."
                                             : "TextStreamer was opened for write only.");
}

std::string_view TTextStreamer::ReadLn() {
  if (IsEof()) return {};
  lineStart_ = GetPosition();
  lastLine_ = content_ ? LineInMemory() : ReadBufferedLine({});
  return lastLine_;
}

std::string_view TTextStreamer::LineInMemory() noexcept {
  std::string_view rest = Rest();
  const std::string_view line = TakeLine(rest);
  position_ = size_ - rest.size();
  return line;
}

bool TTextStreamer::Fill() {
  if (position_ >= size_) return false;
  const size_t wanted = static_cast<size_t>(std::min<uint64_t>(kBlockSize, size_ - position_));
  buffered_ = stream_.Read(buffer_.get(), wanted);
  index_ = 0;
  position_ += buffered_;
  if (buffered_ == 0) size_ = position_;  // it shrank meanwhile
  return buffered_ > 0;
}

// `begun` is what was fetched of the line already.
std::string_view TTextStreamer::ReadBufferedLine(std::string_view begun) {
  line_.assign(begun);
  while (index_ < buffered_ || Fill()) {
    const char* const from = buffer_.get() + index_;
    const size_t size = buffered_ - index_;
    const auto* lf = static_cast<const char*>(std::memchr(from, '\n', size));
    if (!lf) {
      line_.append(from, size);
      index_ = buffered_;
      continue;
    }
    std::string_view line(from, static_cast<size_t>(lf - from));
    index_ += line.size() + 1;
    if (!line_.empty()) line = line_.append(line);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
  }
  return line_;
}

bool TTextStreamer::ReadToDashes(std::string* skipped) {
  return content_ ? ReadToDashesInMemory(skipped) : ReadToDashesBuffered(skipped);
}

bool TTextStreamer::ReadToDashesInMemory(std::string* skipped) {
  if (IsEof()) return false;
  const std::string_view rest = Rest();
  const size_t found = rest.starts_with("--") ? 0 : FindDashLine(rest);
  const size_t size = std::min(found, rest.size());
  if (skipped) skipped->append(rest.substr(0, size));
  position_ += size;
  if (found == std::string_view::npos) return false;
  ReadLn();
  return true;
}

void TTextStreamer::SkipInBuffer(size_t size, std::string* skipped) {
  if (skipped) skipped->append(buffer_.get() + index_, size);
  index_ += size;
}

bool TTextStreamer::ReadToDashesBuffered(std::string* skipped) {
  bool atLineStart = true;
  size_t dashes = 0;  // at the start of a line that the last block ended in
  while (index_ < buffered_ || Fill()) {
    const std::string_view block(buffer_.get() + index_, buffered_ - index_);
    if (atLineStart) {
      const size_t wanted = 2 - dashes;
      const size_t more = std::min(std::min(block.find_first_not_of('-'), block.size()), wanted);
      if (more == wanted) {
        lineStart_ = GetPosition() - dashes;
        lastLine_ = ReadBufferedLine(std::string_view("-").substr(0, dashes));
        return true;
      }
      if (more == block.size()) {  // the block ends before the line shows what it is
        dashes += more;
        index_ = buffered_;
        continue;
      }
      if (skipped) skipped->append(dashes, '-');
      dashes = 0;
    }
    const size_t found = FindDashLine(block);
    if (found != std::string_view::npos) {
      SkipInBuffer(found, skipped);
      atLineStart = true;
      continue;
    }
    dashes = block.ends_with("\n-") ? 1 : 0;
    atLineStart = dashes > 0 || block.ends_with('\n');
    SkipInBuffer(block.size() - dashes, skipped);
    index_ += dashes;
  }
  if (skipped) skipped->append(dashes, '-');
  return false;
}

void TTextStreamer::WriteLn(std::string_view line) {
  Write(line);
  Write("\r\n");
}

void TTextStreamer::Write(std::string_view text) {
  RequireMode(TStreamerMode::kWrite);
  position_ += text.size();
  while (!text.empty()) {
    if (cached_ == 0 && text.size() >= kBlockSize) return stream_.Write(text.data(), text.size());
    const size_t size = std::min(text.size(), kCacheSize - cached_);
    std::memcpy(buffer_.get() + cached_, text.data(), size);
    cached_ += size;
    text.remove_prefix(size);
    if (cached_ >= kBlockSize) Flush();
  }
}

void TTextStreamer::Flush() {
  const size_t size = std::exchange(cached_, 0);
  if (size > 0) stream_.Write(buffer_.get(), size);
}

void TTextStreamer::Clear() {
  RequireMode(TStreamerMode::kWrite);
  cached_ = 0;
  stream_.SetSize(0);
  position_ = stream_.Position();
}

void TTextStreamer::SetPosition(uint64_t offset) {
  RequireMode(TStreamerMode::kRead);
  stream_.SetPosition(offset);
  position_ = offset;
  index_ = 0;
  buffered_ = 0;
}

void TTextStreamer::SetLine(size_t count) {
  SetPosition(0);
  lastLine_ = {};
  for (size_t i = 0; i < count && !IsEof(); ++i) ReadLn();
}

const TTextBlock& TTextStreamer::Block() {
  if (!block_) block_ = stream_.Block();
  if (!block_) {
    block_ = TTextBlock(content_->size());
    if (!content_->empty()) std::memcpy(block_.Data(), content_->data(), content_->size());
    content_ = block_.View();
  }
  return block_;
}

void TTextStreamer::Skip(size_t size) noexcept { position_ += size; }

}  // namespace quarda
