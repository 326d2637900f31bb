/// \file
/// The files that scripts read and write, and the open ones among them by their number.
#pragma once
#include "Values.h"

#include <Tarvik/support/Handle.h>

#include <map>
#include <optional>
#include <string>

namespace tarvik::osa {

class FileAccess {
public:
    struct OpenFile {
        FileDescriptor descriptor;
        std::string path;
        bool writes = false;
        int64_t position = 0;
    };

    /// The number of the newly opened file. Throws ScriptError.
    int64_t open(const std::string &path, bool writes);
    void close(int64_t number);
    void close(const std::string &path);
    OpenFile &at(int64_t number);  // throws -38
    /// The open file of that path; null: none.
    OpenFile *find(const std::string &path, bool writes);
    /// Opens one without keeping it.
    static OpenFile opened(const std::string &path, bool writes);
    static int64_t length(const OpenFile &file);
    static std::string read(OpenFile &file, int64_t count);
    static void write(OpenFile &file, std::string_view bytes);

private:
    std::map<int64_t, OpenFile> files_;
    int64_t next_ = 1;
};

}  // namespace tarvik::osa
