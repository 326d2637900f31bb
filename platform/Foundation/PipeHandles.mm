// NSFileHandle and NSPipe on pipes.
//
// What is wrong with gnustep-base's (1.28):
// - readDataToEndOfFile runs at 130 MB/s, a fifteenth of what the pipe gives: it grows its buffer by a
// constant;
// - availableData copies each piece twice;
// - writing to a pipe that nobody reads any more raises only as long as SIGPIPE is ignored in the whole
// process: a host
//   that puts the signal back to its default dies;
// - the class is set up when it is first used, while it holds the runtime's lock, and asks for the
// notification centre's: on a thread, that may be held by the main one, which waits for the runtime's;
// - a pipe's ends are inherited by every program that the host starts by other means (system, posix_spawn),
// and while
//   one of those lives the reader of the pipe never sees its end.

#import <Foundation/Foundation.h>
#include <Tarvik/support/Owned.h>
#include <objc/runtime.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "private/HiddenMethod.h"

// The concrete class, and what it keeps to itself: both methods raise when the handle can't be read or
// written now.
@interface GSFileHandle : NSFileHandle
- (void)checkRead;
- (void)checkWrite;
@end

namespace {

constexpr size_t kPiece = 1 << 16;  // a pipe's usual capacity

using Buffer = tarvik::Owned<char, free>;

[[noreturn]] void failed(const char *what, int error)
{
    [NSException raise:NSFileHandleOperationException
                format:@"unable to %s descriptor - %s", what, strerror(error)];
    abort();
}

/// The handle's file type (S_IFIFO, ...) when its bytes pass through unchanged; 0 for a closed or compressed
/// one.
mode_t plainType(NSFileHandle *handle)
{
    static const Ivar compression = class_getInstanceVariable(objc_getClass("GSFileHandle"), "gzDescriptor");
    struct stat status;
    const int descriptor = [handle fileDescriptor];
    const bool compressed = compression && object_getIvar(handle, compression);
    return descriptor >= 0 && !compressed && fstat(descriptor, &status) == 0 ? status.st_mode & S_IFMT : 0;
}

/// The class's own method, for sockets, terminals, devices and compressed files.
template <class Function>
Function original(SEL name)
{
    const Class handle = objc_getClass("GSFileHandle");
    return tarvik::hiddenMethod<Function>(handle, name);
}
using Read = NSData *(*)(id, SEL);
using Write = void (*)(id, SEL, NSData *);

/// read(2) that waits, also on a descriptor that a background operation left non-blocking.
size_t readSome(int descriptor, char *to, size_t room)
{
    for (;;) {
        ssize_t got = read(descriptor, to, room);
        if (got >= 0)
            return static_cast<size_t>(got);
        if (errno == EAGAIN) {
            pollfd ready{descriptor, POLLIN, 0};
            poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            failed("read from", errno);
        }
    }
}

NSData *owned(Buffer &buffer, size_t length)
{
    return [NSData dataWithBytesNoCopy:buffer.release() length:length freeWhenDone:YES];
}

/// SIGPIPE is held back on this thread for the scope, and taken off it if it came: the caller hears of EPIPE
/// instead.
class PipeSignalHeld {
public:
    PipeSignalHeld()
    {
        sigset_t pending;
        sigemptyset(&signal_);
        sigaddset(&signal_, SIGPIPE);
        sigpending(&pending);
        pending_ = sigismember(&pending, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &signal_, &before_);
    }
    ~PipeSignalHeld()
    {
        constexpr timespec kAtOnce{};
        if (!pending_)
            while (sigtimedwait(&signal_, nullptr, &kAtOnce) < 0 && errno == EINTR) {
            }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    PipeSignalHeld(const PipeSignalHeld &) = delete;
    PipeSignalHeld &operator=(const PipeSignalHeld &) = delete;

private:
    sigset_t signal_, before_;
    bool pending_;
};

/// 0, or the errno that ended the writing.
int writeAll(int descriptor, const char *from, size_t left)
{
    PipeSignalHeld held;
    while (left > 0) {
        ssize_t put = write(descriptor, from, left);
        if (put >= 0) {
            from += put;
            left -= static_cast<size_t>(put);
        } else if (errno == EAGAIN) {
            pollfd ready{descriptor, POLLOUT, 0};
            poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

}  // namespace

@interface GSFileHandle (Pipes)
@end

@implementation GSFileHandle (Pipes)

- (NSData *)availableData
{
    static const auto sOriginal = original<Read>(_cmd);
    if (plainType(self) != S_IFIFO)
        return sOriginal(self, _cmd);
    [self checkRead];
    const int descriptor = [self fileDescriptor];
    Buffer buffer(static_cast<char *>(malloc(kPiece)));
    if (!buffer)
        failed("read from", ENOMEM);
    size_t length = readSome(descriptor, buffer.get(), kPiece);
    if (length < kPiece / 4)
        return [NSData dataWithBytes:buffer.get() length:length];
    return owned(buffer, length);
}

- (NSData *)readDataToEndOfFile
{
    static const auto sOriginal = original<Read>(_cmd);
    const mode_t type = plainType(self);
    if (type != S_IFIFO && type != S_IFREG)
        return sOriginal(self, _cmd);
    [self checkRead];
    const int descriptor = [self fileDescriptor];
    size_t room = 0, length = 0;
    Buffer buffer;
    for (;;) {
        if (room - length < kPiece) {
            room = std::max(room * 2, 2 * kPiece);
            auto *grown = static_cast<char *>(realloc(buffer.get(), room));
            if (!grown)
                failed("read from", ENOMEM);
            (void)buffer.release();
            buffer.reset(grown);
        }
        size_t got = readSome(descriptor, buffer.get() + length, room - length);
        if (got == 0)
            break;
        length += got;
    }
    if (auto *fitted = static_cast<char *>(realloc(buffer.get(), std::max<size_t>(length, 1)))) {
        (void)buffer.release();
        buffer.reset(fitted);
    }
    return owned(buffer, length);
}

- (void)writeData:(NSData *)data
{
    static const auto sOriginal = original<Write>(_cmd);
    if (plainType(self) != S_IFIFO)
        return sOriginal(self, _cmd, data);
    [self checkWrite];
    if (int error = writeAll([self fileDescriptor], static_cast<const char *>([data bytes]), [data length]))
        failed("write to", error);
}

@end

@interface HandlesBeforeThreads : NSObject
@end

@implementation HandlesBeforeThreads
+ (void)load
{
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(threadsBegin:)
                                                 name:NSWillBecomeMultiThreadedNotification
                                               object:nil];
}
+ (void)threadsBegin:(NSNotification *)notification
{
    (void)notification;
    [GSFileHandle class];
}
@end

@interface NSPipe (CloseOnExec)
@end

@implementation NSPipe (CloseOnExec)

- (id)init
{
    int ends[2];
    if (!(self = [super init]) || pipe2(ends, O_CLOEXEC) != 0) {
        [self release];
        return nil;
    }
    _readHandle = [[NSFileHandle alloc] initWithFileDescriptor:ends[0] closeOnDealloc:YES];
    _writeHandle = [[NSFileHandle alloc] initWithFileDescriptor:ends[1] closeOnDealloc:YES];
    return self;
}

@end
