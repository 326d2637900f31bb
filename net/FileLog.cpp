#include <Tarvik/net/FileLog.h>
#include <Tarvik/support/Handle.h>
#include <Tarvik/system/FileFunctions.h>
#include <Tarvik/system/FilePaths.h>
#include <Tarvik/system/SpecialFolders.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

namespace Utils {

namespace {

constexpr size_t kLongestWideMessage = 1023;

constexpr size_t kStamp = 24;

/// What holds for a second: the time in UTC, in the C library's fixed form, and the log's path as long as the
/// environment names the same temporary folder. Both cost about as much as the writing itself.
struct Second {
    time_t when = -1;
    std::string folder, path;
    char stamp[32] = "";

    static const Second &current()
    {
        thread_local Second last;
        const char *set = getenv("TMPDIR");
        const std::string_view folder = set ? set : "";
        const time_t now = time(nullptr);
        tm broken;
        const bool isLater = now != last.when && gmtime_r(&now, &broken) && asctime_r(&broken, last.stamp);
        if (isLater || folder != last.folder) {
            last.path = GetLogFilename();
            last.folder = folder;
            last.when = now;
        }
        return last;
    }
};

void append(const char *message, const std::string &rest)
{
    const Second &now = Second::current();
    const tarvik::FileDescriptor file(
        open(now.path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
    if (!file)
        return;
    const size_t length = strlen(message);
    std::string line;
    line.reserve(kStamp + sizeof "  Message: " + length + rest.size());
    line.append(now.stamp, kStamp);
    line += "  Message: ";
    line.append(message, length);
    line += rest;
    line += '\n';
    // One write, so that the line stays whole. A rest that a full disk refuses is lost.
    [[maybe_unused]] const ssize_t written = write(file.get(), line.data(), line.size());
}

std::string codeText(int32_t code) { return " ErrorCode: " + std::to_string(code); }

/// UTF-8 of all of Unicode, cut between two characters. (`wstring2utf8` ends at U+FFFF.)
std::string narrow(const wstring &message)
{
    std::string text;
    for (const wchar_t element : message) {
        const auto c = uint32_t(element);
        char bytes[4];
        size_t count = 0;
        if (c == 0)
            break;
        if (c < 0x80 || c > 0x10FFFF) {  // beyond Unicode: a sign-extended byte
            bytes[count++] = char(c & 0x7F);
        } else if (c < 0x800) {
            bytes[count++] = char(0xC0 | c >> 6);
        } else if (c < 0x10000) {
            bytes[count++] = char(0xE0 | c >> 12);
            bytes[count++] = char(0x80 | (c >> 6 & 0x3F));
        } else {
            bytes[count++] = char(0xF0 | c >> 18);
            bytes[count++] = char(0x80 | (c >> 12 & 0x3F));
            bytes[count++] = char(0x80 | (c >> 6 & 0x3F));
        }
        if (c >= 0x80 && c <= 0x10FFFF)
            bytes[count++] = char(0x80 | (c & 0x3F));
        if (text.size() + count > kLongestWideMessage)
            break;
        text.append(bytes, count);
    }
    return text;
}

}  // namespace

std::string GetLogFilename() { return GetTempDirName() + "/tarvik-logs/log.txt"; }

bool IsLoggingOn() { return DirExists(GetDirFromPath(GetLogFilename())); }

void LogMessage(const std::string &message) { append(message.c_str(), {}); }

void LogMessage(const std::string &message, int32_t code) { append(message.c_str(), codeText(code)); }

void LogMessage(const wstring &message) { append(narrow(message).c_str(), {}); }

void LogMessage(const wstring &message, int32_t code) { append(narrow(message).c_str(), codeText(code)); }

}  // namespace Utils

void InitializeLogWriter(void) {}
void CreateLogFolder(void) {}
void WriteMessageLog(const char *) {}
void WriteMessageLogStr(const char *, const char *) {}
