#include "platform/CoreFoundation/private/URLText.h"

#include <algorithm>

namespace tarvik::urltext {
namespace {

bool isAlphanumeric(char c) { return (c >= '0' && c <= '9') || ((c | 32) >= 'a' && (c | 32) <= 'z'); }

int digit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = char(c | 32);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Takes "." and ".." out (RFC 3986, 5.2.4).
std::string withoutDots(std::string_view path)
{
    std::string out;
    while (!path.empty()) {
        if (path.starts_with("../")) {
            path.remove_prefix(3);
        } else if (path.starts_with("./")) {
            path.remove_prefix(2);
        } else if (path.starts_with("/./")) {
            path.remove_prefix(2);
        } else if (path == "/.") {
            path = "/";
        } else if (path.starts_with("/../") || path == "/..") {
            path = path.size() == 3 ? "/" : path.substr(3);
            const size_t last = out.rfind('/');
            out.resize(last == out.npos ? 0 : last);
        } else if (path == "." || path == "..") {
            break;
        } else {
            const size_t end = path.find('/', 1);
            out += path.substr(0, end);
            path.remove_prefix(std::min(end, path.size()));
        }
    }
    return out;
}

}  // namespace

Parts split(std::string_view url)
{
    Parts parts;
    if (const size_t hash = url.find('#'); hash != url.npos) {
        parts.fragment = url.substr(hash + 1);
        url = url.substr(0, hash);
    }
    if (const size_t mark = url.find('?'); mark != url.npos) {
        parts.query = url.substr(mark + 1);
        url = url.substr(0, mark);
    }
    if (const size_t colon = url.find_first_of(":/"); colon != url.npos && colon > 0 && url[colon] == ':') {
        parts.scheme = url.substr(0, colon);
        url.remove_prefix(colon + 1);
    }
    if (url.starts_with("//")) {
        const size_t slash = std::min(url.find('/', 2), url.size());
        parts.authority = url.substr(2, slash - 2);
        url.remove_prefix(slash);
    }
    parts.path = url;
    return parts;
}

std::string resolve(std::string_view base, std::string_view reference)
{
    const Parts from = split(base), to = split(reference);
    if (to.scheme)
        return std::string(reference);
    std::string out;
    if (from.scheme)
        out.append(*from.scheme).append(":");
    const auto &authority = to.authority ? to.authority : from.authority;
    if (authority)
        out.append("//").append(*authority);
    auto query = to.query;
    if (to.authority || to.path.starts_with("/")) {
        out += withoutDots(to.path);
    } else if (to.path.empty()) {
        out += from.path;
        if (!query)
            query = from.query;
    } else {
        const size_t slash = from.path.rfind('/');
        std::string merged = slash == from.path.npos ? (from.authority ? "/" : "")
                                                     : std::string(from.path.substr(0, slash + 1));
        out += withoutDots(merged.append(to.path));
    }
    if (query)
        out.append("?").append(*query);
    if (to.fragment)
        out.append("#").append(*to.fragment);
    return out;
}

std::optional<std::string> unescape(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        const int high = i + 2 < text.size() ? digit(text[i + 1]) : -1;
        const int low = high >= 0 ? digit(text[i + 2]) : -1;
        if (low < 0)
            return std::nullopt;
        out += char(high << 4 | low);
        i += 2;
    }
    return out;
}

std::string escape(std::string_view bytes, std::string_view others)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(bytes.size());
    for (const char c : bytes) {
        if (isAlphanumeric(c) || std::string_view("-._~").find(c) != std::string_view::npos ||
            others.find(c) != others.npos)
            out += c;
        else
            out += {'%', digits[(c >> 4) & 15], digits[c & 15]};
    }
    return out;
}

}  // namespace tarvik::urltext
