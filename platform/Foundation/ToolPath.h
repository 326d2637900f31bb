#pragma once

#import <Foundation/NSString.h>

namespace tarvik::platform {

/// The platform's own tool that stands in for a program of another system ("/usr/bin/hdiutil",
/// "/usr/bin/hdid"), from the folder libexec/tarvik that belongs to this library, in a build tree as in an
/// installed one. Nil for any other path, and when the tool is not there.
NSString *standInTool(NSString *launchPath);

}  // namespace tarvik::platform
