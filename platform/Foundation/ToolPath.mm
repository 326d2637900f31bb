#include "ToolPath.h"

#include <cstdlib>
#include <string>
#include <string_view>

#include <dlfcn.h>
#include <unistd.h>

namespace tarvik::platform {

namespace {

/// libexec/tarvik of the tree that this code was loaded from: lib/, lib/MULTIARCH/ and a build folder are all
/// below the folder that holds it. Empty when there is none.
std::string toolFolder()
{
    Dl_info info;
    if (!dladdr(reinterpret_cast<void *>(&toolFolder), &info) || !info.dli_fname)
        return {};
    char *real = realpath(info.dli_fname, nullptr);
    if (!real)
        return {};
    std::string folder = real;
    free(real);
    for (int level = 0; level < 4; ++level) {
        folder.erase(folder.rfind('/'));
        std::string tools = folder + "/libexec/tarvik/";
        if (access(tools.c_str(), X_OK) == 0)
            return tools;
        if (folder.empty())
            break;
    }
    return {};
}

}  // namespace

NSString *standInTool(NSString *launchPath)
{
    static const std::string folder = toolFolder();
    constexpr std::string_view kSystemFolder = "/usr/bin/";
    for (std::string_view tool : {std::string_view{"/usr/bin/hdiutil"}, std::string_view{"/usr/bin/hdid"}}) {
        if (folder.empty() || [launchPath fileSystemRepresentation] != tool)
            continue;
        std::string path = folder + std::string(tool.substr(kSystemFolder.size()));
        if (access(path.c_str(), X_OK) == 0)
            return [NSString stringWithUTF8String:path.c_str()];
    }
    return nil;
}

}  // namespace tarvik::platform
