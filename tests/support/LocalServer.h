// The HTTP server of tests/net/server as a program beside the test, and what goes with it: certificates, a forward proxy.
#pragma once
#include "TemporaryFolder.h"

#include <sys/types.h>

#include <string>
#include <vector>

// A program that runs until it goes out of scope. Its standard input is a pipe that ends with it.
class Companion {
public:
    explicit Companion(std::vector<std::string> words);
    ~Companion();
    Companion(const Companion &) = delete;
    Companion &operator=(const Companion &) = delete;
    /// The first line that it says, then the next; empty when it ends without one.
    std::string firstLine();
    pid_t process() const { return process_; }

private:
    pid_t process_ = -1;
    int input_ = -1, output_ = -1;
};

// A certificate and its key, signed by an authority of the test's own.
struct Certificate {
    std::string file, key;
};
class Authority {
public:
    explicit Authority(const TemporaryFolder &folder);
    /// For 127.0.0.1 and localhost unless `names` says other subject alternative names.
    Certificate issue(const std::string &label, int days,
                      const std::string &names = "IP:127.0.0.1,DNS:localhost");
    /// Signed by itself.
    Certificate selfSigned(const std::string &label);
    /// To be trusted, as SSL_CERT_FILE.
    std::string file() const;

private:
    const TemporaryFolder &folder_;
};

class LocalServer {
public:
    LocalServer();
    explicit LocalServer(const Certificate &certificate);
    int port() const { return port_; }
    /// "http://127.0.0.1:PORT/..." or https.
    std::string url(const std::string &path) const;

private:
    std::string scheme_;
    Companion program_;
    int port_;
};

// tinyproxy on a port of its own. It marks what it carries with a Via field.
class ForwardProxy {
public:
    explicit ForwardProxy(const TemporaryFolder &folder);
    int port() const { return port_; }
    std::string log() const;

private:
    const TemporaryFolder &folder_;
    int port_;
    Companion program_;
};

/// A port of 127.0.0.1 that nobody listens on.
int freePort();
