#include "../support/Program.h"
#include "../support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

const std::string kKey = "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f";

TEST(CRC32Command, FilesAndStandardInput)
{
    EXPECT_EQ(runTarvik({"crc32"}, "123456789").out, "cbf43926  -\n");
    EXPECT_EQ(runTarvik({"crc32"}).out, "00000000  -\n");

    const TemporaryFolder folder;
    const std::string a = folder.write("a", "abc"), odd = folder.write("two\nli\\nes", "a");
    const ProgramResult result =
        runTarvik({"crc32", a, "/no/such/file", folder.path(), odd, "-"}, "123456789");
    EXPECT_EQ(result.status, 1);
    std::string oddInList = folder.path().string() + "/two\\nli\\\\nes";
    EXPECT_EQ(result.out, "352441c2  " + a + "\n\\e8b7be43  " + oddInList + "\ncbf43926  -\n");
    EXPECT_NE(result.error.find("tarvik crc32: /no/such/file: No such file"), std::string::npos)
        << result.error;
    EXPECT_NE(result.error.find("Is a directory"), std::string::npos) << result.error;
}

// Files are read by blocks, whose checks are joined: lengths about the block's, and blocks of more than one
// length.
TEST(CRC32Command, FilesOfManyBlocks)
{
    const size_t block = 1 << 20;
    std::string bytes;
    for (uint32_t i = 1; bytes.size() < 3 * block + 12345; i = i * 1664525 + 1013904223)
        bytes += static_cast<char>(i >> 24);
    for (size_t length : {block - 1, block, block + 1, 2 * block, bytes.size()}) {
        const TemporaryFolder folder;
        const std::string file = folder.write("file", bytes.substr(0, length));
        const ProgramResult peer =
            runProgram({"sh", "-c", "gzip -1c \"$0\" | tail -c 8 | od -An -N4 -tx4 --endian=little", file});
        EXPECT_EQ(runTarvik({"crc32", file}).out, peer.out.substr(1, 8) + "  " + file + "\n") << length;
    }
}

TEST(CRC32Command, VerifiesAList)
{
    const TemporaryFolder folder;
    const std::string a = folder.write("a", "abc"), odd = folder.write("two\nlines", "a"),
                      none = folder / "none";
    const std::string good = runTarvik({"crc32", a, odd}).out;
    EXPECT_EQ(runTarvik({"crc32", "--check"}, good).out, a + ": OK\n" + odd + ": OK\n");
    EXPECT_EQ(runTarvik({"crc32", "--check", "--quiet"}, good).out, "");
    EXPECT_EQ(runTarvik({"crc32", "--check"}, "352441C2 *" + a + "\n").status, 0);

    folder.write("a", "abd");
    const ProgramResult mixed = runTarvik({"crc32", "-cq"}, good + "352441c2  " + none + "\nnonsense\n");
    EXPECT_EQ(mixed.status, 1);
    EXPECT_EQ(mixed.out, a + ": FAILED\n");
    EXPECT_NE(mixed.error.find(none + ": No such file"), std::string::npos) << mixed.error;
    EXPECT_NE(mixed.error.find("line 4"), std::string::npos) << mixed.error;
    EXPECT_NE(mixed.error.find("3 of 4 not verified"), std::string::npos) << mixed.error;
    for (const char *list :
         {"", "352441c2 a\n", "352441c  a\n", "352441c2  \n", "\\352441c2  a\\x\n", "-52441c2  a\n"})
        EXPECT_EQ(runTarvik({"crc32", "--check"}, list).status, 1) << list;
    EXPECT_EQ(runTarvik({"crc32", "--quiet", a}).status, 2);
}

TEST(WakeCommand, EnciphersAndDeciphers)
{
    const ProgramResult known = runTarvik({"wake", "encipher", "--key", kKey}, std::string(8, '\0'));
    EXPECT_EQ(known.out, std::string("\x0f\x0e\x0d\x0c\x84\x02\x90\x6a", 8));

    std::string bytes;
    for (int i = 0; i < 32; ++i)
        bytes += static_cast<char>(i);
    const TemporaryFolder folder;
    const std::string key = folder.write("key", bytes), text(3'000'000, 'x'),
                      file = folder.write("file", text);
    const ProgramResult secret = runTarvik({"wake", "encipher", "-k", key, file});
    EXPECT_EQ(secret.out.substr(0, 8), std::string("\x77\x76\x75\x74\xfc\x7a\xe8\x12", 8));
    EXPECT_EQ(runTarvik({"wake", "decipher", "-K", kKey}, secret.out).out, text);

    for (size_t length : {0, 1, 3, 4, 255, 256, 257, 1'000'001}) {
        const std::string message(length, '\4');  // looks like padding
        const ProgramResult padded = runTarvik({"wake", "encipher", "--pad", "-k", key}, message);
        EXPECT_EQ(padded.out.size() % 4, 0u);
        const ProgramResult back = runTarvik({"wake", "decipher", "--pad", "-k", key}, padded.out);
        EXPECT_EQ(back.status, 0);
        EXPECT_EQ(back.out, message);
    }
}

TEST(WakeCommand, Refuses)
{
    for (size_t length : {257, 258, 259, 1023}) {  // the cipher would not come back
        const ProgramResult result = runTarvik({"wake", "encipher", "--key", kKey}, std::string(length, 'x'));
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.error.find("--pad"), std::string::npos) << result.error;
    }
    for (const char *unpadded : {"not padded!!", ""})
        EXPECT_EQ(runTarvik({"wake", "decipher", "--pad", "--key", kKey}, unpadded).status, 1);
    const TemporaryFolder folder;
    const std::string shortKey = folder.write("key", "too short");
    EXPECT_EQ(runTarvik({"wake", "encipher", "-k", shortKey}, "x").status, 1);
    for (const std::vector<std::string> &words :
         std::vector<std::vector<std::string>>{{"wake"},
                                               {"wake", "encipher"},
                                               {"wake", "encipher", "-K", "00"},
                                               {"wake", "encipher", "-K", std::string(64, 'x')},
                                               {"wake", "encipher", "-K", kKey, "-k", shortKey},
                                               {"wake", "encipher", "-k", "-"},
                                               {"wake", "encipher", "-K", kKey, "a", "b"}})
        EXPECT_EQ(runTarvik(words).status, 2) << testing::PrintToString(words);
}

}  // namespace
