// What the toolkit tells about the machine, from sources of the test's own.
#include "../support/Namespace.h"
#include "../support/TemporaryFolder.h"

#include <Carbon/Gestalt.h>
#import <Foundation/Foundation.h>
#include <Tarvik/net/CommunicationLibrary.h>
#include <Tarvik/net/SystemInformation.h>
#include <gtest/gtest.h>
#include <sched.h>

#include <algorithm>

namespace {

SInt32 gAnswer;

/// From now on Gestalt answers `gAnswer` for the selector.
void answerFor(OSType selector)
{
    ReplaceGestalt(
        selector, [](OSType, SInt32 *response) -> OSErr { return *response = gAnswer, noErr; }, nullptr);
}

TEST(SystemInformation, VersionComesFromTheReleaseFile)
{
    if (!enterPrivateMounts())
        GTEST_SKIP() << "no mount namespace";
    const TemporaryFolder folder;
    // Read again while it is empty, then kept.
    const std::string release = folder.write("os-release", "NAME=\"Some System\"\n");
    ASSERT_TRUE(bindMount(release, std::filesystem::canonical("/etc/os-release")));
    EXPECT_EQ(Utils::getOsVersion(), L"");
    EXPECT_EQ(Utils::getOsName(), L"") << "and not a formatted nothing";
    folder.write("os-release", "# comment\nVERSION_ID='12.5 \"b\"'\n");
    EXPECT_EQ(Utils::getOsVersion(), L"12.5 \"b\"");
    EXPECT_EQ(Utils::getOsName(), L"Apple MacOS 12.5 \"b\"");
    folder.write("os-release", "VERSION_ID=13\n");
    EXPECT_EQ(Utils::getOsVersion(), L"12.5 \"b\"");
}

TEST(SystemInformation, CountryAndLanguage)
{
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    unsetenv("LC_ALL");
    const struct {
        NSString *stored;
        const char *environment;
        const wchar_t *country;
    } countries[] = {{@"ja_JP", "de_AT", L"JP"},       {@"fr", "de_AT", L"fr"},
                     {@"en_", "de_AT", L"en"},         {@"zh_Hans_CN", "", L"Hans_CN"},
                     {nil, "de_AT.UTF-8@euro", L"AT"}, {nil, "C.UTF-8", L""},
                     {nil, "de.UTF-8", L"de"},         {@"", "de_AT", L""}};
    for (const auto &[stored, environment, country] : countries) {
        [defaults removeObjectForKey:@"AppleLocale"];
        if (stored)
            [defaults setObject:stored forKey:@"AppleLocale"];
        setenv("LANG", environment, 1);
        EXPECT_EQ(Utils::getCountry(), country) << environment;
    }
    [defaults removeObjectForKey:@"AppleLocale"];

    setenv("LANG", "de_AT.UTF-8", 1);
    EXPECT_EQ(Utils::getLanguage(), L"de-AT");
    setenv("LANGUAGE", "fr_CA:en", 1);
    EXPECT_EQ(Utils::getLanguage(), L"fr-CA");
    [defaults setObject:[NSArray arrayWithObjects:@"en-GB", @"de", nil] forKey:@"AppleLanguages"];
    EXPECT_EQ(Utils::getLanguage(), L"en-GB") << "whole";
    [defaults setObject:[NSArray array] forKey:@"AppleLanguages"];
    EXPECT_EQ(Utils::getLanguage(), L"");
}

TEST(SystemInformation, ProcessorAndVersionNumberComeFromGestalt)
{
    answerFor(gestaltSysArchitecture);
    const std::pair<SInt32, const wchar_t *> types[] = {
        {1, L"68k"}, {2, L"PowerPC"}, {10, L"Intel"}, {0, L"Intel"}};
    for (const auto &[answer, type] : types) {
        gAnswer = answer;
        EXPECT_EQ(Utils::getProcessorType(), type);
    }
    EXPECT_FALSE(CommunicationLibrary::IsCurlMode());
    answerFor(gestaltSystemVersion);
    gAnswer = 4145;
    EXPECT_EQ(Utils::getOsBuildNumber(), 4145u);
    EXPECT_TRUE(CommunicationLibrary::IsCurlMode());
    gAnswer = 4146;
    EXPECT_FALSE(CommunicationLibrary::IsCurlMode());
}

TEST(SystemInformation, IdentifierEndsInTheHardwareAddress)
{
    std::string address;
    for (const auto &entry : std::filesystem::directory_iterator("/sys/class/net")) {
        const std::string name = entry.path().filename();
        // The first line of the routing table is its default route, if there is one.
        if (readFile("/proc/net/route").find("\n" + name + "\t00000000\t") != std::string::npos)
            address = readFile(entry.path() / "address");
    }
    std::erase_if(address, [](char c) { return c == ':' || c == '\n'; });
    std::transform(address.begin(), address.end(), address.begin(), toupper);
    const std::string first = Utils::generateGUID(), second = Utils::generateGUID();
    ASSERT_EQ(first.size(), 36u);
    for (size_t i = 0; i < 36; ++i)
        EXPECT_EQ(first[i] == '-', i == 8 || i == 13 || i == 18 || i == 23) << first;
    EXPECT_NE(first.substr(0, 24), second.substr(0, 24));
    EXPECT_TRUE(first[14] == '4' && strchr("89AB", first[19])) << first << ": a random UUID, RFC 4122";
    if (address.size() == 12) {
        EXPECT_EQ(first.substr(24), address);
        EXPECT_EQ(second.substr(24), address);
    }
    // In a network without a route: random to the end.
    EXPECT_TRUE(unshare(CLONE_NEWNET) != 0 ||
                Utils::generateGUID().substr(24) != Utils::generateGUID().substr(24));
}

}  // namespace
