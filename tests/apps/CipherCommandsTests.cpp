#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

namespace {

TEST(DigestCommand, ListsOfOthersAndOurOwn)
{
    TemporaryFolder folder;
    const std::string plain = folder.write("plain", "abc"), odd = folder.write("back\\slash\nline", "abc");
    const ProgramResult ours = runTarvik({"digest", plain, odd});
    EXPECT_EQ(runProgram({"sha1sum", plain, odd}).out, ours.out);
    EXPECT_EQ(runProgram({"md5sum", plain, odd}).out,
              runTarvik({"digest", "--algorithm=md5", plain, odd}).out);
    // One list may hold both kinds; the check with upper-case digits and a binary mark too.
    const std::string list =
        folder.write("list", ours.out + runProgram({"md5sum", plain}).out +
                                 "A9993E364706816ABA3E25717850C26C9CD0D89D *" + plain + "\n");
    const ProgramResult good = runTarvik({"digest", "--check", "--quiet", list});
    EXPECT_EQ(0, good.status) << good.error;
    EXPECT_EQ("", good.out);

    folder.write("plain", "abd");
    const ProgramResult bad = runTarvik({"digest", "--check", "--quiet", list});
    EXPECT_EQ(1, bad.status);
    EXPECT_EQ(plain + ": FAILED\n" + plain + ": FAILED\n" + plain + ": FAILED\n", bad.out);
    EXPECT_EQ("tarvik digest: 3 of 4 not verified\n", bad.error);
    EXPECT_EQ(1, runTarvik({"digest", "--check"}, "no list\n").status);
    EXPECT_EQ(1,
              runTarvik({"digest", "--algorithm=sha1", "--check"}, runProgram({"md5sum", odd}).out).status);
    EXPECT_EQ(2, runTarvik({"digest", "--algorithm=sha9"}).status);
}

TEST(CipherCommand, ThereAndBack)
{
    TemporaryFolder folder;
    const std::string message("any\0bytes\n", 10), file = folder.write("message", message),
                                                   password = folder.write("password", "secret\nsecond line");
    setenv("TARVIK_TEST_PASSWORD", "secret", 1);
    for (const char *algorithm : {"aes", "rc2", "rc4", "rc5"}) {
        const ProgramResult secret =
            runTarvik({"cipher", "encrypt", "--password-file", password, "--algorithm", algorithm, file});
        ASSERT_EQ(0, secret.status) << secret.error;
        EXPECT_EQ(message,
                  runTarvik({"cipher", "decrypt", "--password-env=TARVIK_TEST_PASSWORD"}, secret.out).out);
    }
    EXPECT_EQ(1, runTarvik({"cipher", "encrypt", "-p", password, "-a", "des", file}).status);
    EXPECT_EQ(2, runTarvik({"cipher", "encrypt", "-p", password, "-a", "rot13", file}).status);
    EXPECT_EQ(2, runTarvik({"cipher", "encrypt", "-p", "-"}).status);
    EXPECT_EQ(2, runTarvik({"cipher", "encrypt", "-p", password, "-e", "HOME", file}).status);
    for (const char *junk : {"", "aes", "aes 00 00", "aes 00112233445566778899aabbccddeeff 0", "x y z"})
        EXPECT_EQ(1, runTarvik({"cipher", "decrypt", "-p", password}, junk).status) << junk;
}

TEST(DESCommand, ThereAndBack)
{
    TemporaryFolder folder;
    const std::string key = folder.write("key", "12345678");
    const std::string secret = runTarvik({"des", "encrypt", "--key-file", key}, "hello").out;
    EXPECT_EQ(8u, secret.size());
    EXPECT_EQ(secret, runTarvik({"des", "encrypt", "--key=b1b2b3b4b5b6b7b8"}, "hello").out);  // other parity
    EXPECT_EQ(std::string("hello\0\0\0", 8), runTarvik({"des", "decrypt", "-k", key}, secret).out);
    EXPECT_EQ("hello", runTarvik({"des", "decrypt", "-k", key, "--strip"}, secret).out);
    EXPECT_EQ("", runTarvik({"des", "encrypt", "-k", key}).out);
    EXPECT_EQ(1, runTarvik({"des", "decrypt", "-k", key}, "seven b").status);
    EXPECT_EQ(1, runTarvik({"des", "encrypt", "-k", folder.write("short", "1234567")}, "x").status);
    EXPECT_EQ(2, runTarvik({"des", "encrypt", "--key=12"}, "x").status);
    EXPECT_EQ(2, runTarvik({"des", "encrypt"}, "x").status);
}

}  // namespace
