#include "private/TextOperations.h"

#include "private/ScriptErrors.h"

#include <algorithm>
#include <clocale>
#include <cwctype>
#include <locale.h>
#include <new>

namespace tarvik::osa {

namespace {

locale_t unicode()
{
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
    return locale;
}

constexpr size_t kLongest = size_t(1) << 28;  // characters

// The plain letters of U+00C0 ... U+017F; a space: the character stands for itself.
constexpr char kPlain[] = "AAAAAA CEEEEIIII NOOOOO OUUUUY  aaaaaa ceeeeiiii nooooo ouuuuy y"
                          "AaAaAaCcCcCcCcDdDdEeEeEeEeEeGgGgGgGgHhHhIiIiIiIiIi  JjKk LlLlLlLlLlNnNnNn   "
                          "OoOoOo  RrRrRrSsSsSsSsTtTtTtUuUuUuUuUuUuWwYyYZzZzZz ";

char32_t withoutMarks(char32_t c)
{
    if (c < 0xC0 || c > 0x17F)
        return c;
    const char plain = kPlain[c - 0xC0];
    return plain == ' ' ? c : char32_t(uint8_t(plain));
}
static_assert(sizeof kPlain - 1 == 0x180 - 0xC0);

bool isHyphen(char32_t c) { return c == '-' || c == 0xAD || (c >= 0x2010 && c <= 0x2015) || c == 0x2212; }
bool isSpace(char32_t c)
{
    return c == ' ' || (c >= 9 && c <= 13) || c == 0xA0 || c == 0x2028 || c == 0x2029 ||
           (c >= 0x2000 && c <= 0x200B) || c == 0x3000;
}
bool isDigit(char32_t c) { return c >= '0' && c <= '9'; }
bool isPunctuation(char32_t c)
{
    return !isHyphen(c) &&
           (c < 0x80 ? c > ' ' && c < 0x7F && std::ispunct(int(c)) : iswpunct_l(wint_t(c), unicode()) != 0);
}
bool isWordCharacter(char32_t c)
{
    if (c < 0x80)
        return std::isalnum(int(c)) || c == '_';
    return iswalnum_l(wint_t(c), unicode()) != 0;
}

bool ignored(char32_t c, uint32_t considering)
{
    return (!(considering & Considering::whiteSpace) && isSpace(c)) ||
           (!(considering & Considering::hyphens) && isHyphen(c)) ||
           (!(considering & Considering::punctuation) && isPunctuation(c));
}

char32_t folded(char32_t c, uint32_t considering)
{
    if (!(considering & Considering::diacriticals))
        c = withoutMarks(c);
    return considering & Considering::caseCounts ? c : lowercase(c);
}

constexpr uint32_t kSkips = Considering::hyphens | Considering::punctuation | Considering::whiteSpace;
bool skipsNothing(uint32_t considering) { return (considering & kSkips) == kSkips; }

/// The characters that count, folded.
std::u32string countingCharacters(const Text *text, uint32_t considering)
{
    std::u32string out;
    out.reserve(text->length);
    for (size_t i = 0; i < text->length; ++i) {
        if (!ignored((*text)[i], considering))
            out += folded((*text)[i], considering);
    }
    return out;
}

int compareNumerically(const std::u32string &one, const std::u32string &other)
{
    size_t i = 0, k = 0;
    while (i < one.size() && k < other.size()) {
        if (isDigit(one[i]) && isDigit(other[k])) {
            const auto run = [](const std::u32string &text, size_t &at) {
                while (at < text.size() && text[at] == '0')
                    ++at;
                const size_t from = at;
                while (at < text.size() && isDigit(text[at]))
                    ++at;
                return text.substr(from, at - from);
            };
            const std::u32string first = run(one, i), second = run(other, k);
            if (first.size() != second.size())
                return first.size() < second.size() ? -1 : 1;
            if (const int order = first.compare(second))
                return order;
            continue;
        }
        if (one[i] != other[k])
            return one[i] < other[k] ? -1 : 1;
        ++i, ++k;
    }
    return int(i < one.size()) - int(k < other.size());
}

void widen(const Text *from, char32_t *to) { std::copy(from->narrow(), from->narrow() + from->length, to); }

}  // namespace

char32_t lowercase(char32_t c)
{
    if (c < 0x80)
        return c >= 'A' && c <= 'Z' ? c + 32 : c;
    if (c < 0x100)
        return c >= 0xC0 && c <= 0xDE && c != 0xD7 ? c + 32 : c;
    return char32_t(towlower_l(wint_t(c), unicode()));
}

Text *allocateText(Heap *heap, size_t length, uint8_t width)
{
    if (length > kLongest)
        raise(error::outOfMemory, "Out of memory.");
    const size_t size = (sizeof(Text) + length * width + 15) / 16 * 16, bytes = size - sizeof(Text);
    heap->grow(size);
    void *memory = heap->recycled(size);
    if (!memory)
        memory = std::malloc(size);
    if (!memory) {
        heap->shrink(bytes + sizeof(Text));
        raise(error::outOfMemory, "Out of memory.");
    }
    Text *text = new (memory) Text(heap, uint32_t(length), width);
    text->capacity = uint32_t(bytes);
    return text;
}

Value Heap::text(std::string_view bytes)
{
    size_t characters = 0;
    bool narrow = true;
    for (const char byte : bytes) {
        const uint8_t c = uint8_t(byte);
        characters += (c & 0xC0) != 0x80;
        narrow = narrow && c < 0xC4;
    }
    if (characters == bytes.size() && bytes.size() &&
        std::all_of(bytes.begin(), bytes.end(), [](char c) { return uint8_t(c) < 0x80; }))
        return latin(bytes);
    if (bytes.empty())
        return empty_;
    // What is no UTF-8 becomes U+FFFD, a byte at a time.
    std::u32string decoded;
    decoded.reserve(characters);
    for (size_t i = 0; i < bytes.size();) {
        const uint8_t lead = uint8_t(bytes[i]);
        const size_t length = lead < 0x80                   ? 1
                              : lead >= 0xC2 && lead < 0xE0 ? 2
                              : lead >= 0xE0 && lead < 0xF0 ? 3
                              : lead >= 0xF0 && lead < 0xF5 ? 4
                                                            : 0;
        char32_t c = length == 1 ? lead : lead & (0x7F >> length);
        bool good = length > 0 && i + length <= bytes.size();
        for (size_t k = 1; good && k < length; ++k) {
            good = (uint8_t(bytes[i + k]) & 0xC0) == 0x80;
            c = c << 6 | (uint8_t(bytes[i + k]) & 0x3F);
        }
        good = good && !(length == 3 && (c < 0x800 || (c >= 0xD800 && c < 0xE000))) &&
               !(length == 4 && (c < 0x10000 || c > 0x10FFFF));
        decoded += good ? c : 0xFFFD;
        narrow = narrow && good;
        i += good ? length : 1;
    }
    narrow = std::all_of(decoded.begin(), decoded.end(), [](char32_t c) { return c < 0x100; });
    if (narrow && decoded.size() == 1)
        return singles_[uint8_t(decoded[0])];
    Text *text = allocateText(this, decoded.size(), narrow ? 1 : 4);
    if (narrow)
        std::copy(decoded.begin(), decoded.end(), text->narrow());
    else
        std::copy(decoded.begin(), decoded.end(), text->wide());
    return Value::adopt(text);
}

void appendUTF8(std::string &out, char32_t c)
{
    if (c < 0x80) {
        out += char(c);
    } else if (c < 0x800) {
        out += char(0xC0 | c >> 6);
        out += char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += char(0xE0 | c >> 12);
        out += char(0x80 | (c >> 6 & 0x3F));
        out += char(0x80 | (c & 0x3F));
    } else {
        out += char(0xF0 | c >> 18);
        out += char(0x80 | (c >> 12 & 0x3F));
        out += char(0x80 | (c >> 6 & 0x3F));
        out += char(0x80 | (c & 0x3F));
    }
}

std::string utf8(const Text *text)
{
    std::string out;
    out.reserve(text->length * (text->width == 1 ? 1 : 2));
    for (size_t i = 0; i < text->length; ++i)
        appendUTF8(out, (*text)[i]);
    return out;
}

Value part(const Value &value, size_t from, size_t count)
{
    const Text *text = value.text();
    if (count == text->length)
        return value;
    if (count == 0)
        return text->heap->emptyText();
    if (text->width == 1) {
        if (count == 1)
            return text->heap->character(text->narrow()[from]);
        Text *cut = allocateText(text->heap, count, 1);
        std::memcpy(cut->narrow(), text->narrow() + from, count);
        return Value::adopt(cut);
    }
    const char32_t *first = text->wide() + from;
    const bool narrow = std::all_of(first, first + count, [](char32_t c) { return c < 0x100; });
    if (narrow && count == 1)
        return text->heap->character(uint8_t(*first));
    Text *cut = allocateText(text->heap, count, narrow ? 1 : 4);
    if (narrow)
        std::copy(first, first + count, cut->narrow());
    else
        std::copy(first, first + count, cut->wide());
    return Value::adopt(cut);
}

Value joinedTexts(const std::vector<Value> &texts, const Value &between, Heap &heap)
{
    if (texts.empty())
        return heap.emptyText();
    size_t length = (texts.size() - 1) * between.text()->length;
    uint8_t width = texts.size() > 1 ? between.text()->width : uint8_t(1);
    for (const Value &text : texts) {
        length += text.text()->length;
        width = std::max(width, text.text()->width);
    }
    Text *all = allocateText(&heap, length, width);
    size_t at = 0;
    const auto place = [&](const Text *text) {
        if (width == 1)
            std::memcpy(all->narrow() + at, text->narrow(), text->length);
        else if (text->width == 1)
            widen(text, all->wide() + at);
        else
            std::memcpy(all->wide() + at, text->wide(), size_t(text->length) * 4);
        at += text->length;
    };
    for (size_t i = 0; i < texts.size(); ++i) {
        if (i)
            place(between.text());
        place(texts[i].text());
    }
    return Value::adopt(all);
}

Value concatenated(const Value &front, const Value &back)
{
    const Text *one = front.text(), *other = back.text();
    if (!one->length)
        return back;
    if (!other->length)
        return front;
    const uint8_t width = std::max(one->width, other->width);
    Text *text = allocateText(one->heap, size_t(one->length) + other->length, width);
    if (width == 1) {
        std::memcpy(text->narrow(), one->narrow(), one->length);
        std::memcpy(text->narrow() + one->length, other->narrow(), other->length);
        return Value::adopt(text);
    }
    const auto place = [](const Text *from, char32_t *to) {
        if (from->width == 1)
            widen(from, to);
        else
            std::memcpy(to, from->wide(), size_t(from->length) * 4);
    };
    place(one, text->wide());
    place(other, text->wide() + one->length);
    return Value::adopt(text);
}

void append(Value &front, const Value &back)
{
    Text *text = front.text();
    const Text *more = back.text();
    if (text->references != 1 || text == more || more->width > text->width) {
        front = concatenated(front, back);
        return;
    }
    const size_t length = size_t(text->length) + more->length, bytes = length * text->width;
    if (length > kLongest)
        raise(error::outOfMemory, "Out of memory.");
    if (bytes > text->capacity) {
        const size_t capacity = std::min<size_t>(
            std::max<size_t>(bytes, size_t(text->capacity) + text->capacity / 2 + 16), UINT32_MAX);
        text->heap->grow(capacity - text->capacity);
        void *memory = std::realloc(static_cast<void *>(text), sizeof(Text) + capacity);
        if (!memory) {
            text->heap->shrink(capacity - text->capacity);
            raise(error::outOfMemory, "Out of memory.");
        }
        text = static_cast<Text *>(memory);
        text->capacity = uint32_t(capacity);
        front.replaceObject(text);
    }
    if (text->width == 1)
        std::memcpy(text->narrow() + text->length, more->narrow(), more->length);
    else if (more->width == 1)
        widen(more, text->wide() + text->length);
    else
        std::memcpy(text->wide() + text->length, more->wide(), size_t(more->length) * 4);
    text->length = uint32_t(length);
}

int compare(const Text *one, const Text *other, uint32_t considering)
{
    if (one == other)
        return 0;
    if (considering & Considering::numericStrings)
        return compareNumerically(countingCharacters(one, considering),
                                  countingCharacters(other, considering));
    if (skipsNothing(considering)) {
        const size_t common = std::min(one->length, other->length);
        if (one->width == 1 && other->width == 1 && considering & Considering::caseCounts &&
            considering & Considering::diacriticals) {
            if (const int order = std::memcmp(one->narrow(), other->narrow(), common))
                return order;
        } else {
            for (size_t i = 0; i < common; ++i) {
                const char32_t a = (*one)[i], b = (*other)[i];
                if (a == b)
                    continue;
                const char32_t x = folded(a, considering), y = folded(b, considering);
                if (x != y)
                    return x < y ? -1 : 1;
            }
        }
        return int(one->length > other->length) - int(one->length < other->length);
    }
    return countingCharacters(one, considering).compare(countingCharacters(other, considering));
}

std::optional<Found> find(const Text *text, const Text *wanted, size_t start, uint32_t considering)
{
    if (start > text->length)
        return std::nullopt;
    if (!skipsNothing(considering)) {
        // The folded characters that count, and where each one stood.
        const std::u32string pattern = countingCharacters(wanted, considering);
        std::u32string folds;
        std::vector<size_t> places;
        for (size_t i = start; i < text->length; ++i) {
            if (!ignored((*text)[i], considering)) {
                folds += folded((*text)[i], considering);
                places.push_back(i);
            }
        }
        const size_t at = folds.find(pattern);
        if (at == std::u32string::npos)
            return std::nullopt;
        if (pattern.empty())
            return Found{start, 0};
        return Found{places[at], places[at + pattern.size() - 1] + 1 - places[at]};
    }
    const size_t length = wanted->length;
    if (!length)
        return Found{start, 0};
    if (length > text->length - start)
        return std::nullopt;
    const bool exact = considering & Considering::caseCounts && considering & Considering::diacriticals;
    if (text->width == 1 && wanted->width == 1) {
        const uint8_t *bytes = text->narrow(), *pattern = wanted->narrow();
        const bool caseless =
            lowercase(pattern[0]) == pattern[0] && !std::isalpha(pattern[0]) && pattern[0] < 0x80;
        if (exact || (length == 1 && caseless && considering & Considering::diacriticals)) {
            const void *at = length == 1 ? std::memchr(bytes + start, pattern[0], text->length - start)
                                         : memmem(bytes + start, text->length - start, pattern, length);
            if (!at)
                return std::nullopt;
            return Found{size_t(static_cast<const uint8_t *>(at) - bytes), length};
        }
    }
    const char32_t first = folded((*wanted)[0], considering);
    for (size_t at = start; at + length <= text->length; ++at) {
        if (folded((*text)[at], considering) != first)
            continue;
        size_t k = 1;
        while (k < length && folded((*text)[at + k], considering) == folded((*wanted)[k], considering))
            ++k;
        if (k == length)
            return Found{at, length};
    }
    return std::nullopt;
}

bool startsWith(const Text *text, const Text *start, uint32_t considering)
{
    if (!skipsNothing(considering))
        return countingCharacters(text, considering).starts_with(countingCharacters(start, considering));
    if (start->length > text->length)
        return false;
    for (size_t i = 0; i < start->length; ++i) {
        if (folded((*text)[i], considering) != folded((*start)[i], considering))
            return false;
    }
    return true;
}

bool endsWith(const Text *text, const Text *end, uint32_t considering)
{
    if (!skipsNothing(considering))
        return countingCharacters(text, considering).ends_with(countingCharacters(end, considering));
    if (end->length > text->length)
        return false;
    const size_t offset = text->length - end->length;
    for (size_t i = 0; i < end->length; ++i) {
        if (folded((*text)[offset + i], considering) != folded((*end)[i], considering))
            return false;
    }
    return true;
}

Stretches wordsOf(const Text *text)
{
    Stretches words;
    const size_t length = text->length;
    for (size_t i = 0; i < length;) {
        if (!isWordCharacter((*text)[i])) {
            ++i;
            continue;
        }
        const size_t from = i;
        // An apostrophe belongs to a word between two letters, a point or a comma between two digits.
        for (; i < length; ++i) {
            const char32_t c = (*text)[i];
            if (isWordCharacter(c))
                continue;
            const char32_t next = i + 1 < length ? (*text)[i + 1] : U' ';
            const bool joins = ((c == '\'' || c == 0x2019) && isWordCharacter(next)) ||
                               ((c == '.' || c == ',') && isDigit((*text)[i - 1]) && isDigit(next));
            if (!joins)
                break;
        }
        words.push_back({from, i});
    }
    return words;
}

Stretches paragraphsOf(const Text *text)
{
    Stretches paragraphs;
    if (!text->length)
        return paragraphs;
    size_t from = 0;
    for (size_t i = 0; i < text->length; ++i) {
        const char32_t c = (*text)[i];
        if (c != '\n' && c != '\r' && c != 0x2028 && c != 0x2029)
            continue;
        paragraphs.push_back({from, i});
        if (c == '\r' && i + 1 < text->length && (*text)[i + 1] == '\n')
            ++i;
        from = i + 1;
    }
    paragraphs.push_back({from, text->length});
    return paragraphs;
}

Stretches textItemsOf(const Text *text, const Value &delimiters, uint32_t considering)
{
    std::vector<const Text *> separators;
    const auto take = [&](const Value &value) {
        if (value.is(Kind::text) && value.text()->length)
            separators.push_back(value.text());
    };
    if (delimiters.is(Kind::list)) {
        for (const Value &item : delimiters.list()->items)
            take(item);
    } else {
        take(delimiters);
    }
    Stretches items;
    if (separators.empty()) {  // without a delimiter every character is an item
        for (size_t i = 0; i < text->length; ++i)
            items.push_back({i, i + 1});
        return items;
    }
    if (!text->length)
        return items;
    if (separators.size() == 1) {
        size_t from = 0;
        const Text *separator = separators[0];
        // The commonest case, a comma or the like: the C library's search without anything around it.
        if (text->width == 1 && separator->length == 1 && separator->width == 1 &&
            separator->narrow()[0] < 0x80 && !std::isalpha(separator->narrow()[0]) &&
            skipsNothing(considering)) {
            const uint8_t *bytes = text->narrow(), *end = bytes + text->length;
            while (const void *at =
                       std::memchr(bytes + from, separator->narrow()[0], size_t(end - bytes) - from)) {
                const size_t place = size_t(static_cast<const uint8_t *>(at) - bytes);
                items.push_back({from, place});
                from = place + 1;
            }
            items.push_back({from, text->length});
            return items;
        }
        while (const auto found = find(text, separators[0], from, considering)) {
            if (!found->length)
                break;
            items.push_back({from, found->at});
            from = found->at + found->length;
        }
        items.push_back({from, text->length});
        return items;
    }
    // For each separator the place where it stands next: each is searched once only.
    std::vector<std::optional<Found>> next;
    for (const Text *separator : separators)
        next.push_back(find(text, separator, 0, considering));
    size_t from = 0;
    for (;;) {
        const Found *best = nullptr;
        for (size_t i = 0; i < separators.size(); ++i) {
            if (next[i] && next[i]->at < from)
                next[i] = find(text, separators[i], from, considering);
            if (next[i] && next[i]->length &&
                (!best || next[i]->at < best->at ||
                 (next[i]->at == best->at && next[i]->length > best->length)))
                best = &*next[i];
        }
        if (!best)
            break;
        items.push_back({from, best->at});
        from = best->at + best->length;
    }
    items.push_back({from, text->length});
    return items;
}

}  // namespace tarvik::osa
