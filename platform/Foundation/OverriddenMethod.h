/// A repair of a concrete class of gnustep-base is a category that stands in front of the class's own method:
/// it is in force from the moment the library is loaded, in every host, and starts no class up. (Replacing a
/// method through the runtime does: a class without a dispatch table gets one, and +initialize with it.)
/// Where the repair is for some objects only, this finds what it stands in front of, for the others.
#pragma once
#include <objc/runtime.h>

#include <cstdlib>

namespace tarvik::platform {

/// The class's own method of that name that is not `mine`, with the type of `Function`; null when there is
/// none.
template <class Function>
Function overriddenMethod(Class in, SEL name, IMP mine)
{
    using Any = void (*)();
    Function found = nullptr;
    unsigned count = 0;
    Method *methods = class_copyMethodList(in, &count);
    for (unsigned i = 0; i < count && !found; ++i)
        if (sel_isEqual(method_getName(methods[i]), name) && method_getImplementation(methods[i]) != mine)
            found = reinterpret_cast<Function>(reinterpret_cast<Any>(method_getImplementation(methods[i])));
    free(methods);
    return found;
}

}  // namespace tarvik::platform
