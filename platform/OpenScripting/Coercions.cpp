#include "private/Machine.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sys/stat.h>

namespace tarvik::osa {

namespace {

constexpr int kDeepest = 200;                 // lists within lists
constexpr double kLargestWhole = 2147483647;  // what `as integer` gives at most

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() &&
           (text.front() == ' ' || text.front() == '\t' || text.front() == '\n' || text.front() == '\r'))
        text.remove_prefix(1);
    while (!text.empty() &&
           (text.back() == ' ' || text.back() == '\t' || text.back() == '\n' || text.back() == '\r'))
        text.remove_suffix(1);
    return text;
}

bool fileExists(const std::string &path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

/// Halves to the even neighbour, as IEEE 754 rounds.
int64_t rounded(double number) { return int64_t(std::nearbyint(number)); }

}  // namespace

std::optional<Value> parseNumber(std::string_view text)
{
    text = trimmed(text);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    if (text.empty() || text.find_first_not_of("0123456789.eE+-") != std::string_view::npos)
        return std::nullopt;
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc{} || result.ptr != text.data() + text.size())
        return std::nullopt;
    if (text.find_first_of(".eE") == std::string_view::npos && std::fabs(number) <= 536870911)
        return Value::of(int64_t(number));
    return Value::of(number);
}

double Machine::number(const Value &value) { return asNumber(value).number(); }

Value Machine::asNumber(const Value &original, const char *wanted)
{
    const Value value = contentsOf(original);
    switch (value.kind()) {
    case Kind::integer:
    case Kind::real: return value;
    case Kind::text:
        if (const auto parsed = parseNumber(utf8(value)))
            return *parsed;
        break;
    case Kind::boolean: return Value::of(int64_t(value.boolean()));
    case Kind::constant:  // months and days of the week
        if (const auto number = numberOfConstant(value.code()))
            return Value::of(*number);
        break;
    case Kind::list:
        if (value.list()->items.size() == 1 && !value.list()->items[0].is(Kind::list))
            return asNumber(value.list()->items[0], wanted);
        break;
    default: break;
    }
    cantMake(value, wanted);
}

int64_t Machine::whole(const Value &value)
{
    const Value found = contentsOf(value);
    if (found.is(Kind::integer))
        return found.integer();
    const Value parsed = asNumber(found, "integer");
    if (std::fabs(parsed.number()) > kLargestWhole)
        cantMake(found, "integer");
    return rounded(parsed.number());
}

bool Machine::truth(const Value &original)
{
    const Value value = contentsOf(original);
    switch (value.kind()) {
    case Kind::boolean: return value.boolean();
    case Kind::integer: return value.integer() != 0;
    case Kind::text: {
        std::string text = utf8(value);
        for (char &c : text)
            c = char(c >= 'A' && c <= 'Z' ? c + 32 : c);
        if (text == "true" || text == "yes")
            return true;
        if (text == "false" || text == "no")
            return false;
        break;
    }
    case Kind::constant:
        if (value.code() == code("yes "))
            return true;
        if (value.code() == code("no  "))
            return false;
        break;
    case Kind::list:
        if (value.list()->items.size() == 1 && !value.list()->items[0].is(Kind::list))
            return truth(value.list()->items[0]);
        break;
    default: break;
    }
    cantMake(value, "boolean");
}

Value Machine::asText(const Value &original, int depth)
{
    if (depth > kDeepest)
        raise(error::stackOverflow, "Stack overflow.");
    const Value value = contentsOf(original);
    switch (value.kind()) {
    case Kind::text: return value;
    case Kind::boolean:
    case Kind::integer:
    case Kind::real:
    case Kind::type:
    case Kind::constant:
    case Kind::missing: return heap.text(display(value));
    case Kind::date: return heap.text(dateText(value.date()->seconds));
    case Kind::file: return heap.text(host.hfsPath(value.file()->path));
    case Kind::application: return heap.text(value.application()->name);
    case Kind::list: {
        // Items with the first delimiter between them.
        Value delimiter =
            delimiters.is(Kind::list)
                ? (delimiters.list()->items.empty() ? heap.emptyText() : delimiters.list()->items[0])
                : delimiters;
        if (!delimiter.is(Kind::text))
            delimiter = heap.emptyText();
        const auto &items = value.list()->items;
        if (std::all_of(items.begin(), items.end(), [](const Value &item) { return item.is(Kind::text); }))
            return joinedTexts(items, delimiter, heap);
        std::vector<Value> texts;
        texts.reserve(items.size());
        for (const Value &item : items)
            texts.push_back(asText(item, depth + 1));
        return joinedTexts(texts, delimiter, heap);
    }
    case Kind::data:
        if (value.data()->type == type::utf8 || value.data()->type == type::string)
            return heap.text(value.data()->bytes);
        break;
    default: break;
    }
    cantMake(value, "text");
}

std::string Machine::path(const Value &original)
{
    const Value value = contentsOf(original);
    if (value.is(Kind::file))
        return value.file()->path;
    if (value.is(Kind::text)) {
        const std::string text = utf8(value);
        return text.starts_with('/') || text.find(':') == std::string::npos ? text : host.posixPath(text);
    }
    if (value.is(Kind::list) && value.list()->items.size() == 1 && !value.list()->items[0].is(Kind::list))
        return path(value.list()->items[0]);
    cantMake(value, "file");
}

void Machine::cantMake(const Value &value, std::string_view type) const
{
    raise(error::wrongType, "Can’t make " + display(value) + " into type " + std::string(type) + ".", value);
}

Value Machine::alias(std::string path)
{
    struct stat about;
    if (!path.ends_with('/') && stat(path.c_str(), &about) == 0 && S_ISDIR(about.st_mode))
        path += '/';
    return heap.file(true, std::move(path));
}

Value Machine::coerced(const Value &original, uint32_t wanted)
{
    const Value value = wanted == type::reference ? original : contentsOf(original);
    switch (wanted) {
    case type::any: return value;
    case type::text:
    case type::string:
    case type::unicodeText:
    case type::utf8:
    case code("styl"):
    case code("itxt"): return asText(value);
    case type::integer: return Value::of(whole(value));
    case type::real: return Value::of(number(value));
    case type::number: return asNumber(value);
    case type::boolean: return Value::of(truth(value));
    case type::list:
        if (value.is(Kind::list))
            return value;
        if (value.is(Kind::record)) {
            std::vector<Value> items;
            for (const auto &[name, field] : value.record()->fields)
                items.push_back(field);
            return heap.list(std::move(items));
        }
        return heap.list({value});
    case type::record:
        if (value.is(Kind::record))
            return value;
        break;
    case type::date:
        if (value.is(Kind::date))
            return value;
        if (value.is(Kind::text)) {
            if (const auto seconds = parseDate(utf8(value)))
                return heap.date(*seconds);
        }
        break;
    case type::script:
        if (value.is(Kind::script))
            return value;
        break;
    case type::reference:
        if (value.is(Kind::reference))
            return value;
        break;
    case type::handler:
        if (value.is(Kind::handler))
            return value;
        break;
    case type::type_:
        if (value.is(Kind::type))
            return value;
        if (value.is(Kind::constant))
            return Value::type(value.code());
        if (value.is(Kind::text)) {
            const std::string text = utf8(value);
            if (const Name name = heap.names.find(text)) {
                if (const auto *terms = vocabulary.startingWith(name)) {
                    for (const Term &term : *terms) {
                        if (term.kind == Term::type && term.words.size() == 1)
                            return Value::type(term.code);
                    }
                }
            }
        }
        break;
    case type::constant:
        if (value.is(Kind::constant))
            return value;
        if (value.is(Kind::type))
            return Value::constant(value.code());
        break;
    case type::file:
    case type::oldFile: return heap.file(false, path(value));
    case type::alias: {
        const std::string found = path(value);
        if (!fileExists(found))
            raise(error::noSuchFile,
                  "File " + (value.is(Kind::text) ? utf8(value) : found) + " wasn’t found.", value);
        return alias(found);
    }
    case type::application:
        if (value.is(Kind::application))
            return value;
        if (value.is(Kind::text))
            return heap.application(utf8(value));
        break;
    case type::month:
    case type::weekday:
        if (value.is(Kind::constant))
            return value;
        break;
    default:
        if (value.is(Kind::data) && value.data()->type == wanted)
            return value;
        break;
    }
    if (value.is(Kind::list) && value.list()->items.size() == 1 && wanted != type::record &&
        !value.list()->items[0].is(Kind::list))
        return coerced(value.list()->items[0], wanted);
    cantMake(value, wanted == type::type_ ? "class" : typeName(wanted));
}

}  // namespace tarvik::osa
