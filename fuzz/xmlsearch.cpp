// Text, start and end key stand in three lines (the keys first); every search must find what the plain way
// finds.
#include <Tarvik/net/XMLUtility.h>

#include "tests/net/XMLSteps.h"

static void require(bool condition)
{
    if (!condition)
        std::abort();
}

static std::string takeLine(std::string &rest)
{
    const size_t end = std::min(rest.find('\n'), rest.size());
    const std::string line = rest.substr(0, end);
    rest.erase(0, end + 1);
    return line;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::string text(reinterpret_cast<const char *>(data), size);
    const std::string start = takeLine(text), end = takeLine(text);
    const XMLUtility xml;
    std::vector<std::string> list;
    xml.GetValuesInsideKeys(text, start, end, list);
    require(list == steps::pairs(text, start, end, false));
    list.clear();
    xml.GetValuesBetweenKeys(text, start, end, list);
    require(list == steps::pairs(text, start, end, true));

    const bool searched =
        text.size() >= start.size() + end.size() && !text.empty() && !(start.empty() && end.empty());
    const size_t first = text.find(start), begin = first == std::string::npos ? 0 : first + start.size();
    std::string value;
    const size_t close = searched ? text.find(end, begin) : std::string::npos;
    require(xml.GetValuesInsideKey(text, start, end, value) == (close != std::string::npos));
    require(value == (close == std::string::npos ? "" : text.substr(begin, close - begin)));

    const size_t last =
        searched && first != std::string::npos ? text.substr(begin).rfind(end) : std::string::npos;
    value.clear();
    require(xml.GetValueForOutermostKey(text, start, end, value) == (last != std::string::npos));
    require(value == (last == std::string::npos ? "" : text.substr(begin, last)));

    xml.ReplaceAllString(text, start, end, value);
    require(value == steps::replaced(text, start, end));

    // Through the patterns: whatever the name, nothing may be read outside the text.
    xml.GetValuesForTag(text, start, list);
    xml.GetValuesWithElement(text, start, list);
    xml.GetAttributes(text, start, list);
    xml.GetAttribute(text, start, value);
    xml.GetValueInsideCDATA(text, value);
    return 0;
}
