#include <Carbon/Dialogs.h>
#import <Foundation/NSString.h>
#include <Tarvik/core/Log.h>
#include <Tarvik/core/SystemVersion.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Guard.h>
#include <Tarvik/support/Owned.h>
#import <Tarvik/support/Pool.h>
#include <syslog.h>

#include "core/private/FormattedText.h"
#include "core/private/VaList.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {

constexpr uint32_t kLastVersionWithoutSystemLog = 0x0FFF;

// Changed while other threads log, these only decide which of two values a message sees.
std::atomic<int32_t> gLogPriority = LOG_ERR;
std::atomic<LogPreprocessProc> gLogPreprocess = nullptr;
// Set for good once the user has chosen "Don't Alert After".
std::atomic<bool> stopAlert = false;

using CBuffer = tarvik::Owned<char, std::free>;
using PascalBuffer = tarvik::Owned<unsigned char, std::free>;

// Length byte, then the bytes; the length wraps at 256, which readers of old alerts know.
PascalBuffer pascalString(const char *text, size_t spare)
{
    const size_t length = std::strlen(text);
    PascalBuffer out(static_cast<unsigned char *>(std::calloc(1, length + spare)));
    if (out) {
        out.get()[0] = static_cast<unsigned char>(length);
        std::memcpy(out.get() + 1, text, length);
    }
    return out;
}

void showAlert(const char *function, unsigned long line, const char *message)
{
    constexpr size_t kLengthByteAndEnd = 2, kLongestLine = 32;
    CBuffer place(static_cast<char *>(std::calloc(1, std::strlen(function) + kLongestLine)));
    if (!place)
        return;
    std::sprintf(place.get(), "%s:%lu", function, line);
    PascalBuffer error = pascalString(message, kLengthByteAndEnd);
    PascalBuffer explanation = pascalString(place.get(), kLengthByteAndEnd);
    if (!error || !explanation)
        return;
    AlertStdAlertParamRec alert{};
    alert.movable = true;
    alert.defaultText = reinterpret_cast<ConstStringPtr>("\x08"
                                                         "Continue");
    alert.cancelText = reinterpret_cast<ConstStringPtr>("\x11"
                                                        "Don't Alert After");
    alert.defaultButton = kAlertStdAlertOKButton;
    alert.cancelButton = kAlertStdAlertCancelButton;
    alert.position = kWindowDefaultPosition;
    SInt16 hit = 0;
    if (StandardAlert(kAlertCautionAlert, error.get(), explanation.get(), &alert, &hit) == noErr &&
        hit == kAlertStdAlertCancelButton)
        stopAlert = true;
}

}  // namespace

int32_t LogGetPriority() { return gLogPriority; }
void LogSetPriority(int32_t priority) { gLogPriority = priority; }
void SetLogPreprocess(LogPreprocessProc preprocess) { gLogPreprocess = preprocess; }

char *StringAllocWithFormatAndArguments(const char *format, va_list arguments)
{
    if (!format || tarvik::isAbsent(arguments))
        return nullptr;
    tarvik::Pool pool;
    char *out = nullptr;
    // A description method may raise anything; the log lets nothing out.
    tarvik::attempt([&] {
        if (!tarvik::nsstring(format))
            return;
        if (const auto text = tarvik::formattedText(format, arguments)) {
            out = static_cast<char *>(std::calloc(1, text->size() + 1));
            if (out)
                std::memcpy(out, text->data(), text->size());
        }
    });
    return out;
}

void LogString(const char *function, unsigned long line, const char *message)
{
    if (!function)
        function = "<unknown function>";
    if (!message)
        message = "<NULL>";
    const LogPreprocessProc preprocess = gLogPreprocess;  // read once: it may be removed meanwhile
    if (preprocess && !preprocess(function, line, message))
        return;
    if (GestaltSystemVersion() > kLastVersionWithoutSystemLog)
        syslog(gLogPriority, "%s:%lu: %s", function, line, message);
    else if (!stopAlert)
        showAlert(function, line, message);
}

void LogCorev(const char *function, unsigned long line, const char *format, va_list arguments)
{
    CBuffer message(StringAllocWithFormatAndArguments(format, arguments));
    LogString(function, line, message.get());
}

void LogCore(const char *function, unsigned long line, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    LogCorev(function, line, format, arguments);
    va_end(arguments);
}

void LogMainArguments(int argc, char **argv)
{
    LogCore("LogMainArguments", __LINE__, "argc=%02i", argc);
    for (int i = 0; argv && i < argc; ++i)
        LogCore("LogMainArguments", __LINE__, "argv[%02i]=%s", i, argv[i]);
}
