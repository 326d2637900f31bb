#include <Tarvik/net/XMLUtility.h>

#include "private/ByteSearch.h"
#include "private/Projection.h"

#include <algorithm>
#include <array>

using tarvik::xml::Marker;
using tarvik::xml::Stretch;

namespace {

constexpr auto kNotFound = std::string::npos;

bool tooShort(const std::string &text, const std::string &startKey, const std::string &endKey)
{
    return text.empty() || text.size() < startKey.size() + endKey.size();
}

bool tooShortForTag(const std::string &text, const std::string &name)
{
    return text.empty() || text.size() < name.size() + 2;
}

std::string attributeStart(const std::string &name) { return name + "=\""; }
std::string openingTag(const std::string &name) { return "<" + name + ">"; }
std::string openingTagWithAttributes(const std::string &name) { return "<" + name + " "; }
std::string closingTag(const std::string &name) { return "</" + name + ">"; }

/// Length of a string that needs no memory of its own. Copying as much, whatever the length, is twice as
/// quick as copying what is needed.
constexpr std::size_t kInPlace = std::string().capacity();

enum class Markers { left, taken };

/// Appends one stretch of the text for each pair of keys. The stretches are found in batches, so that the
/// list can grow by the number that the text seems to hold.
void appendPairs(const std::string &text, const std::string &startKey, const std::string &endKey,
                 Markers markers, std::vector<std::string> &list)
{
    if (tooShort(text, startKey, endKey))
        return;
    const Marker start(startKey), end(endKey);
    const std::size_t before = markers == Markers::taken ? startKey.size() : 0;
    const std::size_t behind = markers == Markers::taken ? endKey.size() : 0;
    std::array<Stretch, 512> batch;
    std::size_t position = 0, appended = 0, count;
    do {
        count = findPairs(text, start, end, position, batch);
        appended += count;
        if (list.capacity() - list.size() < count) {
            std::size_t expected = appended;
            if (count ==
                batch.size())  // there may be more: eight times as many at most, a text can be uneven
                expected = std::min(8 * appended, tarvik::xml::projected(appended, position, text.size()));
            list.reserve(std::max(list.size() + count - appended + expected, 2 * list.capacity()));
        }
        for (const Stretch &stretch : std::span(batch).first(count)) {
            const std::size_t first = stretch.begin - before;
            const std::size_t size = stretch.end + behind - first;
            if (size <= kInPlace && text.size() - first >= kInPlace)
                list.emplace_back(text.data() + first, kInPlace).resize(size);
            else
                list.emplace_back(text, first, size);
        }
    } while (count == batch.size());
}

}  // namespace

bool XMLUtility::GetValueForOutermostKey(const std::string &text, const std::string &startKey,
                                         const std::string &endKey, std::string &value) const
{
    if (tooShort(text, startKey, endKey))
        return false;
    const Marker start(startKey), end(endKey);
    std::size_t first = start.bytes.empty() && end.bytes.empty() ? kNotFound : findFirst(text, start);
    std::size_t last = kNotFound;
    if (first != kNotFound) {
        first += startKey.size();
        last = findLast(text, end, first);
    }
    if (last == kNotFound) {
        value.clear();
        return false;
    }
    value.assign(text, first, last - first);
    return true;
}

bool XMLUtility::GetValuesInsideKey(const std::string &text, const std::string &startKey,
                                    const std::string &endKey, std::string &value) const
{
    std::size_t first = 0, last = kNotFound;
    if (!tooShort(text, startKey, endKey) && !(startKey.empty() && endKey.empty())) {
        const std::size_t start = findFirst(text, Marker(startKey));
        if (start != kNotFound)
            first = start + startKey.size();
        last = findFirst(text, Marker(endKey), first);
    }
    if (last == kNotFound) {
        value.clear();
        return false;
    }
    value.assign(text, first, last - first);
    return true;
}

void XMLUtility::GetValuesInsideKeys(const std::string &text, const std::string &startKey,
                                     const std::string &endKey, std::vector<std::string> &list) const
{
    appendPairs(text, startKey, endKey, Markers::left, list);
}

void XMLUtility::GetValuesBetweenKeys(const std::string &text, const std::string &startKey,
                                      const std::string &endKey, std::vector<std::string> &list) const
{
    appendPairs(text, startKey, endKey, Markers::taken, list);
}

bool XMLUtility::GetValueForOutermostTag(const std::string &text, const std::string &name,
                                         std::string &value) const
{
    const bool found = !tooShortForTag(text, name) &&
                       GetValueForOutermostKey(text, openingTag(name), closingTag(name), value);
    if (!found)
        value.clear();
    return found;
}

void XMLUtility::GetValuesForTag(const std::string &text, const std::string &name,
                                 std::vector<std::string> &list) const
{
    list.clear();
    if (!tooShortForTag(text, name))
        GetValuesInsideKeys(text, openingTag(name), closingTag(name), list);
}

void XMLUtility::GetValuesWithElement(const std::string &text, const std::string &name,
                                      std::vector<std::string> &list) const
{
    list.clear();
    if (!tooShortForTag(text, name))
        GetValuesBetweenKeys(text, openingTagWithAttributes(name), closingTag(name), list);
}

bool XMLUtility::GetAttribute(const std::string &text, const std::string &name, std::string &value) const
{
    return !text.empty() && !name.empty() && GetValuesInsideKey(text, attributeStart(name), "\"", value);
}

void XMLUtility::GetAttributes(const std::string &text, const std::string &name,
                               std::vector<std::string> &list) const
{
    list.clear();
    if (!text.empty() && !name.empty())
        GetValuesInsideKeys(text, attributeStart(name), "\"", list);
}

void XMLUtility::GetValueInsideCDATA(const std::string &text, std::string &value) const
{
    Stretch section{0, 0};
    std::size_t position = 0;
    findPairs(text, Marker("<![CDATA["), Marker("]]>"), position, std::span(&section, 1));
    value.assign(text, section.begin, section.end - section.begin);
}
