#include "Streams.h"

#include <algorithm>
#include <cstring>

#include "Errors.h"

namespace quarda {
namespace {

size_t ReadFrom(std::string_view content, size_t& position, void* buffer, size_t size) {
  if (position >= content.size()) return 0;
  const size_t count = std::min(size, content.size() - position);
  if (count > 0) std::memcpy(buffer, content.data() + position, count);
  position += count;
  return count;
}

}  // namespace

TMemoryStream::TMemoryStream(std::string_view content)
    : block_(content.size()), size_(content.size()) {
  if (size_ > 0) std::memcpy(block_.Data(), content.data(), size_);
}

TMemoryStream::TMemoryStream(TTextBlock block) : block_(std::move(block)), size_(block_.Size()) {}

size_t TMemoryStream::Read(void* buffer, size_t size) {
  return ReadFrom(View(), position_, buffer, size);
}

void TMemoryStream::Reserve(size_t capacity) {
  if (capacity <= block_.Size() && block_.IsSole()) return;
  TTextBlock grown(std::max(capacity, size_));
  if (size_ > 0) std::memcpy(grown.Data(), block_.Data(), size_);
  block_ = std::move(grown);
}

void TMemoryStream::Write(const void* data, size_t size) {
  if (size == 0) return;
  const size_t end = position_ + size;
  if (end > block_.Size() || !block_.IsSole()) {
    Reserve(end > block_.Size() ? std::max(end, block_.Size() * 2) : block_.Size());
  }
  if (position_ > size_) std::memset(block_.Data() + size_, 0, position_ - size_);
  std::memcpy(block_.Data() + position_, data, size);
  position_ = end;
  size_ = std::max(size_, end);
}

void TMemoryStream::SetSize(uint64_t size) {
  const size_t wanted = static_cast<size_t>(size);
  if (wanted > size_) {
    Reserve(wanted);
    std::memset(block_.Data() + size_, 0, wanted - size_);
  }
  size_ = wanted;
  position_ = std::min(position_, size_);
}

size_t TStringStream::Read(void* buffer, size_t size) {
  return ReadFrom(text_, position_, buffer, size);
}

void TStringStream::Write(const void* data, size_t size) {
  if (size == 0) return;
  if (position_ + size > text_.size()) text_.resize(position_ + size);
  std::memcpy(text_.data() + position_, data, size);
  position_ += size;
}

void TStringStream::SetSize(uint64_t size) {
  text_.resize(static_cast<size_t>(size));
  position_ = std::min(position_, text_.size());
}

TFileStream::TFileStream(std::string_view path, platform::TOpenMode mode) : file_(path, mode) {}

size_t TFileStream::Read(void* buffer, size_t size) {
  const size_t count = file_.Read(buffer, size);
  position_ += count;
  return count;
}

void TFileStream::Write(const void* data, size_t size) {
  file_.Write(data, size);
  position_ += size;
}

void TFileStream::SetPosition(uint64_t position) {
  file_.Seek(position);
  position_ = position;
}

void TFileStream::SetSize(uint64_t size) {
  file_.SetSize(size);
  if (position_ > size) SetPosition(size);
}

void TReplacingFileStream::Write(const void* data, size_t size) {
  file_.Write(data, size);
  written_ += size;
}

void TReplacingFileStream::SetPosition(uint64_t position) {
  if (position != written_) throw EError("A replacing file is written from start to end.");
}

void TReplacingFileStream::SetSize(uint64_t size) { SetPosition(size); }

}  // namespace quarda
