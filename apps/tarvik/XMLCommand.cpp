#include "Command.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>

#include <unistd.h>

namespace {

const XMLUtility kXML;

// The text and the name of its source: the file after so many words, else standard input.
struct Source {
    Source(const Arguments &arguments, size_t words)
    {
        const std::vector<std::string> &rest = arguments.rest(words, words + 1);
        Input input(rest.size() > words ? rest[words] : "-");
        name = input.name();
        text = input.readAll();
    }
    std::string name, text;
};

[[noreturn]] void notFound(const std::string &what, const Source &source, const std::string &advice)
{
    throw Failure("no " + what + " in " + source.name + " (" + advice + ")");
}

// One value a line; with --null a zero byte ends each, since a value may hold lines.
void print(const Arguments &arguments, const std::vector<std::string> &values)
{
    const char end = arguments.has("null") ? '\0' : '\n';
    std::string out;
    for (const std::string &value : values) {
        out += value;
        out += end;
    }
    writeOutput(out);
}

constexpr const char *kWithoutAttributes = "elements with attributes are a matter for 'elements'";
constexpr const char *kWithAttributes = "elements without attributes are a matter for 'values'";

int value(const Arguments &arguments)
{
    const Source source(arguments, 1);
    const std::string &name = arguments.rest()[0];
    std::string value;
    if (!kXML.GetValueForOutermostTag(source.text, name, value))
        notFound("<" + name + ">...</" + name + ">", source, kWithoutAttributes);
    print(arguments, {value});
    return kSuccess;
}

int values(const Arguments &arguments)
{
    const Source source(arguments, 1);
    const std::string &name = arguments.rest()[0];
    std::vector<std::string> values;
    kXML.GetValuesForTag(source.text, name, values);
    if (values.empty())
        notFound("<" + name + ">...</" + name + ">", source, kWithoutAttributes);
    print(arguments, values);
    return kSuccess;
}

int elements(const Arguments &arguments)
{
    const Source source(arguments, 1);
    const std::string &name = arguments.rest()[0];
    std::vector<std::string> elements;
    kXML.GetValuesWithElement(source.text, name, elements);
    if (elements.empty())
        notFound("<" + name + " ...>...</" + name + ">", source, kWithAttributes);
    print(arguments, elements);
    return kSuccess;
}

int attribute(const Arguments &arguments)
{
    const Source source(arguments, 1);
    const std::string &name = arguments.rest()[0];
    if (name.empty())
        throw UsageError("an attribute has a name");
    std::vector<std::string> values(1);
    if (arguments.has("all"))
        kXML.GetAttributes(source.text, name, values);
    // Only an attribute that is there may be asked for.
    else if (source.text.find(name + "=\"") == std::string::npos ||
             !kXML.GetAttribute(source.text, name, values[0]))
        values.clear();
    if (values.empty())
        notFound(name + "=\"...\"", source, "single quotes and blanks around '=' are not recognised");
    print(arguments, values);
    return kSuccess;
}

int cdata(const Arguments &arguments)
{
    const Source source(arguments, 0);
    std::string content;
    kXML.GetValueInsideCDATA(source.text, content);
    if (content.empty())
        notFound("content of a CDATA section", source, "only the first section is looked at");
    print(arguments, {content});
    return kSuccess;
}

// On a terminal the next prompt begins a line of its own; elsewhere the bytes are the result and nothing else.
void writeConverted(const std::string &text)
{
    writeOutput(text);
    if (!text.empty() && text.back() != '\n' && isatty(STDOUT_FILENO))
        writeOutput("\n");
}

int escape(const Arguments &arguments)
{
    std::string out;
    kXML.ConvertStringUTF8ToReference(Source(arguments, 0).text, out);
    writeConverted(out);
    return kSuccess;
}

int unescape(const Arguments &arguments)
{
    std::string out;
    const std::string text = Source(arguments, 0).text;
    if (arguments.has("entities"))
        kXML.ConvertStringEntityReferenceToUTF8(text, out);
    else
        kXML.ConvertStringReferenceToUTF8(text, out);
    writeConverted(out);
    return kSuccess;
}

const Option kNull = {'0', "null", nullptr, "end each value with a zero byte instead of a line feed"};

const Registration registration({
    .name = "xml",
    .summary = "values out of XML by text search; escaping and unescaping",
    .subcommands =
        {
            {.name = "value",
             .summary = "what stands between the first <NAME> and the last </NAME>",
             .usage = "[OPTION]... NAME [FILE]",
             .details = "Only elements written without attributes are found.\n\n"
                        "Example:\n  echo '<a><a>1</a></a>' | tarvik xml value a       # <a>1</a>",
             .options = {kNull},
             .run = value},
            {.name = "values",
             .summary = "what stands between each <NAME> and the next </NAME>",
             .usage = "[OPTION]... NAME [FILE]",
             .details = "Only elements written without attributes are found.\n\n"
                        "Example:\n  tarvik xml values comment /usr/share/mime/packages/freedesktop.org.xml",
             .options = {kNull},
             .run = values},
            {.name = "elements",
             .summary = "each element with attributes, whole, its tags included",
             .usage = "[OPTION]... NAME [FILE]",
             .details = "Example:\n  tarvik xml elements --null mime-type types.xml | xargs -0 -n 1 printf "
                        "'%s\\n--\\n'",
             .options = {kNull},
             .run = elements},
            {.name = "attribute",
             .summary = "the first value written NAME=\"...\", or all",
             .usage = "[OPTION]... NAME [FILE]",
             .details = "Whatever the element. Single quotes and blanks around the equals sign are not "
                        "recognised.\n\n"
                        "Example:\n  tarvik xml attribute --all pattern "
                        "/usr/share/mime/packages/freedesktop.org.xml",
             .options = {{'a', "all", nullptr, "every value, not only the first"}, kNull},
             .run = attribute},
            {.name = "cdata",
             .summary = "the content of the first CDATA section",
             .usage = "[OPTION]... [FILE]",
             .details = "Example:\n  echo '<a><![CDATA[1 < 2]]></a>' | tarvik xml cdata    # 1 < 2",
             .options = {kNull},
             .run = cdata},
            {.name = "escape",
             .summary = "text as it may stand in an element or attribute",
             .usage = "[FILE]",
             .details = "& \" ' < > become named entities, line ends &#13; and &#10;.\n\n"
                        "Example:\n  printf 'a<b & c' | tarvik xml escape              # a&lt;b &amp; c",
             .run = escape},
            {.name = "unescape",
             .summary = "escaped text back to plain",
             .usage = "[OPTION]... [FILE]",
             .details = "Named entities are resolved; numeric references, line ends among them, are dropped "
                        "with their\n"
                        "characters.\n\n"
                        "Example:\n  echo 'a&lt;b &amp; c' | tarvik xml unescape           # a<b & c",
             .options = {{'e', "entities", nullptr, "leave numeric references as they are"}},
             .run = unescape},
        },
});

}  // namespace
