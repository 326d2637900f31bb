#include "FileItems.h"
#include "Streams.h"

#include <memory>

namespace
{

struct Released {
    void operator()(const void *object) const { CFRelease(object); }
};
using Name = std::unique_ptr<const __CFString, Released>;

struct Target {
    FSRef folder;
    Name name;  // none: the source's own
};

/// A folder to copy into, or a folder and the copy's name in it.
Target targetOf(std::string path, bool mustBeFolder)
{
    FSRef ref;
    Boolean isFolder = false;
    const OSStatus error = FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, &isFolder);
    if (error == noErr && isFolder)
        return {ref, nullptr};
    if (mustBeFolder)
        throw Failure(path + ": not a folder (several files need one to be copied into)");
    const size_t slash = path.rfind('/');
    std::string folder = slash == path.npos ? "." : slash == 0 ? "/" : path.substr(0, slash), name = path.substr(slash + 1);
    for (char &c : name)
        if (c == ':')
            c = '/';  // as names have it
    Name text(CFStringCreateWithCString(nullptr, name.c_str(), kCFStringEncodingUTF8));
    if (name.empty() || !text)
        throw Failure(path + ": no usable name for the copy");
    return {itemAt(folder), std::move(text)};
}

int run(const Arguments &arguments)
{
    std::vector<std::string> sources = arguments.rest(2);
    const Target target = targetOf(sources.back(), sources.size() > 2);
    sources.pop_back();

    uint64_t total = 0;
    constexpr FSCatalogInfoBitmap kSizes = kFSCatInfoNodeFlags | kFSCatInfoDataSizes | kFSCatInfoRsrcSizes;
    const auto sizeOf = [](const FSCatalogInfo &info) { return info.dataLogicalSize + info.rsrcLogicalSize; };
    for (const std::string &path : sources) {
        FSRef ref;
        FSCatalogInfo info;
        if (FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, nullptr) == noErr &&
            FSGetCatalogInfo(&ref, kSizes, &info, nullptr, nullptr, nullptr) == noErr)
            total += sizeOf(info);
    }
    Progress progress("copy", total);
    return forEachFile("copy", sources, [&](const std::string &path) {
        const FSRef source = itemAt(path);
        const FSCatalogInfo info = catalogOf(source, kSizes, path);
        if (info.nodeFlags & kFSNodeIsDirectoryMask)
            throw Failure(path + ": a folder (files are copied, one by one)");
        if (info.dataLogicalSize > UINT32_MAX)
            throw Failure(path + ": larger than 4 GiB, which a copy of forks does not take (use cp)");
        const Name own(target.name ? nullptr : FSCopyNameString(&source));
        FSRef there;
        const CFStringRef name = target.name ? target.name.get() : own.get();
        if (FSGetChild(&target.folder, &there, name) && FSCompareFSRefs(&source, &there) == noErr)
            throw Failure(path + ": is the copy itself");
        if (!FSCopyFile(&source, &target.folder, name, nullptr))
            throw Failure(path + ": could not be copied to " + pathOfItem(target.folder) + " (is it writable, has it room?)");
        progress.advance(sizeOf(info));
    });
}

const Registration registration({
    .name = "copy",
    .summary = "copy files with both forks, label, type and dates",
    .usage = "SOURCE... TARGET",
    .details = "TARGET is a folder, or the copy's name when there is one SOURCE. A file of that name is replaced.\n"
               "Data are shared with the original, or copied by the kernel, where the file system can.\n\n"
               "Examples:\n"
               "  tarvik copy Icon Icon.backup\n"
               "  tarvik copy *.rsrc /mnt/archive",
    .run = run,
});

}  // namespace
