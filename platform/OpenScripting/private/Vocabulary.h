/// \file
/// The terms of the language: classes, properties, constants and commands, many of them of several words.
#pragma once
#include "Values.h"

#include <unordered_map>
#include <vector>

namespace tarvik::osa {

constexpr uint32_t code(const char (&text)[5])
{
    return uint32_t(uint8_t(text[0])) << 24 | uint32_t(uint8_t(text[1])) << 16 |
           uint32_t(uint8_t(text[2])) << 8 | uint8_t(text[3]);
}

/// The classes that the machine itself deals with.
namespace type {
inline constexpr uint32_t item = code("cobj"), character = code("cha "), word = code("cwor"),
                          paragraph = code("cpar"), textItem = code("citm"), text = code("ctxt"),
                          string = code("TEXT"), unicodeText = code("utxt"), integer = code("long"),
                          real = code("doub"), number = code("nmbr"), boolean = code("bool"),
                          list = code("list"), record = code("reco"), date = code("ldt "),
                          script = code("scpt"), handler = code("hand"), type_ = code("type"),
                          constant = code("enum"), application = code("capp"), alias = code("alis"),
                          file = code("furl"), oldFile = code("file"), reference = code("obj "),
                          data = code("rdat"), any = code("****"), missing = code("msng"),
                          month = code("mnth"), weekday = code("wkdy"), utf8 = code("utf8");
}

/// What Node::specify makes.
enum : uint32_t {
    kSpecifyApplication = type::application,
    kSpecifyFile = type::oldFile,
    kSpecifyAlias = type::alias,
    kSpecifyPOSIXFile = type::file,
    kSpecifyDate = type::date
};

struct CommandParameter {
    const char *label;  // words
    uint32_t code;
    bool isFlag = false;  // given as `with LABEL` or `without LABEL`
};

struct Command {
    const char *phrase;
    uint32_t id;
    enum Direct : uint8_t { none, optional, required } direct;
    std::vector<CommandParameter> parameters;
    bool toApplications = false;  // goes to the application that is told
};

const std::vector<Command> &commands();

struct Term {
    enum Kind : uint8_t { property, element, elements, type, constant, command } kind;
    std::vector<Name> words;
    uint32_t code = 0;
    Name name = 0;  // a property's, a class's in the singular
    const Command *verb = nullptr;
};

class Vocabulary {
public:
    explicit Vocabulary(Names &names);
    /// The terms that begin with a word, the longest ones first.
    const std::vector<Term> *startingWith(Name word) const;

private:
    void add(Term::Kind kind, const char *phrase, uint32_t code, Name name = 0,
             const Command *command = nullptr);
    Names &names_;
    std::unordered_map<Name, std::vector<Term>> terms_;
};

/// "text" for 'ctxt'; "«class abcd»" for a class without a name.
std::string typeName(uint32_t code);
/// "January"; "«constant ****abcd»".
std::string constantName(uint32_t code);
/// The class that a property word stands for, e.g. 'pnam' for name; 0 for none.
uint32_t propertyCode(Name name, const Names &names);
Name propertyOf(uint32_t code, Names &names);
/// The four characters, in MacRoman or as they are.
std::string fourCharacters(uint32_t code);

}  // namespace tarvik::osa
