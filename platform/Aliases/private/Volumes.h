// What is mounted where.
#pragma once
#include "platform/Aliases/private/AliasContents.h"

#include <memory>
#include <vector>

namespace tarvik::aliases {

struct Mount {
    uint64_t number = 0;  ///< the kernel's, as statx has it
    dev_t device = 0;
    std::string root;   ///< what of the volume it shows ("/": all)
    std::string point;  ///< where
    std::string type, source;
    VolumeIdentity identity;
};

/// "/a" + "b", without a second slash behind a root.
std::string joined(const std::string &folder, std::string_view name);
/// What stands behind a folder in a path: "" for the folder itself, "/x/y" below it; nothing outside.
std::optional<std::string_view> below(std::string_view path, const std::string &folder);

/// The mounts of one moment. A later one that covers an earlier comes later.
class Mounts {
public:
    /// The present ones: read anew only after something was mounted or unmounted.
    static std::shared_ptr<const Mounts> now();
    /// The present ones, read anew: for a process that has gone to another mount namespace.
    static std::shared_ptr<const Mounts> anew();

    const Mount *numbered(uint64_t number) const;
    /// All places where the volume can be reached, those that show all of it first.
    std::vector<const Mount *> of(const VolumeIdentity &volume) const;

private:
    static std::shared_ptr<const Mounts> current(bool anew);
    static std::shared_ptr<const Mounts> read(int descriptor);
    std::vector<Mount> mounts_;
};

}  // namespace tarvik::aliases
