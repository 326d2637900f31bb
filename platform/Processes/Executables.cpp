#include "platform/Processes/private/Executables.h"

#include "platform/Aliases/private/ReferencePath.h"
#include "platform/Files/private/Errors.h"
#include "platform/Files/private/References.h"
#include "platform/LaunchServices/private/ItemFlags.h"

#include <fcntl.h>

#include <functional>
#include <unordered_map>

namespace tarvik::processes {

namespace {

constexpr std::string_view kDeleted = " (deleted)";

/// The innermost application folder above a path; empty without one.
std::string_view applicationAbove(std::string_view path)
{
    for (size_t end = path.rfind('/'); end != path.npos && end > 0; end = path.rfind('/', end - 1)) {
        const std::string_view folder = path.substr(0, end);
        if (launch::isApplicationName(folder.substr(folder.rfind('/') + 1)))
            return folder;
    }
    return {};
}

struct TextHash : std::hash<std::string_view> {
    using is_transparent = void;
};

}  // namespace

Executable::Executable(std::string_view link) : link_(link), maybeDeleted_(link.ends_with(kDeleted))
{
    const std::string_view folder = applicationAbove(link);
    isInApplication_ = !folder.empty();
    item_ = isInApplication_ ? folder : link;
}

std::string_view Executable::name() const
{
    std::string_view name = link_;
    if (maybeDeleted_)
        name.remove_suffix(kDeleted.size());
    return name.substr(name.rfind('/') + 1);
}

OSErr Executable::reference(FSRef *ref) const
{
    struct statx found;
    if (const int error = files::status(AT_FDCWD, item_.c_str(), found))
        return files::fileError(error);
    std::lock_guard lock(lock_);
    files::Identity known;
    if (!latest_ || files::identity(&*latest_, known) != noErr || known != files::identityOf(found)) {
        FSRef made;
        if (const OSErr error = aliases::referenceTo(item_, &made))
            return error;
        latest_ = made;
    }
    *ref = *latest_;
    return noErr;
}

std::shared_ptr<const Executable> executableOf(std::string_view link)
{
    static std::mutex lock;
    static auto &known =
        *new std::unordered_map<std::string, std::weak_ptr<const Executable>, TextHash, std::equal_to<>>;
    static size_t limit = 256;
    std::lock_guard locked(lock);
    const auto at = known.find(link);
    if (at != known.end())
        if (auto executable = at->second.lock())
            return executable;
    if (known.size() >= limit) {
        std::erase_if(known, [](const auto &entry) { return entry.second.expired(); });
        limit = 2 * known.size() + 256;
    }
    auto made = std::make_shared<const Executable>(link);
    known[std::string(link)] = made;
    return made;
}

}  // namespace tarvik::processes
