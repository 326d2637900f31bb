// An HTTP server for tests, with every kind of answer that a client must survive.
//
//     tarvik-test-server [CERTIFICATE KEY]      with both it speaks TLS
//
// Prints its port on 127.0.0.1 and serves until its standard input ends. What is asked is told by the path:
//
// | path           | answer                                      | path            | answer                                  |
// |----------------|---------------------------------------------|-----------------|-----------------------------------------|
// | /echo          | the request as it came, head and body       | /status/N       | status N, a short body                  |
// | /keep          | the same, and it is kept                    | /kept           | what was kept last                      |
// | /bytes/N       | N bytes ("0123456789...")                   | /chunked/N      | the same in chunks                      |
// | /gzip          | a gzip body ("hello\n")                     | /drip/N         | a byte every N ms, 20 of them           |
// | /silent        | none, though it takes the request           | /endless        | one that never stops                    |
// | /slow/N        | after N ms                                  | /close          | closes without one                      |
// | /reset         | resets in the middle of the body            | /short          | ends before its length                  |
// | /shortchunk    | ends inside a chunk                         | /garbage        | not HTTP                                |
// | /headers       | header fields without end                   | /redirect/N?URL | status N with Location: URL             |
// | /loop          | redirects to itself                         | /auth           | Basic realm "test", user:secret         |
// | /cookie        | sets two cookies                            | /cached/AGE     | max-age=AGE and an ETag; 304 for it     |
// | /count         | how many requests came before this one      | /multi          | repeated header fields                  |
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace {

std::atomic<unsigned> gRequests{0};
SSL_CTX *gTLS = nullptr;

void pause(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

class Connection {
public:
    explicit Connection(int socket) : socket_(socket)
    {
        if (!gTLS)
            return;
        tls_ = SSL_new(gTLS);
        SSL_set_fd(tls_, socket_);
        if (SSL_accept(tls_) != 1)
            broken_ = true;
    }
    ~Connection()
    {
        SSL_free(tls_);
        close(socket_);
    }

    void serve()
    {
        while (!broken_ && !closing_ && readRequest())
            answer();
    }

private:
    ssize_t receive(char *data, size_t size)
    {
        return tls_ ? SSL_read(tls_, data, int(size)) : recv(socket_, data, size, 0);
    }

    bool send(std::string_view data)
    {
        while (!data.empty() && !broken_) {
            const ssize_t count = tls_ ? SSL_write(tls_, data.data(), int(data.size()))
                                       : ::send(socket_, data.data(), data.size(), MSG_NOSIGNAL);
            if (count <= 0)
                broken_ = true;
            else
                data.remove_prefix(size_t(count));
        }
        return !broken_;
    }

    bool fill()
    {
        char buffer[65536];
        const ssize_t count = receive(buffer, sizeof buffer);
        if (count > 0)
            pending_.append(buffer, size_t(count));
        return count > 0;
    }

    bool readRequest()
    {
        size_t end;
        while ((end = pending_.find("\r\n\r\n")) == std::string::npos) {
            if (!fill())
                return false;
        }
        head_ = pending_.substr(0, end + 4);
        pending_.erase(0, end + 4);
        body_.clear();
        method_ = head_.substr(0, head_.find(' '));
        path_ = head_.substr(method_.size() + 1);
        path_ = path_.substr(0, path_.find(' '));
        if (field("transfer-encoding") == "chunked")
            return readChunks();
        const size_t length = strtoull(field("content-length").c_str(), nullptr, 10);
        while (pending_.size() < length) {
            if (!fill())
                return false;
        }
        body_ = pending_.substr(0, length);
        pending_.erase(0, length);
        return true;
    }

    bool readChunks()
    {
        for (;;) {
            size_t line;
            while ((line = pending_.find("\r\n")) == std::string::npos) {
                if (!fill())
                    return false;
            }
            const size_t size = strtoull(pending_.c_str(), nullptr, 16);
            while (pending_.size() < line + 4 + size) {
                if (!fill())
                    return false;
            }
            body_ += pending_.substr(line + 2, size);
            pending_.erase(0, line + 4 + size);
            if (size == 0)
                return true;
        }
    }

    std::string field(const char *name) const
    {
        for (size_t at = head_.find("\r\n"); at + 2 < head_.size(); at = head_.find("\r\n", at + 2)) {
            const size_t colon = head_.find(':', at + 2);
            if (colon != std::string::npos &&
                strncasecmp(head_.c_str() + at + 2, name, colon - at - 2) == 0 &&
                strlen(name) == colon - at - 2) {
                const size_t first = head_.find_first_not_of(' ', colon + 1);
                return head_.substr(first, head_.find("\r\n", colon) - first);
            }
        }
        return {};
    }

    bool reply(int status, const std::string &fields, const std::string &body)
    {
        std::string head = "HTTP/1.1 " + std::to_string(status) + " Status\r\n" + fields;
        head += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n";
        return send(method_ == "HEAD" ? head : head + body);
    }

    void sendBytes(size_t total, bool chunked)
    {
        static const std::string pattern = [] {
            std::string text;
            while (text.size() < 100000)
                text += "0123456789";
            return text;
        }();
        if (chunked)
            send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
        else
            send("HTTP/1.1 200 OK\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Length: " +
                 std::to_string(total) + "\r\n\r\n");
        for (size_t left = total; left && !broken_;) {
            const size_t count = std::min(left, pattern.size());
            char size[32];
            snprintf(size, sizeof size, "%zx\r\n", count);
            if (chunked)
                send(size);
            send(std::string_view(pattern).substr(0, count));
            if (chunked)
                send("\r\n");
            left -= count;
        }
        if (chunked)
            send("0\r\nX-Trailer: late\r\n\r\n");
    }

    // Ends the connection with what was sent; `abruptly` with a reset.
    void hangUp(bool abruptly = false)
    {
        const linger now{1, 0};
        if (abruptly)
            setsockopt(socket_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
        closing_ = true;
    }

    void answer();

    int socket_;
    SSL *tls_ = nullptr;
    bool broken_ = false, closing_ = false;
    std::string pending_, head_, method_, path_, body_;
};

void Connection::answer()
{
    const unsigned before = gRequests++;
    if (path_.starts_with("http://"))  // asked as a proxy: serve it all the same, so that lies can be told
        path_ = path_.substr(std::min(path_.find('/', 7), path_.size()));
    const size_t second = path_.find('/', 1);
    const std::string what = path_.substr(0, std::min(second, path_.find('?')));
    const int number = second == std::string::npos ? 0 : atoi(path_.c_str() + second + 1);
    const size_t question = path_.find('?');
    const std::string query = question == std::string::npos ? "" : path_.substr(question + 1);

    if (what == "/echo")
        reply(200, "Content-Type: text/plain\r\n", head_ + body_);
    else if (what == "/keep" || what == "/kept") {
        static std::mutex mutex;
        static std::string kept;
        const std::lock_guard lock(mutex);
        if (what == "/keep")
            kept = head_ + body_;
        reply(200, "Content-Type: text/plain\r\n", kept);
    } else if (what == "/status")
        reply(number, "", "status\n");
    else if (what == "/bytes" || what == "/chunked")
        sendBytes(strtoull(path_.c_str() + second + 1, nullptr, 10), what == "/chunked");
    else if (what == "/gzip")
        reply(200, "Content-Encoding: gzip\r\n",
              std::string(
                  "\x1f\x8b\x08\0\0\0\0\0\x02\x03\xcb\x48\xcd\xc9\xc9\xe7\x02\0\x20\x30\x3a\x36\x06\0\0\0",
                  26));
    else if (what == "/drip") {
        send("HTTP/1.1 200 OK\r\nContent-Length: 20\r\n\r\n");
        for (int i = 0; i < 20 && send("."); ++i)
            pause(number);
    } else if (what == "/silent")
        pause(3600000);
    else if (what == "/endless") {
        send("HTTP/1.1 200 OK\r\n\r\n");
        while (send("endless "))
            pause(1);
    } else if (what == "/slow") {
        pause(number);
        reply(200, "", "slow\n");
    } else if (what == "/close")
        hangUp();
    else if (what == "/reset") {
        send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
        pause(50);
        hangUp(true);
    } else if (what == "/short") {
        send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + std::string(500, 'x'));
        hangUp();
    } else if (what == "/shortchunk") {
        send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n100\r\nonly this");
        hangUp();
    } else if (what == "/garbage") {
        send("SSH-2.0-OpenSSH_9.2p1\r\nnot HTTP at all\r\n\r\n");
        hangUp();
    } else if (what == "/headers") {
        send("HTTP/1.1 200 OK\r\n");
        for (unsigned i = 0; send("X-Field-" + std::to_string(i) + ": " + std::string(500, 'x') + "\r\n");
             ++i) {
        }
    } else if (what == "/redirect")
        reply(number, "Location: " + query + "\r\n", "moved\n");
    else if (what == "/loop")
        reply(302, "Location: /loop\r\n", "");
    else if (what == "/auth") {
        if (field("authorization") == "Basic dXNlcjpzZWNyZXQ=")
            reply(200, "", "welcome\n");
        else
            reply(401, "WWW-Authenticate: Basic realm=\"test\"\r\n", "who are you?\n");
    } else if (what == "/cookie")
        reply(200, "Set-Cookie: first=1; Path=/\r\nSet-Cookie: second=2; Path=/\r\n", "set\n");
    else if (what == "/cached") {
        if (field("if-none-match") == "\"tag\"")
            reply(304, "ETag: \"tag\"\r\n", "");
        else
            reply(200, "ETag: \"tag\"\r\nCache-Control: max-age=" + std::to_string(number) + "\r\n",
                  "fresh\n");
    } else if (what == "/count")
        reply(200, "", std::to_string(before) + "\n");
    else if (what == "/multi")
        reply(200, "x-multi: a\r\nX-Multi: b\r\ncontent-type: Text/HTML; charset=\"ISO-8859-1\"\r\n",
              "multi\n");
    else
        reply(404, "", "no such path\n");
}

bool useTLS(const char *certificate, const char *key)
{
    gTLS = SSL_CTX_new(TLS_server_method());
    return SSL_CTX_use_certificate_chain_file(gTLS, certificate) == 1 &&
           SSL_CTX_use_PrivateKey_file(gTLS, key, SSL_FILETYPE_PEM) == 1;
}

}  // namespace

int main(int argc, char **argv)
{
    signal(SIGPIPE, SIG_IGN);
    if (argc == 3 && !useTLS(argv[1], argv[2])) {
        ERR_print_errors_fp(stderr);
        return 1;
    }
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(listener, reinterpret_cast<sockaddr *>(&address), length) != 0 || listen(listener, 512) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr *>(&address), &length) != 0) {
        perror("listening on 127.0.0.1");
        return 1;
    }
    printf("%d\n", ntohs(address.sin_port));
    fflush(stdout);
    std::thread([listener] {
        for (;;) {
            const int socket = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
            if (socket < 0)
                continue;
            const int on = 1;
            setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
            std::thread([socket] { Connection(socket).serve(); }).detach();
        }
    }).detach();
    char end;
    while (read(STDIN_FILENO, &end, 1) > 0) {
    }
    _exit(0);
}
