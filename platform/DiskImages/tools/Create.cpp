#include "Failure.h"
#include "Programs.h"
#include "Verbs.h"

#include <Tarvik/support/Handle.h>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace diskimages {
namespace {

namespace fs = std::filesystem;

/// A file beside the image that becomes the image, or goes.
class Draft {
public:
    explicit Draft(const fs::path &image) : path_(image.parent_path() / ".tarvik-XXXXXX")
    {
        file_.reset(mkostemp(path_.data(), O_CLOEXEC));
        if (!file_)
            throw systemFailure(image.parent_path());
    }
    ~Draft()
    {
        if (file_)
            unlink(path_.c_str());
    }
    Draft(const Draft &) = delete;
    Draft &operator=(const Draft &) = delete;

    const std::string &path() const { return path_; }

    void become(const std::string &image, bool overwrite)
    {
        const mode_t mask = umask(0);
        umask(mask);
        fchmod(file_.get(), 0666 & ~mask);
        if (fsync(file_.get()) != 0 ||
            (overwrite ? rename(path_.c_str(), image.c_str())
                       : renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, image.c_str(), RENAME_NOREPLACE)) != 0)
            throw systemFailure(image);
        file_.reset();
    }

private:
    std::string path_;
    tarvik::FileDescriptor file_;
};

/// Reads the packer's progress bar: "[====   ] 12/345  3%".
class Percentage {
public:
    void operator()(std::string_view text)
    {
        for (char c : text) {
            if (c >= '0' && c <= '9') {
                number_ = number_ % 1000 * 10 + (c - '0');
                continue;
            }
            if (c == '%')
                reach(number_);
            number_ = 0;
        }
    }
    /// The bar of a small folder may never have been drawn to its end.
    void finish() { reach(100); }

private:
    void reach(int percent)
    {
        if (percent <= last_ || percent > 100)
            return;
        last_ = percent;
        std::printf("PERCENT:%d.000000\n", percent);
        std::fflush(stdout);
    }

    int number_ = 0, last_ = -1;
};

}  // namespace

void create(const std::string &givenFolder, const std::string &givenImage, const CreateOptions &options)
{
    std::error_code failed;
    const fs::path folder = fs::canonical(givenFolder, failed);
    if (failed)
        throw systemFailure(givenFolder, failed.value());
    if (!fs::is_directory(folder, failed))
        throw systemFailure(givenFolder, ENOTDIR);
    if (access(folder.c_str(), R_OK | X_OK) != 0)
        throw systemFailure(givenFolder);
    const fs::path image = fs::absolute(givenImage, failed);
    if (image.filename().empty())
        throw systemFailure(givenImage, EISDIR);
    if (!options.overwrite && fs::exists(fs::symlink_status(image, failed)))
        throw systemFailure(givenImage, EEXIST);
    const std::string packer = findProgram("mksquashfs");
    if (packer.empty())
        throw Failure("mksquashfs is not installed (package squashfs-tools)");

    Draft draft(image);
    std::vector<std::string> arguments{folder, draft.path(), "-noappend", "-exit-on-error", "-quiet"};
    arguments.push_back(options.progress ? "-progress" : "-no-progress");
    arguments.insert(arguments.end(), {"-e", draft.path()});  // the image may be made inside the folder
    Percentage percentage;
    const int status = runProgram(
        packer, arguments,
        [&](std::string_view text) {
            if (options.progress)
                percentage(text);
        },
        options.progress);
    if (status != 0)
        throw Failure(givenImage + ": mksquashfs ended with status " + std::to_string(status));
    draft.become(image, options.overwrite);
    if (options.progress)
        percentage.finish();
    if (!options.quiet && !options.progress)
        std::printf("created: %s\n", image.c_str());
}

}  // namespace diskimages
