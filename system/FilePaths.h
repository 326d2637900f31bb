/// \file
/// Taking POSIX paths apart. Text only: nothing is looked up, and nothing fails.
///
///     Utils::GetFilenameFromPath("/usr/lib")    "lib"        Utils::GetDirFromPath("/usr/lib")    "/usr"
///     Utils::GetFilenameFromPath("/usr/lib/")   ""           Utils::GetDirFromPath("/usr/lib/")   "/usr/lib"
///     Utils::GetFilenameFromPath("lib")         "lib"        Utils::GetDirFromPath("lib")         ""
#pragma once
#include <CoreFoundation/CFURL.h>

#ifdef __cplusplus
#include <string>

namespace Utils {

/// What follows the last "/".
std::string GetFilenameFromPath(const std::string &path);
/// What precedes the last "/".
std::string GetDirFromPath(const std::string &path);

}  // namespace Utils

/// The URL of the folder that holds `path`, owned by the caller, and the name in it.
///
///     GetParentFolderURL("/usr/lib/", name)   file:///usr, "lib"
///
/// One closing "\", "/" or ":" is dropped first. Null, and `name` untouched, when no "/" is left; null also when nothing precedes
/// the last "/" ("/usr", whose name is handed out) or the path is not UTF-8.
/// The URL is not marked as a directory.
CFURLRef GetParentFolderURL(const std::string &path, std::string &name);

#endif
