/// \file
/// What can be done with a location. Every function answers false (null) for a location without a path.
///
///     file_utils::CreateFile(location)              // true also when something stands there already
///     file_utils::SetPermissions(location, false)   // mode 0666, whatever it was
#pragma once

#ifdef __cplusplus
#include <Tarvik/system/TFileLocationInfo.h>

#include <cstdio>
#include <string>

namespace file_utils {

/// "/"
std::string GetPathDelimiter();

/// The C library's stream for the location; null when it can't be opened.
FILE *fopen(const TFileLocationInfo &location, const std::string &mode);

/// Makes an empty file; true at once when anything, file or folder, stands there.
bool CreateFile(const TFileLocationInfo &location);
/// Makes a folder, its parents not; true when one stands there, false when a file does.
bool CreateDir(const TFileLocationInfo &location);
/// Removes what stands there, a folder with all its contents: true whatever comes of it. False when nothing stands there.
bool DeleteFile(const TFileLocationInfo &location);
/// Removes a folder with all its contents: true whatever comes of it. False when no folder stands there.
bool DeleteDir(const TFileLocationInfo &location);
/// Replaces all permission bits by 0777 or 0666, of the target where it is a symbolic link. False when nothing stands there.
bool SetPermissions(const TFileLocationInfo &location, bool allowExecute);

/// The machine-wide application support folder; false and empty when there is none.
bool GetAppSupportFolderPath(std::string &path);
/// The same as a location, which stays as it is after a failure.
bool GetAppSupportFolder(TFileLocationInfo &location);

}  // namespace file_utils

#endif
