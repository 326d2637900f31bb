#include "platform/Files/private/Companion.h"
#include "platform/Files/private/Errors.h"
#include "platform/Files/private/TreeWalk.h"

#include <Carbon/FileTrees.h>
#include <dirent.h>

#include <cerrno>
#include <exception>

namespace {

/// The resource fork of an item that may have a companion.
uint64_t resourceSize(const std::string &path)
{
    tarvik::files::Companion companion;
    const bool good = tarvik::files::Companion::open(path, companion) == noErr &&
                      companion.state() == tarvik::files::Companion::State::good;
    return good ? companion.resourceLength() : 0;
}

class SizeWalk : public tarvik::files::TreeWalk {
public:
    uint64_t data = 0, resources = 0;

protected:
    bool visit(const tarvik::files::WalkedItem &item) override
    {
        if (struct stat about; item.kind != DT_DIR && inspect(item, about)) {
            data += uint64_t(about.st_size);
            if (item.hasCompanion)
                resources += resourceSize(path(item));
        }
        return true;
    }
};

}  // namespace

OSErr FSGetForkSizes(const UInt8 *path, UInt64 *dataLogicalSize, UInt64 *rsrcLogicalSize)
{
    if (!path)
        return paramErr;
    const auto *place = reinterpret_cast<const char *>(path);
    struct stat about;
    if (stat(place, &about) != 0)
        return tarvik::files::fileError(errno);
    try {
        SizeWalk walk;
        OSErr error = noErr;
        if (S_ISDIR(about.st_mode)) {
            error = walk.run(place, false);
        } else {
            walk.data = uint64_t(about.st_size);
            walk.resources = resourceSize(place);
        }
        if (dataLogicalSize)
            *dataLogicalSize = walk.data;
        if (rsrcLogicalSize)
            *rsrcLogicalSize = walk.resources;
        return error;
    } catch (const std::exception &) {
        return memFullErr;
    }
}
