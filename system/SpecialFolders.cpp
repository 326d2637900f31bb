#include <Carbon/Folders.h>
#include <Tarvik/system/FileFunctions.h>
#include <Tarvik/system/SpecialFolders.h>

namespace Utils {

namespace {

std::string userFolder(OSType type)
{
    char path[512];
    FSFindFolderPath(kUserDomain, type, true, path, sizeof path);
    return path;
}

}  // namespace

std::string GetTempDirName() { return userFolder(kTemporaryFolderType); }

std::string GetUserDocumentsDirName() { return userFolder(kDocumentsFolderType); }

std::string GetHomeDirName()
{
    std::string directory;
    GetCurrentDir(directory);
    return directory;
}

}  // namespace Utils
