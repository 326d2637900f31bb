/// \file
/// File names: bytes on the disk, UTF-16 in the interface.
///
/// Every name has a UTF-16 form that leads back to its bytes: a byte that is not UTF-8 becomes U+DC00 + byte (a lone low surrogate,
/// which no UTF-8 text gives), a colon becomes a slash.
#pragma once
#include <Carbon/Files.h>

#include <string>
#include <string_view>
#include <vector>

namespace tarvik::files {

/// The name on the disk. errFSMissingName, errFSNameTooLong, bdNamErr ("." and "..", a colon, NUL, half a surrogate pair).
OSErr nameFromUnicode(const UniChar *units, size_t count, std::string &name);
/// Cut to 255 units, which no file system of this system exceeds.
void unicodeFromName(std::string_view name, HFSUniStr255 &record);

/// The name's other normal forms: what to look for when the name itself is not there. Empty for plain ASCII.
std::vector<std::string> otherForms(const std::string &name);

/// Its form in Mac OS Roman; false when it has none or needs more than `most` bytes.
bool romanFromName(std::string_view name, size_t most, std::string &roman);
OSErr nameFromRoman(std::string_view roman, std::string &name);

}  // namespace tarvik::files
