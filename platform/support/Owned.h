/// \file
/// An owned pointer to what a library's function releases.
///
///     const tarvik::Owned<char, std::free> text(CFStringAllocCString(string, kCFStringEncodingUTF8));
///     const tarvik::Owned<DIR, closedir> folder(opendir(path));
///
/// What is no pointer is a Handle's; Core Foundation's objects are a CFOwned's.
#pragma once
#ifdef __cplusplus

#include <memory>

namespace tarvik {

template <auto release>
struct ReleaseBy {
    void operator()(auto *object) const { release(object); }
};
template <class T, auto release>
using Owned = std::unique_ptr<T, ReleaseBy<release>>;

}  // namespace tarvik
#endif
