/// \file
/// The method that a repairing category hides.
///
///     static const auto original = hiddenMethod<NSString *(*)(id, SEL)>([NSBundle class], _cmd);
///
/// A class keeps its own method behind the category's of the same name, so a repair may still call it. For a
/// class method pass the class's class (object_getClass).
#pragma once
#import <objc/runtime.h>

#include <cstdlib>

namespace tarvik {

template <class Function>
Function hiddenMethod(Class type, SEL name)
{
    unsigned count = 0;
    Method *methods = class_copyMethodList(type, &count);
    IMP last = nullptr;
    for (unsigned i = 0; i < count; ++i)
        if (sel_isEqual(method_getName(methods[i]), name))
            last = method_getImplementation(methods[i]);
    free(methods);
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(last));
}

}  // namespace tarvik
