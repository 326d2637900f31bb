// Runs a program and keeps what it said.
#pragma once
#include <string>
#include <vector>

struct ProgramResult {
    int status;  // exit status; -N when signal N ended it
    std::string out, error;
};
/// Runs `words[0]` (found through PATH) with `input` on its standard input.
ProgramResult runProgram(const std::vector<std::string> &words, const std::string &input = {});
/// Runs the command `tarvik` of this build.
ProgramResult runTarvik(std::vector<std::string> words, const std::string &input = {});

/// How many descriptors this process has open.
size_t openDescriptors();
/// How many children it has, zombies included.
size_t childProcesses();
