/// \file
/// One POST of a text to a server, without blocking: the answer comes by the function, on the calling thread's run loop.
#pragma once
#import <Foundation/Foundation.h>

#include <functional>
#include <string>

namespace shelf {

/// \param ended the reason why the server did not take it, in words; nil when it did (a status below 400).
/// \return what cancels the transfer, for good: `ended` is not called then.
std::function<void()> publish(NSString *url, const std::string &xml,
                              std::function<void(NSString *reason)> ended);

}  // namespace shelf
