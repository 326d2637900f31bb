// What XMLUtility promises, done the plain way: one step after the other over the whole text, at any cost.
// Tests and fuzz targets compare the real thing with it.
#pragma once
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace steps {

inline std::string replaced(const std::string &text, const std::string &search,
                            const std::string &replacement)
{
    if (text.empty() || search.empty())
        return {};
    std::string copy = text;
    for (size_t position = 0; position < copy.size();) {
        position = copy.find(search, position);
        if (position == std::string::npos)
            break;
        copy.replace(position, search.size(), replacement);
        position += replacement.size();
    }
    return copy;
}

using Passes = std::vector<std::pair<std::string, std::string>>;
inline const Passes kEscaping = {{"&", "&amp;"}, {"\"", "&quot;"}, {"'", "&apos;"}, {"<", "&lt;"},
                                 {">", "&gt;"},  {"\r", "&#13;"},  {"\n", "&#10;"}};
inline const Passes kUnescaping = {
    {"&quot;", "\""}, {"&amp;", "&"}, {"&apos;", "'"}, {"&lt;", "<"}, {"&gt;", ">"}};

inline std::string passed(std::string text, const Passes &passes)
{
    for (const auto &[search, replacement] : passes)
        text = replaced(text, search, replacement);
    return text;
}

inline std::string withoutReferences(std::string rest)
{
    std::string out;
    for (size_t mark; (mark = rest.find("&#")) != std::string::npos && mark + 2 < rest.size();) {
        out += rest.substr(0, mark);
        rest = rest.substr(mark + 2);
        const size_t end = rest.find(';');
        if (end == std::string::npos)
            break;
        rest = rest.substr(end + 1);
    }
    return out + rest;
}

inline std::vector<std::string> pairs(const std::string &text, const std::string &start,
                                      const std::string &end, bool keys)
{
    std::vector<std::string> found;
    if (text.size() < start.size() + end.size() || (start.empty() && end.empty()))
        return found;
    for (size_t position = 0; position < text.size();) {
        const size_t first = text.find(start, position);
        const size_t last = first == std::string::npos ? first : text.find(end, first + start.size());
        if (last == std::string::npos)
            break;
        position = last + end.size();
        found.push_back(keys ? text.substr(first, position - first)
                             : text.substr(first + start.size(), last - first - start.size()));
    }
    return found;
}

}  // namespace steps
