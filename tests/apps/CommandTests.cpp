#include "../support/Program.h"

#include <gtest/gtest.h>

namespace {

// Help at every level, on standard output and successful; a call that is off, on standard error with status 2.
TEST(Command, HelpAndUsage)
{
    for (const std::vector<std::string> &words :
         std::vector<std::vector<std::string>>{{"--help"}, {"log", "--help"}, {"--version"}}) {
        const ProgramResult result = runTarvik(words);
        EXPECT_EQ(result.status, 0);
        EXPECT_FALSE(result.out.empty());
        EXPECT_EQ(result.error, "");
    }
    for (const std::vector<std::string> &words :
         std::vector<std::vector<std::string>>{{},
                                               {"nonsense"},
                                               {"log"},
                                               {"log", "--nonsense", "x"},
                                               {"log", "-p"},
                                               {"log", "-p", "12x", "m"},
                                               {"log", "-z", "m"}}) {
        const ProgramResult result = runTarvik(words);
        EXPECT_EQ(result.status, 2) << testing::PrintToString(words);
        EXPECT_EQ(result.out, "");
        EXPECT_FALSE(result.error.empty());
    }
    EXPECT_EQ(runTarvik({"xml", "value"}).error,
              "tarvik xml value: an argument is missing\nTry 'tarvik xml value --help'.\n");
    EXPECT_EQ(runTarvik({"xml", "nonsense"}).error,
              "tarvik xml: no command 'nonsense'\nTry 'tarvik xml --help'.\n");
    EXPECT_NE(runTarvik({"manual"}).out.find("folder=$(tarvik image mount photos.img)"), std::string::npos)
        << "what is told of a group of commands too";
}

TEST(Command, AFullDiskIsAFailure)
{
    const ProgramResult result = runProgram({"sh", "-c", TARVIK_COMMAND " --help > /dev/full"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.error.find("No space left"), std::string::npos) << result.error;
}

}  // namespace
