#include "FileItems.h"
#include "Streams.h"

#include <Carbon/FileOperations.h>
#include <Carbon/FileTrees.h>
#include <CoreFoundation/CFNumber.h>
#include <Tarvik/support/CFOwned.h>
#include <sys/stat.h>

#include <filesystem>
#include <set>

namespace {

namespace fs = std::filesystem;

using Name = tarvik::CFOwned<CFStringRef>;

constexpr uint64_t kLargeFile = 64 << 20;

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
        return {ref, Name()};
    if (mustBeFolder)
        throw Failure(path + ": not a folder (several files need one to be copied into)");
    const size_t slash = path.rfind('/');
    std::string folder = slash == path.npos ? "."
                         : slash == 0       ? "/"
                                            : path.substr(0, slash),
                name = path.substr(slash + 1);
    for (char &c : name)
        if (c == ':')
            c = '/';  // as names have it
    Name text(CFStringCreateWithCString(nullptr, name.c_str(), kCFStringEncodingUTF8));
    if (name.empty() || !text)
        throw Failure(path + ": no usable name for the copy");
    return {itemAt(folder), std::move(text)};
}

bool isBelow(const std::string &path, const std::string &folder)
{
    return path == folder || path.starts_with(folder == "/" ? folder : folder + "/");
}

/// Copies items, folders with all they hold. What fails in a folder is told of, and keeps nothing else from
/// being copied.
class Copier {
public:
    explicit Copier(uint64_t total) : progress_("copy", total) {}

    /// Throws Failure.
    void copy(const std::string &path, const FSRef &source, const FSRef &folder, CFStringRef name)
    {
        const FSCatalogInfo info = catalogOf(source, kFSCatInfoGettableInfo, path);
        FSRef there;
        if (FSGetChild(&folder, &there, name) && FSCompareFSRefs(&source, &there) == noErr)
            throw Failure(path + ": is the copy itself");
        switch (info.permissions.mode & S_IFMT) {
        case S_IFDIR: return copyFolder(path, source, info, folder, name);
        case S_IFLNK: return copyLink(path, folder);
        case S_IFREG: return copyFile(path, source, info, folder, name);
        default: throw Failure(path + ": is no file, folder or link");
        }
    }
    bool isWhole() const { return isWhole_; }

private:
    void copyFile(const std::string &path, const FSRef &source, const FSCatalogInfo &info,
                  const FSRef &folder, CFStringRef name)
    {
        if (info.dataLogicalSize >= kLargeFile)
            return copyLargeFile(path, source, info, folder, name);
        if (!FSCopyFile(&source, &folder, name, nullptr))
            throw Failure(path + (hasReadableResources(source)
                                      ? ": could not be copied to " + pathOfItem(folder) +
                                            " (is it writable, has it room?)"
                                      : ": the contents alone were copied (the file ._NAME beside it is no "
                                        "sound AppleDouble file)"));
        progress_.advance(info.dataLogicalSize + info.rsrcLogicalSize);
    }

    /// One that takes a while: in the background, so that its progress can be shown, and without a limit to
    /// its size.
    void copyLargeFile(const std::string &path, const FSRef &source, const FSCatalogInfo &info,
                       const FSRef &folder, CFStringRef name)
    {
        FSRef there;
        if (FSGetChild(&folder, &there, name) &&
            catalogOf(there, kFSCatInfoNodeFlags, path).nodeFlags & kFSNodeIsDirectoryMask)
            throw Failure(pathOfItem(there) + ": a folder is in the way");
        Background copy{progress_};
        const tarvik::CFOwned<FSFileOperationRef> operation(FSFileOperationCreate(nullptr));
        FSFileOperationScheduleWithRunLoop(operation.get(), CFRunLoopGetCurrent(), kCFRunLoopDefaultMode);
        const FSFileOperationClientContext context = {0, &copy, nullptr, nullptr, nullptr};
        OSStatus error = FSCopyObjectAsync(operation.get(), &source, &folder, name,
                                           kFSFileOperationOverwrite | kFSFileOperationSkipPreflight,
                                           Background::tell, 0.2, &context);
        while (error == noErr && !copy.isComplete)
            CFRunLoopRunInMode(kCFRunLoopDefaultMode, 60, false);  // till it is stopped
        if (error == noErr)
            error = copy.error;
        if (error != noErr)
            throw fileFailure(path, error);
        progress_.advance(info.rsrcLogicalSize);
    }

    struct Background {
        Progress &progress;
        uint64_t done = 0;
        bool isComplete = false;
        OSStatus error = noErr;

        static void tell(FSFileOperationRef, const FSRef *, FSFileOperationStage stage, OSStatus error,
                         CFDictionaryRef status, void *info)
        {
            auto &self = *static_cast<Background *>(info);
            int64_t bytes = 0;
            CFNumberGetValue(
                static_cast<CFNumberRef>(CFDictionaryGetValue(status, kFSOperationBytesCompleteKey)),
                kCFNumberSInt64Type, &bytes);
            self.progress.advance(uint64_t(bytes) - self.done);
            self.done = uint64_t(bytes);
            self.isComplete = stage == kFSOperationStageComplete;
            self.error = error;
            if (self.isComplete)
                CFRunLoopStop(CFRunLoopGetCurrent());
        }
    };

    static bool hasReadableResources(const FSRef &source)
    {
        HFSUniStr255 fork;
        FSIORefNum number;
        FSGetResourceForkName(&fork);
        return FSOpenFork(&source, fork.length, fork.unicode, fsRdPerm, &number) == noErr &&
               FSCloseFork(number) == noErr;
    }

    void copyLink(const fs::path &path, const FSRef &folder)
    {
        const fs::path copy = pathOfItem(folder) / path.filename();
        std::error_code error;
        if (fs::is_symlink(copy))
            fs::remove(copy, error);
        fs::copy_symlink(path, copy, error);
        if (error)
            throw systemFailure(path, error.value());
    }

    void copyFolder(const std::string &path, const FSRef &source, const FSCatalogInfo &info,
                    const FSRef &folder, CFStringRef name)
    {
        if (isBelow(pathOfItem(folder), pathOfItem(source)))
            throw Failure(path + ": a folder can't be copied into itself");
        FSRef copy;
        const bool isNew = !FSGetChild(&folder, &copy, name);
        HFSUniStr255 record;
        CFStringGetHFSUniStr255(name, &record);
        if (isNew) {
            const OSErr error = FSCreateDirectoryUnicode(&folder, record.length, record.unicode,
                                                         kFSCatInfoNone, nullptr, &copy, nullptr, nullptr);
            if (error != noErr)
                throw fileFailure(path, error);
        } else if (!(catalogOf(copy, kFSCatInfoNodeFlags, pathOfItem(copy)).nodeFlags &
                     kFSNodeIsDirectoryMask)) {
            throw Failure(pathOfItem(copy) + ": is in the way of a folder");
        }
        copyContents(path, copy);
        if (isNew)
            if (const OSErr error = FSSetCatalogInfo(&copy, kFSCatInfoSettableInfo, &info); error != noErr)
                throw fileFailure(pathOfItem(copy), error);
    }

    void copyContents(const std::string &path, const FSRef &copy)
    {
        std::error_code error;
        std::set<std::string> names, companions;
        for (fs::directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error)) {
            const std::string name = entry->path().filename();
            (name.starts_with("._") ? companions : names).insert(name);
        }
        if (error)
            throw systemFailure(path, error.value());
        const auto copyEach = [&](const std::string &name) {
            isWhole_ &= forEachFile("copy", {path + "/" + name}, [&](const std::string &item) {
                            const FSRef source = itemAt(item, kFSPathMakeRefDoNotFollowLeafSymlink);
                            this->copy(item, source, copy, Name(FSCopyNameString(&source)).get());
                        }) == kSuccess;
        };
        for (const std::string &name : names)
            copyEach(name);
        // Those of the items above have gone with them; any other file of such a name is a file.
        for (const std::string &name : companions)
            if (!names.contains(name.substr(2)) || !fs::exists(fs::path(pathOfItem(copy)) / name))
                copyEach(name);
    }

    Progress progress_;
    bool isWhole_ = true;
};

int run(const Arguments &arguments)
{
    std::vector<std::string> sources = arguments.rest(2);
    const Target target = targetOf(sources.back(), sources.size() > 2);
    sources.pop_back();

    uint64_t total = 0;
    for (const std::string &path : sources)
        if (UInt64 data, resources;
            FSGetForkSizes(reinterpret_cast<const UInt8 *>(path.c_str()), &data, &resources) == noErr)
            total += data + resources;
    Copier copier(total);
    const int status = forEachFile("copy", sources, [&](const std::string &path) {
        const FSRef source = itemAt(path);
        const Name own(target.name ? nullptr : FSCopyNameString(&source));
        copier.copy(path, source, target.folder, target.name ? target.name.get() : own.get());
    });
    return copier.isWhole() ? status : kFailure;
}

const Registration registration({
    .name = "copy",
    .summary = "copy files and folders with both forks, label, type and dates",
    .usage = "SOURCE... TARGET",
    .details = "TARGET is a folder, or the copy's name when there is one SOURCE. A file of that name is "
               "replaced, a folder of that name\n"
               "takes in what the source holds. Links in a folder are copied as links. Data are shared with "
               "the original, or copied\n"
               "by the kernel, where the file system can; holes stay holes. A large file takes its place "
               "when it is whole.\n\n"
               "Examples:\n"
               "  tarvik copy Icon Icon.backup\n"
               "  tarvik copy *.rsrc Projects /mnt/archive",
    .run = run,
});

}  // namespace
