// An owned Core Foundation object.
#pragma once
#include <CoreFoundation/CFBase.h>

#include <memory>
#include <type_traits>

namespace tarvik::files {

struct Released {
    void operator()(const void *object) const { CFRelease(object); }
};
template <class Ref>
using Owned = std::unique_ptr<std::remove_pointer_t<Ref>, Released>;

}  // namespace tarvik::files
