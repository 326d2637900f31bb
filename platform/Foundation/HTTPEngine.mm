#include "HTTPEngine.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>

/// Stands between the run loop, which knows objects, and the engine. The thread's dictionary owns it.
@interface HTTPEngineWatcher : NSObject <RunLoopEvents> {
@public
    http::Engine *_engine;
}
@end

@implementation HTTPEngineWatcher

- (id)init
{
    if ((self = [super init]))
        _engine = new http::Engine(self);
    return self;
}

- (void)dealloc
{
    delete _engine;
    [super dealloc];
}

- (void)receivedEvent:(void *)data type:(RunLoopEventType)type extra:(void *)extra forMode:(NSString *)mode
{
    (void)extra;
    (void)mode;
    _engine->descriptorIsReady(int(reinterpret_cast<intptr_t>(data)),
                               type == ET_WDESC ? CURL_CSELECT_OUT : CURL_CSELECT_IN);
}

@end

namespace http {

namespace {

/// Sockets are asked this often for more before the run loop gets its turn again.
constexpr int kRounds = 8;

constexpr size_t kSpareHandles = 4;

/// Idle connections kept for the next request.
constexpr long kKeptConnections = 8;

}  // namespace

Engine &Engine::current()
{
    NSMutableDictionary *ofThread = [[NSThread currentThread] threadDictionary];
    HTTPEngineWatcher *watcher = [ofThread objectForKey:@"HTTPEngineWatcher"];
    if (!watcher) {
        watcher = [[HTTPEngineWatcher alloc] init];
        [ofThread setObject:watcher forKey:@"HTTPEngineWatcher"];
        [watcher release];
    }
    return *watcher->_engine;
}

Engine::Engine(HTTPEngineWatcher *watcher)
    : watcher_(watcher), loop_([[NSRunLoop currentRunLoop] retain]),
      clock_(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)),
      bell_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)), clockAndBell_(epoll_create1(EPOLL_CLOEXEC))
{
    for (const int descriptor : {clock_.get(), bell_.get()}) {
        epoll_event event{};
        event.events = EPOLLIN;
        epoll_ctl(clockAndBell_.get(), EPOLL_CTL_ADD, descriptor, &event);
    }
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    multi_ = curl_multi_init();
    curl_multi_setopt(multi_, CURLMOPT_SOCKETFUNCTION, &Engine::onSocket);
    curl_multi_setopt(multi_, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(multi_, CURLMOPT_TIMERFUNCTION, &Engine::onTimer);
    curl_multi_setopt(multi_, CURLMOPT_TIMERDATA, this);
    curl_multi_setopt(multi_, CURLMOPT_MAXCONNECTS, kKeptConnections);
}

Engine::~Engine()
{
    closing_ = true;  // the run loop goes with the thread: its watches need no undoing
    for (const auto &transfer : std::exchange(running_, {})) {
        release(*transfer);
        if (Client *client = transfer->client()) {
            transfer->letGo();
            client->abandoned();
        }
    }
    for (CURL *handle : spareHandles_)
        curl_easy_cleanup(handle);
    curl_multi_cleanup(multi_);
    [loop_ release];
}

CURL *Engine::takeHandle()
{
    if (spareHandles_.empty())
        return curl_easy_init();
    CURL *handle = spareHandles_.back();
    spareHandles_.pop_back();
    return handle;
}

/// Takes the transfer off libcurl. A handle is used again after a success only: it keeps its old settings
/// otherwise.
void Engine::release(Transfer &transfer, bool reusing)
{
    CURL *handle = std::exchange(transfer.easy, nullptr);
    if (!handle)
        return;
    curl_multi_remove_handle(multi_, handle);
    for (auto &entry : watches_)
        if (entry.second.transfer == &transfer)
            entry.second.transfer = nullptr;
    curl_easy_reset(handle);
    if (reusing && spareHandles_.size() < kSpareHandles)
        spareHandles_.push_back(handle);
    else
        curl_easy_cleanup(handle);
}

void Engine::start(const std::shared_ptr<Transfer> &transfer)
{
    running_.push_back(transfer);
    transfer->noteProgress(Clock::now());
    if (transfer->hasArrivals())
        return armClock();  // refused before it began
    CURL *handle = takeHandle();
    if (!handle || !transfer->configure(handle) || curl_multi_add_handle(multi_, handle) != CURLM_OK) {
        release(*transfer);
        transfer->end(CURLE_FAILED_INIT);
    }
    // The connection is made and the request sent as far as that goes without waiting.
    pump(2, false);
}

void Engine::cancel(const std::shared_ptr<Transfer> &transfer)
{
    transfer->letGo();
    const auto keep = transfer;
    std::erase(running_, keep);
    release(*keep);
    armClock();
}

void Engine::resume(const std::shared_ptr<Transfer> &transfer)
{
    transfer->hold(false);
    transfer->noteProgress(Clock::now());
    if (transfer->easy)
        curl_easy_pause(transfer->easy, CURLPAUSE_CONT);
    armClock();
}

void Engine::descriptorIsReady(int descriptor, int events)
{
    if (descriptor == clockAndBell_.get()) {
        uint64_t count;
        if (bellRang_ && read(bell_.get(), &count, sizeof count) > 0)
            bellRang_ = false;
        if (clockDate_ && *clockDate_ <= Clock::now() && read(clock_.get(), &count, sizeof count) > 0)
            clockDate_.reset();
        endIdle(Clock::now());
    } else {
        act(descriptor, events);
    }
    pump(kRounds, true);
}

void Engine::act(curl_socket_t socket, int events)
{
    if (auto found = watches_.find(socket); found != watches_.end() && found->second.transfer)
        found->second.transfer->noteProgress(Clock::now());
    int running;
    curl_multi_socket_action(multi_, socket, events, &running);
}

/// Acts on what is ready now, without waiting. Spares a trip through the run loop, which costs more than the
/// request.
bool Engine::actOnReadySockets()
{
    std::vector<pollfd> sockets;
    sockets.reserve(watches_.size());
    for (const auto &[socket, watch] : watches_) {
        const int events =
            (watch.wanted & CURL_POLL_IN ? POLLIN : 0) | (watch.wanted & CURL_POLL_OUT ? POLLOUT : 0);
        if (events)
            sockets.push_back({socket, short(events), 0});
    }
    if (sockets.empty() || poll(sockets.data(), sockets.size(), 0) <= 0)
        return false;
    for (const pollfd &ready : sockets) {
        if (!ready.revents || !watches_.contains(ready.fd))
            continue;
        act(ready.fd, (ready.revents & (POLLIN | POLLHUP) ? CURL_CSELECT_IN : 0) |
                          (ready.revents & POLLOUT ? CURL_CSELECT_OUT : 0) |
                          (ready.revents & POLLERR ? CURL_CSELECT_ERR : 0));
    }
    return true;
}

void Engine::pump(int rounds, bool delivering)
{
    for (;;) {
        while (multiDate_ && *multiDate_ <= Clock::now()) {
            multiDate_.reset();
            act(CURL_SOCKET_TIMEOUT, 0);
        }
        collectEnded();
        if (delivering)
            deliver();
        if (rounds-- == 0 || !actOnReadySockets())
            break;
    }
    armClock();
}

void Engine::collectEnded()
{
    int left;
    while (CURLMsg *message = curl_multi_info_read(multi_, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        Transfer *transfer = nullptr;
        long certificate = 0;
        const CURLcode code = message->data.result;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
        curl_easy_getinfo(message->easy_handle, CURLINFO_SSL_VERIFYRESULT, &certificate);
        transfer->end(code, certificate);
        release(*transfer, code == CURLE_OK);
    }
}

void Engine::endIdle(Clock::time_point now)
{
    for (const auto &transfer : running_) {
        if (!transfer->easy || transfer->isHeld() || transfer->idleDeadline() > now)
            continue;
        release(*transfer);
        transfer->end(CURLE_OPERATION_TIMEDOUT);
    }
}

/// A client may start, cancel and run the run loop meanwhile, so the list is searched anew after each
/// delivery.
void Engine::deliver()
{
    for (;;) {
        const auto found =
            std::find_if(running_.begin(), running_.end(), [](const auto &t) { return t->hasArrivals(); });
        if (found == running_.end())
            return;
        const std::shared_ptr<Transfer> transfer = *found;
        const bool wasFull = transfer->isFull();
        transfer->deliver();
        if (wasFull && transfer->easy && !transfer->isHeld())
            curl_easy_pause(transfer->easy, CURLPAUSE_CONT);
        if (!transfer->client()) {
            std::erase(running_, transfer);
            release(*transfer);
        } else if (transfer->isHeld() && transfer->easy) {
            curl_easy_pause(transfer->easy, CURLPAUSE_RECV);
        }
    }
}

int Engine::onSocket(CURL *easy, curl_socket_t socket, int wanted, void *self, void *)
{
    auto &engine = *static_cast<Engine *>(self);
    if (engine.closing_)
        return 0;
    engine.watch(socket, wanted);
    if (wanted != CURL_POLL_REMOVE) {
        Transfer *transfer = nullptr;
        curl_easy_getinfo(easy, CURLINFO_PRIVATE, &transfer);
        engine.watches_[socket].transfer = transfer;
    }
    return 0;
}

void Engine::watch(curl_socket_t socket, int wanted)
{
    if (wanted == CURL_POLL_REMOVE)
        wanted = 0;
    const int before = watches_.contains(socket) ? watches_[socket].wanted : 0;
    void *const data = reinterpret_cast<void *>(intptr_t(socket));
    const struct {
        int flag;
        RunLoopEventType type;
    } kinds[] = {{CURL_POLL_IN, ET_RDESC}, {CURL_POLL_OUT, ET_WDESC}};
    for (const auto &kind : kinds) {
        if ((wanted & kind.flag) && !(before & kind.flag))
            [loop_ addEvent:data type:kind.type watcher:watcher_ forMode:NSDefaultRunLoopMode];
        if (!(wanted & kind.flag) && (before & kind.flag))
            [loop_ removeEvent:data type:kind.type forMode:NSDefaultRunLoopMode all:YES];
    }
    if (wanted)
        watches_[socket].wanted = wanted;
    else
        watches_.erase(socket);
}

int Engine::onTimer(CURLM *, long milliseconds, void *self)
{
    auto &date = static_cast<Engine *>(self)->multiDate_;
    if (milliseconds < 0)
        date.reset();
    else
        date = Clock::now() + std::chrono::milliseconds(milliseconds);
    return 0;
}

void Engine::watchClock(bool watched)
{
    if (watched == clockIsWatched_)
        return;
    clockIsWatched_ = watched;
    void *const data = reinterpret_cast<void *>(intptr_t(clockAndBell_.get()));
    if (watched)
        [loop_ addEvent:data type:ET_RDESC watcher:watcher_ forMode:NSDefaultRunLoopMode];
    else
        [loop_ removeEvent:data type:ET_RDESC forMode:NSDefaultRunLoopMode all:YES];
}

/// Sets the clock to what is due next. It may ring early: then nothing is due and it is set anew.
void Engine::armClock()
{
    const auto now = Clock::now();
    std::optional<Clock::time_point> due;
    const auto consider = [&](Clock::time_point date) { due = due ? std::min(*due, date) : date; };
    for (const auto &transfer : running_) {
        if (transfer->hasArrivals())
            consider(now);
        else if (transfer->easy && !transfer->isHeld())
            consider(transfer->idleDeadline());
    }
    if (multiDate_ && !running_.empty())
        consider(*multiDate_);
    watchClock(!running_.empty());

    if (!due)
        return;
    if (*due <= now) {
        constexpr uint64_t kOnce = 1;
        if (!bellRang_)
            bellRang_ = write(bell_.get(), &kOnce, sizeof kOnce) == sizeof kOnce;
        return;
    }
    if (clockDate_ && *clockDate_ <= *due)
        return;
    clockDate_ = due;
    const auto since = due->time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(since);
    itimerspec when{};
    when.it_value.tv_sec = seconds.count();
    when.it_value.tv_nsec = std::chrono::nanoseconds(since - seconds).count();
    timerfd_settime(clock_.get(), TFD_TIMER_ABSTIME, &when, nullptr);
}

}  // namespace http
