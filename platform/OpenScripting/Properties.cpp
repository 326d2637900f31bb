// Properties of values: length of x, month of d, total of r.
#include "private/Machine.h"

#include <algorithm>
#include <cmath>

namespace tarvik::osa {

namespace {

constexpr uint32_t kMonths[] = {code("jan "), code("feb "), code("mar "), code("apr "),
                                code("may "), code("jun "), code("jul "), code("aug "),
                                code("sep "), code("oct "), code("nov "), code("dec ")};
constexpr uint32_t kDays[] = {code("sun "), code("mon "), code("tue "), code("wed "),
                              code("thu "), code("fri "), code("sat ")};

uint32_t classOf(const Value &value)
{
    switch (value.kind()) {
    case Kind::none: return type::missing;
    case Kind::missing: return type::type_;
    case Kind::boolean: return type::boolean;
    case Kind::integer: return type::integer;
    case Kind::real: return type::real;
    case Kind::type: return type::type_;
    case Kind::constant:
        if (std::find(std::begin(kMonths), std::end(kMonths), value.code()) != std::end(kMonths))
            return type::month;
        if (std::find(std::begin(kDays), std::end(kDays), value.code()) != std::end(kDays))
            return type::weekday;
        return type::constant;
    case Kind::text: return type::text;
    case Kind::list: return type::list;
    case Kind::record: return type::record;
    case Kind::date: return type::date;
    case Kind::script: return type::script;
    case Kind::reference: return type::reference;
    case Kind::file: return value.file()->isAlias ? type::alias : type::file;
    case Kind::data: return value.data()->type;
    case Kind::handler: return type::handler;
    case Kind::application: return type::application;
    }
    return type::any;
}

std::string shellQuoted(const std::string &text)
{
    std::string out = "'";
    for (const char c : text)
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

std::string lastPart(std::string path)
{
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    const size_t slash = path.rfind('/');
    return slash == std::string::npos || path == "/" ? path : path.substr(slash + 1);
}

}  // namespace

std::optional<int64_t> numberOfConstant(uint32_t code)
{
    for (size_t i = 0; i < 12; ++i) {
        if (kMonths[i] == code)
            return int64_t(i + 1);
    }
    for (size_t i = 0; i < 7; ++i) {
        if (kDays[i] == code)
            return int64_t(i + 1);
    }
    return std::nullopt;
}

Value Machine::property(const Value &original, Name name)
{
    if (name == Word::contents)
        return contentsOf(original);
    Value value = original;
    if (value.is(Kind::reference)) {
        const Value *root = &value;
        while (root->is(Kind::reference))
            root = &root->reference()->container;
        if (root->is(Kind::application)) {
            if (name == Word::count || name == Word::length)
                return Value::of(int64_t(countOf(value)));
            return host.applicationProperty(*this, heap.reference({Specifier::property, name, 0}, value));
        }
        value = contentsOf(value);
    }
    const auto number = [](int64_t n) { return Value::of(n); };
    // What a script or a record says itself comes first.
    if (value.is(Kind::record)) {
        if (const Value *field = value.record()->find(name))
            return *field;
    }
    if (value.is(Kind::script)) {
        const ScriptObject *script = value.script();
        for (int steps = 0; script && steps < 1000; ++steps) {
            if (name == Word::parent)
                return script->parent  ? script->parent
                       : script->outer ? script->outer
                                       : Value::type(code("ascr"));
            if (const int slot = script->prototype->slotOf(name); slot >= 0) {
                const Value &held = script->slots[size_t(slot)];
                if (!held)
                    raise(error::undefined, "The variable " + displayName(name) + " is not defined.");
                return held;
            }
            if (const auto handler = script->prototype->handlers.find(name);
                handler != script->prototype->handlers.end())
                return heap.handler(handler->second, Value::retain(const_cast<ScriptObject *>(script)));
            const Value &next = script->parent ? script->parent : script->outer;
            script = next.is(Kind::script) ? next.script() : nullptr;
        }
    }
    switch (name) {
    case Word::class_: return Value::type(classOf(value));
    case Word::length:
    case Word::count:
        if (value.is(Kind::list) || value.is(Kind::text) || value.is(Kind::record))
            return number(int64_t(countOf(value)));
        break;
    case Word::reverse:
        if (value.is(Kind::list)) {
            std::vector<Value> items(value.list()->items.rbegin(), value.list()->items.rend());
            return heap.list(std::move(items));
        }
        break;
    case Word::rest:
        if (value.is(Kind::list)) {
            const auto &items = value.list()->items;
            if (items.empty())
                break;
            return heap.list({items.begin() + 1, items.end()});
        }
        break;
    case Word::quotedForm: return heap.text(shellQuoted(textOf(value)));
    case Word::id:
        if (value.is(Kind::text)) {
            const Text *text = value.text();
            if (text->length == 1)
                return number(int64_t((*text)[0]));
            std::vector<Value> codes;
            for (size_t i = 0; i < text->length; ++i)
                codes.push_back(number(int64_t((*text)[i])));
            return heap.list(std::move(codes));
        }
        break;
    case Word::POSIXPath:
        if (value.is(Kind::file) || value.is(Kind::text))
            return heap.text(path(value));
        break;
    case Word::name:
        if (value.is(Kind::file))
            return heap.text(lastPart(value.file()->path));
        if (value.is(Kind::script))
            return value.script()->prototype->name
                       ? heap.text(heap.names.spelling(value.script()->prototype->name))
                       : heap.text(host.programName());
        if (value.is(Kind::type) && value.code() == code("ascr"))
            return heap.text("AppleScript");
        break;
    case Word::textItemDelimiters:
        if ((value.is(Kind::type) && value.code() == code("ascr")) || value.is(Kind::application))
            return delimiters;
        break;
    case Word::version:
        if ((value.is(Kind::type) && value.code() == code("ascr")) || value.is(Kind::script))
            return heap.text("2.0");
        break;
    default: break;
    }
    if (value.is(Kind::application))
        return host.applicationProperty(*this, heap.reference({Specifier::property, name, 0}, value));
    if (value.is(Kind::date)) {
        const int64_t seconds = value.date()->seconds;
        const DateParts parts = partsOf(seconds);
        switch (name) {
        case Word::year: return number(parts.year);
        case Word::month: return Value::constant(kMonths[parts.month - 1]);
        case Word::day: return number(parts.day);
        case Word::weekday: return Value::constant(kDays[parts.weekday]);
        case Word::hours: return number(parts.hour);
        case Word::minutes: return number(parts.minute);
        case Word::seconds: return number(parts.second);
        case Word::time: return number(parts.hour * 3600 + parts.minute * 60 + parts.second);
        case Word::dateString: return heap.text(dateOnly(seconds));
        case Word::shortDateString: return heap.text(shortDate(seconds));
        case Word::timeString: return heap.text(timeText(seconds));
        default: break;
        }
    }
    raise(error::notFound, "Can’t get " + displayName(name) + " of " + display(value) + ".", value);
}

void Machine::setProperty(const Value &original, Name name, const Value &newValue)
{
    if (name == Word::contents) {
        if (original.is(Kind::reference) && original.reference()->specifier.form != Specifier::variable) {
            const Value keep = original;
            const Reference *reference = original.reference();
            return set(reference->specifier, reference->container, reference->from, reference->to, newValue);
        }
        raise(error::cantAssign,
              "Can’t set contents of " + display(original) + " to " + display(newValue) + ".", original);
    }
    Value value = original;
    if (value.is(Kind::reference)) {
        const Value *root = &value;
        while (root->is(Kind::reference))
            root = &root->reference()->container;
        if (root->is(Kind::application))
            return host.setApplicationProperty(*this, heap.reference({Specifier::property, name, 0}, value),
                                               newValue);
        value = contentsOf(value);
    }
    switch (value.kind()) {
    case Kind::record: value.record()->set(name, newValue); return;
    case Kind::script: {
        ScriptObject *script = value.script();
        for (int steps = 0; script && steps < 1000; ++steps) {
            if (const int slot = script->prototype->slotOf(name); slot >= 0) {
                script->slots[size_t(slot)] = newValue;
                return;
            }
            const Value &next = script->parent ? script->parent : script->outer;
            script = next.is(Kind::script) ? next.script() : nullptr;
        }
        break;
    }
    case Kind::type:
        if (value.code() == code("ascr") && name == Word::textItemDelimiters) {
            const Value wanted = contentsOf(newValue);
            delimiters = wanted.is(Kind::list) ? copied(wanted) : asText(wanted);
            return;
        }
        break;
    case Kind::application:
        return host.setApplicationProperty(*this, heap.reference({Specifier::property, name, 0}, value),
                                           newValue);
    case Kind::date: {
        DateParts parts = partsOf(value.date()->seconds);
        const Value wanted = contentsOf(newValue);
        const int64_t n =
            wanted.is(Kind::constant) ? numberOfConstant(wanted.code()).value_or(0) : whole(wanted);
        if (std::abs(n) > 1000000)
            raise(error::overflow, messageFor(error::overflow));
        switch (name) {
        case Word::year: parts.year = n; break;
        case Word::month: parts.month = int(n); break;
        case Word::day: parts.day = int(n); break;
        case Word::hours: parts.hour = int(n); break;
        case Word::minutes: parts.minute = int(n); break;
        case Word::seconds: parts.second = int(n); break;
        case Word::time: parts.hour = parts.minute = 0, parts.second = int(n); break;
        default:
            raise(error::cantAssign,
                  "Can’t set " + displayName(name) + " of " + display(value) + " to " + display(newValue) +
                      ".",
                  value);
        }
        value.date()->seconds = secondsOf(parts);
        return;
    }
    default: break;
    }
    raise(value.is(Kind::script) ? int32_t(error::notFound) : int32_t(error::cantAssign),
          "Can’t set " + displayName(name) + " of " + display(value) + " to " + display(newValue) + ".",
          value);
}

}  // namespace tarvik::osa
