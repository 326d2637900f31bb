// Paths between strings and the system.
#pragma once
#ifdef __OBJC__
#include <Carbon/Files.h>
#import <Foundation/Foundation.h>

#include <string>

namespace tarvik {

/// The path's bytes for the system; false for the empty text and for text that is no path (NUL, half a surrogate pair).
bool getPathBytes(NSString *path, std::string &bytes);
/// The text of a path's bytes, autoreleased.
NSString *pathText(const char *bytes);
/// The POSIX path of a reference, autoreleased; nil when it is empty, can't be made, or needs more bytes than that.
constexpr size_t kLongestPath = 4096;  // the platform's, a zero at the end included
NSString *pathText(const FSRef *ref, size_t size = kLongestPath);

}  // namespace tarvik
#endif
