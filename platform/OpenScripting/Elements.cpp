// Places in text and lists: item 2, words 1 thru 3, every paragraph, last character.
#include "private/Machine.h"

#include <algorithm>

namespace tarvik::osa {

namespace {

/// The place of an index from either end; nothing when there is none.
std::optional<size_t> placeOf(int64_t index, size_t count)
{
    if (index > 0 && uint64_t(index) <= count)
        return size_t(index - 1);
    if (index < 0 && uint64_t(-index) <= count)
        return count - size_t(-index);
    return std::nullopt;
}

bool isText(uint32_t code) { return code == type::text || code == type::string || code == type::unicodeText; }

/// Whether an item of a list is of a class.
bool isA(const Value &value, uint32_t wanted)
{
    switch (wanted) {
    case type::item: return true;
    case type::text:
    case type::string: return value.is(Kind::text);
    case type::integer: return value.is(Kind::integer);
    case type::real: return value.is(Kind::real);
    case type::number: return value.isNumber();
    case type::boolean: return value.is(Kind::boolean);
    case type::list: return value.is(Kind::list);
    case type::record: return value.is(Kind::record);
    case type::date: return value.is(Kind::date);
    case type::script: return value.is(Kind::script);
    default: return false;
    }
}

bool isOfText(uint32_t code)
{
    return code == type::character || code == type::word || code == type::paragraph ||
           code == type::textItem || isText(code);
}

/// The application that a place is in; null: no application.
const Application *applicationOf(const Value &place)
{
    const Value *value = &place;
    for (int steps = 0; value->is(Kind::reference) && steps < 200; ++steps)
        value = &value->reference()->container;
    return value->is(Kind::application) ? value->application() : nullptr;
}

}  // namespace

void Machine::cantGet(const Specifier &spec, const Value &container, const Value &from, const Value &to) const
{
    raise(error::notFound, "Can’t get " + describe(spec, from, to) + " of " + display(container) + ".",
          container);
}

Value Machine::contentsOf(const Value &value, int depth)
{
    if (!value.is(Kind::reference))
        return value;
    if (depth > 200)
        raise(error::stackOverflow, "Stack overflow.");
    const Reference *reference = value.reference();
    if (reference->specifier.form == Specifier::variable)
        return contentsOf(reference->container, depth + 1);
    if (applicationOf(value))
        return host.applicationProperty(*this, value);
    const Value keep = value;
    return contentsOf(get(reference->specifier, reference->container, reference->from, reference->to),
                      depth + 1);
}

size_t Machine::countOf(const Value &original)
{
    const Value value = contentsOf(original);
    switch (value.kind()) {
    case Kind::list: return value.list()->items.size();
    case Kind::text: return value.text()->length;
    case Kind::record: return value.record()->fields.size();
    default: raise(error::notFound, "Can’t get count of " + display(value) + ".", value);
    }
}

Value Machine::item(const Value &container, const Value &index)
{
    return get({Specifier::index, Word::item, type::item}, container, index, {});
}

Value Machine::get(const Specifier &spec, const Value &containerValue, const Value &fromValue,
                   const Value &toValue)
{
    if (spec.form == Specifier::property)
        return property(containerValue, spec.name);
    if (spec.form == Specifier::id &&
        (isText(spec.code) || spec.code == type::character)) {  // character id 65
        const Value ids = coerced(fromValue, type::list);
        std::string text;
        for (const Value &id : ids.list()->items) {
            const int64_t code = whole(id);
            if (code < 0 || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000))
                raise(error::notFound, "Can’t get character id " + display(id) + ".", id);
            appendUTF8(text, char32_t(code));
        }
        return heap.text(text);
    }
    const Value from = fromValue.is(Kind::reference) && !fromValue.reference()->container.is(Kind::missing)
                           ? contentsOf(fromValue)
                           : fromValue;
    const Value to = toValue.is(Kind::reference) && !toValue.reference()->container.is(Kind::missing)
                         ? contentsOf(toValue)
                         : toValue;
    if (applicationOf(containerValue)) {
        Value place = heap.reference(spec, containerValue);
        place.reference()->from = from;
        place.reference()->to = to;
        return place;
    }
    const Value container = contentsOf(containerValue);
    switch (container.kind()) {
    case Kind::text: return textElement(spec, container, from, to);
    case Kind::list: return listElement(spec, container, from, to);
    case Kind::record:
        if (spec.code == type::item)
            return listElement(spec, coerced(container, type::list), from, to);
        break;
    case Kind::integer:
    case Kind::real:
    case Kind::date:
        if (isOfText(spec.code))
            return textElement(spec, asText(container), from, to);
        break;
    default: break;
    }
    cantGet(spec, container, from, to);
}

Value Machine::listElement(const Specifier &spec, const Value &list, const Value &from, const Value &to)
{
    const std::vector<Value> *items = &list.list()->items;
    Value filtered;
    if (spec.code != type::item && spec.form != Specifier::beginning && spec.form != Specifier::end) {
        if (isOfText(spec.code) && !isText(spec.code))  // text items of a list: of its text
            return textElement(spec, asText(list), from, to);
        filtered = heap.list();
        for (const Value &item : *items) {
            if (isA(item, spec.code))
                filtered.list()->items.push_back(item);
        }
        items = &filtered.list()->items;
    }
    const size_t count = items->size();
    switch (spec.form) {
    case Specifier::index:
        if (const auto place = placeOf(whole(from), count))
            return (*items)[*place];
        break;
    case Specifier::beginning:
        if (count)
            return items->front();
        break;
    case Specifier::end:
        if (count)
            return items->back();
        break;
    case Specifier::middle:
        if (count)
            return (*items)[(count - 1) / 2];
        break;
    case Specifier::some:
        if (count)
            return (*items)[std::uniform_int_distribution<size_t>(0, count - 1)(random)];
        break;
    case Specifier::every: return filtered ? filtered : heap.list(*items);
    case Specifier::range: {
        const auto first = placeOf(whole(from), count), last = placeOf(whole(to), count);
        if (!first || !last)
            break;
        const auto [low, high] = std::minmax(*first, *last);
        return heap.list({items->begin() + long(low), items->begin() + long(high) + 1});
    }
    default: break;
    }
    cantGet(spec, list, from, to);
}

Value Machine::textElement(const Specifier &spec, const Value &container, const Value &from, const Value &to)
{
    const Text *text = container.text();
    const size_t length = text->length;
    const bool characters = spec.code == type::character || spec.code == type::item;
    if (isText(spec.code) && spec.form != Specifier::range) {
        if (spec.form == Specifier::every)
            return container;
        if (spec.form == Specifier::index && !from.is(Kind::reference) &&
            (whole(from) == 1 || whole(from) == -1))
            return container;
        cantGet(spec, container, from, to);
    }
    if (isText(spec.code)) {
        // The ends are characters, or other elements: text from word 1 to word 3.
        const auto stretch = [&](const Value &end) -> std::optional<Stretch> {
            if (!end.is(Kind::reference)) {
                const auto place = placeOf(whole(end), length);
                return place ? std::optional<Stretch>({*place, *place + 1}) : std::nullopt;
            }
            const Reference *element = end.reference();
            Stretches all;
            switch (element->specifier.code) {
            case type::word: all = wordsOf(text); break;
            case type::paragraph: all = paragraphsOf(text); break;
            case type::textItem: all = textItemsOf(text, delimiters, considering); break;
            default:
                const auto place = placeOf(whole(element->from), length);
                return place ? std::optional<Stretch>({*place, *place + 1}) : std::nullopt;
            }
            const auto place = placeOf(whole(element->from), all.size());
            return place ? std::optional<Stretch>(all[*place]) : std::nullopt;
        };
        const auto first = stretch(from), last = stretch(to);
        if (!first || !last)
            cantGet(spec, container, from, to);
        const size_t low = std::min(first->from, last->from), high = std::max(first->to, last->to);
        return part(container, low, high - low);
    }
    if (characters) {
        switch (spec.form) {
        case Specifier::index:
            if (const auto place = placeOf(whole(from), length))
                return part(container, *place, 1);
            break;
        case Specifier::middle:
            if (length)
                return part(container, (length - 1) / 2, 1);
            break;
        case Specifier::some:
            if (length)
                return part(container, std::uniform_int_distribution<size_t>(0, length - 1)(random), 1);
            break;
        case Specifier::every:
        case Specifier::range: {
            size_t low = 0, high = length;
            if (spec.form == Specifier::range) {
                const auto first = placeOf(whole(from), length), last = placeOf(whole(to), length);
                if (!first || !last)
                    break;
                low = std::min(*first, *last);
                high = std::max(*first, *last) + 1;
            }
            std::vector<Value> items;
            items.reserve(high - low);
            for (size_t i = low; i < high; ++i)
                items.push_back(part(container, i, 1));
            return heap.list(std::move(items));
        }
        default: break;
        }
        cantGet(spec, container, from, to);
    }
    Stretches all;
    switch (spec.code) {
    case type::word: all = wordsOf(text); break;
    case type::paragraph: all = paragraphsOf(text); break;
    case type::textItem: all = textItemsOf(text, delimiters, considering); break;
    default: cantGet(spec, container, from, to);
    }
    const auto cut = [&](const Stretch &stretch) {
        return part(container, stretch.from, stretch.to - stretch.from);
    };
    switch (spec.form) {
    case Specifier::index:
        if (const auto place = placeOf(whole(from), all.size()))
            return cut(all[*place]);
        break;
    case Specifier::middle:
        if (!all.empty())
            return cut(all[(all.size() - 1) / 2]);
        break;
    case Specifier::some:
        if (!all.empty())
            return cut(all[std::uniform_int_distribution<size_t>(0, all.size() - 1)(random)]);
        break;
    case Specifier::every:
    case Specifier::range: {
        size_t low = 0, high = all.size();
        if (spec.form == Specifier::range) {
            const auto first = placeOf(whole(from), all.size()), last = placeOf(whole(to), all.size());
            if (!first || !last)
                break;
            low = std::min(*first, *last);
            high = std::max(*first, *last) + 1;
        }
        std::vector<Value> items;
        items.reserve(high - low);
        for (size_t i = low; i < high; ++i)
            items.push_back(cut(all[i]));
        return heap.list(std::move(items));
    }
    default: break;
    }
    cantGet(spec, container, from, to);
}

void Machine::set(const Specifier &spec, const Value &containerValue, const Value &fromValue,
                  const Value &toValue, const Value &value)
{
    if (spec.form == Specifier::property)
        return setProperty(containerValue, spec.name, value);
    const Value from = contentsOf(fromValue), to = contentsOf(toValue);
    if (applicationOf(containerValue)) {
        Value place = heap.reference(spec, containerValue);
        place.reference()->from = from;
        place.reference()->to = to;
        return host.setApplicationProperty(*this, place, value);
    }
    const Value container = contentsOf(containerValue);
    if (container.is(Kind::list)) {
        auto &items = container.list()->items;
        switch (spec.form) {
        case Specifier::end:
            heap.grow(container.list(), items.size() + 1);
            items.push_back(value);
            return;
        case Specifier::beginning:
            heap.grow(container.list(), items.size() + 1);
            items.insert(items.begin(), value);
            return;
        case Specifier::index:
        case Specifier::middle: {
            std::vector<size_t> places;
            for (size_t i = 0; i < items.size(); ++i) {
                if (spec.code == type::item || isA(items[i], spec.code))
                    places.push_back(i);
            }
            const auto place = spec.form == Specifier::middle
                                   ? placeOf(int64_t(places.size() + 1) / 2, places.size())
                                   : placeOf(whole(from), places.size());
            if (!place)
                break;
            items[places[*place]] = value;
            return;
        }
        default: break;
        }
    }
    raise(error::cantAssign,
          "Can’t set " + describe(spec, from, to) + " of " + display(container) + " to " + display(value) +
              ".",
          container);
}

}  // namespace tarvik::osa
