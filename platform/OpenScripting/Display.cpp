// Values as a script would write them.
#include "private/Machine.h"

#include <cmath>
#include <cstdio>

namespace tarvik::osa {

namespace {

constexpr int kDeepestDisplay = 100;

std::string quoted(const std::string &text)
{
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            out += '\\';
        out += c;
    }
    return out + "\"";
}

}  // namespace

/// Twelve digits, an exponent from 10,000 on and down to 0.001.
std::string numberText(double number)
{
    char buffer[40];
    const double size = std::fabs(number);
    if (size != 0 && (size >= 10000 || size <= 0.001)) {
        std::snprintf(buffer, sizeof buffer, "%.11E", number);
        std::string text = buffer;
        const size_t e = text.find('E');
        if (e == std::string::npos)
            return text;
        std::string digits = text.substr(0, e);
        digits.erase(digits.find_last_not_of('0') + 1);
        if (digits.back() == '.')
            digits += '0';
        const int exponent = std::atoi(text.c_str() + e + 1);
        return digits + "E" + (exponent < 0 ? "-" : "+") + std::to_string(std::abs(exponent));
    }
    std::snprintf(buffer, sizeof buffer, "%.12g", number);
    std::string text = buffer;
    if (text.find_first_of(".eEn") == std::string::npos)
        text += ".0";
    return text;
}

std::string Machine::displayName(Name name) const
{
    const std::string &spelling = heap.names.spelling(name);
    bool plain = !spelling.empty();
    for (size_t i = 0; i < spelling.size(); ++i) {
        const char c = spelling[i];
        const bool letter =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || uint8_t(c) >= 0x80;
        plain = plain && (letter || (i && c >= '0' && c <= '9'));
    }
    // Terms of several words stand without bars.
    if (!plain && name < Word::count_ + 0u)
        return spelling;
    if (!plain && propertyCode(name, heap.names))
        return spelling;
    return plain ? spelling : "|" + spelling + "|";
}

std::string Machine::display(const Value &value, int depth) const
{
    if (depth > kDeepestDisplay)
        raise(error::stackOverflow, "Stack overflow.");
    switch (value.kind()) {
    case Kind::none: return "";
    case Kind::missing: return "missing value";
    case Kind::boolean: return value.boolean() ? "true" : "false";
    case Kind::integer: return std::to_string(value.integer());
    case Kind::real: return numberText(value.real());
    case Kind::type: return value.code() == code("ascr") ? "AppleScript" : typeName(value.code());
    case Kind::constant: return constantName(value.code());
    case Kind::text: return quoted(utf8(value));
    case Kind::list: {
        std::string out = "{";
        for (size_t i = 0; i < value.list()->items.size(); ++i)
            out += (i ? ", " : "") + display(value.list()->items[i], depth + 1);
        return out + "}";
    }
    case Kind::record: {
        std::string out = "{";
        for (size_t i = 0; i < value.record()->fields.size(); ++i) {
            const auto &[name, field] = value.record()->fields[i];
            out += (i ? ", " : "") + displayName(name) + ":" + display(field, depth + 1);
        }
        return out + "}";
    }
    case Kind::date: return "date " + quoted(dateText(value.date()->seconds));
    case Kind::script:
        return value.script()->prototype->name
                   ? "«script " + heap.names.spelling(value.script()->prototype->name) + "»"
                   : "«script»";
    case Kind::handler: return "«handler " + heap.names.spelling(value.handler()->function->name) + "»";
    case Kind::file:
        if (value.file()->isAlias)
            return "alias " + quoted(host.hfsPath(value.file()->path));
        return "POSIX file " + quoted(value.file()->path);
    case Kind::application:
        return value.application()->name.empty() ? "current application"
                                                 : "application " + quoted(value.application()->name);
    case Kind::data: {
        std::string out = "«data " + fourCharacters(value.data()->type);
        char hex[3];
        for (const char byte : value.data()->bytes) {
            std::snprintf(hex, sizeof hex, "%02X", uint8_t(byte));
            out += hex;
        }
        return out + "»";
    }
    case Kind::reference: {
        const Reference *reference = value.reference();
        if (reference->specifier.form == Specifier::variable)
            return displayName(reference->specifier.name);
        const std::string what = describe(reference->specifier, reference->from, reference->to);
        if (reference->container.is(Kind::missing) || reference->container.is(Kind::none))
            return what;
        return what + " of " + display(reference->container, depth + 1);
    }
    }
    return "";
}

std::string Machine::describe(const Specifier &spec, const Value &from, const Value &to) const
{
    const std::string name = spec.code == type::text ? "text" : heap.names.spelling(spec.name);
    switch (spec.form) {
    case Specifier::property:
    case Specifier::variable: return displayName(spec.name);
    case Specifier::index: return name + " " + display(from, 1);
    case Specifier::named: return name + " " + display(from, 1);
    case Specifier::id: return name + " id " + display(from, 1);
    case Specifier::every: return "every " + name;
    case Specifier::range:
        return name + (spec.code == type::text ? " " : "s ") + display(from, 1) + " thru " + display(to, 1);
    case Specifier::middle: return "middle " + name;
    case Specifier::some: return "some " + name;
    case Specifier::beginning: return "beginning";
    case Specifier::end: return "end";
    }
    return name;
}

}  // namespace tarvik::osa
