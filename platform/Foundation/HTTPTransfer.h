/// One HTTP or HTTPS exchange on libcurl: what is asked, what has arrived, how it ended.
///
/// A transfer never calls its client from within libcurl: arrivals are kept here and handed on by
/// `deliver`, so that a client may cancel, start another transfer or run the run loop in any callback.
/// A transfer belongs to the thread of its engine (HTTPEngine.h).
#pragma once

#include <curl/curl.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace http {

using Clock = std::chrono::steady_clock;

/// The proxy that carries an exchange; an empty host means none.
struct Proxy {
    std::string host;
    uint16_t port = 0;
    std::string user;
    std::string password;
};

struct Request {
    std::string url;
    std::string method;
    std::vector<std::string> headers;  ///< "Name: value", checked with `isHeaderLine`
    const void *body = nullptr;        ///< lives as long as the transfer; null for none
    size_t bodyLength = 0;
    std::function<ssize_t(char *, size_t)>
        reader;                           ///< the body as a stream: count read, 0 at the end, -1 on failure
    std::optional<int64_t> streamLength;  ///< its length where the caller states one; chunked otherwise
    std::string user;                     ///< credentials for the server, empty for none
    std::string password;
    Proxy proxy;
    std::chrono::milliseconds idleLimit{60000};  ///< the longest time without any progress
    bool decodesContent = true;                  ///< ask for gzip and deflate, and undo them
};

/// Status line and header fields of the final response.
struct Head {
    int status = 0;
    std::string version;  ///< "HTTP/1.1"
    std::vector<std::pair<std::string, std::string>> fields;

    /// The first field of that name, compared without case; null when absent.
    const std::string *find(const char *name) const;
};

/// How an exchange ended. `certificate` is OpenSSL's verification result where TLS verification failed.
struct Outcome {
    CURLcode code = CURLE_OK;
    long certificate = 0;
    std::string message;
};

/// A run of body bytes from malloc, handed to the client, who frees it.
struct Bytes {
    char *data = nullptr;
    size_t size = 0;
};

/// Told of arrivals, on the engine's thread, in this order: head, body (any number of times), end.
class Client {
public:
    virtual void receivedHead(const Head &head) = 0;
    virtual void receivedBody(Bytes bytes) = 0;
    virtual void ended(const Outcome &outcome) = 0;
    /// The thread is gone before the exchange ended: let go, call nobody.
    virtual void abandoned() = 0;

protected:
    ~Client() = default;
};

class Transfer {
public:
    Transfer(Request request, Client &client);
    ~Transfer();
    Transfer(const Transfer &) = delete;
    Transfer &operator=(const Transfer &) = delete;

    /// Sets every option of a fresh or reset handle; false when libcurl refuses one of them.
    bool configure(CURL *easy);

    /// Hands arrivals to the client, until none is left, the client lets go, or the transfer is held.
    void deliver();
    bool hasArrivals() const { return client_ && !held_ && (headReady_ || body_.size || outcome_); }

    /// While held, nothing is delivered (an authentication challenge waits for its answer).
    void hold(bool held) { held_ = held; }
    bool isHeld() const { return held_; }

    /// So much has arrived since the last delivery that libcurl was asked to wait.
    bool isFull() const { return full_; }

    void end(CURLcode code, long certificate = 0);
    void letGo() { client_ = nullptr; }
    Client *client() const { return client_; }

    void noteProgress(Clock::time_point now) { progress_ = now; }
    Clock::time_point idleDeadline() const { return progress_ + request_.idleLimit; }

    CURL *easy = nullptr;  ///< the handle while the engine runs it

private:
    static size_t onHeader(char *data, size_t, size_t size, void *self);
    static size_t onBody(char *data, size_t, size_t size, void *self);
    static size_t onRead(char *data, size_t, size_t size, void *self);
    bool takeHeaderLine(std::string_view line);
    bool headIsFinal() const;

    Request request_;
    Client *client_;
    curl_slist *headers_ = nullptr;
    Head head_;
    size_t headSize_ = 0;
    bool headEnded_ = false;      ///< the blank line has been seen
    bool headReady_ = false;      ///< waits to be delivered
    bool headDelivered_ = false;  ///< or withheld no longer: what follows are trailers
    bool held_ = false;
    Bytes body_;
    size_t bodyCapacity_ = 0;
    size_t usualChunk_ = 0;
    bool full_ = false;
    std::optional<Outcome> outcome_;
    Clock::time_point progress_ = Clock::now();
    char message_[CURL_ERROR_SIZE] = {};
};

/// Whether `name` and `value` make one header line: a token (RFC 9110, 5.6.2) and a value without line breaks
/// or NUL.
bool isHeaderLine(std::string_view name, std::string_view value);

/// Whether `method` is a token.
bool isMethod(std::string_view method);

}  // namespace http
