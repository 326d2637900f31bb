// The scripting language: what scripts give, as they would write it themselves.
#include "tests/support/Scripting.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

struct Case {
    const char *source, *result;
};

void expect(std::initializer_list<Case> cases)
{
    Scripting scripting;
    for (const auto &[source, result] : cases)
        EXPECT_EQ(scripting.run(source), result) << source;
}

TEST(ScriptLanguage, Numbers)
{
    expect({
        {"2 + 3 * 4", "14"},
        {"(2 + 3) * 4", "20"},
        {"7 div 2", "3"},
        {"-7 div 2", "-3"},
        {"-7 mod 3", "-1"},
        {"7.5 mod 2", "1.5"},
        {"4 / 2", "2.0"},
        {"2 ^ 10", "1024.0"},
        {"2 ^ 3 ^ 2", "512.0"},
        {"-2 ^ 2", "4.0"},
        {"536870911 + 1", "5.36870912E+8"},
        {"10000.0", "1.0E+4"},
        {"0.1 + 0.2", "0.3"},
        {"1 / 3", "0.333333333333"},
        {"0.001", "1.0E-3"},
        {"1.5E+3", "1500.0"},
        {"\"3\" + 4", "7"},
        {"10 ÷ 4", "2.5"},
        {"pi > 3.14 and pi < 3.15", "true"},
        {"1 / 0", "error -2701: Can’t divide 1 by zero."},
        {"1 mod 0", "error -2701: Can’t divide 1 by zero."},
        {"1.0E+300 * 1.0E+300", "error -2702: The result of a numeric operation was too large."},
        {"1 + \"a\"", "error -1700: Can’t make \"a\" into type number."},
        {"1 + true", "2"},
        {"round 2.5", "2"},
        {"round 2.5 rounding as taught in school", "3"},
        {"round -2.1 rounding down", "-3"},
    });
}

// Words of the language that a script uses as variables; of applications they stay properties.
TEST(ScriptLanguage, WordsAsVariables)
{
    expect({
        {"set name to 5\nset running to name + 1\n{name, running}", "{5, 6}"},
        {"tell application \"no such program\" to if false then set frontmost to true\nset day to 3\nday",
         "3"},
        {"on f(a)\nif a is frontmost then return 1\n0\nend f\nif false then\ntell application \"no such "
         "program\"\nset frontmost to true\nset list to {}\nset end of list to 2\nend tell\nend if\n"
         "f(application \"no such program\")",
         "error -600: Application isn’t running."},
        {"set frontmost to 1\nif frontmost is frontmost then return \"same\"", "\"same\""},
        {"set a to 1\nset r to a reference to a\nset out to 2\nset app to 3\nset run to 4\nset get to 5\n"
         "{contents of r, out, app, run, get - 1}",
         "{1, 2, 3, 4, 4}"},
    });
}

TEST(ScriptLanguage, Text)
{
    expect({
        {"\"a\" & 1 & true", "\"a1true\""},
        {"\"tab\\t \\\"q\\\" \\\\\"", "\"tab\t \\\"q\\\" \\\\\""},
        {"length of \"naïve 😀\"", "7"},
        {"character 7 of \"naïve 😀\"", "\"😀\""},
        {"character -1 of \"abc\"", "\"c\""},
        {"characters 2 thru 3 of \"abcd\"", "{\"b\", \"c\"}"},
        {"text 2 thru -2 of \"abcde\"", "\"bcd\""},
        {"words of \"don't panic, it's 3.14 now\"", "{\"don't\", \"panic\", \"it's\", \"3.14\", \"now\"}"},
        {"text from word 1 to word 2 of \"  one two three\"", "\"one two\""},
        {"second word of \"one two\"", "\"two\""},
        {"last paragraph of \"a\\nb\\r\\nc\"", "\"c\""},
        {"count paragraphs of \"a\\n\\nb\"", "3"},
        {"set AppleScript's text item delimiters to \", \"\ntext items of \"a, b, c\"",
         "{\"a\", \"b\", \"c\"}"},
        {"{1, 2, 3} as text", "\"1, 2, 3\""},  // the delimiters stay
        {"set text item delimiters to {\"-\", \"+\"}\nset x to text items of \"1-2+3\"\nset text item "
         "delimiters to \"\"\nx",
         "{\"1\", \"2\", \"3\"}"},
        {"\"abc\" = \"ABC\"", "true"},
        {"considering case\n\"abc\" = \"ABC\"\nend considering", "false"},
        {"ignoring white space\n\"a b\" = \"ab\"\nend ignoring", "true"},
        {"ignoring diacriticals\n\"résumé\" = \"resume\"\nend ignoring", "true"},
        {"considering numeric strings\n\"1.10\" > \"1.9\"\nend considering", "true"},
        {"\"b\" > \"A\"", "true"},
        {"\"Hello\" starts with \"he\"", "true"},
        {"\"Hello\" ends with \"LO\" and \"Hello\" contains \"ell\"", "true"},
        {"\"z\" is in \"abc\"", "false"},
        {"offset of \"lo\" in \"hello\"", "4"},
        {"id of \"A\"", "65"},
        {"character id {72, 105}", "\"Hi\""},
        {"quoted form of \"it's\"", "\"'it'\\\\''s'\""},
        {"ASCII character 65", "\"A\""},
        {"character 9 of \"abc\"", "error -1728: Can’t get character 9 of \"abc\"."},
        {"set s to \"abc\"\nset character 1 of s to \"x\"",
         "error -10006: Can’t set character 1 of \"abc\" to \"x\"."},
        {"set s to \"a\"\nset t to s\nset s to s & \"b\"\n{s, t}", "{\"ab\", \"a\"}"},
        {"set s to \"a\"\nset s to s & s & s\ns", "\"aaa\""},
    });
}

TEST(ScriptLanguage, ListsAndRecords)
{
    expect({
        {"{1, 2} & {3} & 4", "{1, 2, 3, 4}"},
        {"item 2 of {1, 2, 3}", "2"},
        {"items 2 thru -1 of {1, 2, 3}", "{2, 3}"},
        {"last item of {1, 2, 3}", "3"},
        {"middle item of {1, 2, 3}", "2"},
        {"3rd item of {1, 2, 3}", "3"},
        {"some item of {7}", "7"},
        {"reverse of {1, 2, 3}", "{3, 2, 1}"},
        {"rest of {1, 2, 3}", "{2, 3}"},
        {"integers of {1, \"a\", 2.5, 3}", "{1, 3}"},
        {"{numbers of {1, \"a\", 2.5}, every number of {1, \"a\"}, number of {1, \"a\"}}",
         "{{1, 2.5}, {1}, 2}"},
        {"every text of {1, \"a\"}", "{\"a\"}"},
        {"count {1, 2, 3}", "3"},
        {"number of items in {1, 2}", "2"},
        {"{1, 2, 3} contains {2, 3}", "true"},
        {"{1, 2} starts with 1", "true"},
        {"2 is in {1, 2}", "true"},
        {"{1, {2}} = {1.0, {2}}", "true"},
        {"item 5 of {1, 2, 3}", "error -1728: Can’t get item 5 of {1, 2, 3}."},
        {"set item 5 of {1} to 2", "error -10006: Can’t set item 5 of {1} to 2."},
        {"set l to {1}\nset m to l\nset end of l to 2\nset beginning of l to 0\nm", "{0, 1, 2}"},
        {"set l to {1}\ncopy l to m\nset end of l to 2\nm", "{1}"},
        {"set l to {1, 2}\nset item -1 of l to {3}\nset item 1 of item 2 of l to 4\nl", "{1, {4}}"},
        {"set {a, {b, c}} to {1, {2, 3}}\na + b + c", "6"},
        {"{name:\"Ann\", age:30}", "{name:\"Ann\", age:30}"},
        {"set r to {x:1, y:2}\nset x of r to 5\nr's x", "5"},
        {"{x:1} & {x:2, z:3}", "{x:1, z:3}"},
        {"set {x:p} to {x:9}\np", "9"},
        {"y of {x:1}", "error -1728: Can’t get y of {x:1}."},
        {"{|a b|:1}", "{|a b|:1}"},
        {"class of {1}", "list"},
        {"set l to {1}\nset end of l to l\nl = l", "true"},
        {"set l to {1}\nset end of l to l\nl", ""},
    });
}

TEST(ScriptLanguage, Coercions)
{
    expect({
        {"\"12\" as integer", "12"},
        {"12.5 as integer", "12"},
        {"13.5 as integer", "14"},
        {"5 as text", "\"5\""},
        {"2.5 as string", "\"2.5\""},
        {"5 as list", "{5}"},
        {"{5} as integer", "5"},
        {"\"true\" as boolean", "true"},
        {"{a:1, b:2} as list", "{1, 2}"},
        {"\"abc\" as number", "error -1700: Can’t make \"abc\" into type number."},
        {"{1, 2} as integer", "error -1700: Can’t make {1, 2} into type integer."},
        {"missing value as text", "\"missing value\""},
        {"class of (5 as real)", "real"},
        {"(March as integer) * 10", "30"},
        {"text", "text"},
        {"class of text", "class"},
        {"«class utf8»", "«class utf8»"},
        {"«data rdat48690A»", "«data rdat48690A»"},
        {"{5 as text & \"a\", \"1\" as integer + 2 * 3, 1 & \"x\" as text & \"b\" as list}",
         "{\"5a\", 7, {\"1xb\"}}"},
    });
}

TEST(ScriptLanguage, Statements)
{
    expect({
        {"if 1 > 2 then\n\"a\"\nelse if 2 > 1 then\n\"b\"\nelse\n\"c\"\nend if", "\"b\""},
        {"if true then 5", "5"},
        {"set n to 0\nrepeat\nset n to n + 1\nif n = 5 then exit repeat\nend repeat\nn", "5"},
        {"set n to 0\nrepeat 3 times\nset n to n + 2\nend repeat\nn", "6"},
        {"set n to 0\nrepeat while n < 4\nset n to n + 1\nend\nn", "4"},
        {"set n to 9\nrepeat until n ≤ 4\nset n to n - 1\nend\nn", "4"},
        {"set t to 0\nrepeat with i from 10 to 1 by -3\nset t to t * 100 + i\nend\nt", "10070401"},
        {"set t to \"\"\nrepeat with w in {\"a\", \"b\"}\nset t to t & w\nend\nt", "\"ab\""},
        {"set l to {1, 2, 3}\nrepeat with x in l\nset contents of x to x * 2\nend\nl", "{2, 4, 6}"},
        {"set t to 0\nrepeat with x in {1, 2, 3}\nif x = 2 then set t to t + 1\nend\nt", "1"},
        {"set x to 1 -- comment\n# another\n(* a (* nested *) one *)\nx ¬\n + 1", "2"},
        {"set x to 3\nx * 2\nresult + 1", "7"},
        {"get 5\nset y to it\nclass of y", "script"},
        {"considering case but ignoring white space\n\"a B\" = \"aB\"\nend considering", "true"},
        {"tell {1, 2, 3} to item 2", "2"},
        {"tell \"one two\"\nset w to word 2\nend tell\nw", "\"two\""},
        {"with timeout of 5 seconds\n3\nend timeout", "3"},
        {"return 1\n2", "1"},
        {"return", ""},
        {"not (1 = 2 or 3 is not 4 and false)", "true"},
        {"set x to true\nset x to false and x\nx", "false"},
        {"5 is less than or equal to 5 and 4 isn't greater than 5 and \"b\" comes after \"a\"", "true"},
        {"{1, 2} does not contain 3 and 1 is not in {2}", "true"},
        {"nothing", "error -2753: The variable nothing is not defined."},
        {"{(get 3), length of (get \"abc\"), get every item of {1}}", "{3, 3, {1}}"},
        {"set x to get 2\nreturn get x", "2"},
        {"tell app \"no such program\"\nset name to 1\nend tell", "error -600: Application isn’t running."},
        {"\"a\" and true", "error -1700: Can’t make \"a\" into type boolean."},
    });
}

TEST(ScriptLanguage, Handlers)
{
    expect({
        {"on f(x, y)\nreturn x * y\nend f\nf(6, 7)", "42"},
        {"fact(10)\non fact(n)\nif n < 2 then return 1\nreturn n * fact(n - 1)\nend", "3628800"},
        {"on f()\nend\nf()", ""},
        {"on f()\nend\nset x to f()",
         "error -2763: No result was returned from some part of this expression."},
        {"on f(x)\nend\nf(1, 2)", "error -1721: {1, 2} doesn’t match the parameters {x} for f."},
        {"g()", "error -1708: «script» doesn’t understand the “g” message."},
        {"on f({a, b})\na - b\nend\nf({5, 3})", "2"},
        {"to find of l above low given rounding:r\nif r then return {l, low}\nlow\nend find\nfind of {1} "
         "above 3 given rounding:true",
         "{{1}, 3}"},
        {"on move by n from a given fast:f\n{n, a, f}\nend\nmove by 2 from 1 with fast", "{2, 1, true}"},
        {"on f(x)\nset x to x + 1\nend\nset x to 1\nf(x)\nx", "1"},
        {"property total : 10\non add(n)\nset total to total + n\nend\nadd(5)\ntotal", "15"},
        {"set x to 1\non f()\nglobal x\nset x to x + 1\nend\nf()\nx", "2"},
        {"set x to 1\non f()\nx\nend\nf()", "error -2753: The variable x is not defined."},
        {"on f(n)\nf(n + 1)\nend\nf(0)", "error -2706: Stack overflow."},
        {"on twice(h, x)\nh(h(x))\nend\non inc(x)\nx + 1\nend\ntwice(inc, 5)", "7"},
        {"on greet(name)\n\"hi \" & name\nend\ngreet(\"Bo\")", "\"hi Bo\""},
        {"on cut of x apart from y instead of z given mark:m\n{x, y, z, m}\nend\ncut of 1 instead of 3 apart "
         "from 2 given mark:4",
         "{1, 2, 3, 4}"},
        {"on cut {a, b} aside from c out of d\n{a, b, c, d}\nend\ncut {1, 2} out of 4 aside from 3",
         "{1, 2, 3, 4}"},
        {"on cut of x apart from y\nend\ncut of 1 out of 2",
         "error -1701: The apart from parameter is missing for cut."},
        {"run script \"on run {a, {b}}\na - b\nend\" with parameters {5, {2}}", "3"},
        {"run script \"on run argv\ncount argv\nend\" with parameters {5, 2}", "2"},
        {"on run {a}\na\nend", "error -1728: Can’t get item 1 of {}."},
    });
}

TEST(ScriptLanguage, ScriptObjects)
{
    expect({
        {"script Counter\nproperty n : 0\non bump()\nset n to n + 1\nend\nend script\ntell Counter to "
         "bump()\nCounter's bump()\nn of Counter",
         "2"},
        {"on make(v)\nscript\nproperty value : v\non get_()\nvalue\nend\nend script\nend\nset a to "
         "make(1)\nset b to make(2)\n{a's get_(), b's get_()}",
         "{1, 2}"},
        {"on make(v)\nscript\non get_()\nv\nend\nend script\nend\nmake(7)'s get_()", "7"},
        {"script A\non hi()\n\"A\" & who()\nend\non who()\n\"a\"\nend\nend script\nscript B\nproperty parent "
         ": A\non who()\n\"b\"\nend\nend script\nB's hi()",
         "\"Ab\""},
        {"script A\nproperty x : 1\nproperty y : x + 1\nend\ny of A", "2"},
        {"script A\nproperty l : {1}\nend\ncopy A to b\nset end of b's l to 2\n{A's l, b's l}",
         "{{1}, {1, 2}}"},
        {"script A\non run\n\"ran\"\nend\nend script\nrun script A", "\"ran\""},
        {"script A\nproperty n : 0\non run\nset n to n + 1\nend\nend script\nrun A\ntell A to run\nA's "
         "run()\n"
         "run (a reference to A)",
         "4"},
        {"run 5", "error -1708: 5 doesn’t understand the “run” message."},
        {"run", "error -2706: Stack overflow."},
        {"run script \"1 + 1\"", "2"},
        {"set l to {1, 2}\nset r to a reference to item 1 of l\nset contents of r to 9\n{l, contents of r, r "
         "+ 1}",
         "{{9, 2}, 9, 10}"},
        {"property big : {1, 2}\nset r to a reference to big\nset end of r to 3\n{count r, item 3 of r, my "
         "big}",
         "{3, 3, {1, 2, 3}}"},
    });
}

TEST(ScriptLanguage, Errors)
{
    expect({
        {"try\nerror \"bad\" number 42\non error m number n\n{m, n}\nend try", "{\"bad\", 42}"},
        {"error \"oops\"", "error -2700: oops"},
        {"error number -128", "error -128: User canceled."},
        {"error number 500", "error 500: An error of type 500 has occurred."},
        {"try\nitem 3 of {1}\non error m\nm\nend try", "\"Can’t get item 3 of {1}.\""},
        {"try\n1 / 0\nend try\n5", "5"},
        {"on f()\nerror \"in\" number 7\nend\ntry\nf()\non error number n\nn\nend", "7"},
        {"try\ntry\nerror \"a\"\non error m\nerror m & \"b\"\nend\non error m\nm\nend", "\"ab\""},
        {"considering case\ntry\nignoring case\nerror \"x\"\nend ignoring\nend try\n\"a\" = \"A\"\nend "
         "considering",
         "false"},
        {"try\ntry\nerror \"x\" number 7\non error number -128\n1\nend\non error m number n\n{m, n}\nend",
         "{\"x\", 7}"},
        {"try\nerror number -128\non error number -128\n1\nend", "1"},
        {"try\nerror \"p\" partial result {1} from {2}\non error m from f partial result p\n{f, p}\nend",
         "{{2}, {1}}"},
        {"try\nerror \"foo\" number 99 to integer partial result {2}\non error m number n to t partial "
         "result "
         "p\n{m, n, t, p}\nend",
         "{\"foo\", 99, integer, {2}}"},
    });
}

TEST(ScriptLanguage, Files)
{
    expect({
        {"set f to POSIX file (do shell script \"mktemp\")\nset n to open for access f with write "
         "permission\n"
         "set out to {}\nrepeat with plain in {true, false}\ntry\nif plain then\nread n\nelse\nread n until "
         "\";\"\nend if\non error number e\nset end of out to e\nend try\nend repeat\nwrite \"a;bc\" to "
         "n\nclose "
         "access n\nset n to open for access f\ntry\nrepeat\nset end of out to read n until \";\"\nend "
         "repeat\non "
         "error number e\nset end of out to e\nend try\ntry\nread n\non error number e\nset end of out to "
         "e\nend try\nset end of out to read n from 2 to 1\nclose access n\ndo shell script \"rm \" & quoted "
         "form "
         "of POSIX path of f\nout",
         "{-39, -39, \"a;\", \"bc\", -39, -39, \"\"}"},
        {"(length of (read \"/proc/self/status\")) > 9", "true"},  // of no length, and not empty
        {"class of (path to music folder)", "alias"},
        {"class of (path to home folder)", "alias"},
        {"POSIX path of (path to startup disk)", "\"/\""},
    });
}

TEST(ScriptLanguage, Dates)
{
    expect({
        {"date \"November 23, 2026 13:05\"", "date \"Monday, November 23, 2026 at 1:05:00 PM\""},
        {"set d to date \"2026-01-31 00:00:00\"\nset month of d to February\nd",
         "date \"Tuesday, March 3, 2026 at 12:00:00 AM\""},
        {"(date \"1/2/2026\") - (date \"1/1/2026\")", "86400"},
        {"(date \"2/28/2028\") + 2 * days", "date \"Wednesday, March 1, 2028 at 12:00:00 AM\""},
        {"set d to date \"3/4/2026 05:06:07\"\n{year of d, month of d, day of d, weekday of d, hours of d, "
         "minutes of d, seconds of d, time of d}",
         "{2026, March, 4, Wednesday, 5, 6, 7, 18367}"},
        {"date string of date \"3/4/2026\"", "\"Wednesday, March 4, 2026\""},
        {"(date \"1/1/2026\") < (date \"1/2/2026\")", "true"},
        {"date \"gibberish\"", "error -30720: Invalid date and time \"gibberish\"."},
        {"class of (current date)", "date"},
    });
}

TEST(ScriptLanguage, ErrorsOfTheSourceNameTheirPlace)
{
    const struct {
        const char *source, *error, *place;
    } cases[] = {
        {"set x to", "error -2741: Expected expression but found end of script.", ""},
        {"if x then\n5", "error -2741: Expected “end” but found end of script.", ""},
        {"foo(1, 2", "error -2741: Expected “)” but found end of script.", ""},
        {"repeat 3 times\nend if", "error -2741: Expected “repeat” but found “if”.", "if"},
        {"\"abc", "error -2741: Expected “\"” but found end of script.", "\""},
        {"-- é\nset x to ) + 1", "error -2741: Expected expression but found “)”.", ")"},
        {"exit repeat", "error -2741: “exit repeat” was not inside a repeat loop.", "exit repeat"},
        {"set y to 1\nset x to y + \"a\"", "error -1700: Can’t make \"a\" into type number.", "y + \"a\""},
    };
    Scripting scripting;
    for (const auto &[source, error, place] : cases) {
        EXPECT_EQ(scripting.run(source), error) << source;
        EXPECT_EQ(scripting.place(source), place) << source;
    }
}

TEST(ScriptLanguage, TheManualsExamplesGiveWhatItSays)
{
    std::ifstream file(TARVIK_SOURCE_DIR "/docs/scripts.md");
    std::stringstream whole;
    whole << file.rdbuf();
    const std::string page = whole.str(), fence = "```applescript\n";
    Scripting scripting;
    size_t examples = 0;
    for (size_t at = page.find(fence); at != std::string::npos; at = page.find(fence, at)) {
        at += fence.size();
        const std::string example = page.substr(at, page.find("```", at) - at);
        const size_t arrow = example.find("--> ");
        ASSERT_NE(arrow, std::string::npos) << example;
        const std::string source = example.substr(0, arrow),
                          result = example.substr(arrow + 4, example.size() - arrow - 5);
        EXPECT_EQ(scripting.run(source), result) << source;
        // Each begins with the delimiters that a new script finds.
        scripting.run("set AppleScript's text item delimiters to \"\"");
        ++examples;
    }
    EXPECT_GT(examples, 25u);
}

}  // namespace
