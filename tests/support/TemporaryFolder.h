// A folder of a test's own, gone with its end.
#pragma once
#include <filesystem>
#include <string>
#include <string_view>

class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    const std::filesystem::path &path() const { return path_; }
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }
    /// Writes a file and returns its path.
    std::string write(std::string_view name, std::string_view contents) const;
    std::string read(std::string_view name) const;

private:
    std::filesystem::path path_;
};

/// The whole of a file; empty when it can't be read.
std::string readFile(const std::filesystem::path &path);
