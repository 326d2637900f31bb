#include "../support/Program.h"

#include <gtest/gtest.h>

namespace {

TEST(XMLCommand, Extracts)
{
    const std::string text = "<r><v>1</v><v id=\"7\">two\nlines</v><v>3</v><![CDATA[a<b]]></r>";
    EXPECT_EQ(runTarvik({"xml", "values", "v"}, text).out, "1\n3\n");
    EXPECT_EQ(runTarvik({"xml", "value", "v", "-"}, text).out, "1</v><v id=\"7\">two\nlines</v><v>3\n");
    EXPECT_EQ(runTarvik({"xml", "elements", "--null", "v"}, text).out,
              std::string("<v id=\"7\">two\nlines</v>\0", 24));
    EXPECT_EQ(runTarvik({"xml", "attribute", "id"}, text).out, "7\n");
    EXPECT_EQ(runTarvik({"xml", "attribute", "--all", "id"}, text + "<x id=\"8\"/>").out, "7\n8\n");
    EXPECT_EQ(runTarvik({"xml", "cdata"}, text).out, "a<b\n");
    for (const std::vector<std::string> &words :
         std::vector<std::vector<std::string>>{{"value", "x"},
                                               {"values", "x"},
                                               {"elements", "x"},
                                               {"attribute", "x"},
                                               {"attribute", "-a", "x"}}) {
        const ProgramResult none =
            runTarvik({"xml", words[0], words.size() > 2 ? words[1] : "-0", words.back()}, text);
        EXPECT_EQ(none.status, 1);
        EXPECT_EQ(none.out, "");
        EXPECT_NE(none.error.find("in standard input"), std::string::npos) << none.error;
    }
    EXPECT_EQ(runTarvik({"xml", "cdata"}, "").status, 1);
    EXPECT_EQ(runTarvik({"xml", "values"}).status, 2);
    EXPECT_EQ(runTarvik({"xml", "values", "v", "/no/such/file"}).status, 1);
}

TEST(XMLCommand, Converts)
{
    const std::string plain = "a<b & \"c\"\n", escaped = "a&lt;b &amp; &quot;c&quot;&#10;";
    EXPECT_EQ(runTarvik({"xml", "escape"}, plain).out, escaped);
    EXPECT_EQ(runTarvik({"xml", "unescape"}, escaped).out, "a<b & \"c\"");  // the line end is lost
    EXPECT_EQ(runTarvik({"xml", "unescape", "--entities"}, escaped).out, "a<b & \"c\"&#10;");
    EXPECT_EQ(runTarvik({"xml", "escape"}, "").status, 0);
}

}  // namespace
