/// \file
/// The flattened form of a descriptor.
///
/// All numbers are little-endian. A head of 16 bytes: "AEfl", version (16 bits: 1), zero (16 bits), length of the whole form
/// (64 bits). Then the descriptor: type (32 bits), kind (32 bits: 0 value, 1 list, 2 record, 3 event), length of its body (64 bits) and
/// the body:
///
///     value     the bytes, in the order of the processor that wrote them
///     list      count (64 bits), the descriptors
///     record    count (at most 4096), then keyword (32 bits), zero (32 bits) and descriptor of each; no keyword twice
///     event     class, identifier, return identifier, transaction (32 bits each); its attributes as a record's body, its parameters
///
/// A form from outside is read within its bounds, no deeper than kDeepest levels, and takes memory in proportion to its length.
#pragma once
#include "platform/AppleEvents/private/Storage.h"

namespace tarvik::ae {

constexpr int kDeepest = 256;

/// The length of the form; 0 when the descriptor is nested too deep.
size_t flattenedSize(const AEDesc &desc);
/// Writes the form into as many bytes as flattenedSize says.
void flattenInto(const AEDesc &desc, size_t size, char *form);
/// Adds the form; false when it is nested too deep. Throws std::bad_alloc.
bool flatten(const AEDesc &desc, std::vector<char> &form);
/// noErr, errAECorruptData, errAENewerVersion. Throws std::bad_alloc.
OSErr unflatten(std::string_view form, OwnedDesc &desc);

}  // namespace tarvik::ae
