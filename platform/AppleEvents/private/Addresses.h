/// \file
/// Whom an event is for.
#pragma once
#include "platform/AppleEvents/private/Storage.h"

#include <string>

namespace tarvik::ae {

struct Address {
    bool isSelf = false;
    std::string station;  ///< of another process: the name of its socket
    int32_t pid = 0;      ///< which must be the one that listens there; 0: any of the user's
};

/// procNotFound, errAEUnknownAddressType, errAECorruptData.
OSErr resolve(const Event &event, Address &address);

}  // namespace tarvik::ae
