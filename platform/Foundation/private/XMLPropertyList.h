/// \file
/// XML property-list text, read and written.
///
///     std::string why;
///     id list = plist::newFromXML(bytes, count, plist::Mutability::none, why);   // nil: why = "line 3: ..."
///
/// Reading takes hostile text: it fetches nothing, knows no entities but the five of XML, and refuses
/// documents nested deeper than kDeepest levels. Writing gives the same text for equal lists: keys stand in
/// the order of their UTF-8 bytes.
///
/// Characters that XML has no place for (control characters, U+FFFE, U+FFFF, half a surrogate pair) are
/// written as a processing instruction `<?u 0007?>` within the text, which every XML reader takes and this
/// one turns back.
#pragma once
#import <Foundation/Foundation.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace tarvik::plist {

enum class Mutability { none, containers, containersAndLeaves };
constexpr int kDeepest = 512;

/// Whether the bytes begin as XML does (a byte order mark and white space aside).
bool looksLikeXML(const uint8_t *bytes, size_t count);

/// The list, owned by the caller; nil with a reason in English.
id newFromXML(const uint8_t *bytes, size_t count, Mutability mutability, std::string &why);

/// The text, owned by the caller; nil with a reason for what no property list can hold.
NSData *newXML(id list, std::string &why);

/// A copy of the whole tree, owned by the caller; nil with a reason for what no property list can hold.
id newDeepCopy(id list, Mutability mutability, std::string &why);

}  // namespace tarvik::plist
