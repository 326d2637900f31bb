#include <Tarvik/system/FileFunctions.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>

namespace Utils {

namespace {

constexpr mode_t kFolderMode = 0755;

bool makeFolder(const std::string &path) { return mkdir(path.c_str(), kFolderMode) == 0; }

}  // namespace

bool GetCurrentDir(std::string &)
{
    char buffer[300];
    return getcwd(buffer, sizeof buffer) != nullptr;
}

bool SetCurrentDir(const std::string &path) { return chdir(path.c_str()) == 0; }

uint32_t GetFileCreationDate(const std::string &path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? uint32_t(status.st_ctime) : 0;
}

uint32_t GetFileLength(const std::string &path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? uint32_t(status.st_size) : 0;
}

bool GetFileMD5Checksum(const std::string &, unsigned char *) { return false; }

bool DoDeleteFile(const std::string &path) { return unlink(path.c_str()) == 0; }

bool FileExists(const std::string &path)
{
    FILE *file = fopen(path.c_str(), "re");
    if (!file)
        return false;
    fclose(file);
    return true;
}

std::vector<std::string> ListDirectory(const std::string &) { return {}; }

bool DirExists(const std::string &path)
{
    std::string saved;
    const bool isSaved = GetCurrentDir(saved);
    if (!SetCurrentDir(path))
        return false;
    if (isSaved)
        SetCurrentDir(saved);  // to an empty path: fails, so that we stay
    return true;
}

bool DeleteDir(const std::string &path, bool recursive)
{
    if (recursive) {
        for (const std::string &entry : ListDirectory(path)) {
            if (!(DirExists(entry) ? DeleteDir(entry, true) : DoDeleteFile(entry)))
                return false;
        }
    }
    return rmdir(path.c_str()) == 0;
}

bool CreateDir(const std::string &path, bool failIfExists)
{
    return (!failIfExists && DirExists(path)) || makeFolder(path);
}

bool CreateDirPath(const std::string &path, bool failIfExists)
{
    if (path.size() >= PATH_MAX)  // no folder has such a path; each of its parents would be tried
        return false;
    if (DirExists(path))
        return !failIfExists;
    std::string folder = path;
    if (folder.ends_with('/'))
        folder.pop_back();
    const size_t slash = folder.rfind('/');
    if (slash != std::string::npos && !CreateDirPath(folder.substr(0, slash + 1), false))
        return false;
    return makeFolder(folder);
}

}  // namespace Utils
