#include "MediaFolder.h"

#include "Failure.h"

#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace diskimages {
namespace {

std::vector<std::string> mediaFolders()
{
    std::vector<std::string> folders;
    const passwd *user = getpwuid(getuid());
    if (user)
        folders = {std::string("/media/") + user->pw_name, std::string("/run/media/") + user->pw_name};
    if (const char *runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && *runtime == '/')
        folders.push_back(std::string(runtime) + "/media");
    if (user && user->pw_dir && *user->pw_dir == '/')
        folders.push_back(std::string(user->pw_dir) + "/media");
    return folders;
}

/// The first that can be written to, else the first that can be made; `made` is then its path.
std::string chooseFolder(std::string &made)
{
    const auto folders = mediaFolders();
    for (const std::string &folder : folders)
        if (access(folder.c_str(), W_OK | X_OK) == 0)
            return folder;
    for (const std::string &folder : folders)
        if (mkdir(folder.c_str(), 0755) == 0)
            return made = folder;
    throw systemFailure(
        "no media folder for the mount (" + (folders.empty() ? "unknown user" : folders[0]) + ")", EACCES);
}

}  // namespace

MountFolder::MountFolder(const std::string &imagePath)
{
    constexpr int kMostOfAName = 1000;
    const std::string parent = chooseFolder(madeParent_);
    std::string name = std::filesystem::path(imagePath).stem();
    if (name.empty())
        name = "image";
    for (int number = 0; number < kMostOfAName; ++number) {
        const std::string path = parent + '/' + name + (number ? ' ' + std::to_string(number) : "");
        if (mkdir(path.c_str(), 0755) == 0) {
            path_ = path;
            return;
        }
        if (errno != EEXIST)
            throw systemFailure(path);
    }
    throw systemFailure(parent + '/' + name, EEXIST);
}

MountFolder::~MountFolder()
{
    if (kept_ || path_.empty())
        return;
    rmdir(path_.c_str());
    if (!madeParent_.empty())
        rmdir(madeParent_.c_str());
}

void removeMountFolder(const std::string &path)
{
    const std::string parent = std::filesystem::path(path).parent_path();
    for (const std::string &folder : mediaFolders())
        if (parent == folder)
            rmdir(path.c_str());
}

}  // namespace diskimages
