#include "platform/Files/private/ItemCopy.h"

#include "platform/Files/private/Companion.h"
#include "platform/Files/private/Copying.h"
#include "platform/Files/private/Errors.h"
#include "platform/Files/private/Listing.h"
#include "platform/Files/private/Lookup.h"
#include "platform/Files/private/References.h"
#include "platform/Files/private/TreeWalk.h"

#include <Tarvik/support/Handle.h>
#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <filesystem>
#include <optional>

namespace tarvik::files {
namespace {

OSErr lastError() { return fileError(errno); }

class Sizes : public TreeWalk {
public:
    explicit Sizes(CopyStatus &status) : status_(status) {}

protected:
    bool visit(const WalkedItem &item) override
    {
        ++status_.totalObjects;
        if (struct stat about; item.kind == DT_REG && inspect(item, about))
            status_.totalBytes += uint64_t(about.st_size);
        return !status_.isCancelled;
    }

private:
    CopyStatus &status_;
};

/// What is made under a name of its own beside its place; gone with all it holds unless it was moved there.
class Draft {
public:
    explicit Draft(const std::string &folder)
    {
        uint64_t number = 0;
        if (getrandom(&number, sizeof number, 0) != sizeof number)
            return;
        char name[40];
        std::snprintf(name, sizeof name, ".tarvik-%016llx", static_cast<unsigned long long>(number));
        path_ = joined(folder, name);
    }
    ~Draft()
    {
        std::error_code failed;
        if (!path_.empty())
            std::filesystem::remove_all(path_, failed);
    }
    Draft(const Draft &) = delete;
    Draft &operator=(const Draft &) = delete;

    const std::string &path() const { return path_; }

    /// What is replaced by something of another kind changes places with it, and goes with the draft.
    OSErr become(const std::string &target, bool overwrites)
    {
        if (renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0)
            return done();
        struct statx there;
        const bool isRefused = errno == EINVAL || errno == ENOSYS;  // a file system that can't by itself
        if (!isRefused && errno != EEXIST)
            return lastError();
        if (!overwrites && (!isRefused || status(AT_FDCWD, target.c_str(), there) == 0))
            return dupFNErr;
        if (rename(path_.c_str(), target.c_str()) == 0)
            return done();
        if (errno != EISDIR && errno != ENOTDIR && errno != ENOTEMPTY && errno != EEXIST)
            return lastError();
        return renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target.c_str(), RENAME_EXCHANGE) == 0
                   ? OSErr(noErr)
                   : lastError();
    }

private:
    OSErr done()
    {
        path_.clear();
        return noErr;
    }

    std::string path_;
};

class ItemCopy {
public:
    ItemCopy(const CopyOptions &options, CopyStatus &status) : options_(options), status_(status) {}

    OSErr copy(const std::string &from, const std::string &to)
    {
        if (status_.isCancelled)
            return userCanceledErr;
        struct statx item;
        if (const int error = status(AT_FDCWD, from.c_str(), item); error != 0)
            return fileError(error);
        status_.setCurrent(from);
        OSErr error = notAFileErr;
        if (S_ISREG(item.stx_mode))
            error = copyPlain(from, to, item);
        else if (S_ISDIR(item.stx_mode))
            error = copyFolder(from, to, item);
        else if (S_ISLNK(item.stx_mode))
            error = copyLink(from, to, item);
        if (error == noErr)
            ++status_.objects;
        return error;
    }

private:
    static constexpr mode_t kPermissions = 0777;  // who copies a file owns the copy: it runs as nobody else

    static std::array<timespec, 2> datesOf(const struct statx &item)
    {
        const auto time = [](const statx_timestamp &stamp) {
            return timespec{time_t(stamp.tv_sec), long(stamp.tv_nsec)};
        };
        return {time(item.stx_atime), time(item.stx_mtime)};
    }

    /// A single file has no name until it is whole, where the file system can: it goes with a process that is ended meanwhile.
    int openNameless(const std::string &to) const
    {
        return isSingle_ ? open(folderOf(to).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600) : -1;
    }

    OSErr copyPlain(const std::string &from, const std::string &to, const struct statx &item)
    {
        const FileDescriptor source(
            open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
        if (!source)
            return unreadable();
        FileDescriptor target(openNameless(to));
        const bool isNameless = bool(target);
        if (!isNameless)
            target.reset(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
        if (!target)
            return lastError();
        const int error = copyFile(source.get(), target.get(), [this](uint64_t count) {
            status_.bytes += count;
            return !status_.isCancelled;
        });
        if (error != 0)
            return error == ECANCELED ? OSErr(userCanceledErr) : fileError(error);
        fchmod(target.get(), item.stx_mode & kPermissions);
        futimens(target.get(), datesOf(item).data());
        const std::string link = "/proc/self/fd/" + std::to_string(target.get());
        return !isNameless || linkat(AT_FDCWD, link.c_str(), AT_FDCWD, to.c_str(), AT_SYMLINK_FOLLOW) == 0
                   ? OSErr(noErr)
                   : lastError();
    }

    OSErr copyFolder(const std::string &from, const std::string &to, const struct statx &item)
    {
        isSingle_ = false;
        if (mkdir(to.c_str(), 0700) != 0)
            return lastError();
        std::optional<Listing> listing;  // nothing is open while what it holds is copied
        {
            const FileDescriptor folder(open(from.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
            if (!folder)
                return unreadable();
            listing.emplace(folder.get());
        }
        OSErr error = noErr;
        listing->each([&](const Entry &entry) {
            if (error != noErr)
                return;
            isUnreadable_ = false;
            error = copy(joined(from, entry.name), joined(to, entry.name));
            if (isUnreadable_ && options_.skipsUnreadable)
                error = noErr;
        });
        isUnreadable_ = false;
        if (error == noErr) {
            chmod(to.c_str(), item.stx_mode & kPermissions);
            utimensat(AT_FDCWD, to.c_str(), datesOf(item).data(), 0);
        }
        return error;
    }

    OSErr copyLink(const std::string &from, const std::string &to, const struct statx &item)
    {
        char target[PATH_MAX];
        const ssize_t length = readlink(from.c_str(), target, sizeof target - 1);
        if (length < 0)
            return lastError();
        target[length] = '\0';
        if (symlink(target, to.c_str()) != 0)
            return lastError();
        utimensat(AT_FDCWD, to.c_str(), datesOf(item).data(), AT_SYMLINK_NOFOLLOW);
        return noErr;
    }

    OSErr unreadable()
    {
        isUnreadable_ = errno == EACCES || errno == EPERM;
        return lastError();
    }

    const CopyOptions &options_;
    CopyStatus &status_;
    bool isSingle_ = true;
    bool isUnreadable_ = false;  // the item that has just failed
};

bool isBelow(const std::string &path, const std::string &folder)
{
    return path == folder || folder == "/" || path.starts_with(folder + "/");
}

}  // namespace

OSErr measureItem(const FSRef &source, CopyStatus &status)
{
    std::string path;
    struct statx item;
    if (const OSErr error = locate(&source, path, &item); error != noErr)
        return error;
    ++status.totalObjects;
    if (S_ISREG(item.stx_mode))
        status.totalBytes += item.stx_size;
    else if (S_ISDIR(item.stx_mode))
        Sizes(status).run(path, true);
    return status.isCancelled ? OSErr(userCanceledErr) : OSErr(noErr);
}

OSErr copyItem(const FSRef &source, const FSRef &folder, const std::string &name, const CopyOptions &options,
               CopyStatus &status, FSRef *target)
{
    std::string from, into;
    struct statx item, there;
    if (const OSErr error = locate(&source, from, &item); error != noErr)
        return error;
    if (const OSErr error = locateFolder(&folder, into); error != noErr)
        return error;
    if (S_ISDIR(item.stx_mode) && isBelow(into, from))
        return badMovErr;
    const std::string to = joined(into, existingName(into, name.empty() ? nameOf(from) : name));
    if (files::status(AT_FDCWD, to.c_str(), there) == 0 &&
        (!options.overwrites || identityOf(there) == identityOf(item) || isBelow(from, to)))
        return dupFNErr;

    const bool hadCompanion = hasCompanion(to);
    const CarriedCompanion companion(from), replaced(to);
    if (const OSErr error = companion.mayGoTo(to); error != noErr)
        return error;
    Draft draft(into);
    if (draft.path().empty())
        return lastError();
    if (const OSErr error = ItemCopy(options, status).copy(from, draft.path()); error != noErr)
        return error;
    if (const OSErr error = draft.become(to, options.overwrites); error != noErr)
        return error;
    OSErr error = hasCompanion(from) ? companion.copyTo(to) : hadCompanion ? replaced.remove() : OSErr(noErr);

    FSRef copy;
    if (error == noErr)
        error = makeReference(to, Leaf::asIs, &copy);
    if (error == noErr && item.stx_attributes & STATX_ATTR_IMMUTABLE) {
        FSCatalogInfo locked{};
        locked.nodeFlags = kFSNodeLockedMask;
        error = FSSetCatalogInfo(&copy, kFSCatInfoNodeFlags, &locked);
    }
    if (error == noErr && target)
        *target = copy;
    return error;
}

}  // namespace tarvik::files
