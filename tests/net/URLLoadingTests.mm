// NSURLConnection over real sockets: what it must answer, survive and refuse.
#include "../support/LocalServer.h"
#include "../support/Program.h"
#import "../support/Transfer.h"

#include <Tarvik/support/Pool.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <stdlib.h>

#include <chrono>
#include <fstream>
#include <thread>

namespace {

std::string pattern(size_t size)
{
    std::string text;
    while (text.size() < size)
        text += "0123456789";
    return text.substr(0, size);
}

size_t residentKilobytes(const char *which)
{
    std::ifstream file("/proc/self/status");
    for (std::string word; file >> word;) {
        size_t size;
        if (word == which && file >> size)
            return size;
    }
    return 0;
}

TEST(URLLoading, RequestsGoOutAsAsked)
{
    const LocalServer server;
    const Transfer post = run({.url = server.url("/echo"),
                               .method = "POST",
                               .body = std::string("<a>\0</a>", 8),
                               .headers = {{"Content-type", "text/xml"}, {"Content-Length", "3"}}});
    EXPECT_EQ(post.status, 200);
    EXPECT_TRUE(post.body.starts_with("POST /echo HTTP/1.1\r\n"));
    EXPECT_TRUE(post.body.ends_with(std::string("\r\n\r\n<a>\0</a>", 12)));
    for (const char *field :
         {"Content-type: text/xml\r\n", "Content-Length: 8\r\n", "Cache-Control: no-cache\r\n"})
        EXPECT_NE(post.body.find(field), std::string::npos) << field;
    EXPECT_EQ(post.body.find("Expect"), std::string::npos);
    EXPECT_EQ(run({.url = server.url("/echo"), .method = "PUT", .body = "x"}).body.substr(0, 4), "PUT ");

    const Transfer head = run({.url = server.url("/bytes/5"), .method = "HEAD"});
    EXPECT_EQ(head.body, "");
    EXPECT_EQ([head.response.get() expectedContentLength], 5);

    // What would smuggle a second header or request never leaves.
    EXPECT_EQ(run({.url = server.url("/echo"), .headers = {{"X-A", "1\r\nX-B: 2"}}}).error, NSURLErrorBadURL);
    EXPECT_EQ(run({.url = server.url("/echo"), .headers = {{"X A", "1"}}}).error, NSURLErrorBadURL);
    EXPECT_EQ(run({.url = server.url("/echo"), .method = "GET /x HTTP/1.1\r\nX:"}).error, NSURLErrorBadURL);
}

TEST(URLLoading, BodiesArriveWhole)
{
    const LocalServer server;
    for (size_t size : {size_t(0), size_t(1), size_t(16385), size_t(3000000)}) {
        EXPECT_TRUE(run({.url = server.url("/bytes/" + std::to_string(size))}).body == pattern(size)) << size;
        EXPECT_TRUE(run({.url = server.url("/chunked/" + std::to_string(size))}).body == pattern(size))
            << size;
    }
    EXPECT_EQ(run({.url = server.url("/gzip")}).body, "hello\n");
    EXPECT_GT(run({.url = server.url("/drip/20")}).chunks, 1)
        << "as they come (some together on a busy machine)";
    const Transfer multi = run({.url = server.url("/multi")});
    EXPECT_EQ(multi.field("X-Multi"), "a, b");
    EXPECT_STREQ([[multi.response.get() MIMEType] UTF8String], "text/html");
    EXPECT_STREQ([[multi.response.get() textEncodingName] UTF8String], "iso-8859-1");
    EXPECT_EQ(run({.url = server.url("/status/404")}).status, 404);
    EXPECT_EQ(run({.url = server.url("/status/204")}).error, 0);
}

TEST(URLLoading, FailuresAreFailures)
{
    const LocalServer server;
    const struct {
        std::string url;
        NSInteger error;
    } cases[] = {
        {server.url("/short"), NSURLErrorNetworkConnectionLost},
        {server.url("/shortchunk"), NSURLErrorNetworkConnectionLost},
        {server.url("/reset"), NSURLErrorNetworkConnectionLost},
        {server.url("/close"), NSURLErrorNetworkConnectionLost},
        {server.url("/garbage"), NSURLErrorUnsupportedURL},
        {server.url("/headers"), NSURLErrorNetworkConnectionLost},
        {server.url("/loop"), NSURLErrorHTTPTooManyRedirects},
        {server.url("/redirect/302?file:///etc/passwd"), NSURLErrorRedirectToNonExistentLocation},
        {"http://127.0.0.1:" + std::to_string(freePort()) + "/", NSURLErrorCannotConnectToHost},
        {"http://no-such-host.invalid/", NSURLErrorCannotFindHost},
        {"gopher://127.0.0.1/", NSURLErrorUnsupportedURL},
        {"", NSURLErrorUnsupportedURL},
    };
    for (const auto &[url, error] : cases) {
        const Transfer transfer = run({.url = url});
        EXPECT_EQ(transfer.error, error) << url;
        EXPECT_LT(transfer.seconds, 5) << url;
    }
    NSError *error = nil;
    NSURLRequest *unserved = [NSURLRequest requestWithURL:[NSURL URLWithString:@"gopher://127.0.0.1/"]];
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ([NSURLConnection sendSynchronousRequest:unserved returningResponse:nullptr error:&error], nil);
    EXPECT_EQ([error code], NSURLErrorUnsupportedURL);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15)) << "it waits out no limit";
    // And none of them spoils what comes after.
    EXPECT_EQ(run({.url = server.url("/bytes/3")}).body, "012");
}

TEST(URLLoading, TimeLimitsHold)
{
    const LocalServer server;
    for (const char *path : {"/silent", "/slow/5000", "/drip/3000"}) {
        const Transfer transfer = run({.url = server.url(path), .limit = 1});
        EXPECT_EQ(transfer.error, NSURLErrorTimedOut) << path;
        EXPECT_GE(transfer.seconds, 0.9) << path;
        EXPECT_LT(transfer.seconds, 5) << path;  // a busy machine is late, not this late
    }
    // Progress is what counts: 20 bytes in 3 seconds, never a second without one.
    EXPECT_EQ(run({.url = server.url("/drip/150"), .limit = 1}).body.size(), 20u);
}

TEST(URLLoading, RedirectsAreFollowedByTheRules)
{
    const LocalServer server;
    const struct {
        int status;
        const char *method, *asks;
    } cases[] = {{301, "POST", "GET "},  {302, "POST", "GET "}, {303, "PUT", "GET "},
                 {307, "POST", "POST "}, {308, "PUT", "PUT "},  {302, "GET", "GET "}};
    for (const auto &[status, method, asks] : cases) {
        // Relative, with dot segments: gnustep-base's own URLs get this wrong.
        const Transfer transfer =
            run({.url = server.url("/redirect/" + std::to_string(status) + "?../a/../echo?q=1"),
                 .method = method,
                 .body = *method == 'G' ? "" : "body"});
        EXPECT_EQ(transfer.redirects, 1);
        EXPECT_TRUE(transfer.body.starts_with(std::string(asks) + "/echo?q=1 "))
            << status << method << transfer.body;
        EXPECT_EQ(transfer.body.ends_with("body"), *asks == *method && *method == 'P') << status << method;
    }
    const LocalServer other;
    const Load load{.url = server.url("/redirect/302?" + other.url("/echo")),
                    .headers = {{"Authorization", "Basic x"}}};
    EXPECT_EQ(run(load).body.find("Authorization"), std::string::npos);  // not for another server
    const Transfer refused = run({.url = server.url("/redirect/302?/echo"), .refusesRedirects = true});
    EXPECT_EQ(refused.status, 302);
    EXPECT_EQ(refused.body, "moved\n");
}

TEST(URLLoading, ChallengesAndCookies)
{
    const LocalServer server;
    EXPECT_EQ(run({.url = server.url("/auth"), .user = "user", .password = "secret"}).body, "welcome\n");
    EXPECT_EQ(run({.url = server.url("/auth"), .user = "user", .password = "wrong"}).error,
              NSURLErrorUserCancelledAuthentication);
    const Transfer without = run({.url = server.url("/auth")});
    EXPECT_EQ(without.status, 401);
    EXPECT_EQ(without.body, "who are you?\n");
    run({.url = server.url("/cookie")});
    const std::string echo = run({.url = server.url("/echo")}).body;
    EXPECT_TRUE(echo.find("first=1") != echo.npos && echo.find("second=2") != echo.npos) << echo;
}

TEST(URLLoading, TheCachePolicyIsHonoured)
{
    const LocalServer server;
    const auto requests = [&] { return atoi(run({.url = server.url("/count")}).body.c_str()); };
    const auto load = [&](const char *path, NSURLRequestCachePolicy policy) {
        return run({.url = server.url(path), .policy = policy});
    };
    EXPECT_EQ(load("/cached/60", NSURLRequestReturnCacheDataDontLoad).error, NSURLErrorResourceUnavailable);
    int before = requests();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(load("/cached/60", NSURLRequestUseProtocolCachePolicy).body, "fresh\n");
    EXPECT_EQ(requests() - before, 2);  // one, and the count itself
    EXPECT_EQ(load("/cached/60", NSURLRequestReturnCacheDataDontLoad).body, "fresh\n");
    before = requests();
    EXPECT_EQ(load("/cached/60", NSURLRequestReloadIgnoringCacheData).body, "fresh\n");
    EXPECT_EQ(requests() - before, 2);
    // Stale at once: asked again with its tag, answered 304, served from the store as 200.
    for (int i = 0; i < 2; ++i) {
        const Transfer stale = load("/cached/0", NSURLRequestUseProtocolCachePolicy);
        EXPECT_EQ(stale.status, 200);
        EXPECT_EQ(stale.body, "fresh\n");
    }
    EXPECT_EQ(load("/echo", NSURLRequestUseProtocolCachePolicy).body,
              load("/echo", NSURLRequestUseProtocolCachePolicy).body);
}

TEST(URLLoading, CertificatesAreVerified)
{
    const TemporaryFolder folder;
    Authority authority(folder);
    setenv("SSL_CERT_FILE", authority.file().c_str(), 1);
    const LocalServer good(authority.issue("good", 30)), expired(authority.issue("expired", -1)),
        stranger(authority.issue("stranger", 30, "DNS:other.example")), alone(authority.selfSigned("alone"));
    EXPECT_EQ(run({.url = good.url("/bytes/3")}).body, "012");
    EXPECT_EQ(run({.url = good.url("/short")}).error, NSURLErrorNetworkConnectionLost);
    EXPECT_EQ(run({.url = expired.url("/bytes/3")}).error, NSURLErrorServerCertificateHasBadDate);
    EXPECT_EQ(run({.url = stranger.url("/bytes/3")}).error, NSURLErrorServerCertificateUntrusted);
    EXPECT_EQ(run({.url = alone.url("/bytes/3")}).error, NSURLErrorServerCertificateHasUnknownRoot);
    unsetenv("SSL_CERT_FILE");  // the system's store does not know the authority
    EXPECT_EQ(run({.url = good.url("/bytes/3")}).error, NSURLErrorServerCertificateHasUnknownRoot);
}

TEST(URLLoading, ProxiesCarryWhatTheSettingsSay)
{
    const TemporaryFolder folder;
    const ForwardProxy proxy(folder);
    const LocalServer server;
    const std::string address = "http://user:pw@127.0.0.1:" + std::to_string(proxy.port()) + "/";
    setenv("http_proxy", address.c_str(), 1);
    setenv("HTTPS_PROXY", address.c_str(), 1);
    EXPECT_NE(run({.url = server.url("/echo")}).body.find("tinyproxy"), std::string::npos);  // its Via field
    setenv("no_proxy", "example.org, 127.0.0.0/8", 1);
    EXPECT_EQ(run({.url = server.url("/echo")}).body.find("tinyproxy"), std::string::npos);
    unsetenv("no_proxy");

    Authority authority(folder);
    setenv("SSL_CERT_FILE", authority.file().c_str(), 1);
    const LocalServer secure(authority.issue("good", 30));
    EXPECT_EQ(run({.url = secure.url("/bytes/3")}).body, "012");
    EXPECT_NE(proxy.log().find("CONNECT 127.0.0.1:" + std::to_string(secure.port())), std::string::npos);

    // A proxy that lies: the server itself, which does not tunnel.
    setenv("https_proxy", server.url("").c_str(), 1);
    EXPECT_NE(run({.url = secure.url("/bytes/3")}).error, 0);
    setenv("http_proxy", ("127.0.0.1:" + std::to_string(freePort())).c_str(), 1);
    EXPECT_EQ(run({.url = server.url("/echo")}).error, NSURLErrorCannotConnectToHost);
}

TEST(URLLoading, DelegatesMayDoAsTheyLike)
{
    const LocalServer server;
    // Cancel in the middle of a body: nothing more is told.
    const Transfer cancelled = run(
        {.url = server.url("/endless"), .onChunk = [](NSURLConnection *c) { [c cancel]; }, .patience = 0.5});
    EXPECT_FALSE(cancelled.ended);
    EXPECT_EQ(cancelled.chunks, 1);
    // Load something else from within a callback, over a nested run loop.
    std::string inner;
    const Transfer outer = run({.url = server.url("/bytes/2000000"), .onChunk = [&](NSURLConnection *) {
                                    if (inner.empty())
                                        inner = run({.url = server.url("/bytes/5")}).body;
                                }});
    EXPECT_EQ(inner, "01234");
    EXPECT_TRUE(outer.body == pattern(2000000));
    // On another thread, which then ends.
    std::string threaded;
    std::thread([&] {
        GSRegisterCurrentThread();
        {
            tarvik::Pool pool;
            threaded = run({.url = server.url("/bytes/5")}).body;
        }
        GSUnregisterCurrentThread();
    }).join();
    EXPECT_EQ(threaded, "01234");
}

TEST(URLLoading, NothingIsLeftOverAThousandTransfers)
{
    const LocalServer server;
    const char *const paths[] = {"/echo",         "/short", "/redirect/302?/echo",
                                 "/bytes/100000", "/reset", "/close"};
    const auto round = [&](int count) {
        for (int i = 0; i < count; ++i) {
            tarvik::Pool pool;
            const std::string path = i % 20 ? paths[i % 4] : paths[4 + i / 20 % 2];
            run({.url = server.url(path),
                 .method = i % 2 ? "POST" : "GET",
                 .body = i % 2 ? pattern(1024) : ""});
        }
    };
    round(100);
    const size_t descriptors = openDescriptors();
    malloc_trim(0);
    [[maybe_unused]] const size_t memory = residentKilobytes("VmRSS:");
    round(1000);
    malloc_trim(0);
    EXPECT_EQ(openDescriptors(), descriptors);
#ifndef __SANITIZE_ADDRESS__
    EXPECT_LT(residentKilobytes("VmRSS:"), memory + 4096);
#endif
}

}  // namespace
