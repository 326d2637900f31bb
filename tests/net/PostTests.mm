// A body sent and its answer taken: by the platform's URL loading and by the external client.
#include "../support/LocalServer.h"
#include "../support/Namespace.h"
#include "../support/Program.h"
#include <Carbon/Gestalt.h>
#import <Foundation/Foundation.h>
#include <Tarvik/net/CommunicationLibrary.h>
#import <Tarvik/net/MyUrlConnection.h>
#include <Tarvik/support/Bridge.h>
#include <Tarvik/support/Pool.h>
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

NSData *get(const std::string &url, int32_t seconds)
{
    NSURLRequest *request =
        [NSURLRequest requestWithURL:[NSURL URLWithString:[NSString stringWithUTF8String:url.c_str()]]];
    return [MyUrlConnection sendMySynchronousRequest:request transferTimeout:seconds];
}

TEST(MyUrlConnection, AnswersTheBytesOrNil)
{
    const LocalServer server;
    NSData *data = get(server.url("/bytes/3000000"), 10);
    EXPECT_EQ([data length], 3000000u);
    EXPECT_EQ(memcmp([data bytes], "0123456789", 10), 0);
    EXPECT_EQ([get(server.url("/drip/5"), 10) length], 20u);  // many chunks
    for (const char *path : {"/short", "/reset", "/close", "/garbage", "/status/204/none", "/bytes/0"})
        EXPECT_EQ(get(server.url(path), 10), nil) << path;
    EXPECT_EQ(get("http://127.0.0.1:" + std::to_string(freePort()) + "/", 10), nil);

    for (int32_t seconds : {0, -5}) {
        MyUrlConnection *connection = [[[MyUrlConnection alloc] initWithTimeout:seconds] autorelease];
        EXPECT_EQ([[connection valueForKey:@"m_timeout"] intValue], 60);
        EXPECT_FALSE([connection isTransferDone]);
    }
}

TEST(MyUrlConnection, WhatEndsInTheSliceOfTheTimeLimitIsTooLate)
{
    const LocalServer server;
    MyUrlConnection *connection = [[[MyUrlConnection alloc] initWithTimeout:30] autorelease];
    NSURL *url = [NSURL URLWithString:tarvik::nsstring(server.url("/bytes/10"))];
    ASSERT_TRUE([connection sendRequest:[NSURLRequest requestWithURL:url]]);
    while (![connection isTransferDone])
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                                 beforeDate:[NSDate dateWithTimeIntervalSinceNow:20]];
    EXPECT_TRUE([connection hasFinished]);
    [connection timeIsUp:nil];
    EXPECT_EQ([connection wait], nil);
    EXPECT_FALSE([connection hasFinished]);
}

TEST(MyUrlConnection, AThousandTransfersLeaveNothing)
{
    const LocalServer server;
    const auto transfer = [&](int count) {
        for (int i = 0; i < count; ++i) {
            tarvik::Pool pool;
            ASSERT_EQ([get(server.url(i % 10 ? "/bytes/5000" : "/reset"), 10) length], i % 10 ? 5000u : 0u)
                << i;
        }
    };
    transfer(20);
    const size_t descriptors = openDescriptors();
    const size_t bytes = mallinfo2().uordblks;
    transfer(1000);
    EXPECT_EQ(openDescriptors(), descriptors);
#ifndef __SANITIZE_ADDRESS__
    EXPECT_LT(mallinfo2().uordblks, bytes + 100'000) << "a hundred bytes a transfer";
#else
    (void)bytes;
#endif
}

/// A name server that takes every question and answers none, for this process. -1 where it can't be had.
int muteResolver(const TemporaryFolder &folder)
{
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(53);
    inet_pton(AF_INET, "127.0.77.53", &address.sin_addr);
    if (bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 || !enterPrivateMounts() ||
        !bindMount(folder.write("resolv.conf", "nameserver 127.0.77.53\n"),
                   std::filesystem::canonical("/etc/resolv.conf")))
        return -1;
    return socket;
}

TEST(MyUrlConnection, TimeLimitsHoldWithinHalfASecond)
{
    const LocalServer server;
    const TemporaryFolder folder;
    const int resolver = muteResolver(folder);
    std::vector<std::string> urls = {server.url("/endless")};
    if (resolver >= 0)
        urls.push_back("http://mute.example/");
    for (const std::string &url : urls) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(get(url, 1), nil) << url;
        EXPECT_NEAR(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 1.25,
                    0.3)
            << url;
    }
    char question[512];
    EXPECT_TRUE(resolver < 0 || recv(resolver, question, sizeof question, MSG_DONTWAIT) > 0)
        << "it was asked";
}

TEST(Post, GoesThroughURLLoading)
{
    const LocalServer server;
    std::string answer = "old";
    ASSERT_EQ(CommunicationLibrary::Post(server.url("/echo"), std::string("<a>\0</a>", 8), answer), 0);
    EXPECT_TRUE(answer.starts_with("POST /echo HTTP/1.1\r\n")) << answer;
    EXPECT_TRUE(answer.ends_with(std::string("\r\n\r\n<a>\0</a>", 12)));
    for (const char *field :
         {"Content-type: text/xml\r\n", "User-Agent: Tarvik\r\n", "Cache-Control: no-cache\r\n"})
        EXPECT_NE(answer.find(field), std::string::npos) << field << answer;
    EXPECT_EQ(CommunicationLibrary::Post(server.url("/bytes/0"), "", answer), 0) << "an empty answer is one";
    EXPECT_EQ(answer, "");
    for (const std::string &url :
         {server.url("/close"), std::string("http://a b/"), std::string("\xFF"), std::string(),
          std::string("gopher://h/"), std::string("file:///etc/hostname")})
        EXPECT_EQ(CommunicationLibrary::Post(url, "x", answer), CommunicationLibrary::kFailure) << url;
    EXPECT_EQ(answer, "");
}

class CurlPath : public testing::Test {
protected:
    CurlPath()
    {
        setenv("TMPDIR", folder.path().c_str(), 1);
        std::filesystem::create_directory(folder / "tarvik-logs");
        request = folder.write("request-1.xml", "<a/>");
        response = folder / "response-1.xml";
    }
    int send(const std::string &url)
    {
        return CommunicationLibrary::CurlExternSecureDownload(url, request, response, answer);
    }
    std::string log() const { return folder.read("tarvik-logs/log.txt"); }

    const TemporaryFolder folder;
    const LocalServer server;
    std::string request, response, answer = "old";
};

TEST_F(CurlPath, RunsTheClientAsItIsLogged)
{
    const ForwardProxy proxy(folder);
    const std::string url = server.url("/echo"), port = std::to_string(proxy.port());
    const std::string line = "curl command line: \n/usr/bin/curl  --url " + url +
                             " --connect-timeout 60 -m 70 -f  -s --data-binary @\"" + request + "\" -o \"" +
                             response + "\" -H \"Content-Type: text/xml\" -H \"User-Agent: Tarvik\"";
    ASSERT_EQ(send(url), 0);
    EXPECT_TRUE(answer.starts_with("POST /echo HTTP/1.1\r\n"));
    EXPECT_TRUE(answer.ends_with("\r\n\r\n<a/>"));
    EXPECT_NE(log().find(line + "\n"), std::string::npos) << log();
    // The https proxy comes first, whatever the URL's scheme.
    setenv("http_proxy", ("127.0.0.1:" + std::to_string(freePort())).c_str(), 1);
    setenv("https_proxy", ("127.0.0.1:" + port).c_str(), 1);
    ASSERT_EQ(send(url), 0);
    EXPECT_NE(answer.find("tinyproxy"), std::string::npos);
    EXPECT_NE(log().find("Message: CommLib,proxy required for destination URL\n"), std::string::npos);
    EXPECT_NE(log().find(line + " -x 127.0.0.1:" + port + "\n"), std::string::npos);
}

TEST_F(CurlPath, ResultsAndLogs)
{
    EXPECT_EQ(send(server.url("/status/404")), 4);
    EXPECT_EQ(answer, "old") << "untouched";
    EXPECT_NE(log().find("Message: curlerrcode original: ErrorCode: 5632\n"), std::string::npos) << log();
    EXPECT_NE(log().find("Message: curlerrcode: ErrorCode: 22\n"), std::string::npos);
    EXPECT_EQ(send("http://127.0.0.1:" + std::to_string(freePort()) + "/"), 4);
    Authority authority(folder);
    const LocalServer secure(authority.issue("good", 30));
    EXPECT_EQ(send(secure.url("/bytes/3")), 3) << "certificate of an unknown authority";
    setenv("CURL_CA_BUNDLE", authority.file().c_str(), 1);
    EXPECT_EQ(send(secure.url("/bytes/3")), 0);
    EXPECT_EQ(answer, "012");

    response = "/dev/null/none";  // can't be written: the client fails; can't be read: an empty success
    EXPECT_EQ(send(server.url("/bytes/3")), 4);
    response = folder / "none";
    EXPECT_EQ(send(server.url("/bytes/0")), 0);
    EXPECT_EQ(answer, "");
}

TEST_F(CurlPath, AnOldSystemPostsThroughIt)
{
    ReplaceGestalt(
        gestaltSystemVersion, [](OSType, SInt32 *answer) -> OSErr { return *answer = 0x1031, noErr; },
        nullptr);
    ASSERT_EQ(CommunicationLibrary::Post(server.url("/echo"), "<b/>", answer), 0);
    EXPECT_TRUE(answer.ends_with("\r\n\r\n<b/>"));
    // A NUL cuts the rest of its piece of 2048 bytes.
    ASSERT_EQ(CommunicationLibrary::Post(server.url("/echo"), std::string(1, '\0') + std::string(4096, 'x'),
                                         answer),
              0);
    EXPECT_LT(answer.size(), 2500u);
    EXPECT_GT(answer.size(), 2048u);
    EXPECT_EQ(CommunicationLibrary::Post(server.url("/status/500"), "", answer), 4);
    EXPECT_NE(log().find("/request-"), std::string::npos);
    std::filesystem::remove_all(folder / "tarvik-logs");
    std::filesystem::remove(request);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path())) << "both files are removed";
}

TEST(PercentEncoding, KeepsTheSeventeenMarks)
{
    for (int c = 0; c < 256; ++c) {
        const std::string one(1, char(c));
        char escape[4];
        snprintf(escape, sizeof escape, "%%%02X", c);
        const bool kept = c && c < 128 && (isalnum(c) || strchr("-_.+!*'(),;/?:@=&", c));
        EXPECT_EQ(CommunicationLibrary::EncodeUrl(one), kept ? one : escape);
        EXPECT_EQ(CommunicationLibrary::EncodeFormValue(one), kept        ? one
                                                              : c == ' '  ? "+"
                                                              : c == '\n' ? "%0D%0A"
                                                                          : escape);
    }
    EXPECT_EQ(CommunicationLibrary::EncodeUrl("a b/c?d=\xC3\xA9"), "a%20b/c?d=%C3%A9");
    EXPECT_EQ(CommunicationLibrary::EncodeFormValue("a b\r\n"), "a+b%0D%0D%0A");
    EXPECT_EQ(CommunicationLibrary::EncodeUrl("") + CommunicationLibrary::EncodeFormValue(""), "");
}

TEST(CommunicationLibrary, OffersItsRecursiveLock)
{
    CommunicationLibrary library;
    library.GetLock().Lock();
    library.GetLock().Lock();
    std::atomic<bool> entered{false};
    std::thread other([&] {
        GSRegisterCurrentThread();
        library.GetLock().Lock();
        entered = true;
        library.GetLock().Unlock();
        GSUnregisterCurrentThread();
    });
    library.GetLock().Unlock();
    usleep(50000);
    EXPECT_FALSE(entered) << "held once more";
    library.GetLock().Unlock();
    other.join();
    EXPECT_TRUE(entered);
}

}  // namespace
