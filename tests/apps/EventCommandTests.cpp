// tarvik event: one process listens, another one sends.
#include <gtest/gtest.h>

#include "tests/support/LocalServer.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

#include <thread>

namespace {

/// Sends when the listener has come up, which takes a moment.
ProgramResult sendTo(const Companion &listener, std::vector<std::string> words)
{
    words.insert(words.begin(), {"event", "send", std::to_string(listener.process())});
    ProgramResult result;
    for (int i = 0; i < 200; ++i) {
        result = runTarvik(words);
        if (result.error.find("nobody receives") == result.error.npos)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return result;
}

}  // namespace

TEST(EventCommandTest, AnEventAndItsReply)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("a file", "");
    Companion listener({TARVIK_COMMAND, "event", "listen", "-q", "--echo", "****/****"});
    const ProgramResult sent =
        sendTo(listener, {"book/borw", "Jane \"Austen\"\n", "page:long=12", "real:doub=2.5", "back:bool=true",
                          "kind:type=docu", "a=b", ":furl=" + file});
    ASSERT_EQ(sent.status, 0) << sent.error;
    EXPECT_EQ(sent.out,
              "'aevt'\\'ansr'{ '----':'furl'(\"file://" + folder.path().string() + "/a%20file\") }\n");
    const std::string line = listener.firstLine();
    EXPECT_EQ(line.substr(line.find(':')),
              ": 'book'\\'borw'{ '----':'furl'(\"file://" + folder.path().string() +
                  "/a%20file\"), 'page':12, 'real':'doub'(2.5), 'back':true, 'kind':'type'('docu') }");
    EXPECT_EQ(sendTo(listener, {"--no-reply", "a/b", "Jane \"Austen\"\n"}).out, "");
    EXPECT_TRUE(
        listener.firstLine().ends_with(": 'a   '\\'b   '{ '----':'utf8'(\"Jane \\\"Austen\\\"\\n\") }"));
    EXPECT_EQ(sendTo(listener, {"aevt/quit"}).status, 0);
    EXPECT_TRUE(listener.firstLine().ends_with("'aevt'\\'quit'{  }"));
    EXPECT_EQ(listener.firstLine(), "");  // it has ended
}

TEST(EventCommandTest, Failures)
{
    EXPECT_NE(runTarvik({"event", "send", "1", "a/b"}).error.find("nobody receives events there"),
              std::string::npos);
    EXPECT_EQ(runTarvik({"event", "send", "org.example.none", "a/b"}).status, 1);
    const ProgramResult self = runTarvik({"event", "send", "self", "a/b"});
    EXPECT_NE(self.error.find("doesn't know this event"), std::string::npos);
    for (const std::vector<std::string> &words : {std::vector<std::string>{"who", "a/b"},
                                                  {"1", "ab"},
                                                  {"1", "toolong/b"},
                                                  {"1", "a/b", "page:long=x"},
                                                  {"0", "a/b"}}) {
        std::vector<std::string> all = {"event", "send"};
        all.insert(all.end(), words.begin(), words.end());
        EXPECT_EQ(runTarvik(all).status, 2) << words[0] << " " << words[1];
    }
}
