/// \file
/// Files read and written whole.
#pragma once
#import <Foundation/NSData.h>

#include <string>

namespace tarvik {

/// The contents, owned by the caller; nil with errno set.
NSData *readWholeFile(const std::string &path);

/// Replaces the contents, or leaves them as they were: the bytes go to a new file beside the old one, which
/// takes its place when all of them are on the disk. Permissions and, as far as allowed, the owner are kept;
/// through a symbolic link its target is replaced. What is no plain file (a device, a pipe) is written to
/// directly. False with errno set.
bool writeWholeFile(const std::string &path, NSData *data);

}  // namespace tarvik
