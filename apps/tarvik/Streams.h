// Files, standard input and progress, for the commands.
#pragma once
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

/// A file opened for reading; "-" is standard input.
class Input {
public:
    /// Throws Failure when it can't be opened or is a folder.
    explicit Input(const std::string &path);
    /// How it is called in messages.
    const std::string &name() const { return name_; }
    /// Its length, 0 when unknown (a pipe).
    uint64_t length() const { return length_; }
    /// Fills the buffer as far as there is input; fewer bytes than asked mean the end. Throws Failure.
    size_t read(void *buffer, size_t size);
    /// All that is left. Throws Failure.
    std::string readAll();

private:
    struct Closed {
        void operator()(FILE *file) const
        {
            if (file != stdin)
                std::fclose(file);
        }
    };
    std::string name_;
    std::unique_ptr<FILE, Closed> file_;
    uint64_t length_ = 0;
};

/// The whole of a file or of standard input ("-").
std::string readInput(const std::string &path);
/// Standard output, whole. Throws Failure.
void writeOutput(std::string_view bytes);

/// A progress bar on standard error for work longer than a second, when that is a terminal; nothing otherwise.
class Progress {
public:
    Progress(std::string label, uint64_t total);
    ~Progress();
    void advance(uint64_t done);

private:
    void draw();
    std::string label_;
    uint64_t total_, done_ = 0;
    std::chrono::steady_clock::time_point next_;
    bool terminal_, drawn_ = false;
};
