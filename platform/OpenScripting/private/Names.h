/// \file
/// Names of a script as small numbers. Case doesn't count: `total` and `Total` are one name, written as it was first met.
/// The language's own words have fixed numbers (Word), so that a parser can switch over them.
#pragma once
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tarvik::osa {

using Name = uint32_t;

// clang-format off
#define TARVIK_OSA_WORDS(W) \
    W(a) W(about) W(above) W(after) W(against) W(alias) W(an) W(and_, "and") W(apart) W(app) W(application) W(around) W(as) W(aside) W(ask) W(at) \
    W(back) W(before) W(beginning) W(begins) W(begin) W(below) W(beneath) W(beside) W(between) W(but) W(by) W(case_, "case") \
    W(characters) W(character) W(class_, "class") W(come) W(comes) W(considering) W(contain) W(contained) W(contains) W(contents) \
    W(continue_, "continue") W(copy) W(count) W(current) W(data) W(date) W(day) W(days) W(diacriticals) W(div) W(do_, "do") W(does) \
    W(doesnt, "doesn't") W(eighth) W(else_, "else") W(end) W(ends) W(equal) W(equals) W(error) W(every) W(exists) W(exit) W(expansion) \
    W(false_, "false") W(fifth) W(file) W(first) W(folder) W(for_, "for") W(fourth) W(from) W(front) W(get) W(given) W(global) W(greater) \
    W(hours) W(hyphens) W(id) W(if_, "if") W(ignoring) W(in) W(index) W(instead) W(into) W(is) W(isnt, "isn't") W(it) W(item) W(items) W(its) \
    W(last) W(launch) W(length) W(less) W(linefeed) W(local) W(log) W(me) W(middle) W(minutes) W(missing) W(mod) W(month) W(my) W(name) \
    W(named) W(negative) W(ninth) W(no) W(not_, "not") W(null) W(number) W(numeric) W(of) W(on) W(onto) W(or_, "or") W(out) W(over) \
    W(paragraph) W(paragraphs) W(parent) W(partial) W(pi) W(POSIX) W(prop) W(property) W(punctuation) W(put) W(quote) W(record) W(ref) \
    W(reference) W(repeat) W(responses) W(rest) W(result) W(return_, "return") W(returning) W(reverse) W(script) W(scripting) W(second) \
    W(seconds) W(set) W(seventh) W(since) W(sixth) W(some) W(space) W(start) W(starts) W(start_, "startup") W(strings) W(tab) W(tell) \
    W(tenth) W(terms) W(text) W(than) W(that) W(the) W(then) W(third) W(through) W(thru) W(time) W(timeout) W(times) W(to) W(transaction) \
    W(true_, "true") W(try_, "try") W(under) W(until) W(use) W(using_, "using") W(value) W(version) W(weekday) W(weeks) W(where) \
    W(while_, "while") W(white) W(whose) W(with) W(without) W(word) W(words) W(year) W(yes) \
    /* names with a meaning of their own */ \
    W(AppleScript) W(run) W(open) W(quit) W(reopen) W(activate) W(frontmost) W(string) W(integer) W(real) W(boolean) W(list) \
    W(short_, "short") W(rich) W(textItems, "text items") W(textItem, "text item") W(textItemDelimiters, "text item delimiters") \
    W(dateString, "date string") W(timeString, "time string") W(shortDateString, "short date string") W(quotedForm, "quoted form") \
    W(POSIXPath, "POSIX path") W(missingValue, "missing value") W(currentApplication, "current application") W(POSIXFile, "POSIX file") \
    W(anonymous, "«script»") W(displayedName, "displayed name") W(running) W(button, "button returned") \
    W(textReturned, "text returned") W(gaveUp, "gave up") W(constant) W(apartFrom, "apart from") W(asideFrom, "aside from") \
    W(insteadOf, "instead of") W(outOf, "out of")
// clang-format on

struct Word {
    enum : Name {
        none,
#define TARVIK_OSA_WORD(identifier, ...) identifier,
        TARVIK_OSA_WORDS(TARVIK_OSA_WORD)
#undef TARVIK_OSA_WORD
            count_
    };
};

class Names {
public:
    Names();
    /// The number of a name, whatever its case.
    Name of(std::string_view spelling);
    /// The same, 0 for a name that was never met.
    Name find(std::string_view spelling) const;
    /// As it was first written.
    const std::string &spelling(Name name) const { return spellings_[name]; }

private:
    std::deque<std::string> spellings_;
    std::unordered_map<std::string, Name> numbers_;
};

}  // namespace tarvik::osa
