#include "ToolMain.h"

#include "Failure.h"

#include <csignal>
#include <cstdio>

namespace diskimages {

int runVerb(const char *tool, const char *verb, int (*body)(const Words &), const Words &words)
{
    // Caught, not ignored: helpers start with their signals as they should be.
    for (const int signal : {SIGHUP, SIGINT, SIGTERM})
        std::signal(signal, [](int) {});
    try {
        const int status = body(words);
        if (std::fflush(stdout) == 0)
            return status;
        std::fprintf(stderr, "%s: %s failed - writing the result: %s\n", tool, verb, std::strerror(errno));
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "%s: %s failed - %s\n", tool, verb, failure.what());
    }
    return 1;
}

int attachVerb(const Words &words)
{
    AttachOptions options;
    bool propertyList = false, onlyNames = false;
    std::string image;
    for (const std::string &word : words) {
        if (onlyNames || !word.starts_with('-')) {
            if (!image.empty())
                throw Failure("one image at a time");
            image = word;
        } else if (word == "--") {
            onlyNames = true;
        } else if (word == "-plist") {
            propertyList = true;
        } else if (word == "-readonly") {
            options.readOnly = true;
        } else if (word == "-fuse") {
            options.withoutLoopDevice = true;
        } else {
            throw Failure("unknown option " + word + " (-plist, -readonly, -fuse)");
        }
    }
    if (image.empty())
        throw Failure("which image?");
    const AttachedImage attached = attach(image, options);
    if (propertyList) {
        std::fputs(reportPropertyList({attached}).c_str(), stdout);
        return 0;
    }
    for (const Entity &entity : attached.entities)
        std::printf("%-15s\t%-15s\t%s\n", entity.device.empty() ? "-" : entity.device.c_str(),
                    entity.filesystem.c_str(), entity.mountPoint.c_str());
    return 0;
}

}  // namespace diskimages
