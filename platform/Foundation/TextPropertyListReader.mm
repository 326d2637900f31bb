#include "platform/CoreFoundation/private/Text.h"
#include "platform/Foundation/private/TextPropertyList.h"

#import <Tarvik/support/Retained.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>

namespace tarvik::plist {
namespace {

int digit(char16_t c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char16_t lower = c | 32;
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : 99;
}

/// Reads from the front of the text. What is made is owned by whoever holds it; nil: why_ says what is wrong,
/// and where.
class Reader {
public:
    Reader(std::u16string_view text, Mutability mutability) : text_(text), mutability_(mutability) {}

    id read(std::string &why)
    {
        auto list = adopt<NSObject>(skip() && isBracket(peek()) ? newValue(0) : newDictionary(u'\0', 0));
        if (list && skip())
            list = adopt<NSObject>(fail("more than one list"));
        why = why_;
        return list.release();
    }

private:
    static bool isBracket(char16_t c) { return c == '{' || c == '(' || c == '<'; }
    static bool isBare(char16_t c)
    {
        return (c < 0x80 && isalnum(c)) || c >= 0x80 ||
               std::u16string_view(u"_$/:.-+@#%&*!?|~^`\\").find(c) != std::u16string_view::npos;
    }

    char16_t peek() const { return at_ < text_.size() ? text_[at_] : u'\0'; }
    bool startsWith(std::u16string_view what) const { return text_.substr(at_).starts_with(what); }

    id fail(const std::string &why)
    {
        if (why_.empty()) {
            const auto line =
                1 + std::count(text_.begin(), text_.begin() + ptrdiff_t(std::min(at_, text_.size())), u'\n');
            why_ = "line " + std::to_string(line) + ": " + why;
        }
        return nil;
    }

    /// To what comes next, over blanks and comments; false at the end.
    bool skip()
    {
        while (at_ < text_.size()) {
            if (startsWith(u"/*"))
                at_ = std::min(text_.find(u"*/", at_ + 2), text_.size() - 2) + 2;
            else if (startsWith(u"//"))
                at_ = std::min(text_.find_first_of(u"\n\r", at_), text_.size());
            else if (text_[at_] == ' ' || (text_[at_] >= '\t' && text_[at_] <= '\r') ||
                     text_[at_] == 0x2028 || text_[at_] == 0x2029)
                ++at_;
            else
                return true;
        }
        return false;
    }
    /// Takes a character, if it comes next.
    bool take(char16_t c)
    {
        if (!skip() || text_[at_] != c)
            return false;
        ++at_;
        return true;
    }

    std::optional<std::u16string> string()
    {
        if (!skip()) {
            fail("the list ends early");
            return std::nullopt;
        }
        if (peek() == '"' || peek() == '\'')
            return quoted(text_[at_++]);
        const size_t start = at_;
        while (at_ < text_.size() && isBare(text_[at_]) && !startsWith(u"/*") && !startsWith(u"//"))
            ++at_;
        if (at_ == start) {
            fail("a character that begins nothing");
            return std::nullopt;
        }
        return std::u16string(text_.substr(start, at_ - start));
    }

    std::optional<std::u16string> quoted(char16_t end)
    {
        std::u16string out;
        const size_t start = at_;
        while (at_ < text_.size() && text_[at_] != end) {
            const char16_t c = text_[at_++];
            out += c == '\\' && at_ < text_.size() ? escaped() : c;
        }
        if (at_ >= text_.size()) {
            at_ = start;
            fail("a quote without an end");
            return std::nullopt;
        }
        ++at_;
        return out;
    }

    char16_t escaped()
    {
        const char16_t c = text_[at_++];
        if (c == 'U' || c == 'u')
            return number(4, 16);
        if (c >= '0' && c <= '7') {
            --at_;
            return number(3, 8);
        }
        constexpr std::u16string_view letters = u"abfnrtv", meanings = u"\a\b\f\n\r\t\v";
        const size_t found = letters.find(c);
        return found == letters.npos ? c : meanings[found];
    }

    char16_t number(int most, int base)
    {
        unsigned value = 0;
        for (int i = 0; i < most && at_ < text_.size() && digit(text_[at_]) < base; ++i)
            value = value * unsigned(base) + unsigned(digit(text_[at_++]));
        return char16_t(value);
    }

    id newLeaf(const std::u16string &text)
    {
        NSString *string = cf::newString(text);
        if (mutability_ != Mutability::containersAndLeaves)
            return string;
        NSString *copy = [string mutableCopy];
        [string release];
        return copy;
    }

    id newValue(int level)
    {
        if (level >= kDeepest)
            return fail("nested deeper than " + std::to_string(kDeepest) + " levels");
        if (take('{'))
            return newDictionary(u'}', level);
        if (take('('))
            return newArray(level);
        if (take('<'))
            return newData();
        const auto text = string();
        return text ? newLeaf(*text) : nil;
    }

    id newArray(int level)
    {
        auto array = adopt([NSMutableArray new]);
        while (!take(')')) {
            auto value = adopt<NSObject>(newValue(level + 1));
            if (!value)
                return nil;
            [array.get() addObject:value.get()];
            if (!take(',') && !(skip() && peek() == ')'))
                return fail("no comma between the objects of an array");
        }
        return mutability_ == Mutability::none ? (id)[array.get() copy] : array.release();
    }

    id newData()
    {
        if (take('*'))
            return newTyped();
        auto data = adopt([NSMutableData new]);
        int high = -1;
        for (; !take('>'); ++at_) {
            if (digit(peek()) > 15)
                return fail("data that is not hexadecimal");
            const uint8_t byte = uint8_t((high < 0 ? 0 : high) << 4 | digit(peek()));
            if (high >= 0)
                [data.get() appendBytes:&byte length:1];
            high = high < 0 ? byte : -1;
        }
        if (high >= 0)
            return fail("data with half a byte");
        return mutability_ == Mutability::containersAndLeaves ? data.release() : (id)[data.get() copy];
    }

    /// GNUstep's numbers: <*I12>, <*R1.5>, <*BY>.
    id newTyped()
    {
        const char16_t type = peek();
        const size_t end = text_.find(u'>', at_);
        if (end == text_.npos || end - at_ > 32 || at_ + 1 >= end)
            return fail("no value of a type");
        const auto digits = text_.substr(at_ + 1, end - at_ - 1);
        const std::string value(digits.begin(), digits.end());
        at_ = end + 1;
        if (type == 'B')
            return [[NSNumber alloc] initWithBool:value == "Y"];
        double real = 0;
        long long integer = 0;
        const char *const last = value.data() + value.size();
        const bool isInteger = type == 'I' && std::from_chars(value.data(), last, integer).ptr == last;
        const bool isReal = type == 'R' && std::from_chars(value.data(), last, real).ptr == last;
        if (!isInteger && !isReal)
            return fail("no value of a type");
        return isInteger ? [[NSNumber alloc] initWithLongLong:integer]
                         : [[NSNumber alloc] initWithDouble:real];
    }

    /// Up to the bracket; of a table up to the end of the text.
    id newDictionary(char16_t bracket, int level)
    {
        auto dictionary = adopt([NSMutableDictionary new]);
        while (bracket ? !take(bracket) : skip()) {
            const auto key = string();
            if (!key)
                return nil;
            auto value = adopt<NSObject>(take('=') ? newValue(level + 1)
                                         : bracket ? fail("a key without a value")
                                                   : newLeaf(*key));
            if (!value)
                return nil;
            if (!take(';'))
                return fail("no semicolon behind a value");
            auto name = adopt(cf::newString(*key));
            [dictionary.get() setObject:value.get() forKey:name.get()];
        }
        return mutability_ == Mutability::none ? (id)[dictionary.get() copy] : dictionary.release();
    }

    std::u16string_view text_;
    size_t at_ = 0;
    Mutability mutability_;
    std::string why_;
};

}  // namespace

id newFromText(std::u16string_view text, Mutability mutability, std::string &why)
{
    return Reader(text, mutability).read(why);
}

}  // namespace tarvik::plist
