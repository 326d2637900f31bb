// What the operators do where the loop of the machine does not do it itself.
#include "private/Machine.h"

#include <algorithm>
#include <cmath>

namespace tarvik::osa {

namespace {

constexpr int64_t kLargestInteger = 536870911;
constexpr int kDeepest = 200;

Value integerOrReal(double number)
{
    if (std::fabs(number) <= double(kLargestInteger))
        return Value::of(int64_t(number));
    return Value::of(number);
}

}  // namespace

void Machine::arithmetic(Op op, Value &out, const Value &leftValue, const Value &rightValue)
{
    const Value left = leftValue.is(Kind::reference) ? contentsOf(leftValue) : leftValue;
    const Value right = rightValue.is(Kind::reference) ? contentsOf(rightValue) : rightValue;
    // Dates: a date and seconds, two dates.
    if (left.is(Kind::date) && (op == Op::add || op == Op::subtract)) {
        if (right.is(Kind::date)) {
            if (op == Op::add)
                cantMake(right, "number");
            out = integerOrReal(double(left.date()->seconds) - double(right.date()->seconds));
            return;
        }
        const double seconds = number(right);
        if (std::fabs(seconds) > 1e12)
            raise(error::overflow, messageFor(error::overflow));
        const int64_t moved = int64_t(seconds);
        out = heap.date(op == Op::add ? left.date()->seconds + moved : left.date()->seconds - moved);
        return;
    }
    const Value one = asNumber(left), other = asNumber(right);
    const bool integers = one.is(Kind::integer) && other.is(Kind::integer);
    const double a = one.number(), b = other.number();
    double result;
    switch (op) {
    case Op::add: result = a + b; break;
    case Op::subtract: result = a - b; break;
    case Op::multiply: result = a * b; break;
    case Op::power: result = std::pow(a, b); break;
    case Op::divide:
    case Op::quotient:
    case Op::modulo:
        if (b == 0)
            raise(error::divideByZero, "Can’t divide " + display(one) + " by zero.", one);
        result = op == Op::divide ? a / b : op == Op::quotient ? std::trunc(a / b) : std::fmod(a, b);
        if (op == Op::quotient) {
            out = integerOrReal(result);
            return;
        }
        break;
    default: result = 0;
    }
    if (!std::isfinite(result))
        raise(error::overflow, messageFor(error::overflow));
    out = integers && op != Op::divide && op != Op::power ? integerOrReal(result) : Value::of(result);
}

/// `&`: lists and records grow together; text takes everything else into text; what is neither makes a list.
Value Machine::joined(const Value &leftValue, const Value &rightValue)
{
    const Value left = contentsOf(leftValue), right = contentsOf(rightValue);
    if (left.is(Kind::record) && right.is(Kind::record)) {
        Value both = heap.record();
        both.record()->fields = left.record()->fields;
        for (const auto &[name, value] : right.record()->fields) {
            if (!both.record()->find(name))
                both.record()->set(name, value);
        }
        return both;
    }
    if (left.is(Kind::text)) {
        if (right.is(Kind::text))
            return concatenated(left, right);
        if (!right.is(Kind::record) && !right.is(Kind::script))
            return concatenated(left, asText(right));
    }
    Value both = heap.list();
    std::vector<Value> &items = both.list()->items;
    for (const Value *side : {&left, &right}) {
        if (side->is(Kind::list)) {
            heap.grow(both.list(), items.size() + side->list()->items.size());
            items.insert(items.end(), side->list()->items.begin(), side->list()->items.end());
        } else if (side->is(Kind::record)) {
            for (const auto &[name, value] : side->record()->fields)
                items.push_back(value);
        } else {
            items.push_back(*side);
        }
    }
    return both;
}

void Machine::joinInto(Value &front, const Value &back)
{
    if (front.is(Kind::text) && !back.is(Kind::list) && !back.is(Kind::record) && !back.is(Kind::script) &&
        !back.is(Kind::reference)) {
        append(front, asText(back));
        return;
    }
    // Nobody else sees this list: it grows where it is.
    if (front.is(Kind::list) && front.object()->references == 1 && back.is(Kind::list) &&
        back.object() != front.object()) {
        List *list = front.list();
        const size_t needed = list->items.size() + back.list()->items.size();
        if (needed > list->items.capacity()) {
            const size_t room = std::max(needed, list->items.size() * 2);
            heap.grow(list, room);
            list->items.reserve(room);
        }
        list->items.insert(list->items.end(), back.list()->items.begin(), back.list()->items.end());
        return;
    }
    front = joined(front, back);
}

bool Machine::equal(const Value &leftValue, const Value &rightValue, int depth)
{
    if (depth > kDeepest)
        raise(error::stackOverflow, "Stack overflow.");
    if (leftValue.is(Kind::reference) || rightValue.is(Kind::reference)) {
        if (leftValue.is(Kind::reference) && rightValue.is(Kind::reference) &&
            leftValue.object() == rightValue.object())
            return true;
        return equal(contentsOf(leftValue), contentsOf(rightValue), depth + 1);
    }
    const Value &left = leftValue, &right = rightValue;
    if (left.isNumber() && right.isNumber())
        return left.number() == right.number();
    if (left.kind() != right.kind())
        return false;
    if (left.is(Kind::text) && left.text()->length != right.text()->length &&
        (considering | Considering::caseCounts) == (Considering::kDefault | Considering::caseCounts))
        return false;
    switch (left.kind()) {
    case Kind::none:
    case Kind::missing: return true;
    case Kind::boolean:
    case Kind::type:
    case Kind::constant: return left.integer() == right.integer();
    case Kind::text: return compare(left.text(), right.text(), considering) == 0;
    case Kind::list: {
        const auto &one = left.list()->items, &other = right.list()->items;
        if (left.object() == right.object())
            return true;
        if (one.size() != other.size())
            return false;
        for (size_t i = 0; i < one.size(); ++i) {
            if (!equal(one[i], other[i], depth + 1))
                return false;
        }
        return true;
    }
    case Kind::record: {
        if (left.record()->fields.size() != right.record()->fields.size())
            return false;
        for (const auto &[name, value] : left.record()->fields) {
            const Value *other = right.record()->find(name);
            if (!other || !equal(value, *other, depth + 1))
                return false;
        }
        return true;
    }
    case Kind::date: return left.date()->seconds == right.date()->seconds;
    case Kind::file:
        return left.file()->path == right.file()->path && left.file()->isAlias == right.file()->isAlias;
    case Kind::application: return left.application()->name == right.application()->name;
    case Kind::data:
        return left.data()->type == right.data()->type && left.data()->bytes == right.data()->bytes;
    default: return left.object() == right.object();
    }
}

int Machine::order(const Value &leftValue, const Value &rightValue)
{
    const Value left = contentsOf(leftValue), right = contentsOf(rightValue);
    const auto sign = [](const auto &one, const auto &other) { return int(one > other) - int(one < other); };
    if (left.isNumber() && right.isNumber())
        return sign(left.number(), right.number());
    if (left.is(Kind::text) && right.is(Kind::text))
        return compare(left.text(), right.text(), considering);
    if (left.is(Kind::date) && right.is(Kind::date))
        return sign(left.date()->seconds, right.date()->seconds);
    // The left side decides what is compared; failing that, the right one.
    if (left.isNumber())
        return sign(left.number(), number(right));
    if (left.is(Kind::text)) {
        if (right.isNumber()) {
            const auto parsed = parseNumber(utf8(left));
            if (parsed)
                return sign(parsed->number(), right.number());
        }
        return compare(left.text(), asText(right).text(), considering);
    }
    if (left.is(Kind::date))
        return sign(left.date()->seconds, coerced(right, type::date).date()->seconds);
    if (left.is(Kind::constant) && right.is(Kind::constant))
        return sign(left.integer(), right.integer());
    if (right.isNumber())
        return sign(number(left), right.number());
    cantMake(left, "number");
}

bool Machine::contains(const Value &wholeValue, const Value &partValue)
{
    const Value whole = contentsOf(wholeValue), part = contentsOf(partValue);
    if (whole.is(Kind::list)) {
        const auto &items = whole.list()->items;
        if (!part.is(Kind::list)) {
            return std::any_of(items.begin(), items.end(),
                               [&](const Value &item) { return equal(item, part); });
        }
        const auto &wanted = part.list()->items;
        for (size_t at = 0; at + wanted.size() <= items.size(); ++at) {
            size_t k = 0;
            while (k < wanted.size() && equal(items[at + k], wanted[k]))
                ++k;
            if (k == wanted.size())
                return true;
        }
        return false;
    }
    if (whole.is(Kind::record)) {
        if (!part.is(Kind::record))
            cantMake(part, "record");
        for (const auto &[name, value] : part.record()->fields) {
            const Value *held = whole.record()->find(name);
            if (!held || !equal(*held, value))
                return false;
        }
        return true;
    }
    return find(asText(whole).text(), asText(part).text(), 0, considering).has_value();
}

bool Machine::startsWith(const Value &wholeValue, const Value &partValue)
{
    const Value whole = contentsOf(wholeValue), part = contentsOf(partValue);
    if (whole.is(Kind::list)) {
        const Value wanted = part.is(Kind::list) ? part : heap.list({part});
        const auto &items = whole.list()->items, &start = wanted.list()->items;
        return start.size() <= items.size() &&
               std::equal(start.begin(), start.end(), items.begin(),
                          [&](const Value &a, const Value &b) { return equal(a, b); });
    }
    return osa::startsWith(asText(whole).text(), asText(part).text(), considering);
}

bool Machine::endsWith(const Value &wholeValue, const Value &partValue)
{
    const Value whole = contentsOf(wholeValue), part = contentsOf(partValue);
    if (whole.is(Kind::list)) {
        const Value wanted = part.is(Kind::list) ? part : heap.list({part});
        const auto &items = whole.list()->items, &end = wanted.list()->items;
        return end.size() <= items.size() &&
               std::equal(end.rbegin(), end.rend(), items.rbegin(),
                          [&](const Value &a, const Value &b) { return equal(a, b); });
    }
    return osa::endsWith(asText(whole).text(), asText(part).text(), considering);
}

Value Machine::copied(const Value &value, int depth)
{
    if (depth > kDeepest)
        raise(error::stackOverflow, "Stack overflow.");
    switch (value.kind()) {
    case Kind::list: {
        std::vector<Value> items;
        items.reserve(value.list()->items.size());
        for (const Value &item : value.list()->items)
            items.push_back(copied(item, depth + 1));
        return heap.list(std::move(items));
    }
    case Kind::record: {
        Value copy = heap.record();
        for (const auto &[name, field] : value.record()->fields)
            copy.record()->fields.emplace_back(name, copied(field, depth + 1));
        return copy;
    }
    case Kind::date: return heap.date(value.date()->seconds);
    case Kind::script: {
        Value copy = heap.script(value.script()->prototype);
        copy.script()->outer = value.script()->outer;
        copy.script()->parent = value.script()->parent;
        for (size_t i = 0; i < value.script()->slots.size(); ++i)
            copy.script()->slots[i] = copied(value.script()->slots[i], depth + 1);
        return copy;
    }
    default: return value;
    }
}

}  // namespace tarvik::osa
