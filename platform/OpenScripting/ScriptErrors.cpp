#include "private/ScriptErrors.h"

namespace tarvik::osa {

void raise(int32_t number, std::string message, Value offending)
{
    ScriptError failure{number, std::move(message)};
    failure.offending = std::move(offending);
    throw failure;
}

void raiseCantGet(const std::string &what, Value offending)
{
    raise(error::notFound, "Can’t get " + what + ".", std::move(offending));
}

std::string messageFor(int32_t number)
{
    switch (number) {
    case error::userCanceled: return "User canceled.";
    case error::outOfMemory: return "Out of memory.";
    case -34: return "Disk is full.";
    case -39: return "End of file error.";
    case error::noSuchFile: return "File not found.";
    case -48: return "The file already exists.";
    case -49: return "File is already open.";
    case -54: return "File permission error.";
    case -600: return "Application isn’t running.";
    case -609: return "Connection is invalid.";
    case error::wrongType: return "Can’t make some data into the expected type.";
    case error::wrongData: return "Some parameter is missing.";
    case error::notUnderstood: return "The script doesn’t understand the message.";
    case error::timedOut: return "AppleEvent timed out.";
    case error::badIndex: return "Invalid index.";
    case error::notFound: return "Can’t get the object.";
    case error::divideByZero: return "Can’t divide by zero.";
    case error::overflow: return "The result of a numeric operation was too large.";
    case error::stackOverflow: return "Stack overflow.";
    case error::undefined: return "The variable is not defined.";
    default: return "An error of type " + std::to_string(number) + " has occurred.";
    }
}

}  // namespace tarvik::osa
