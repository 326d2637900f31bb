/// \file
/// The coercions between values that the manager knows by itself. Each answers nothing where it has no way; all throw std::bad_alloc.
#pragma once
#include "platform/AppleEvents/private/Storage.h"

#include <optional>
#include <string>

namespace tarvik::ae {

/// Between text, numbers, booleans and four-character codes.
std::optional<OwnedDesc> coerceScalar(DescType from, std::string_view bytes, DescType to);
/// Whether the type is one of those: a record can't pass for it.
bool isScalar(DescType type);

/// Text of one of the text types, as UTF-8; nothing for another type and for bytes that are no text.
std::optional<std::string> textOf(DescType type, std::string_view bytes);

/// Between aliases, references, file URLs and, at one side, text.
std::optional<OwnedDesc> coerceFile(DescType from, std::string_view bytes, DescType to);

}  // namespace tarvik::ae
