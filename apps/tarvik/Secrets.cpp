#include "Secrets.h"

#include "Streams.h"

#include <Tarvik/Tarvik.h>
#include <Tarvik/support/Handle.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

volatile std::sig_atomic_t caughtSignal = 0;

/// A terminal that doesn't show what is typed. A signal meanwhile ends the reading, and takes effect once the
/// terminal is as it was.
class QuietTerminal {
public:
    explicit QuietTerminal(int terminal) : terminal_(terminal)
    {
        tcgetattr(terminal, &before_);
        termios quiet = before_;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        quiet.c_lflag |= ICANON | ISIG | ECHONL;
        struct sigaction action = {};
        action.sa_handler = [](int signal) { caughtSignal = signal; };  // no SA_RESTART: reading ends
        for (size_t i = 0; i < std::size(kSignals); ++i)
            sigaction(kSignals[i], &action, &handlers_[i]);
        tcsetattr(terminal, TCSAFLUSH, &quiet);
    }
    ~QuietTerminal()
    {
        tcsetattr(terminal_, TCSAFLUSH, &before_);
        for (size_t i = 0; i < std::size(kSignals); ++i)
            sigaction(kSignals[i], &handlers_[i], nullptr);
        if (caughtSignal)
            raise(caughtSignal);
    }
    QuietTerminal(const QuietTerminal &) = delete;
    QuietTerminal &operator=(const QuietTerminal &) = delete;

private:
    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
    int terminal_;
    termios before_;
    struct sigaction handlers_[std::size(kSignals)];
};

std::string ask(int terminal, const std::string &prompt)
{
    if (write(terminal, prompt.data(), prompt.size()) < 0)
        throw systemFailure("the terminal", errno);
    QuietTerminal quiet(terminal);
    std::string line;
    for (char c; read(terminal, &c, 1) == 1 && c != '\n';)
        line += c;
    return line;
}

std::string firstLine(const std::string &text) { return text.substr(0, text.find('\n')); }

}  // namespace

std::vector<Option> passwordOptions()
{
    return {{'p', "password-file", "FILE", "the password is the first line of FILE (- for standard input)"},
            {'e', "password-env", "NAME", "the password is the value of the environment variable NAME"}};
}

std::string passwordFrom(const Arguments &arguments, bool confirm)
{
    const auto file = arguments.value("password-file"), variable = arguments.value("password-env");
    if (file && variable)
        throw UsageError("give the password by --password-file or by --password-env, not by both");
    if (file)
        return firstLine(readInput(*file));
    if (variable) {
        const char *value = std::getenv(variable->c_str());
        if (!value)
            throw Failure("the environment has no variable " + *variable);
        return value;
    }
    const tarvik::FileDescriptor terminal(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!terminal)
        throw UsageError("no terminal to ask for the password on (use --password-file or --password-env)");
    std::string password = ask(terminal.get(), "Password: ");
    if (confirm && ask(terminal.get(), "Again: ") != password)
        throw Failure("the two passwords differ");
    return password;
}

std::vector<Option> keyOptions(size_t length)
{
    // The help's texts live as long as the command.
    static std::deque<std::string> texts;
    const char *file = texts.emplace_back("the key: a file of " + std::to_string(length) + " bytes").c_str();
    const char *digits = texts
                             .emplace_back("the key as " + std::to_string(2 * length) +
                                           " hexadecimal digits; other users see it in the list of processes")
                             .c_str();
    return {{'k', "key-file", "FILE", file}, {'K', "key", "DIGITS", digits}};
}

std::vector<uint8_t> keyFrom(const Arguments &arguments, size_t length)
{
    const auto digits = arguments.value("key"), file = arguments.value("key-file");
    if (digits.has_value() == file.has_value())
        throw UsageError("give the key, by --key-file or by --key");
    if (file) {
        const std::string bytes = readInput(*file);
        if (bytes.size() != length)
            throw Failure(*file + ": a key has " + std::to_string(length) + " bytes, this file " +
                          std::to_string(bytes.size()));
        return {bytes.begin(), bytes.end()};
    }
    if (digits->size() != 2 * length || !isHexadecimal(*digits))
        throw UsageError("--key takes " + std::to_string(2 * length) + " hexadecimal digits");
    std::vector<uint8_t> key(length);
    CDSAUtilityBase::convertHEXStringToHEXValue(digits->c_str(), key.data());
    return key;
}

bool isHexadecimal(std::string_view text)
{
    return text.find_first_not_of("0123456789abcdefABCDEF") == text.npos;
}
