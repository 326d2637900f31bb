/// \file
/// Between NSString or NSData and std::string, byte for byte.
///
///     tarvik::utf8(@"é")                -> "\xC3\xA9"
///     tarvik::nsstring("a\0b"sv)        -> a string of three characters, the NUL among them
///     tarvik::nsstring("\xFF"sv)        -> nil: not UTF-8
///
/// Absent stays absent: nil gives no value, and text without a UTF-8 form (half a surrogate pair)
/// gives no value instead of the exception that `UTF8String` raises here. Results are autoreleased.
#pragma once
#if defined(__OBJC__) && defined(__cplusplus)
#import <Foundation/NSData.h>
#import <Foundation/NSString.h>

#include <optional>
#include <string>
#include <string_view>

namespace tarvik {

/// The UTF-8 form, NUL characters included; nothing for nil or text that has none.
std::optional<std::string> utf8(NSString *text);
/// A string of UTF-8 bytes, NUL included; nil when they are not UTF-8.
NSString *nsstring(std::string_view bytes);
/// A copy of the bytes; nothing for nil.
std::optional<std::string> bytes(NSData *data);
/// A data object that copies the bytes.
NSData *nsdata(std::string_view bytes);

}  // namespace tarvik
#endif
