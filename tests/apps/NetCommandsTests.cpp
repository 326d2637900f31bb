#include "../support/LocalServer.h"
#include "../support/Program.h"

#include <gtest/gtest.h>

namespace {

TEST(PostCommand, SendsThroughTheProxyAndTellsIt)
{
    const TemporaryFolder folder;
    const LocalServer server;
    const ForwardProxy proxy(folder);
    const std::string file = folder.write("report.xml", "<report/>"), url = server.url("/echo");
    const ProgramResult direct = runTarvik({"post", "-v", url, file});
    EXPECT_EQ(direct.status, 0);
    EXPECT_TRUE(direct.out.starts_with("POST /echo HTTP/1.1\r\n") &&
                direct.out.ends_with("\r\n\r\n<report/>"))
        << direct.out;
    EXPECT_TRUE(direct.error.starts_with(url + ": 9 bytes, direct\n" + url + ": status 200, "))
        << direct.error;

    const std::string address = "127.0.0.1:" + std::to_string(proxy.port());
    setenv("http_proxy", ("http://user:secret@" + address).c_str(), 1);
    const ProgramResult carried = runTarvik({"post", "--verbose", "--type=text/plain", url}, "from a pipe");
    EXPECT_EQ(carried.status, 0);
    EXPECT_TRUE(carried.error.starts_with(url + ": 11 bytes, proxy " + address + "\n")) << carried.error;
    EXPECT_NE(carried.out.find("tinyproxy"), std::string::npos);
    EXPECT_NE(carried.out.find("Content-type: text/plain\r\n"), std::string::npos);
    EXPECT_TRUE(carried.out.ends_with("\r\n\r\nfrom a pipe"));
    setenv("no_proxy", "127.0.0.0/8", 1);
    EXPECT_EQ(runTarvik({"post", url, "-"}, "x").error, "") << "quiet in a pipe";
}

TEST(PostCommand, FailuresSayWhy)
{
    const LocalServer server;
    const ProgramResult refused = runTarvik({"post", server.url("/status/500"), "-"}, "x");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "status\n");
    EXPECT_EQ(refused.error, "tarvik post: " + server.url("/status/500") +
                                 ": the server answered 500 (its answer is on standard output)\n");
    const ProgramResult late = runTarvik({"post", "--time=1", server.url("/endless"), "-"});
    EXPECT_EQ(late.status, 1);
    EXPECT_NE(late.error.find("no whole answer within 1 s"), std::string::npos) << late.error;
    EXPECT_EQ(runTarvik({"post", server.url("/short"), "-"}).status, 1);
    for (const char *url : {"ftp://h/", "nonsense", "http://", "http://a b/"})
        EXPECT_NE(runTarvik({"post", url, "-"}).error.find("is no http or https URL"), std::string::npos)
            << url;
    EXPECT_EQ(runTarvik({"post", server.url("/echo"), "/no/such/file"}).status, 1);
    EXPECT_EQ(runTarvik({"post", "--time=0", server.url("/echo"), "-"}).status, 2);
    EXPECT_EQ(runTarvik({"post"}).status, 2);
}

TEST(ProxyCommand, ShowsSettingsAndRules)
{
    EXPECT_EQ(runTarvik({"proxy"}).out, "http:        none\nhttps:       none\nexceptions:  none\n");
    setenv("http_proxy", "user:secret@proxy.example", 1);
    EXPECT_EQ(runTarvik({"proxy", "http://h.invalid/"}).out,
              "http://h.invalid/: proxy proxy.example:80 (no exceptions are set)\n");
    setenv("no_proxy", "10.0.0.0/8,localhost", 1);
    EXPECT_EQ(runTarvik({"proxy"}).out,
              "http:        proxy.example:80\nhttps:       none\nexceptions:  10.*, localhost\n");
    EXPECT_EQ(runTarvik({"proxy", "http://10.2.3.4/", "http://localhost/", "https://h/", "ftp://h/",
                         "http://h.invalid/"})
                  .out,
              "http://10.2.3.4/: direct (its address 10.2.3.4 is excepted by '10.*')\n"
              "http://localhost/: direct (its name localhost is excepted by 'localhost')\n"
              "https://h/: direct (no proxy is set for https)\n"
              "ftp://h/: direct (neither an http nor an https URL)\n"
              "http://h.invalid/: direct (its host can't be looked up)\n");
}

TEST(ReachCommand, AsksTheRoutes)
{
    const ProgramResult result = runTarvik({"reach", "127.0.0.1", "http://no-such.invalid/x"});
    EXPECT_EQ(result.out, "127.0.0.1: reachable\nhttp://no-such.invalid/x: not reachable\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(runTarvik({"reach", "http://localhost:8080/"}).status, 0);
}

TEST(SysinfoCommand, TellsWhatIsKnown)
{
    setenv("LC_ALL", "de_AT.UTF-8", 1);
    const std::string all = runTarvik({"sysinfo"}).out;
    for (const char *line : {"name: Apple MacOS ", "\nnumber: 0x1068\n", "\ncountry: AT\n",
                             "\nlanguage: de-AT\n", "\nidentifier: "})
        EXPECT_NE(all.find(line), std::string::npos) << line << all;
    EXPECT_EQ(runTarvik({"sysinfo", "country", "language"}).out, "AT\nde-AT\n");
    EXPECT_EQ(runTarvik({"sysinfo", "weather"}).status, 2);
}

TEST(WhereCommand, NamesFolders)
{
    const TemporaryFolder folder;
    const std::string base = folder.path();
    setenv("HOME", base.c_str(), 1);
    setenv("TMPDIR", base.c_str(), 1);
    EXPECT_NE(
        runTarvik({"where"}).out.find("temporary          " + base + "\ndocuments          (missing)\n"),
        std::string::npos);
    EXPECT_EQ(runTarvik({"where", "documents"}).status, 1);
    EXPECT_EQ(runTarvik({"where", "--create", "documents"}).out, base + "/Documents\n");
    EXPECT_EQ(runTarvik({"where", "home", "documents"}).out, base + "\n" + base + "/Documents\n");
    EXPECT_EQ(runTarvik({"where", "attic"}).status, 2);
}

}  // namespace
