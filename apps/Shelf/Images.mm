#include "Images.h"

#include <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>
#include <Tarvik/support/Handle.h>
#import <Tarvik/support/Pool.h>

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <vector>

/// Reads the percentages that the tool writes while it makes an image, on the tool's thread.
@interface CreationWatcher : NSObject {
@public
    std::atomic<double> mFraction;
    bool mHasEnded;
}
@end

@implementation CreationWatcher
- (BOOL)commandTool:(CommandTool *)tool readStandardOutputData:(NSData *)piece
{
    (void)tool;
    const std::string mark = "PERCENT:", text = tarvik::bytes(piece).value_or("");
    const size_t at = text.rfind(mark);
    if (at != std::string::npos)
        mFraction = std::clamp(std::atof(text.c_str() + at + mark.size()) / 100, 0.0, 1.0);
    return YES;
}
- (void)toolDidRun:(NSNotification *)notification
{
    (void)notification, mHasEnded = true;
}
@end

namespace shelf {
namespace {

NSString *systemReason(int error) { return tarvik::nsstring(strerror(error)); }

/// Who the file at the path is: changes when another takes its place.
std::pair<ino_t, timespec> identity(const std::string &path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return {};
    return {status.st_ino, status.st_mtim};
}

CSSM_DATA dataOf(const std::vector<uint8_t> &buffer, size_t length)
{
    CSSM_DATA data = {};
    data.Data = const_cast<uint8_t *>(buffer.data());
    data.Length = static_cast<decltype(data.Length)>(length);
    return data;
}

/// A digest in pieces, with a provider of its own.
class Digest {
public:
    Digest()
    {
        if (CDSAUtilityBase::cdsaCspAttach(&provider_) == 0)
            isOpen_ = CDSAUtilityBase::cdsaStagedDigestInit(provider_, CSSM_ALGID_SHA1, &context_) == 0;
    }
    ~Digest()
    {
        if (isOpen_)  // a context ends with its final call
            (void)finish();
        CDSAUtilityBase::cdsaCspDetach(provider_);
    }
    Digest(const Digest &) = delete;
    Digest &operator=(const Digest &) = delete;

    bool add(const std::vector<uint8_t> &buffer, size_t length)
    {
        const CSSM_DATA piece = dataOf(buffer, length);
        CSSM_DATA none = {};
        isOpen_ = isOpen_ && CDSAUtilityBase::cdsaStagedDigest(context_, false, &piece, &none) == 0;
        return isOpen_;
    }
    std::string finish()
    {
        CSSM_DATA digest = {};
        if (!isOpen_ || CDSAUtilityBase::cdsaStagedDigest(context_, true, nullptr, &digest) != 0)
            return {};
        isOpen_ = false;
        std::string text(digest.Length * 2 + 1, '\0');
        CDSAUtilityBase::convertHEXValueToHEXString(digest.Data, int(digest.Length), text.data());
        text.pop_back();
        free(digest.Data);
        return text;
    }

private:
    CSSM_CSP_HANDLE provider_ = 0;
    CSSM_CC_HANDLE context_ = 0;
    bool isOpen_ = false;
};

}  // namespace

bool createImage(NSString *folder, NSString *path, const Progress &progress)
{
    constexpr NSTimeInterval kTurn = 0.05;
    const std::string file = tarvik::utf8(path).value_or("");
    const auto before = identity(file);
    CommandTool *tool = [CommandTool commandToolWithPath:kDiskImageEditorPath];
    CreationWatcher *watcher = [[[CreationWatcher alloc] init] autorelease];
    [tool setArguments:[NSArray arrayWithObjects:@"create", @"-puppetstrings", @"-ov", @"-srcfolder", folder,
                                                 path, nil]];
    [tool setReadStandardOutput:YES];
    [tool setDelegate:watcher];
    // In the background, so that a tool that says nothing for a while is ended as soon as one that does.
    NSNotificationCenter *center = [NSNotificationCenter defaultCenter];
    [center addObserver:watcher
               selector:@selector(toolDidRun:)
                   name:CommandToolDidRunNotification
                 object:tool];
    bool isWanted = true;
    watcher->mHasEnded = ![tool run:YES];
    while (!watcher->mHasEnded) {
        tarvik::Pool pool;
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                                 beforeDate:[NSDate dateWithTimeIntervalSinceNow:kTurn]];
        if (isWanted)
            isWanted = progress(watcher->mFraction);
        if (!isWanted)
            [tool kill];  // again and again: it may not have been launched yet
    }
    [center removeObserver:watcher];
    [tool setDelegate:nil];
    // The tool's exit status is not to be had; a new file is there whole or not at all.
    const auto after = identity(file);
    const bool isMade = after.first != 0 && (after.first != before.first ||
                                             memcmp(&after.second, &before.second, sizeof after.second) != 0);
    if (isMade && isWanted)
        progress(1);
    if (isMade && !isWanted && before.first == 0) {
        unlink(file.c_str());  // it was finished before it could be ended
        return false;
    }
    return isMade;
}

NSString *mountImage(NSString *path, NSString *&reason)
{
    DiskImage *image = [DiskImage diskImageWithFilepath:path];
    if (NSString *point = [image mount])
        return point;
    // It does not keep what the tool said: ask again.
    CommandTool *tool = [CommandTool commandToolWithPath:kDiskImageMounterPath];
    [tool setArguments:[NSArray arrayWithObject:path]];
    [tool setReadStandardError:YES];
    [tool run:NO];
    reason = tarvik::nsstring(tarvik::bytes([tool standardErrorData]).value_or(""));
    reason = [reason stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
    NSString *const prefix = @"hdid: attach failed - ";
    if ([reason hasPrefix:prefix])
        reason = [reason substringFromIndex:[prefix length]];
    return [image mountPoint];
}

NSString *checksumOfImage(NSString *path, const Progress &progress, NSString *&reason)
{
    // Not blocked by a pipe that was put in the image's place.
    const tarvik::FileDescriptor file(
        open(tarvik::utf8(path).value_or("").c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status;
    if (!file || fstat(file.get(), &status) != 0)
        return reason = systemReason(errno), nil;
    if (!S_ISREG(status.st_mode) && !S_ISBLK(status.st_mode))
        return reason = [@"This is no disk image." localize], nil;
    Digest digest;
    std::vector<uint8_t> buffer(1 << 20);
    for (int64_t done = 0;;) {
        const ssize_t count = read(file.get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return reason = systemReason(errno), nil;
        if (count == 0)
            break;
        done += count;
        if (!digest.add(buffer, size_t(count)))
            return reason = [@"The checksum could not be computed." localize], nil;
        if (!progress(status.st_size > 0 ? double(done) / double(status.st_size) : 0))
            return nil;
    }
    const std::string text = digest.finish();
    if (text.empty())
        return reason = [@"The checksum could not be computed." localize], nil;
    return tarvik::nsstring(text);
}

}  // namespace shelf
