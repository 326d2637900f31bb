/// \file
/// What the file manager copies, moves and removes keeps its resource fork and Finder information.
///
/// They stand in a companion beside the item, `._name`, of which gnustep-base knows nothing: a removed item
/// would leave it behind for the next item of that name, and a copied or moved one would lose it. What a
/// folder holds is no concern of ours: there companions are files as all others.
#include "platform/Files/private/Companion.h"
#include "platform/Foundation/private/HiddenMethod.h"

#import <Foundation/Foundation.h>

namespace {

using tarvik::files::CarriedCompanion;

/// gnustep-base's methods call each other, and themselves for what a folder holds: the call from outside
/// alone carries companions.
class Call {
public:
    Call() { ++depth_; }
    ~Call() { --depth_; }
    Call(const Call &) = delete;
    Call &operator=(const Call &) = delete;
    bool isOutermost() const { return depth_ == 1; }

private:
    static inline thread_local int depth_ = 0;
};

/// The path of an item in a folder, without slashes at its end; empty for what is no path.
std::string itemPath(NSFileManager *manager, NSString *path)
{
    std::string bytes = [path length] > 0 ? [manager fileSystemRepresentationWithPath:path] : "";
    while (bytes.size() > 1 && bytes.ends_with('/'))
        bytes.pop_back();
    return bytes.empty() || bytes.find('/') != bytes.npos ? bytes : "./" + bytes;
}

/// Copies or moves the item, then its companion: neither when the companion has no room there, and no copy
/// without it.
template <class Transfer>
BOOL transfer(NSFileManager *manager, NSString *source, NSString *destination,
              OSErr (CarriedCompanion::*carry)(const std::string &) const, Transfer &&transferItem)
{
    const Call call;
    const std::string from = itemPath(manager, source), to = itemPath(manager, destination);
    if (!call.isOutermost() || from.empty() || to.empty())
        return transferItem();
    const CarriedCompanion companion(from);
    return companion.mayGoTo(to) == noErr && transferItem() && (companion.*carry)(to) == noErr;
}

}  // namespace

@interface NSFileManager (TarvikCompanions)
@end

@implementation NSFileManager (TarvikCompanions)

- (BOOL)removeFileAtPath:(NSString *)path handler:(id)handler
{
    static const auto original =
        tarvik::hiddenMethod<BOOL (*)(id, SEL, NSString *, id)>([NSFileManager class], _cmd);
    const Call call;
    const std::string item = call.isOutermost() ? itemPath(self, path) : "";
    if (item.empty())
        return original(self, _cmd, path, handler);
    const CarriedCompanion companion(item);
    return original(self, _cmd, path, handler) && companion.remove() == noErr;
}

- (BOOL)copyPath:(NSString *)source toPath:(NSString *)destination handler:(id)handler
{
    static const auto original =
        tarvik::hiddenMethod<BOOL (*)(id, SEL, NSString *, NSString *, id)>([NSFileManager class], _cmd);
    return transfer(self, source, destination, &CarriedCompanion::copyTo,
                    [=] { return original(self, _cmd, source, destination, handler); });
}

- (BOOL)movePath:(NSString *)source toPath:(NSString *)destination handler:(id)handler
{
    static const auto original =
        tarvik::hiddenMethod<BOOL (*)(id, SEL, NSString *, NSString *, id)>([NSFileManager class], _cmd);
    return transfer(self, source, destination, &CarriedCompanion::moveTo,
                    [=] { return original(self, _cmd, source, destination, handler); });
}

@end
