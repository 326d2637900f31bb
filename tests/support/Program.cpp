#include "Program.h"

#include "TemporaryFolder.h"

#include <Tarvik/support/Handle.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>

extern char **environ;

ProgramResult runProgram(const std::vector<std::string> &words, const std::string &input)
{
    // Through files: no pipe to drain, and nothing to deadlock on.
    TemporaryFolder folder;
    const std::string in = folder.write("in", input), out = folder / "out", error = folder / "error";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, error.c_str(), O_WRONLY | O_CREAT, 0600);
    std::vector<char *> argv;
    for (const std::string &word : words)
        argv.push_back(const_cast<char *>(word.c_str()));
    argv.push_back(nullptr);
    pid_t child = 0;
    const int failed = posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed)
        throw std::runtime_error(words[0] + ": " + std::strerror(failed));
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), folder.read("out"),
            folder.read("error")};
}

ProgramResult runTarvik(std::vector<std::string> words, const std::string &input)
{
    words.insert(words.begin(), TARVIK_COMMAND);
    return runProgram(words, input);
}

size_t openDescriptors()
{
    size_t count = 0;
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count - 1;  // the iterator's own
}

size_t childProcesses()
{
    size_t count = 0;
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
        const std::string children = readFile(task.path() / "children");
        for (char c : children)
            count += c == ' ';
    }
    return count;
}
