#include "platform/Files/private/Errors.h"

#include <Carbon/Files.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace {

constexpr uint32_t kSignature = 0x46535266;  // 'FSRf': a reference, and not memory that happens to lie there

/// What the 80 bytes hold. A path does not fit: it is kept in the process's list, under a number.
struct Contents {
    uint32_t signature;
    uint32_t path;
    uint64_t device;
    uint64_t inode;
};
static_assert(sizeof(Contents) <= sizeof(FSRef));

/// Each path once, for as long as the process lives: references are copied and forgotten without a word.
class Paths {
public:
    uint32_t add(std::string path)
    {
        std::lock_guard lock(lock_);
        const auto [found, isNew] = numbers_.try_emplace(std::move(path), uint32_t(paths_.size()));
        if (isNew)
            paths_.push_back(&found->first);
        return found->second;
    }
    const std::string *at(uint32_t number)
    {
        std::lock_guard lock(lock_);
        return number < paths_.size() ? paths_[number] : nullptr;
    }

private:
    std::mutex lock_;
    std::unordered_map<std::string, uint32_t> numbers_;
    std::deque<const std::string *> paths_;
};

Paths &paths()
{
    static Paths &all = *new Paths;  // references outlive the end of main
    return all;
}

struct Freed {
    void operator()(char *memory) const { std::free(memory); }
};

const Contents *contents(const FSRef *ref, Contents &copy)
{
    if (!ref)
        return nullptr;
    std::memcpy(&copy, ref, sizeof copy);  // a reference may lie unaligned in a packed record
    return copy.signature == kSignature ? &copy : nullptr;
}

}  // namespace

OSStatus FSPathMakeRef(const UInt8 *path, FSRef *ref, Boolean *isDirectory)
{
    return FSPathMakeRefWithOptions(path, kFSPathMakeRefDefaultOptions, ref, isDirectory);
}

OSStatus FSPathMakeRefWithOptions(const UInt8 *path, OptionBits options, FSRef *ref, Boolean *isDirectory)
{
    if (!path || !ref)
        return paramErr;
    const auto *given = reinterpret_cast<const char *>(path);
    struct stat status;
    std::string real;
    if (options & kFSPathMakeRefDoNotFollowLeafSymlink && lstat(given, &status) == 0 && S_ISLNK(status.st_mode)) {
        const std::string whole = given;
        const size_t slash = whole.rfind('/');
        const std::string folder = slash == whole.npos ? "." : whole.substr(0, slash + 1);
        if (const std::unique_ptr<char, Freed> found(realpath(folder.c_str(), nullptr)); found)
            real.append(found.get()).append("/").append(whole, slash + 1);
        if (real.starts_with("//"))
            real.erase(0, 1);
    } else if (const std::unique_ptr<char, Freed> found(realpath(given, nullptr)); found) {
        real = found.get();
    }
    if (real.empty() || lstat(real.c_str(), &status) != 0)
        return tarvik::files::fileError(errno);
    const Contents made{kSignature, paths().add(real), status.st_dev, status.st_ino};
    std::memset(ref, 0, sizeof *ref);
    std::memcpy(ref, &made, sizeof made);
    if (isDirectory)
        *isDirectory = S_ISDIR(status.st_mode);
    return noErr;
}

OSStatus FSRefMakePath(const FSRef *ref, UInt8 *path, UInt32 maxPathSize)
{
    Contents copy;
    const Contents *item = contents(ref, copy);
    if (!path)
        return paramErr;
    const std::string *known = item ? paths().at(item->path) : nullptr;
    if (!known)
        return errFSBadFSRef;
    struct stat status;
    if (lstat(known->c_str(), &status) != 0)
        return tarvik::files::fileError(errno);
    if (status.st_dev != item->device || status.st_ino != item->inode)
        return fnfErr;  // another item has taken its place
    if (known->size() >= maxPathSize)
        return pathTooLongErr;
    std::memcpy(path, known->c_str(), known->size() + 1);
    return noErr;
}

OSErr FSCompareFSRefs(const FSRef *ref1, const FSRef *ref2)
{
    Contents copy1, copy2;
    const Contents *item1 = contents(ref1, copy1), *item2 = contents(ref2, copy2);
    if (!item1 || !item2)
        return errFSBadFSRef;
    if (item1->device != item2->device)
        return diffVolErr;
    return item1->inode == item2->inode ? OSErr(noErr) : OSErr(errFSRefsDifferent);
}
