/// How large a result will be, told from its beginning. Not installed.
#pragma once

#include <cstddef>

namespace tarvik::xml {

/// What `made` results from the first `read` bytes of a text come to for all its bytes, and a little more.
inline std::size_t projected(std::size_t made, std::size_t read, std::size_t size)
{
    const double ratio = 1.02 * static_cast<double>(size) / static_cast<double>(read);
    return static_cast<std::size_t>(static_cast<double>(made) * ratio) + 16;
}

}  // namespace tarvik::xml
