/// \file
/// Errors of scripts: a number, a message as users know it, and the place in the source.
#pragma once
#include "Values.h"

#include <string>

namespace tarvik::osa {

struct Range {
    uint32_t from = 0, to = 0;  // bytes of the source
};

struct ScriptError {
    int32_t number;
    std::string message = {};
    Value offending = {}, partial = {}, wanted = {};
    Range range = {};
    bool located = false;
    bool stops = false;  // the host stops the script: no `try` holds it up
};

namespace error {
enum : int32_t {
    outOfMemory = -108,
    userCanceled = -128,
    noSuchFile = -43,
    wrongType = -1700,
    wrongData = -1701,  // a parameter is missing
    notUnderstood = -1708,
    badParameters = -1721,
    timedOut = -1712,
    badIndex = -1719,
    notFound = -1728,
    raised = -2700,
    divideByZero = -2701,
    overflow = -2702,
    cantAssign = -10006,
    stackOverflow = -2706,
    tooLarge = -2707,
    syntax = -2741,
    undefined = -2753,
    noResult = -2763,
};
}

[[noreturn]] void raise(int32_t number, std::string message, Value offending = {});
/// -1728: Can’t get WHAT.
[[noreturn]] void raiseCantGet(const std::string &what, Value offending = {});
/// The message of an error that brought none along.
std::string messageFor(int32_t number);

}  // namespace tarvik::osa
