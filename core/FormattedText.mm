#include "core/private/FormattedText.h"

#import <Foundation/NSString.h>
#import <Tarvik/support/Bridge.h>
#include <Tarvik/support/UTF8.h>
#include <locale.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <vector>

namespace {

using namespace tarvik;

constexpr uint32_t kReplacement = 0xFFFD;
constexpr size_t kMostArguments = 4096;  // as many as the C library numbers

/// How an argument is passed; widths are the 64-bit system's.
enum class Passed { asInt, asLong, asDouble, asLongDouble, asPointer };

union Value {
    int asInt;
    long asLong;
    double asDouble;
    long double asLongDouble;
    const void *asPointer;
};

/// A width or precision: absent, written out, or an argument's.
struct Size {
    enum { absent, written, passed } from = absent;
    size_t number = 0;  // or the argument's index
};

struct Conversion {
    explicit Conversion(std::string_view before) : literal(before) {}
    std::string_view literal;  // the text before it
    std::string flags, length;
    Size width, precision;
    char kind = 0;  // 0: only the text
    Passed passed = Passed::asInt;
    size_t argument = 0;
};

class Parser {
public:
    explicit Parser(std::string_view format) : rest_(format) {}

    /// What isn't a conversion stays as it stands.
    std::vector<Conversion> conversions()
    {
        std::vector<Conversion> all;
        for (size_t searched = 0;;) {
            const size_t start = rest_.find('%', searched);
            if (start == rest_.npos)
                break;
            const std::string_view before = rest_;
            rest_.remove_prefix(start + 1);
            Conversion found(before.substr(0, start));
            if (parse(found)) {
                all.push_back(std::move(found));
                searched = 0;
            } else {
                rest_ = before;
                searched = start + 1;
            }
        }
        all.emplace_back(rest_);
        return all;
    }
    std::vector<Passed> arguments;

private:
    bool take(char c)
    {
        if (!rest_.starts_with(c))
            return false;
        rest_.remove_prefix(1);
        return true;
    }
    /// The digits in front; none is 0.
    size_t number()
    {
        size_t value = 0;
        for (; !rest_.empty() && rest_[0] >= '0' && rest_[0] <= '9'; rest_.remove_prefix(1))
            value = std::min<size_t>(value * 10 + size_t(rest_[0] - '0'), INT_MAX);
        return value;
    }
    /// "3$" in front: the argument's number.
    size_t position()
    {
        const std::string_view before = rest_;
        const size_t value = number();
        if (value > 0 && take('$'))
            return value;
        rest_ = before;
        return 0;
    }
    bool use(size_t position, Passed how, size_t &index)
    {
        index = position ? position - 1 : next_++;
        if (index >= kMostArguments)
            return false;
        if (arguments.size() <= index)
            arguments.resize(index + 1, Passed::asInt);
        arguments[index] = how;
        return true;
    }
    bool size(Size &size)
    {
        if (take('*')) {
            size.from = Size::passed;
            return use(position(), Passed::asInt, size.number);
        }
        size = {Size::written, number()};
        return true;
    }
    bool parse(Conversion &found)
    {
        const size_t place = position();
        const auto span = [this](std::string_view characters) {
            const std::string_view taken = rest_.substr(0, rest_.find_first_not_of(characters));
            rest_.remove_prefix(taken.size());
            return std::string(taken);
        };
        found.flags = span("-+ #0'I");
        if (!rest_.empty() && (rest_[0] == '*' || (rest_[0] >= '1' && rest_[0] <= '9')) && !size(found.width))
            return false;
        if (take('.') && !size(found.precision))
            return false;
        found.length = span("hljztqL");
        if (rest_.empty())
            return false;
        found.kind = rest_[0];
        rest_.remove_prefix(1);
        const bool isWide = !found.length.empty() && found.length[0] != 'h';
        switch (found.kind) {
        case '%':
        case 'm': return true;
        case 'd':
        case 'i':
        case 'o':
        case 'u':
        case 'x':
        case 'X': found.passed = isWide ? Passed::asLong : Passed::asInt; break;
        case 'c':
        case 'C': found.passed = Passed::asInt; break;
        case 'a':
        case 'A':
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G': found.passed = found.length == "L" ? Passed::asLongDouble : Passed::asDouble; break;
        case 'n':
        case 'p':
        case 's':
        case 'S':
        case '@': found.passed = Passed::asPointer; break;
        default: return false;
        }
        return use(place, found.passed, found.argument);
    }

    std::string_view rest_;
    size_t next_ = 0;
};

std::vector<Value> valuesOf(const std::vector<Passed> &types, va_list arguments)
{
    std::vector<Value> values;
    for (const Passed type : types) {
        Value value = {};
        switch (type) {
        case Passed::asInt: value.asInt = va_arg(arguments, int); break;
        case Passed::asLong: value.asLong = va_arg(arguments, long); break;
        case Passed::asDouble: value.asDouble = va_arg(arguments, double); break;
        case Passed::asLongDouble: value.asLongDouble = va_arg(arguments, long double); break;
        case Passed::asPointer: value.asPointer = va_arg(arguments, const void *); break;
        }
        values.push_back(value);
    }
    return values;
}

/// The C library's numbers with a point, whatever the host's locale.
class PlainNumbers {
public:
    PlainNumbers() : before_(uselocale(plain())) {}
    ~PlainNumbers() { uselocale(before_); }
    PlainNumbers(const PlainNumbers &) = delete;
    PlainNumbers &operator=(const PlainNumbers &) = delete;

private:
    static locale_t plain()
    {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t(0));
        return locale;
    }
    const locale_t before_;
};

void appendCharacter(std::string &text, uint32_t character)
{
    const bool isOne = character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
    appendUTF8(text, isOne ? character : kReplacement);
}

std::string textOfWide(const wchar_t *characters, size_t most)
{
    std::string text;
    for (; *characters; ++characters) {
        std::string next;
        appendCharacter(next, uint32_t(*characters));
        if (text.size() + next.size() > most)
            break;
        text += next;
    }
    return text;
}

std::string textOfUTF16(const unichar *units, size_t most)
{
    std::string text;
    for (size_t i = 0; i < most && units[i]; ++i) {
        const bool isPair =
            (units[i] & 0xFC00) == 0xD800 && i + 1 < most && (units[i + 1] & 0xFC00) == 0xDC00;
        appendCharacter(text,
                        isPair ? 0x10000 + ((units[i] & 0x3FFu) << 10) + (units[i + 1] & 0x3FFu) : units[i]);
        i += isPair;
    }
    return text;
}

/// Without the beginning of a character at its end.
std::string_view withoutCutCharacter(std::string_view text)
{
    for (size_t back = 1; back <= std::min<size_t>(text.size(), 3); ++back) {
        const auto byte = uint8_t(text[text.size() - back]);
        if (byte < 0x80)
            break;
        if (byte >= 0xC2)
            return decodeUTF8(text.substr(text.size() - back)).bytes ? text
                                                                     : text.substr(0, text.size() - back);
    }
    return text;
}

std::string wellFormed(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const size_t bytes = decodeUTF8(text).bytes;
        if (bytes)
            out.append(text.substr(0, bytes));
        else
            appendUTF8(out, kReplacement);
        text.remove_prefix(std::max<size_t>(bytes, 1));
    }
    return out;
}

class Formatter {
public:
    explicit Formatter(std::vector<Value> values) : values_(std::move(values)) {}

    bool append(const Conversion &conversion)
    {
        out_ += conversion.literal;
        resolve(conversion);
        const Value value = conversion.argument < values_.size() ? values_[conversion.argument] : Value{};
        switch (conversion.kind) {
        case 0: return true;
        case '%': out_ += '%'; return true;
        case 'm': return appendText(std::strerror(error_));
        case 'c':
            return appendText(
                character(conversion.length == "l" ? uint32_t(value.asInt) : uint8_t(value.asInt)));
        case 'C': return appendText(character(uint16_t(value.asInt)));
        case 's':
            return conversion.length == "l" ? appendWide(static_cast<const wchar_t *>(value.asPointer))
                                            : appendBytes(static_cast<const char *>(value.asPointer));
        case 'S': return appendUTF16(static_cast<const unichar *>(value.asPointer));
        case '@': return appendObject((id)value.asPointer);
        case 'n': store(conversion.length, const_cast<void *>(value.asPointer)); return true;
        default: break;
        }
        switch (conversion.passed) {
        case Passed::asInt: return appendNumber(conversion, value.asInt);
        case Passed::asLong: return appendNumber(conversion, value.asLong);
        case Passed::asDouble: return appendNumber(conversion, value.asDouble);
        case Passed::asLongDouble: return appendNumber(conversion, value.asLongDouble);
        case Passed::asPointer: return appendNumber(conversion, value.asPointer);
        }
        return false;
    }
    const std::string &text() const { return out_; }

private:
    /// A negative width is one on the left, a negative precision none.
    void resolve(const Conversion &conversion)
    {
        const auto given = [&](const Size &size) -> long {
            return size.from == Size::passed ? values_[size.number].asInt : long(size.number);
        };
        flags_ = conversion.flags;
        width_ = conversion.width.from == Size::absent ? 0 : given(conversion.width);
        if (width_ < 0) {
            flags_ += '-';
            width_ = -width_;
        }
        precision_ = conversion.precision.from == Size::absent ? -1 : given(conversion.precision);
    }
    size_t most() const { return precision_ < 0 ? SIZE_MAX : size_t(precision_); }

    template <class Number>
    bool appendNumber(const Conversion &conversion, Number number)
    {
        std::string format = '%' + flags_;
        if (width_ > 0)
            format += std::to_string(width_);
        if (precision_ >= 0)
            format += '.' + std::to_string(precision_);
        format += conversion.length + conversion.kind;
        const int length = std::snprintf(nullptr, 0, format.c_str(), number);
        if (length < 0)
            return false;
        const size_t before = out_.size();
        out_.resize(before + size_t(length) + 1);  // and a place for the end mark
        std::snprintf(&out_[before], size_t(length) + 1, format.c_str(), number);
        out_.pop_back();
        return true;
    }
    bool appendText(std::string_view text)
    {
        const auto characters =
            std::ranges::count_if(text, [](char c) { return (uint8_t(c) & 0xC0) != 0x80; });
        const std::string padding(size_t(std::max(width_ - characters, 0L)), ' ');
        const bool isLeft = flags_.find('-') != flags_.npos;
        out_.append(isLeft ? "" : padding).append(text).append(isLeft ? padding : "");
        return true;
    }
    bool appendBytes(const char *bytes)
    {
        if (!bytes)
            return appendText("(null)");
        const size_t length = strnlen(bytes, most());
        const std::string_view text(bytes, length);
        return appendText(length == most() ? withoutCutCharacter(text) : text);
    }
    bool appendWide(const wchar_t *characters)
    {
        return appendText(characters ? textOfWide(characters, most()) : "(null)");
    }
    bool appendUTF16(const unichar *units)
    {
        return appendText(units ? textOfUTF16(units, most()) : "(null)");
    }
    bool appendObject(id object)
    {
        const auto text = object ? utf8([object description]) : std::string("(null)");
        return text && appendText(withoutCutCharacter(std::string_view(*text).substr(0, most())));
    }
    static std::string character(uint32_t character)
    {
        std::string text;
        appendCharacter(text, character);
        return text;
    }
    /// How much has been written so far.
    void store(const std::string &length, void *place) const
    {
        if (!place)
            return;
        if (length == "hh")
            *static_cast<signed char *>(place) = static_cast<signed char>(out_.size());
        else if (length == "h")
            *static_cast<short *>(place) = short(out_.size());
        else if (length.empty())
            *static_cast<int *>(place) = int(out_.size());
        else
            *static_cast<long *>(place) = long(out_.size());
    }

    const std::vector<Value> values_;
    const int error_ = errno;
    std::string out_, flags_;
    long width_ = 0, precision_ = -1;
};

}  // namespace

std::optional<std::string> tarvik::formattedText(std::string_view format, va_list arguments)
{
    Parser parser(format);
    const auto conversions = parser.conversions();
    Formatter formatter(valuesOf(parser.arguments, arguments));
    const PlainNumbers numbers;
    for (const Conversion &conversion : conversions)
        if (!formatter.append(conversion))
            return std::nullopt;
    return wellFormed(formatter.text());
}
