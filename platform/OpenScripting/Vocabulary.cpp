#include "private/Vocabulary.h"

#include "private/TextOperations.h"

#include <algorithm>
#include <cstring>

namespace tarvik::osa {

namespace {

struct ElementClass {
    const char *singular, *plural;
    uint32_t code;
};
constexpr ElementClass kElements[] = {
    {"item", "items", type::item},
    {"character", "characters", type::character},
    {"word", "words", type::word},
    {"paragraph", "paragraphs", type::paragraph},
    {"text item", "text items", type::textItem},
    {"text", nullptr, type::text},
    {"string", "strings", type::string},
    {"integer", "integers", type::integer},
    {"real", "reals", type::real},
    {"number", "numbers", type::number},
    {"boolean", "booleans", type::boolean},
    {"list", "lists", type::list},
    {"record", "records", type::record},
    {"date", "dates", type::date},
    {"script", "scripts", type::script},
    {"window", "windows", code("cwin")},
    {"document", "documents", code("docu")},
};

struct Named {
    const char *phrase;
    uint32_t code;
};
constexpr Named kTypes[] = {
    {"text", type::text},
    {"string", type::string},
    {"Unicode text", type::unicodeText},
    {"integer", type::integer},
    {"real", type::real},
    {"number", type::number},
    {"boolean", type::boolean},
    {"list", type::list},
    {"record", type::record},
    {"date", type::date},
    {"script", type::script},
    {"handler", type::handler},
    {"class", type::type_},
    {"type class", type::type_},
    {"constant", type::constant},
    {"application", type::application},
    {"app", type::application},
    {"alias", type::alias},
    {"file", type::oldFile},
    {"POSIX file", type::file},
    {"reference", type::reference},
    {"data", type::data},
    {"anything", type::any},
    {"item", type::item},
    {"character", type::character},
    {"word", type::word},
    {"paragraph", type::paragraph},
    {"text item", type::textItem},
    {"month", type::month},
    {"weekday", type::weekday},
};

constexpr Named kConstants[] = {
    {"January", code("jan ")},
    {"February", code("feb ")},
    {"March", code("mar ")},
    {"April", code("apr ")},
    {"May", code("may ")},
    {"June", code("jun ")},
    {"July", code("jul ")},
    {"August", code("aug ")},
    {"September", code("sep ")},
    {"October", code("oct ")},
    {"November", code("nov ")},
    {"December", code("dec ")},
    {"Monday", code("mon ")},
    {"Tuesday", code("tue ")},
    {"Wednesday", code("wed ")},
    {"Thursday", code("thu ")},
    {"Friday", code("fri ")},
    {"Saturday", code("sat ")},
    {"Sunday", code("sun ")},
    {"yes", code("yes ")},
    {"no", code("no  ")},
    {"ask", code("ask ")},
    {"case", code("case")},
    {"diacriticals", code("diac")},
    {"expansion", code("expa")},
    {"hyphens", code("hyph")},
    {"punctuation", code("punc")},
    {"white space", code("whit")},
    {"numeric strings", code("nume")},
    {"application responses", code("rmte")},
    {"critical", code("crit")},
    {"informational", code("info")},
    {"warning", code("warn")},
    {"stop", code("stop")},
    {"note", code("note")},
    {"caution", code("caut")},
    {"rounding up", code("rdup")},
    {"up", code("rdup")},
    {"down", code("rddn")},
    {"toward zero", code("tozo")},
    {"to nearest", code("tone")},
    {"as taught in school", code("tats")},
    {"desktop", code("desk")},
    {"desktop folder", code("desk")},
    {"documents folder", code("docs")},
    {"home folder", code("cusr")},
    {"temporary items", code("temp")},
    {"temporary items folder", code("temp")},
    {"application support", code("asup")},
    {"preferences", code("pref")},
    {"preferences folder", code("pref")},
    {"library folder", code("dlib")},
    {"applications folder", code("apps")},
    {"pictures folder", code("pdoc")},
    {"downloads folder", code("down")},
    {"music folder", code("\xB5"
                          "doc")},
    {"movies folder", code("mdoc")},
    {"users folder", code("usrs")},
    {"startup disk", code("boot")},
    {"trash", code("trsh")},
    {"user domain", code("fldu")},
    {"local domain", code("fldl")},
    {"eof", code("eof ")},
};

struct PropertyTerm {
    const char *phrase;
    uint32_t code;
};
constexpr PropertyTerm kProperties[] = {
    {"text item delimiters", code("txdl")},
    {"date string", code("dstr")},
    {"time string", code("tstr")},
    {"short date string", code("shdt")},
    {"quoted form", code("strq")},
    {"POSIX path", code("psxp")},
    {"class", code("pcls")},
    {"length", code("leng")},
    {"reverse", code("rvse")},
    {"rest", code("rest")},
    {"contents", code("pcnt")},
    {"id", code("ID  ")},
    {"name", code("pnam")},
    {"version", code("vers")},
    {"frontmost", code("pisf")},
    {"running", code("prun")},
    {"displayed name", code("dnam")},
    {"year", code("year")},
    {"month", type::month},
    {"day", code("day ")},
    {"weekday", type::weekday},
    {"hours", code("hour")},
    {"minutes", code("min ")},
    {"seconds", code("seco")},
    {"time", code("time")},
    {"parent", code("pare")},
    {"button returned", code("bhit")},
    {"text returned", code("ttxt")},
    {"gave up", code("gavu")},
    {"pi", code("pi  ")},
};

}  // namespace

const std::vector<Command> &commands()
{
    using P = std::vector<CommandParameter>;
    static const P kDialog = {{"default answer", code("dtxt")},      {"hidden answer", code("htxt")},
                              {"hidden answer", code("htxt"), true}, {"buttons", code("btns")},
                              {"default button", code("dflt")},      {"cancel button", code("cbtn")},
                              {"with title", code("appr")},          {"with icon", code("disp")},
                              {"giving up after", code("givu")}};
    static const std::vector<Command> kCommands = {
        {"do shell script",
         code("exec"),
         Command::required,
         {{"as", code("rtyp")},
          {"altering line endings", code("alen"), true},
          {"administrator privileges", code("badm"), true}}},
        {"display dialog", code("dlog"), Command::required, kDialog},
        {"display alert",
         code("disA"),
         Command::required,
         {{"message", code("mesS")},
          {"as", code("EAlT")},
          {"buttons", code("btns")},
          {"default button", code("dflt")},
          {"cancel button", code("cbtn")},
          {"giving up after", code("givu")}}},
        {"current date", code("cdat"), Command::none, {}},
        {"random number",
         code("rand"),
         Command::optional,
         {{"from", code("from")}, {"to", code("to  ")}, {"with seed", code("seed")}}},
        {"delay", code("dela"), Command::optional, {}},
        {"offset", code("offs"), Command::none, {{"of", code("psof")}, {"in", code("psin")}}},
        {"round", code("rond"), Command::required, {{"rounding", code("dire")}}},
        {"path to",
         code("rtph"),
         Command::required,
         {{"from", code("from")}, {"as", code("rtyp")}, {"folder creation", code("crfl"), true}}},
        {"read",
         code("read"),
         Command::required,
         {{"from", code("from")},
          {"to", code("to  ")},
          {"for", code("for ")},
          {"before", code("befo")},
          {"until", code("unti")},
          {"using delimiters", code("deli")},
          {"using delimiter", code("deli")},
          {"as", code("as  ")}}},
        {"write",
         code("writ"),
         Command::required,
         {{"to", code("refn")}, {"starting at", code("wrat")}, {"for", code("nmwr")}, {"as", code("as  ")}}},
        {"open for access", code("open"), Command::required, {{"write permission", code("perm"), true}}},
        {"close access", code("clos"), Command::required, {}},
        {"get eof", code("geof"), Command::required, {}},
        {"set eof", code("seof"), Command::required, {{"to", code("set2")}}},
        {"the clipboard", code("gClp"), Command::none, {{"as", code("rtyp")}}},
        {"set the clipboard to", code("sClp"), Command::required, {}},
        {"clipboard info", code("iClp"), Command::none, {{"for", code("for ")}}},
        {"ASCII character", code("ntoc"), Command::required, {}},
        {"ASCII number", code("cton"), Command::required, {}},
        {"system attribute", code("fndi"), Command::required, {}},
        {"beep", code("beep"), Command::optional, {}},
        {"run script", code("dsct"), Command::required, {{"with parameters", code("plst")}}},
        {"load script", code("load"), Command::required, {}},
        {"run", code("oapp"), Command::optional, {}, true},
        {"activate", code("actv"), Command::optional, {}, true},
        {"launch", code("ascr"), Command::optional, {}, true},
        {"reopen", code("rapp"), Command::optional, {}, true},
        {"open", code("odoc"), Command::required, {}, true},
        {"quit", code("quit"), Command::optional, {{"saving", code("savo")}}, true},
    };
    return kCommands;
}

Vocabulary::Vocabulary(Names &names) : names_(names)
{
    for (const auto &[phrase, code] : kProperties)
        add(Term::property, phrase, code, names.of(phrase));
    for (const auto &[singular, plural, code] : kElements) {
        add(Term::element, singular, code, names.of(singular));
        if (plural)
            add(Term::elements, plural, code, names.of(singular));
    }
    for (const auto &[phrase, code] : kTypes)
        add(Term::type, phrase, code);
    for (const auto &[phrase, code] : kConstants)
        add(Term::constant, phrase, code);
    for (const Command &command : commands())
        add(Term::command, command.phrase, command.id, 0, &command);
    for (auto &[first, terms] : terms_)
        std::stable_sort(terms.begin(), terms.end(), [](const Term &one, const Term &other) {
            return one.words.size() > other.words.size();
        });
}

void Vocabulary::add(Term::Kind kind, const char *phrase, uint32_t code, Name name, const Command *command)
{
    Term term{kind, {}, code, name, command};
    for (const char *at = phrase; *at;) {
        const size_t length = std::strcspn(at, " ");
        term.words.push_back(names_.of({at, length}));
        at += length + (at[length] == ' ');
    }
    terms_[term.words[0]].push_back(std::move(term));
}

const std::vector<Term> *Vocabulary::startingWith(Name word) const
{
    const auto place = terms_.find(word);
    return place == terms_.end() ? nullptr : &place->second;
}

std::string fourCharacters(uint32_t code)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8)
        appendUTF8(text, uint8_t(code >> shift));
    return text;
}

std::string typeName(uint32_t code)
{
    for (const auto &[phrase, known] : kTypes) {
        if (known == code)
            return phrase;
    }
    for (const auto &[phrase, known] : kProperties) {
        if (known == code)
            return phrase;
    }
    for (const auto &[singular, plural, known] : kElements) {
        if (known == code)
            return singular;
    }
    return code == type::missing ? "missing value" : "«class " + fourCharacters(code) + "»";
}

std::string constantName(uint32_t code)
{
    for (const auto &[phrase, known] : kConstants) {
        if (known == code)
            return phrase;
    }
    return "«constant ****" + fourCharacters(code) + "»";
}

uint32_t propertyCode(Name name, const Names &names)
{
    for (const auto &[phrase, code] : kProperties) {
        if (names.find(phrase) == name)
            return code;
    }
    return 0;
}

Name propertyOf(uint32_t code, Names &names)
{
    for (const auto &[phrase, known] : kProperties) {
        if (known == code)
            return names.of(phrase);
    }
    return names.of("«class " + fourCharacters(code) + "»");
}

}  // namespace tarvik::osa
