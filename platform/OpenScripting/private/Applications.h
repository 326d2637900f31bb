/// \file
/// The programs that run, as scripts name them, and what the system itself knows of them: what scripts get of a program that answers
/// nothing.
#pragma once
#include <Carbon/Processes.h>

#include <optional>
#include <string>
#include <vector>

namespace tarvik::osa::applications {

/// The running processes of that name (as users know it, or of its folder), path or bundle identifier, the latest first; the caller for no name.
std::vector<ProcessSerialNumber> running(const std::string &name);

/// Nothing, where the process doesn't say.
std::optional<std::string> nameOf(const ProcessSerialNumber &number);
std::optional<std::string> versionOf(const ProcessSerialNumber &number);
std::optional<std::string> identifierOf(const ProcessSerialNumber &number);
/// False where there is no display.
bool isFrontmost(const ProcessSerialNumber &number);

/// Starts the application of that name, path or bundle identifier, in front or behind what is there; one that runs is brought to the front.
/// With documents (paths), it opens them. kLSApplicationNotFoundErr where there is none.
OSStatus launch(const std::string &name, bool inFront, const std::vector<std::string> &documents = {});
/// A running one opens documents. kLSNotAnApplicationErr for what is no application's folder.
OSStatus open(const ProcessSerialNumber &number, const std::vector<std::string> &documents);

}  // namespace tarvik::osa::applications
