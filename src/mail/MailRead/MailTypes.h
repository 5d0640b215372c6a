// The enumerations of the mail model that name encodings.
#pragma once

#include <cstdint>
#include <string_view>

namespace quarda {

/// The forms that write three bytes as four characters: the alphabet of uuencode (with a grave
/// accent for zero), that of xxencode, and base64. Lines with a length in front, as a uuencoded
/// file has them, are not meant.
enum TMailEncodingType : int32_t { meUU, meXX, meBase64 };

// The plug-in contract declares an enumeration of the same name with the same members in the same
// order, and neither side includes the other. The adapters see both, so the mail model's own stands
// in a namespace of its own.
namespace mail {

/// Content transfer encodings. `eCurrent` is only an argument (keep what the part has); `eUnknown`
/// is whatever the model cannot handle.
enum TEncodeType : int32_t { eCurrent, e8bit, e7bit, eQuotedPrintable, eBase64, eUUE, eUnknown };

/// What each encoding is called in a header field.
inline constexpr std::string_view EncodeTypeNames[] = {
    "", "8bit", "7bit", "quoted-printable", "base64", "uuencode", ""};

}  // namespace mail
}  // namespace quarda
