/// \file
/// The text of a URL: its parts, references resolved against a base, percent escapes (RFC 3986).
///
///     urltext::split("http://host/a?b#c")          // scheme, authority, path, query, fragment
///     urltext::resolve("http://host/a/b", "../c")  // "http://host/c"
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarvik::urltext {

/// The parts as they are spelled; absent is not empty.
struct Parts {
    std::optional<std::string_view> scheme, authority;
    std::string_view path;
    std::optional<std::string_view> query, fragment;
};
Parts split(std::string_view url);

/// The reference resolved against the base (RFC 3986, 5.2).
std::string resolve(std::string_view base, std::string_view reference);

/// Each escape replaced by its byte; nothing when there is an incomplete one.
std::optional<std::string> unescape(std::string_view text);

/// Escapes every byte but the unreserved ones (RFC 3986, 2.3) and the given others.
std::string escape(std::string_view bytes, std::string_view others);

}  // namespace tarvik::urltext
