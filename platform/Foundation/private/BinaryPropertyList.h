/// \file
/// Binary property lists ("bplist00"), read.
///
///     "bplist00"  objects  offsets of the objects  trailer
///
/// The trailer's last 32 bytes: 6 unused, the width of an offset and of a reference in bytes, then three
/// 64-bit numbers: how many objects, the number of the root, where the offsets begin. An object begins with a
/// marker: its kind in the upper half, its size in the lower (15: an integer object with the size follows).
/// All numbers are big-endian. Containers refer to objects by number.
#pragma once
#include "platform/Foundation/private/XMLPropertyList.h"

namespace tarvik::plist {

bool looksBinary(const uint8_t *bytes, size_t count);

/// The list, owned by the caller; nil with a reason. Objects that contain themselves are refused, and so is
/// what no property list holds (null, sets, an archive's references), and a list that becomes a
/// million objects larger when what containers share is written out.
id newFromBinary(const uint8_t *bytes, size_t count, Mutability mutability, std::string &why);

}  // namespace tarvik::plist
