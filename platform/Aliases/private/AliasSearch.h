// Making what an alias record holds, and finding its target again.
#pragma once
#include "platform/Aliases/private/AliasContents.h"

#include <Carbon/MacTypes.h>
#include <sys/stat.h>

namespace tarvik::aliases {

/// Describes the item at a path, which is absolute and without links but for its last part. `startingFile` may be empty.
OSErr describe(const std::string &path, const std::string &startingFile, bool minimal,
               AliasContents &contents);

/// How to look: what the record says comes first, or the item's identity.
enum class Order { PathFirst, IdentityFirst };

/// Where the target is, and what it is. `changed`: another place, or another item at the same one, was found.
struct Target {
    std::string path;
    struct statx about;
    bool changed = false;
};
OSErr find(const AliasContents &contents, const std::string &startingFile, Order order, Target &target);

}  // namespace tarvik::aliases
