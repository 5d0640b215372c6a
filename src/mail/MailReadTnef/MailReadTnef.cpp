// A container is a signature, a key and a run of records, each with its level, identifier, data and
// checksum. One walk over the records collects the attachments; their contents stay slices of the
// loaded block. The cost is that of summing every byte once for the checksums.
#include "MailReadTnef.h"

#include <DateText.h>
#include <Files.h>

#include <algorithm>
#include <chrono>

#include "ByteCursor.h"

namespace quarda {
namespace {

constexpr uint32_t kSignature = 0x223E9F78;

enum TLevel : uint8_t { kMessageLevel = 1, kAttachmentLevel = 2 };

enum TAttribute : uint16_t {
  kAttachData = 0x800F,
  kAttachTitle = 0x8010,
  kAttachModifyDate = 0x8013,
  kAttachRenddata = 0x9002,
  kAttachment = 0x9005,
};

enum TPropertyIdentifier : uint16_t { kDataProperty = 0x3701, kLongFileNameProperty = 0x3707 };

struct TRecord {
  uint8_t level = 0;
  uint16_t attribute = 0;
  int32_t length = 0;
  std::string_view data;
};

struct TProperty {
  uint16_t identifier = 0;
  std::optional<std::string_view> value;  // the first one
};

/// The rest of a stream, and the block that holds it.
struct TSource {
  TTextBlock block;
  std::string_view bytes;
};

TSource ReadRest(TStream& stream) {
  const uint64_t size = stream.Size();
  const uint64_t position = std::min(stream.Position(), size);
  if (TTextBlock block = stream.Block()) {
    const std::string_view content = stream.Content().value_or(block.View());
    stream.SetPosition(size);
    return {std::move(block), content.substr(static_cast<size_t>(position))};
  }
  TTextBlock block(static_cast<size_t>(size - position));
  const size_t count = stream.Read(block.Data(), block.Size());
  return {block, block.View().substr(0, count)};
}

// Counters of 16 bits wrap as the checksum does. A row of them, each fed by its own column, lets
// the compiler add many bytes at once.
uint16_t SumOfBytes(std::string_view bytes) noexcept {
  constexpr size_t kColumns = 64;
  uint16_t columns[kColumns] = {};
  const char* at = bytes.data();
  size_t left = bytes.size();
  for (; left >= kColumns; at += kColumns, left -= kColumns) {
    for (size_t i = 0; i < kColumns; ++i) {
      columns[i] = static_cast<uint16_t>(columns[i] + static_cast<uint8_t>(at[i]));
    }
  }
  uint32_t sum = 0;
  for (const uint16_t column : columns) sum += column;
  for (size_t i = 0; i < left; ++i) sum += static_cast<uint8_t>(at[i]);
  return static_cast<uint16_t>(sum);
}

[[noreturn]] void RaiseTruncated() {
  throw ETnefError("Unexpected end of data, input file may be truncated.");
}

TRecord ReadRecord(TByteCursor& cursor) {
  TRecord record;
  if (!cursor.Read(record.level)) RaiseTruncated();
  if (record.level != kMessageLevel && record.level != kAttachmentLevel) {
    throw ETnefError("Invalid lvl type on attribute: " + std::to_string(record.level));
  }
  uint16_t type = 0;
  uint32_t length = 0;
  uint16_t checksum = 0;
  if (!cursor.Read(record.attribute) || !cursor.Read(type) || !cursor.Read(length)) {
    RaiseTruncated();
  }
  record.length = static_cast<int32_t>(length);
  const size_t size = record.length > 0 ? length : 0;
  if (!cursor.Take(size, record.data) || !cursor.Read(checksum)) RaiseTruncated();
  if (SumOfBytes(record.data) != checksum) {
    throw ETnefError("Invalid checksum, input file may be corrupted.");
  }
  return record;
}

bool IsValid(const platform::TLocalTime& date) {
  using namespace std::chrono;
  if (date.hour > 23 || date.minute > 59 || date.second > 59) return false;
  if (date.year < 1 || date.year > 9999 || date.month > 12 || date.day > 31) return false;
  return year_month_day(year(date.year), month(static_cast<unsigned>(date.month)),
                        day(static_cast<unsigned>(date.day)))
      .ok();
}

platform::TLocalTime ReadDate(std::string_view data) {
  uint16_t fields[7] = {};  // the seventh is the day of the week, which follows from the others
  TByteCursor cursor(data);
  for (uint16_t& field : fields) {
    if (cursor.Read(field)) continue;
    throw ETnefError("date attribute in " + std::to_string(kAttachModifyDate) +
                     " failed sanity check.");
  }
  const platform::TLocalTime date{fields[0], fields[1], fields[2], fields[3], fields[4], fields[5]};
  if (!IsValid(date)) {
    throw EConvertError("'" + DateText(date) + " " + TimeText(date) +
                        "' is not a valid date and time");
  }
  return date;
}

std::string_view UpToZero(std::string_view text) { return text.substr(0, text.find('\0')); }

size_t FixedSize(uint16_t propertyType) {
  switch (propertyType) {
    case 0x0002:
      return 2;
    case 0x0003:
    case 0x0004:
    case 0x000B:
      return 4;
    case 0x0005:
    case 0x0040:
      return 8;
    default:
      return 0;
  }
}

bool HasSizedValues(uint16_t propertyType) {
  return propertyType == 0x001E || propertyType == 0x001F || propertyType == 0x0102;
}

/// False when the data ends within the values.
bool ReadSizedValues(TByteCursor& cursor, std::optional<std::string_view>& first) {
  uint32_t count = 0;
  if (!cursor.Read(count)) return false;
  for (; count > 0; --count) {
    uint32_t size = 0;
    std::string_view value;
    if (!cursor.Read(size) || !cursor.Take(size, value)) return false;
    if (!first) first = value;
    cursor.Skip((4 - size % 4) % 4);
  }
  return true;
}

/// False when the data ends within the property; its first value counts when that one was whole.
bool ReadProperty(TByteCursor& cursor, TProperty& property) {
  uint16_t type = 0;
  if (!cursor.Read(type) || !cursor.Read(property.identifier)) return false;
  if (HasSizedValues(type)) return ReadSizedValues(cursor, property.value);
  const size_t size = FixedSize(type);
  if (size == 0) return true;
  std::string_view value;
  if (!cursor.Take(size, value)) return false;
  property.value = value;
  return true;
}

}  // namespace

/// One load: turns records into attachments.
class TTnefReader {
 public:
  TTnefReader(TTextBlock block, std::vector<std::unique_ptr<TTnefAttachment>>& items)
      : block_(std::move(block)), items_(items) {}

  void ReadAll(TByteCursor cursor);

 private:
  void Handle(const TRecord& record);
  void Open() { open_ = std::make_unique<TTnefAttachment>(); }
  void Close();
  void Apply(const TRecord& record);
  void ApplyProperties(std::string_view list);
  void SetFileName(std::string_view value);
  void SetData(std::string_view data, int32_t size);

  TTextBlock block_;
  std::vector<std::unique_ptr<TTnefAttachment>>& items_;
  std::unique_ptr<TTnefAttachment> open_;
};

void TTnefReader::ReadAll(TByteCursor cursor) {
  uint32_t signature = 0;
  uint16_t key = 0;
  if (!cursor.Read(signature) || signature != kSignature) {
    throw ETnefError("Seems not to be a TNEF file");
  }
  if (!cursor.Read(key)) RaiseTruncated();
  try {
    while (!cursor.AtEnd()) Handle(ReadRecord(cursor));
  } catch (...) {
    Close();
    throw;
  }
  Close();
}

void TTnefReader::Handle(const TRecord& record) {
  if (record.attribute == kAttachRenddata) {
    if (open_) {
      Close();
    } else {
      Open();
    }
  } else if (record.level == kAttachmentLevel) {
    if (!open_) Open();
    Apply(record);
  }
}

void TTnefReader::Close() {
  if (!open_) return;
  if (open_->fileName_.empty()) SetFileName({});
  items_.push_back(std::move(open_));
}

void TTnefReader::Apply(const TRecord& record) {
  switch (record.attribute) {
    case kAttachData:
      return SetData(record.data, record.length);
    case kAttachTitle:
      return SetFileName(record.data);
    case kAttachModifyDate:
      open_->modifyDate_ = ReadDate(record.data);
      return;
    case kAttachment:
      return ApplyProperties(record.data);
    default:
      return;
  }
}

void TTnefReader::ApplyProperties(std::string_view list) {
  TByteCursor cursor(list);
  uint32_t count = 0;
  bool goOn = cursor.Read(count);
  for (; goOn && count > 0; --count) {  // ends with the data, whatever the count claims
    TProperty property;
    goOn = ReadProperty(cursor, property);
    if (!property.value) continue;
    if (property.identifier == kDataProperty) {
      SetData(*property.value, static_cast<int32_t>(property.value->size()));
    } else if (property.identifier == kLongFileNameProperty) {
      SetFileName(*property.value);
    }
  }
}

void TTnefReader::SetFileName(std::string_view value) {
  open_->fileName_ = UpToZero(value);
  if (!open_->fileName_.empty()) return;
  const std::string number = std::to_string(items_.size());
  open_->fileName_ =
      "tnef-tmp." + std::string(3 - std::min<size_t>(3, number.size()), '0') + number;
}

void TTnefReader::SetData(std::string_view data, int32_t size) {
  open_->block_ = block_;
  open_->data_ = data;
  open_->size_ = size;
}

void TTnefAttachment::SaveToStream(TStream& stream) const {
  if (!data_.empty()) stream.Write(data_.data(), data_.size());
}

void TTnefAttachment::SaveToFile(std::string_view path) const {
  TFileStream file(path, platform::TOpenMode::kCreate);
  SaveToStream(file);
}

void TTnef::LoadFromStream(TStream& stream) {
  items_.clear();
  const TSource source = ReadRest(stream);
  TTnefReader(source.block, items_).ReadAll(TByteCursor(source.bytes));
}

void TTnef::LoadFromFile(std::string_view path) {
  TFileStream file(path, platform::TOpenMode::kReadShared);
  LoadFromStream(file);
}

const TTnefAttachment& TTnef::GetItems(size_t index) const {
  if (index >= items_.size()) RaiseListIndex(static_cast<ptrdiff_t>(index));
  return *items_[index];
}

}  // namespace quarda
