#include <Tarvik/system/FilePaths.h>
#include <Tarvik/system/private/PathURL.h>

namespace Utils {

std::string GetFilenameFromPath(const std::string &path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string GetDirFromPath(const std::string &path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

}  // namespace Utils

CFURLRef GetParentFolderURL(const std::string &path, std::string &name)
{
    std::string rest = path;
    if (!rest.empty() && (rest.back() == '\\' || rest.back() == '/' || rest.back() == ':'))
        rest.pop_back();
    const size_t slash = rest.rfind('/');
    if (slash == std::string::npos)
        return nullptr;
    name = rest.substr(slash + 1);
    return createPathURL(rest.substr(0, slash), false);
}
