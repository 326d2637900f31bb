/// \file
/// Well-known folders as POSIX paths in UTF-8, from the platform's folder search.
///
///     Utils::GetTempDirName()            "/tmp"
///     Utils::GetUserDocumentsDirName()   "/home/ann/Documents"
///
/// A missing folder is made. Empty when there is none, or when its path has more than 511 bytes. Thread: any.
#pragma once

#ifdef __cplusplus
#include <string>

namespace Utils {

std::string GetTempDirName();
std::string GetUserDocumentsDirName();
/// Always empty, as it stands: what `GetCurrentDir` hands out.
std::string GetHomeDirName();

}  // namespace Utils

#endif
