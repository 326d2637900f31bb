/// \file
/// A function in the place of a method.
///
///     finish = replacedMethod(class_getInstanceMethod([NSURLConnection class], @selector(...)), &finishAndPart);
///
/// What stood there is returned, for the function to call. Where a category does, see HiddenMethod.h.
#pragma once
#import <objc/runtime.h>

#include <bit>

namespace tarvik {

template <class Function>
Function replacedMethod(Method method, Function ours)
{
    return std::bit_cast<Function>(method_setImplementation(method, std::bit_cast<IMP>(ours)));
}

}  // namespace tarvik
