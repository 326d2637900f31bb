// hdiutil VERB [OPTION]... [ARGUMENT]...: disk images made, attached, listed and detached.
#include "Failure.h"
#include "ToolMain.h"

#include <cstdio>

using namespace diskimages;

namespace {

constexpr char kUsage[] =
    "Usage: hdiutil VERB ...\n"
    "  info [-plist]                                        every attached image\n"
    "  create [-ov] [-puppetstrings] [-quiet] -srcfolder FOLDER IMAGE\n"
    "                                                       a compressed read-only image of a folder\n"
    "  attach [-plist] [-readonly] [-fuse] IMAGE            mounts an image in the media folder\n"
    "  detach [-force] MOUNTPOINT|DEVICE|IMAGE              unmounts and ejects it\n";

int infoVerb(const Words &words)
{
    bool propertyList = false;
    for (const std::string &word : words) {
        if (word != "-plist")
            throw Failure("unknown argument " + word);
        propertyList = true;
    }
    const auto images = attachedImages();
    std::fputs((propertyList ? reportPropertyList(images) : reportText(images)).c_str(), stdout);
    return 0;
}

int createVerb(const Words &words)
{
    CreateOptions options;
    std::string folder, image;
    bool hasFolder = false;
    for (size_t i = 0; i < words.size(); ++i) {
        if (words[i] == "-srcfolder" && i + 1 < words.size()) {
            folder = words[++i];
            hasFolder = true;
        } else if (words[i] == "-ov") {
            options.overwrite = true;
        } else if (words[i] == "-puppetstrings") {
            options.progress = true;
        } else if (words[i] == "-quiet") {
            options.quiet = true;
        } else if (image.empty() && (!words[i].starts_with('-') || i + 1 == words.size())) {
            image = words[i];  // the last word is the image whatever it looks like
        } else {
            throw Failure("unexpected argument " + words[i]);
        }
    }
    if (!hasFolder || image.empty())
        throw Failure("it takes -srcfolder FOLDER and IMAGE");
    create(folder, image, options);
    return 0;
}

int detachVerb(const Words &words)
{
    const bool force = !words.empty() && words[0] == "-force";
    if (words.size() != (force ? 2u : 1u))
        throw Failure("it takes one mount point, device or image");
    detach(words.back(), force);
    std::printf("\"%s\" ejected.\n", words.back().c_str());
    return 0;
}

constexpr struct {
    const char *name;
    int (*body)(const Words &);
} kVerbs[] = {{"info", infoVerb},     {"create", createVerb}, {"attach", attachVerb}, {"mount", attachVerb},
              {"detach", detachVerb}, {"eject", detachVerb},  {"unmount", detachVerb}};

}  // namespace

int main(int argc, char **argv)
{
    const std::string verb = argc > 1 ? argv[1] : "";
    for (const auto &known : kVerbs)
        if (verb == known.name)
            return runVerb("hdiutil", known.name, known.body, {argv + 2, argv + argc});
    std::fputs(kUsage, verb == "help" || verb == "--help" ? stdout : stderr);
    return verb == "help" || verb == "--help" ? 0 : 1;
}
