#pragma once
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace diskimages {

/// Why a verb failed, for people. Printed as "TOOL: VERB failed - TEXT".
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

inline Failure systemFailure(const std::string &what, int error = errno)
{
    return Failure(what + ": " + std::strerror(error));
}

}  // namespace diskimages
