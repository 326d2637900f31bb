#include <Tarvik/net/XMLUtility.h>
#include <Tarvik/net/private/BlockKernels.h>
#include <Tarvik/net/private/CharacterReference.h>

#include "XMLSteps.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <random>

using tarvik::xml::BlockKernels;
using tarvik::xml::Marker;
using tarvik::xml::Stretch;
using Text = std::string;
using List = std::vector<Text>;

namespace {

const XMLUtility kXML;
const std::string kUntouched = "as it was";

// What an operation leaves in its out argument, and its flag as a leading + or -.
template <class Operation, class... Keys>
std::string valueOf(Operation operation, const Keys &...keys)
{
    std::string value = kUntouched;
    const bool flag = (kXML.*operation)(keys..., value);
    return (flag ? '+' : '-') + value;
}

TEST(XMLUtility, OneValueBetweenKeys)
{
    const auto outermost = [](Text text, Text start, Text end) {
        return valueOf(&XMLUtility::GetValueForOutermostKey, text, start, end);
    };
    EXPECT_EQ(outermost("x[[1]][2]y", "[", "]"), "+[1]][2");
    EXPECT_EQ(outermost("]x[", "[", "]"), "-");  // the end is looked for behind the start
    EXPECT_EQ(outermost("abc", "[", "]"), "-");
    EXPECT_EQ(outermost("", "", ""), "-" + kUntouched);
    EXPECT_EQ(outermost("ab", "[[", "]"), "-" + kUntouched);
    EXPECT_EQ(outermost("a]b", "", "]"), "+a");
    EXPECT_EQ(outermost("a[b", "[", ""), "+b");
    EXPECT_EQ(outermost("ab", "", ""), "-");

    const auto inside = [](Text text, Text start, Text end) {
        return valueOf(&XMLUtility::GetValuesInsideKey, text, start, end);
    };
    EXPECT_EQ(inside("x[[1]][2]y", "[", "]"), "+[1");
    EXPECT_EQ(inside("abc]", "[", "]"), "+abc");  // a missing start is no error
    EXPECT_EQ(inside("abc[", "[", "]"), "-");
    EXPECT_EQ(inside("", "[", "]"), "-");
    EXPECT_EQ(inside("ab", "[[", "]"), "-");
    EXPECT_EQ(inside("ab", "", ""), "-");
}

TEST(XMLUtility, TagsAndAttributes)
{
    const auto outermostTag = [](Text text, Text name) {
        return valueOf(&XMLUtility::GetValueForOutermostTag, text, name);
    };
    EXPECT_EQ(outermostTag("<a><a>1</a></a>", "a"), "+<a>1</a>");
    EXPECT_EQ(outermostTag("<a b=\"\">1</a>", "a"), "-");
    EXPECT_EQ(outermostTag("", "a"), "-");
    EXPECT_EQ(outermostTag("<a", "a"), "-");

    const auto attribute = [](Text text, Text name) {
        return valueOf(&XMLUtility::GetAttribute, text, name);
    };
    EXPECT_EQ(attribute("<v id=\"7\"/>", "id"), "+7");
    EXPECT_EQ(attribute("<v id='7'/>", "id"), "-");
    EXPECT_EQ(attribute("<v x=\"7\"/>", "id"), "+<v x=");  // what asking for a missing attribute gives
    EXPECT_EQ(attribute("", "id"), "-" + kUntouched);
    EXPECT_EQ(attribute("<v id=\"7\"/>", ""), "-" + kUntouched);

    List list{"old"};
    kXML.GetValuesForTag("<v>1</v><v a=\"\">2</v><v>3</v><v>4", "v", list);
    EXPECT_EQ(list, (List{"1", "3"}));
    kXML.GetValuesWithElement("<v>1</v><v a=\"\">2</v><v>3</v>", "v", list);
    EXPECT_EQ(list, (List{"<v a=\"\">2</v>"}));
    kXML.GetAttributes("<v id=\"1\" xid=\"2\"> id=\"3\" id='4'", "id", list);
    EXPECT_EQ(list, (List{"1", "2", "3"}));
    kXML.GetAttributes("<v id=\"1\"/>", "", list);
    EXPECT_EQ(list, List{});

    std::string section = kUntouched;
    kXML.GetValueInsideCDATA("<a><![CDATA[1<2]]><![CDATA[3]]></a>", section);
    EXPECT_EQ(section, "1<2");
    kXML.GetValueInsideCDATA("<![CDATA[1", section);
    EXPECT_EQ(section, "");
}

TEST(XMLUtility, ListsBetweenKeysAreAppendedTo)
{
    List list{"old"};
    kXML.GetValuesInsideKeys("[[a]b][c", "[", "]", list);
    kXML.GetValuesBetweenKeys("[[a]b][c", "[", "]", list);
    EXPECT_EQ(list, (List{"old", "[a", "[[a]"}));
    for (const auto &[start, end] : {std::pair{"", ","}, {",", ""}, {"", ""}, {"a,b,", "a"}}) {
        list.clear();
        kXML.GetValuesInsideKeys("a,b,", start, end, list);
        EXPECT_EQ(list, steps::pairs("a,b,", start, end, false)) << start << " " << end;
    }
    // More than a batch, short and long values, and a list that grows with every call.
    std::string text;
    for (int i = 0; i < 3000; ++i)
        text += "<v>" + std::string(i % 40, 'x') + std::to_string(i) + "</v>";
    kXML.GetValuesForTag(text, "v", list);
    EXPECT_EQ(list, steps::pairs(text, "<v>", "</v>", false));
}

TEST(XMLUtility, OutMayBeAnyArgument)
{
    std::string text = "<a>&lt;&#65;</a>";
    EXPECT_TRUE(kXML.GetValueForOutermostTag(text, "a", text));
    EXPECT_EQ(text, "&lt;&#65;");
    EXPECT_TRUE(kXML.ConvertStringReferenceToUTF8(text, text));
    EXPECT_EQ(text, "<");
    EXPECT_TRUE(kXML.ConvertStringUTF8ToReference(text, text));
    EXPECT_EQ(text, "&lt;");
    text = "-";
    kXML.ReplaceAllString("a-b", text, text, text);
    EXPECT_EQ(text, "a-b");
    std::string key = "[";
    EXPECT_TRUE(kXML.GetValuesInsideKey("[value]", key, "]", key));
    EXPECT_EQ(key, "value");
    EXPECT_FALSE(kXML.GetValuesInsideKey(key, "[", "]", key));
    EXPECT_EQ(key, "");
}

TEST(XMLUtility, Conversions)
{
    EXPECT_EQ(valueOf(&XMLUtility::ConvertStringUTF8ToReference, "a<b & \"c\"'\xC3\xA4'>\r\n"),
              "+a&lt;b &amp; &quot;c&quot;&apos;\xC3\xA4&apos;&gt;&#13;&#10;");
    EXPECT_EQ(valueOf(&XMLUtility::ConvertStringEntityReferenceToUTF8, "&amp;lt;&amp;quot;&amp;amp;&#65;&lt"),
              "+<&quot;&amp;&#65;&lt");
    const auto references = [](Text text) {
        return valueOf(&XMLUtility::ConvertStringCharacterReferenceToUTF8, text);
    };
    EXPECT_EQ(references("A&#65;B&#x42;C"), "+ABC");
    EXPECT_EQ(references("x&#12"), "+x12");
    EXPECT_EQ(references("x&#"), "+x&#");
    EXPECT_EQ(references("&#&#1;&#;2;3&#4 &#"), "+2;34 &#");
    EXPECT_EQ(valueOf(&XMLUtility::ConvertStringReferenceToUTF8, "&#65;"),
              "-");  // nothing is left to unescape
    EXPECT_EQ(valueOf(&XMLUtility::ConvertStringUTF8ToCharacterReference, "a"), "+" + kUntouched);
    for (const auto operation :
         {&XMLUtility::ConvertStringUTF8ToEntityReference, &XMLUtility::ConvertStringUTF8ToReference,
          &XMLUtility::ConvertStringEntityReferenceToUTF8, &XMLUtility::ConvertStringCharacterReferenceToUTF8,
          &XMLUtility::ConvertStringReferenceToUTF8})
        EXPECT_EQ(valueOf(operation, ""), "-");

    using tarvik::xml::codeUnit;
    EXPECT_EQ(codeUnit("65"), 65);
    EXPECT_EQ(codeUnit("x1F600"), 0xF600);
    EXPECT_EQ(codeUnit("0101"), 65);
    EXPECT_EQ(codeUnit("65 B"), 65);
    EXPECT_EQ(codeUnit("X41"), 0);
    EXPECT_EQ(codeUnit("99999999999999999999"), 0xFFFF);
}

TEST(XMLUtility, Replacing)
{
    std::string out = kUntouched;
    for (const auto &[text, search, replacement] : std::vector<std::array<Text, 3>>{{"aaa", "a", "aa"},
                                                                                    {"aaaa", "aa", "a"},
                                                                                    {"abc", "", "x"},
                                                                                    {"", "a", "x"},
                                                                                    {"aXbX", "X", ""},
                                                                                    {"X", "X", ""}}) {
        kXML.ReplaceAllString(text, search, replacement, out);
        EXPECT_EQ(out, steps::replaced(text, search, replacement)) << text;
    }
}

// Texts that nearly match everywhere, with markers as long as these, take minutes unless the search is
// linear.
TEST(XMLUtility, HostileTextsAreReadOnce)
{
    const std::string text(4 << 20, 'a');
    const std::string half(1 << 16, 'a');
    for (const std::string &key : {half + "b", "b" + half, half + "b" + half, std::string(63, 'a') + "b"}) {
        std::string value;
        EXPECT_FALSE(kXML.GetValueForOutermostKey(text, "a", key, value));
        EXPECT_FALSE(kXML.GetValuesInsideKey(text, key, key, value));
    }
    std::string value, ampersands(1 << 20, '&');
    kXML.ReplaceAllString(text, "a", "bcd", value);
    EXPECT_EQ(value.size(), 3 * text.size());
    EXPECT_TRUE(kXML.ConvertStringReferenceToUTF8(ampersands, value));
    EXPECT_EQ(value, ampersands);
}

// Every set of kernels against the plain way, on texts of all lengths in memory of exactly their size.
class XMLKernels : public testing::TestWithParam<const BlockKernels *> {};

TEST_P(XMLKernels, AgreeWithThePlainWay)
{
    const BlockKernels &kernels = *GetParam();
    std::mt19937 random(7);
    const List pieces{"&",
                      "amp;",
                      "lt;",
                      "apos;",
                      "quot;",
                      "&#",
                      "<v>",
                      "</v>",
                      "<item",
                      ">",
                      "\r\n",
                      "'",
                      "\"",
                      "plain",
                      std::string(70, 'x'),
                      "\xC3\xA4",
                      std::string(1, '\0')};
    for (size_t round = 0; round < 3000; ++round) {
        std::string made;
        for (size_t i = round % 60; i > 0; --i)
            made += pieces[random() % (round % 2 ? pieces.size() : 5)];
        const auto memory = std::make_unique<char[]>(made.size());
        std::copy(made.begin(), made.end(), memory.get());
        const std::string_view text(memory.get(), made.size());

        const auto out = std::make_unique<char[]>(6 * made.size() + tarvik::xml::kKernelSlack);
        ASSERT_EQ(std::string(out.get(), kernels.escape(text, out.get())),
                  steps::passed(made, steps::kEscaping));
        std::string plain;
        for (size_t position = 0; position < text.size();)
            plain.append(out.get(), kernels.unescape(text, position, 1 + random() % 90, out.get()));
        ASSERT_EQ(plain, steps::passed(made, steps::kUnescaping));

        const auto marker = [&] {
            const size_t from = random() % (made.size() + 1);
            const std::string taken = made.substr(from, 1 + random() % (round % 8 ? 12 : 64));
            return taken.empty() ? pieces[random() % pieces.size()].substr(0, 64) : taken;
        };
        const std::string start = marker(), end = marker();
        const size_t from = random() % (made.size() + 1), last = made.rfind(start);
        ASSERT_EQ(kernels.findFirst(text, Marker(start), from), made.find(start, from));
        ASSERT_EQ(kernels.findLast(text, Marker(start), from),
                  last != Text::npos && last >= from ? last : Text::npos);
        List found;
        std::array<Stretch, 3> batch;
        for (size_t position = 0, count = batch.size(); count == batch.size();) {
            count = kernels.findPairs(text, Marker(start), Marker(end), position, batch);
            for (size_t i = 0; i < count; ++i)
                found.push_back(made.substr(batch[i].begin, batch[i].end - batch[i].begin));
        }
        ASSERT_EQ(found, steps::pairs(made, start, end, false));
    }
}

std::vector<const BlockKernels *> everySet()
{
    std::vector<const BlockKernels *> sets;
    for (const BlockKernels &set : tarvik::xml::allBlockKernels())
        sets.push_back(&set);
    return sets;
}

INSTANTIATE_TEST_SUITE_P(Every, XMLKernels, testing::ValuesIn(everySet()),
                         [](const auto &info) { return std::string(info.param->name); });

}  // namespace
