/// \file
/// What the file manager copies, moves and removes keeps its resource fork and Finder information, and leaves alone what links
/// in it lead to.
///
/// They stand in a companion beside the item, `._name`, of which gnustep-base knows nothing: a removed item
/// would leave it behind for the next item of that name, and a copied or moved one would lose it. What a
/// folder holds is no concern of ours: there companions are files as all others.
#include "platform/Files/private/Companion.h"
#include "platform/Foundation/private/HiddenMethod.h"

#import <Foundation/Foundation.h>
#include <sys/stat.h>

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
    static bool isRunning() { return depth_ > 0; }

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

/// Where gnustep-base waits for ever for a pipe's writer, and copies to where a link in the copy's place leads, nothing is copied.
- (BOOL)copyPath:(NSString *)source toPath:(NSString *)destination handler:(id)handler
{
    struct stat item;
    if (lstat(itemPath(self, source).c_str(), &item) == 0 && !S_ISREG(item.st_mode) &&
        !S_ISDIR(item.st_mode) && !S_ISLNK(item.st_mode))
        return NO;
    if (lstat(itemPath(self, destination).c_str(), &item) == 0)
        return NO;
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

/// gnustep-base gives the copy of a link the link's own attributes, by calls that follow it: whatever the link leads to, also
/// outside of what is copied, could be read and written by everybody from then on. A link's copy keeps what it was made with.
- (BOOL)changeFileAttributes:(NSDictionary *)attributes atPath:(NSString *)path
{
    static const auto original =
        tarvik::hiddenMethod<BOOL (*)(id, SEL, NSDictionary *, NSString *)>([NSFileManager class], _cmd);
    struct stat item;
    if (Call::isRunning() && lstat(itemPath(self, path).c_str(), &item) == 0 && S_ISLNK(item.st_mode))
        return YES;
    return original(self, _cmd, attributes, path);
}

@end
