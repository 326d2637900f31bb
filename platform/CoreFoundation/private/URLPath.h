/// \file
/// The file that a URL names, by the bytes of its path.
#pragma once
#include <CoreFoundation/CFURL.h>

#include <optional>
#include <string>

namespace tarvik::cf {

/// The URL as text: as it was made, or resolved against its base.
std::string urlText(CFURLRef url);
std::string absoluteURLText(CFURLRef url);

/// The unescaped path of the absolute URL, without a slash at its end; nothing for a URL without a path, or
/// with a NUL in it.
std::optional<std::string> urlPath(CFURLRef url);

}  // namespace tarvik::cf
