/// \file
/// Files and folders by POSIX path in UTF-8. Failure is the answer false, 0 or empty; nothing is logged.
///
/// `DirExists`, and what calls it (`CreateDir`, `CreateDirPath`), change the process's working directory: they
/// must not run beside threads that use relative paths.
#pragma once

#ifdef __cplusplus
#include <cstdint>
#include <string>
#include <vector>

namespace Utils {

/// Whether the working directory can be read (as a path of less than 300 bytes). Callers rely on `directory` staying
/// untouched.
bool GetCurrentDir(std::string &directory);
bool SetCurrentDir(const std::string &path);

/// Time of the last change of the item's status, in seconds since 1970; 0 when it can't be examined.
uint32_t GetFileCreationDate(const std::string &path);
/// Size in bytes, modulo 2^32; 0 when the item can't be examined.
uint32_t GetFileLength(const std::string &path);
/// Answers false and does nothing: kept for callers. Digests of files stand in crypto.
bool GetFileMD5Checksum(const std::string &path, unsigned char *checksum);

/// Unlinks a file.
bool DoDeleteFile(const std::string &path);
/// Whether the item opens for reading.
bool FileExists(const std::string &path);
/// Always empty: kept for callers, who rely on `DeleteDir` never deleting what is in a folder.
std::vector<std::string> ListDirectory(const std::string &path);

/// Whether the working directory can be changed to `path`. Callers rely on it being `path` after the answer true.
bool DirExists(const std::string &path);
/// Removes a folder. As `ListDirectory` is empty, a recursive removal fails on a folder that is not.
bool DeleteDir(const std::string &path, bool recursive);
/// Makes a folder with mode 0755. One that exists is a success unless `failIfExists`.
bool CreateDir(const std::string &path, bool failIfExists);
/// The same with all missing parents, each of which may exist.
bool CreateDirPath(const std::string &path, bool failIfExists);

}  // namespace Utils

#endif
