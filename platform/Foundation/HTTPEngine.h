/// Drives the HTTP exchanges of one thread from that thread's run loop, in the default mode.
///
/// There is one engine per thread, made on first use and gone with the thread. Its sockets are watched by the
/// run loop, so a transfer costs no second thread and no hand-over; connections are kept for the next
/// request.
#pragma once

#include "HTTPTransfer.h"

#import <Foundation/Foundation.h>
#include <Tarvik/support/Handle.h>

#include <memory>
#include <unordered_map>
#include <vector>

@class HTTPEngineWatcher;

namespace http {

class Engine {
public:
    /// The calling thread's engine.
    static Engine &current();

    explicit Engine(HTTPEngineWatcher *watcher);
    ~Engine();
    Engine(const Engine &) = delete;
    Engine &operator=(const Engine &) = delete;

    /// Begins an exchange. The request is under way when this returns; the client hears nothing before the
    /// run loop runs.
    void start(const std::shared_ptr<Transfer> &transfer);

    /// Ends an exchange without a word to its client. A connection in the middle of an answer is closed.
    void cancel(const std::shared_ptr<Transfer> &transfer);

    /// Delivers what arrived while a transfer was held.
    void resume(const std::shared_ptr<Transfer> &transfer);

    void descriptorIsReady(int descriptor, int events);

private:
    struct Watch {
        int wanted = 0;  ///< CURL_POLL_*
        Transfer *transfer = nullptr;
    };

    static int onSocket(CURL *easy, curl_socket_t socket, int wanted, void *self, void *);
    static int onTimer(CURLM *, long milliseconds, void *self);

    CURL *takeHandle();
    void release(Transfer &transfer, bool reusing = false);
    void act(curl_socket_t socket, int events);
    bool actOnReadySockets();
    void pump(int rounds, bool delivering);
    void collectEnded();
    void endIdle(Clock::time_point now);
    void deliver();
    void watch(curl_socket_t socket, int wanted);
    void watchClock(bool watched);
    void armClock();

    HTTPEngineWatcher *watcher_;  ///< owns this engine
    NSRunLoop *loop_;
    /// A timer, and a bell for what is due at once (setting a timer costs a tenth of a request). The run loop
    /// sees both as one descriptor: a pass of it ends after a descriptor, and not after an NSTimer.
    tarvik::FileDescriptor clock_, bell_, clockAndBell_;
    std::optional<Clock::time_point> clockDate_;
    bool bellRang_ = false;
    bool clockIsWatched_ = false;
    CURLM *multi_;
    std::optional<Clock::time_point> multiDate_;
    std::unordered_map<int, Watch> watches_;
    std::vector<std::shared_ptr<Transfer>> running_;
    std::vector<CURL *> spareHandles_;
    bool closing_ = false;
};

}  // namespace http
