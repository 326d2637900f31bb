// The scripting component: identifiers, stored scripts, contexts, descriptors, and scripts that are stopped.
#include "tests/support/Scripting.h"

#include <Carbon/AERegistry.h>

#include <gtest/gtest.h>

#include <tuple>

namespace {

OSAID compiled(const Scripting &scripting, std::string_view source, SInt32 mode = kOSAModeNull,
               OSAID script = kOSANullScript)
{
    AEDesc desc;
    AECreateDesc(typeUTF8Text, source.data(), Size(source.size()), &desc);
    EXPECT_EQ(OSACompile(scripting.get(), &desc, mode, &script), noErr) << source;
    AEDisposeDesc(&desc);
    return script;
}

std::string executed(Scripting &scripting, OSAID script)
{
    OSAID value = kOSANullScript;
    if (const OSAError error = OSAExecute(scripting.get(), script, kOSANullScript, kOSAModeNull, &value))
        return "status " + std::to_string(error) + " " + scripting.part(kOSAErrorNumber);
    const std::string text = value ? scripting.display(value) : "";
    OSADispose(scripting.get(), value);
    return text;
}

TEST(ScriptComponent, StoredScriptsKeepTheirPropertiesAndTakeNoDamage)
{
    Scripting scripting;
    const OSAID script = compiled(scripting, "property n : 0\nproperty l : {1, {name:\"é\", |my "
                                             "x|:2.5}}\nset n to n + 1\nset end of l to n\n{n, l}");
    EXPECT_EQ(executed(scripting, script), "{1, {1, {name:\"é\", |my x|:2.5}, 1}}");
    AEDesc data;
    ASSERT_EQ(OSAStore(scripting.get(), script, typeOSAGenericStorage, kOSAModeNull, &data), noErr);
    const std::string bytes = [&] {
        AEDesc copy;
        AEDuplicateDesc(&data, &copy);
        return Scripting::taken(copy);
    }();
    OSAID loaded = kOSANullScript;
    ASSERT_EQ(OSALoad(scripting.get(), &data, kOSAModeNull, &loaded), noErr);
    AEDisposeDesc(&data);
    EXPECT_EQ(executed(scripting, loaded), "{2, {1, {name:\"é\", |my x|:2.5}, 1, 2}}");
    for (size_t i = 0; i < bytes.size(); ++i) {
        std::string damaged = bytes;
        damaged[i] = char(damaged[i] ^ 0x55);
        AECreateDesc(typeOSAGenericStorage, damaged.data(), Size(damaged.size()), &data);
        const OSAError error = OSALoad(scripting.get(), &data, kOSAModeNull, &loaded);
        EXPECT_TRUE(error != noErr || (i >= 12 && i < 16)) << "byte " << i;  // flags are not checked
        AEDisposeDesc(&data);
    }
}

TEST(ScriptComponent, AContextGoesOnLiving)
{
    Scripting scripting;
    OSAID context = kOSANullScript;
    ASSERT_EQ(OSAMakeContext(scripting.get(), nullptr, kOSANullScript, &context), noErr);
    const auto line = [&](std::string_view source) {
        EXPECT_EQ(compiled(scripting, source, kOSAModeAugmentContext, context), context);
        return executed(scripting, context);
    };
    EXPECT_EQ(line("set x to 5"), "5");
    EXPECT_EQ(line("on f(n)\nglobal x\nn + x\nend"), "");
    EXPECT_EQ(line("set x to f(1)"), "6");
    EXPECT_EQ(line("property p : 1\nscript S\non g()\nx\nend\nend"), "");
    EXPECT_EQ(line("set p to p + x\n{p, S's g()}"), "{7, 6}");
    EXPECT_EQ(line("nowhere"), "status -1753 -2753");
    EXPECT_EQ(line("f(p)"), "13");
}

TEST(ScriptComponent, ARunawayScriptIsStoppedWhateverItCatches)
{
    for (const char *source : {"repeat\nend repeat", "repeat\ntry\nrepeat\nend repeat\nend try\nend repeat",
                               "on f()\nend\nrepeat\nf()\nend repeat", "delay 1000",
                               "do shell script \"sleep 1000\"", "repeat with i from 1 to 500000000\nend"}) {
        Scripting scripting;
        int asked = 0;
        OSASetActiveProc(
            scripting.get(),
            [](SRefCon counter) {
                return ++*reinterpret_cast<int *>(counter) > 1 ? OSErr(-128) : OSErr(noErr);
            },
            SRefCon(&asked));
        EXPECT_EQ(scripting.run(source), "error -128: User canceled.") << source;
    }
}

TEST(ScriptComponent, DescriptorsBothWays)
{
    Scripting scripting;
    for (const char *source :
         {"{1, 2.5, \"é😀\", true, {a:1, name:\"n\"}, January, text, missing value}",
          "date \"2026-11-23 13:05:00\"", "POSIX file \"/tmp/a b\"", "«data abcd0102»"}) {
        const OSAID script = compiled(scripting, source);
        OSAID value = kOSANullScript, back = kOSANullScript;
        OSAExecute(scripting.get(), script, kOSANullScript, kOSAModeNull, &value);
        AEDesc desc;
        ASSERT_EQ(OSACoerceToDesc(scripting.get(), value, typeWildCard, kOSAModeNull, &desc), noErr)
            << source;
        ASSERT_EQ(OSACoerceFromDesc(scripting.get(), &desc, kOSAModeNull, &back), noErr) << source;
        EXPECT_EQ(scripting.display(back),
                  scripting.display(value).find("a:1") == std::string::npos
                      ? scripting.display(value)
                      : "{1, 2.5, \"é😀\", true, {name:\"n\", a:1}, January, text, missing value}");
        AEDisposeDesc(&desc);
    }
}

TEST(ScriptComponent, BadIdentifiersAndModes)
{
    Scripting scripting;
    AEDesc desc;
    OSAID id = kOSANullScript;
    EXPECT_EQ(OSADisplay(scripting.get(), 99, typeChar, kOSAModeNull, &desc), errOSAInvalidID);
    EXPECT_EQ(OSADispose(scripting.get(), 99), errOSAInvalidID);
    EXPECT_EQ(OSAExecute(scripting.get(), 99, kOSANullScript, kOSAModeNull, &id), errOSAInvalidID);
    EXPECT_EQ(OSAScriptError(scripting.get(), 0, typeChar, &desc), errOSABadSelector);
    EXPECT_EQ(OSAExecute(nullptr, 1, kOSANullScript, kOSAModeNull, &id), badComponentInstance);
    EXPECT_EQ(OpenDefaultComponent(kOSAComponentType, 0x78787878), nullptr);
    EXPECT_EQ(OpenDefaultComponent(0x78787878, kAppleScriptSubtype), nullptr);
    const OSAID hidden = compiled(scripting, "1", kOSAModePreventGetSource);
    EXPECT_EQ(OSAGetSource(scripting.get(), hidden, typeChar, &desc), errOSASourceNotAvailable);
    const AEDesc number = {typeSInt32, nullptr};
    EXPECT_EQ(OSACompile(scripting.get(), &number, kOSAModeNull, &id), errOSABadStorageType);
}

// Deep and circular values are freed and shown without a deep stack; memory has a limit.
TEST(ScriptComponent, HostileScripts)
{
    Scripting scripting;
    EXPECT_EQ(scripting.run("set l to {}\nrepeat 300000 times\nset l to {l}\nend\ncount l"), "1");
    EXPECT_EQ(scripting.run("set l to {}\nrepeat 3000 times\nset l to {l}\nend\nl as text"),
              "error -2706: Stack overflow.");
    EXPECT_EQ(scripting.run("set l to {}\nrepeat 3000 times\nset l to {l}\nend\ncopy l to m"),
              "error -2706: Stack overflow.");
    EXPECT_EQ(scripting.run("set s to \"abcdefgh\"\nrepeat\nset s to s & s\nend"),
              "error -108: Out of memory.");
    const std::string deep = std::string(5000, '(') + "1" + std::string(5000, ')');
    EXPECT_EQ(scripting.run(deep), "error -2741: The script is nested too deeply.");
    std::string blocks;
    for (int i = 0; i < 5000; ++i)
        blocks += "if true then\n";
    EXPECT_EQ(scripting.run(blocks), "error -2741: The script is nested too deeply.");
    // A chain of operators may be as long as it likes; what nests says so.
    const auto repeated = [](const std::string &before, const std::string &part, const std::string &after) {
        std::string text = before;
        for (int i = 0; i < 60000; ++i)
            text += part;
        return text + after;
    };
    EXPECT_EQ(scripting.run(repeated("1", " + 1", "")), "60001");
    EXPECT_EQ(scripting.run(repeated("1", " ¬\n+ 1", "")), "60001");
    EXPECT_EQ(scripting.run(repeated("length of (\"\"", " & 1", ")")), "60000");
    EXPECT_EQ(scripting.run(repeated("true", " and true or false", "")), "true");
    EXPECT_EQ(scripting.run(repeated("1", " as text as integer = 1", "")), "false");
    EXPECT_EQ(scripting.run(repeated("set x to 2\nset x to x", " + x as integer - 1 * x", "")), "2");
    EXPECT_EQ(scripting.run(repeated("", "+ ", "1")), "1");
    const std::tuple<const char *, const char *, const char *> nests[] = {
        {"a", " of a", ""},        {"a", "'s a", ""},
        {"", "not ", "true"},      {"", "- ", "1"},
        {"2", " ^ 2", ""},         {"", "(get ", ""},
        {"it", " is running", ""}, {"if it", " is not running", " then 1"},
    };
    for (const auto &[before, part, after] : nests)
        EXPECT_EQ(scripting.run(repeated(before, part, after)),
                  "error -2741: The script is nested too deeply.")
            << part;
    std::string list = "count {0";
    for (int i = 0; i < 40000; ++i)
        list += ", " + std::to_string(i);
    EXPECT_EQ(scripting.run(list + "}"), "error -2707: The script is too large.");
}

}  // namespace
