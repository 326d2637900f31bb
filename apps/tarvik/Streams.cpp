#include "Streams.h"

#include "Command.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

Input::Input(const std::string &path) : name_(path == "-" ? "standard input" : path)
{
    file_.reset(path == "-" ? stdin : std::fopen(path.c_str(), "rbe"));
    if (!file_)
        throw systemFailure(path, errno);
    struct stat status;
    if (fstat(fileno(file_.get()), &status) != 0)
        throw systemFailure(name_, errno);
    if (S_ISDIR(status.st_mode))
        throw systemFailure(name_, EISDIR);
    if (S_ISREG(status.st_mode))
        length_ = uint64_t(status.st_size);
}

size_t Input::read(void *buffer, size_t size)
{
    const size_t count = std::fread(buffer, 1, size, file_.get());
    if (count < size && std::ferror(file_.get()))
        throw systemFailure(name_, errno);
    return count;
}

std::string Input::readAll()
{
    std::string all;
    size_t chunk = length_ ? size_t(length_) + 1 : 64 * 1024;
    for (;;) {
        const size_t before = all.size();
        all.resize(before + chunk);
        const size_t count = read(all.data() + before, chunk);
        all.resize(before + count);
        if (count < chunk)
            return all;
        chunk = all.size();  // doubled each time: linear in all
    }
}

std::string readInput(const std::string &path) { return Input(path).readAll(); }

void writeOutput(std::string_view bytes)
{
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size())
        throw systemFailure("standard output", errno);
}

namespace {
constexpr auto kBeforeFirst = std::chrono::seconds(1);
constexpr auto kBetween = std::chrono::milliseconds(100);
constexpr int kBarWidth = 40;
}  // namespace

Progress::Progress(std::string label, uint64_t total)
    : label_(std::move(label)), total_(total), next_(std::chrono::steady_clock::now() + kBeforeFirst),
      terminal_(isatty(STDERR_FILENO))
{
}

Progress::~Progress()
{
    if (drawn_)
        std::fputs("\r\033[K", stderr);
}

void Progress::advance(uint64_t done)
{
    done_ += done;
    if (!terminal_)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now < next_)
        return;
    next_ = now + kBetween;
    draw();
}

void Progress::draw()
{
    drawn_ = true;
    if (!total_) {
        std::fprintf(stderr, "\r%s: %llu MB", label_.c_str(), static_cast<unsigned long long>(done_ >> 20));
        return;
    }
    const double share = double(done_) / double(total_);
    const int full = int(share * kBarWidth);
    std::fprintf(stderr, "\r%s [%.*s%.*s] %3d%%", label_.c_str(), full,
                 "########################################", kBarWidth - full,
                 "........................................", int(share * 100));
}
