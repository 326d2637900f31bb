/// Helper programs of the tools.
#pragma once
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace diskimages {

/// The program's path, from PATH and the system's folders; empty when it is not installed.
std::string findProgram(std::string_view name);
/// Runs a program and waits for it: its exit status, 128 + N when signal N ended it. Its output goes to
/// `output` in pieces, its errors to our own standard error. Throws Failure when it can't be started.
/// On a terminal it is told more often how far it is: programs that draw a bar are sparing with it elsewhere.
int runProgram(const std::string &path, const std::vector<std::string> &arguments,
               const std::function<void(std::string_view)> &output = {}, bool onTerminal = false);

}  // namespace diskimages
