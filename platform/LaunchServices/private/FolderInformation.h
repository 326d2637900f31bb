// What an application folder, or another bundle, says of itself.
#pragma once
#include <Carbon/MacTypes.h>
#import <Foundation/NSDictionary.h>
#import <Foundation/NSString.h>

#include <string>

namespace tarvik::launch {

/// The property list of a folder: Resources/Info-gnustep.plist, Contents/Info.plist or Resources/Info.plist. Autoreleased; nil without one.
NSDictionary *information(const std::string &folder);
/// A text in it; empty for what is none.
std::string textOf(NSDictionary *information, NSString *key);
/// Its four-character code: CFBundleSignature, or the second half of Contents/PkgInfo or Resources/PkgInfo; 0 for "????".
OSType signatureOf(const std::string &folder, NSDictionary *information);
/// What users call an application: CFBundleName, ApplicationName, or the folder's name without ".app".
std::string nameOf(const std::string &folder, NSDictionary *information);

}  // namespace tarvik::launch
