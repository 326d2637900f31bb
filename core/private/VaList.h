// A va_list that may be absent.
#pragma once
#include <stdarg.h>

#include <type_traits>

namespace tarvik {

/// Whether the caller passed none. A list is a pointer on some processors and a structure, never absent, on others.
inline bool isAbsent(va_list arguments)
{
    if constexpr (std::is_pointer_v<std::decay_t<decltype(arguments)>>)
        return arguments == nullptr;
    else
        return false;
}

}  // namespace tarvik
