#include "platform/Files/private/Companion.h"
#include "platform/Files/private/Errors.h"
#include "platform/Files/private/TreeWalk.h"

#include <Carbon/FileTrees.h>
#include <Tarvik/support/Owned.h>
#include <dirent.h>

#include <cerrno>
#include <cstdlib>
#include <exception>

namespace {

struct Sizes {
    uint64_t data = 0, resources = 0;

    void add(const struct stat &about) { data += S_ISDIR(about.st_mode) ? 0 : uint64_t(about.st_size); }
    /// An item that may have a companion. One whose companion is damaged has no catalog information, and no sizes.
    void add(const std::string &path, const struct stat &about)
    {
        using tarvik::files::Companion;
        Companion companion;
        if (Companion::open(path, companion) != noErr || companion.state() == Companion::State::broken)
            return;
        add(about);
        if (companion.state() == Companion::State::good)
            resources += companion.resourceLength();
    }
};

/// The sizes that catalog information gives: links count as what they lead to, those that lead nowhere as nothing.
class SizeWalk : public tarvik::files::TreeWalk {
public:
    Sizes sizes;

    void addTarget(const std::string &link)
    {
        struct stat about;
        const tarvik::Owned<char, std::free> target(realpath(link.c_str(), nullptr));
        if (target && stat(target.get(), &about) == 0 && !S_ISDIR(about.st_mode))
            sizes.add(target.get(), about);
    }

protected:
    bool visit(const tarvik::files::WalkedItem &item) override
    {
        struct stat about;
        if (item.kind == DT_LNK)
            addTarget(path(item));
        else if (item.kind != DT_DIR && inspect(item, about))
            item.hasCompanion ? sizes.add(path(item), about) : sizes.add(about);
        return true;
    }
};

}  // namespace

OSErr FSGetForkSizes(const UInt8 *path, UInt64 *dataLogicalSize, UInt64 *rsrcLogicalSize)
{
    if (!path)
        return paramErr;
    const auto *place = reinterpret_cast<const char *>(path);
    struct stat about, itself;
    if (stat(place, &about) != 0 || lstat(place, &itself) != 0)
        return tarvik::files::fileError(errno);
    try {
        SizeWalk walk;
        OSErr error = noErr;
        if (S_ISDIR(itself.st_mode))
            error = walk.run(place, false);
        else if (S_ISLNK(itself.st_mode))
            walk.addTarget(place);
        else
            walk.sizes.add(place, about);
        if (dataLogicalSize)
            *dataLogicalSize = walk.sizes.data;
        if (rsrcLogicalSize)
            *rsrcLogicalSize = walk.sizes.resources;
        return error;
    } catch (const std::exception &) {
        return memFullErr;
    }
}
