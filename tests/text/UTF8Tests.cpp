#include "tests/support/UTF8Pieces.h"

#include <Tarvik/text/UTF8.h>
#include <gtest/gtest.h>

#include <random>

namespace {

using tarvik::utf8::Kernel;

wstring wide(const std::u32string &text) { return wstring(text.begin(), text.end()); }
std::u32string plain(const wstring &text) { return std::u32string(text.begin(), text.end()); }

template <class Body>
void withEachKernel(Body body)
{
    for (const Kernel &kernel : tarvik::utf8::kernels()) {
        SCOPED_TRACE(kernel.name);
        if (kernel.runsHere())
            body(kernel);
    }
}

// A text of characters drawn from one repertoire after the other, in runs, so that blocks are pure as well as mixed.
std::u32string randomText(std::mt19937 &random, size_t length)
{
    static constexpr std::pair<char32_t, char32_t> kRepertoires[] = {
        {0x20, 0x7E}, {0xA0, 0x3FF}, {0x800, 0xFFFF}, {0x4E00, 0x9FFF}, {0x10000, 0x1FFFFF}, {1, 0x1FFFFF}};
    std::u32string text;
    while (text.size() < length) {
        const auto [first, last] = kRepertoires[random() % std::size(kRepertoires)];
        for (size_t run = 1 + random() % 90; run > 0 && text.size() < length; run--)
            text += first + random() % (last - first + 1);
    }
    return text;
}

// UTF-8 with four-byte sequences, which the toolkit's encoder leaves out.
std::string encodeAll(const std::u32string &text)
{
    std::string bytes;
    for (const char32_t c : text) {
        if (c <= 0xFFFF)
            bytes += referenceEncode({c});
        else
            bytes += {char(0xF0 | c >> 18), char(0x80 | (c >> 12 & 0x3F)), char(0x80 | (c >> 6 & 0x3F)),
                      char(0x80 | (c & 0x3F))};
    }
    return bytes;
}

TEST(UTF8, Decoding)
{
    using namespace std::string_literals;
    const std::pair<std::string, std::u32string> cases[] = {
        {"", U""},
        {"a", U"a"},
        {"\xC3\xA9", U"\xE9"},
        {"\xE2\x82\xAC", U"\x20AC"},
        {"\xF0\x9F\x98\x80", U"\x1F600"},
        {"\xA9", U"\x29"},        // a stray continuation byte
        {"\xC3(", U"\xE8"},       // a byte of another form in its place: six bits of it count
        {"\xE2\x82", U"\x2080"},  // missing bytes are 0
        {"\xFF\xBF\xBF\xBF", U"\x1FFFFF"},
        {"\xF8\x80\x80\x81", U"\x1"},
        {"\xED\xA0\xBD", U"\xD83D"},  // half a surrogate pair
        {"\xC1\x81", U"A"},           // overlong
        {"ab\0cd"s, U"ab"},
        {"ab\x80"
         "cd",
         U"ab"},  // each of these is a code point 0
        {"ab\xC0\x80"
         "cd",
         U"ab"},
        {"ab\xE0", U"ab"},
    };
    for (const auto &[text, result] : cases) {
        EXPECT_EQ(plain(Utils::utf8towstring(text)), result) << testing::PrintToString(text);
        const std::string front(61, 'x');  // again at the end of a block
        EXPECT_EQ(plain(Utils::utf8towstring(front + text)), std::u32string(61, U'x') + result);
    }
}

TEST(UTF8, Encoding)
{
    const std::pair<std::u32string, std::string> cases[] = {
        {U"", ""},
        {U"\x7F\x80\x7FF\x800\xFFFF", "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
        {U"\x1F600", ""},
        {U"a\x10000z", "az"},
        {{0xFFFFFFE9, 0x80000000, 0x80000141}, {"\x69\0A", 3}},
        {{U'a', 0, U'b'}, {"a\0b", 3}},
    };
    for (const auto &[text, result] : cases) {
        EXPECT_EQ(Utils::wstring2utf8(wide(text)), result);
        EXPECT_EQ(Utils::wstring2utf8(wide(text + std::u32string(70, U'x'))), result + std::string(70, 'x'));
    }
}

// All pairs of bytes and many fours, by themselves, in the middle of text, and across the ends of blocks.
TEST(UTF8, ShortSequencesOfAnyBytes)
{
    static constexpr uint8_t kTelling[] = {0x00, 0x7F, 0x80, 0xBF, 0xC0, 0xDF, 0xE0, 0xEF, 0xF0, 0xFF};
    std::vector<std::string> sequences;
    for (unsigned pair = 0; pair < 0x10000; pair++)
        sequences.push_back({char(pair >> 8), char(pair)});
    for (const uint8_t a : kTelling)
        for (const uint8_t b : kTelling)
            for (const uint8_t c : kTelling)
                for (const uint8_t d : kTelling)
                    sequences.push_back({char(a), char(b), char(c), char(d)});
    std::mt19937 random(5);
    for (const std::string &sequence : sequences) {
        std::string text = sequence;
        switch (random() % 4) {
        case 0: break;
        case 1: text = std::string(random() % 67, 'a') + sequence; break;
        case 2: text = std::string(random() % 67, 'a') + sequence + std::string(70, 'z'); break;
        default:
            text = std::string(30, 'a') + "\xC3\xA9\xE2\x82\xAC" + std::string(random() % 30, 'b') +
                   sequence + std::string(70, 'z');
        }
        const std::u32string expected = referenceDecode(text);
        withEachKernel([&](const Kernel &kernel) {
            ASSERT_EQ(decodeInPieces(kernel, text, 200), expected) << testing::PrintToString(text);
        });
        if (HasFatalFailure())
            return;
    }
}

TEST(UTF8, RandomTextWellFormedAndDamaged)
{
    withEachKernel([](const Kernel &kernel) {
        std::mt19937 random(7);
        for (int round = 0; round < 1500; round++) {
            std::u32string text = randomText(random, random() % 500);
            std::string bytes = encodeAll(text);
            const size_t room = 1 + random() % 600;
            ASSERT_EQ(decodeInPieces(kernel, bytes, room), text);
            ASSERT_EQ(encodeInPieces(kernel, text, room + 2), referenceEncode(text));
            for (unsigned damages = random() % 4; damages > 0 && !bytes.empty(); damages--)
                bytes[random() % bytes.size()] = char(random());
            bytes.resize(bytes.size() - random() % (bytes.size() + 1) / 8);
            ASSERT_EQ(decodeInPieces(kernel, bytes, room), referenceDecode(bytes));
            for (unsigned damages = random() % 4; damages > 0 && !text.empty(); damages--)
                text[random() % text.size()] = char32_t(random()) >> random() % 32;
            ASSERT_EQ(encodeInPieces(kernel, text, room + 2), referenceEncode(text));
        }
    });
}

TEST(UTF8, EveryElementEncodes)
{
    std::u32string all;
    for (char32_t c = 0; c < 0x11000; c++)
        all += c;
    withEachKernel([&](const Kernel &kernel) {
        EXPECT_EQ(encodeInPieces(kernel, all, 3 * all.size()), referenceEncode(all));
    });
}

// Texts of all the ways through the public functions, among them ones whose length is badly guessed from samples.
TEST(UTF8, LongTexts)
{
    std::mt19937 random(11);
    for (const size_t length : {7, 8, 9, 23, 24, 25, 64, 127, 8192, 8193, 30000, 200000}) {
        const std::u32string text = randomText(random, length);
        EXPECT_TRUE(plain(Utils::utf8towstring(encodeAll(text))) == text) << length;
        EXPECT_TRUE(Utils::wstring2utf8(wide(text)) == referenceEncode(text)) << length;
        const std::string noise(length, '\x81');
        EXPECT_TRUE(Utils::utf8towstring(noise) == wstring(length, L'\1')) << length;
        std::u32string sparse(length, U'\x1F600');
        sparse.replace(length / 2, length / 4, length / 4, U'\x20AC');
        EXPECT_TRUE(Utils::wstring2utf8(wide(sparse)) == referenceEncode(sparse)) << length;
    }
    std::string large(7 << 20, 'e');
    large.replace(large.size() / 3, 2, "\xC3\xA9");
    EXPECT_TRUE(plain(Utils::utf8towstring(large)) == referenceDecode(large));
    large[large.size() / 2] = 0;
    EXPECT_EQ(Utils::utf8towstring(large).size(), large.size() / 2 - 1);
}

}  // namespace
