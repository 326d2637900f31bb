/// \file
/// Whom an event is for.
#pragma once
#include "platform/AppleEvents/private/Storage.h"

#include <vector>

namespace tarvik::ae {

struct Address {
    bool isSelf = false, isSystem = false;
    std::vector<int32_t> pids;  ///< otherwise: the first of these that receives
};

/// procNotFound, errAEUnknownAddressType, errAECorruptData. Throws std::bad_alloc.
OSErr resolve(const Event &event, Address &address);

}  // namespace tarvik::ae
