/// \file
/// The long work on images: made from a folder, mounted, checked. Any thread; each call blocks until it is done.
///
/// Progress is a fraction from 0 to 1; a progress function that answers false ends the work.
#pragma once
#import <Foundation/Foundation.h>

#include <functional>
#include <string>

namespace shelf {

using Progress = std::function<bool(double fraction)>;

/// Makes an image of the folder's contents; a file that is there is replaced once the image is whole. Whether there is a new one:
/// after false, what was there before is there still.
bool createImage(NSString *folder, NSString *path, const Progress &progress);

/// Mounts the image. The mount point; nil, and the mounting tool's own words in `reason`, when that fails.
NSString *mountImage(NSString *path, NSString *&reason);

/// SHA-1 of the file in hexadecimal. Nil when it can't be read (`reason` says why) and when the progress function ended it.
NSString *checksumOfImage(NSString *path, const Progress &progress, NSString *&reason);

}  // namespace shelf
