// How the command `tarvik` is put together: each command stands in a file of its own and registers itself.
//
//     namespace {
//     int run(const Arguments &arguments) { ... return kSuccess; }
//     const Registration registration({
//         .name = "crc32", .summary = "CRC-32 of files", .usage = "[OPTION]... [FILE]...",
//         .details = "...", .options = {{'c', "check", nullptr, "check files against a list"}}, .run = run});
//     }
//
// Throw UsageError for a call that is off (exit status 2), Failure for work that failed (exit status 1):
// the message is printed as "tarvik COMMAND: MESSAGE". A message says what failed, on what, why and what to do.
#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

inline constexpr int kSuccess = 0, kFailure = 1, kUsage = 2;

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};
/// A failure that the system explains: "WHAT: strerror(code)".
Failure systemFailure(const std::string &what, int code);

struct Option {
    char letter;        // 0: none
    const char *name;   // long form
    const char *value;  // what the value is called in the help; nullptr: a flag
    const char *help;
};

class Arguments {
public:
    bool has(const std::string &option) const { return options_.count(option) != 0; }
    /// The option's last value.
    std::optional<std::string> value(const std::string &option) const;
    /// All its values, in order.
    std::vector<std::string> values(const std::string &option) const;
    /// The value as a whole number (decimal, or 0x...); UsageError when it is not one or lies outside.
    std::optional<int64_t> number(const std::string &option, int64_t least, int64_t most) const;

    const std::vector<std::string> &rest() const { return rest_; }
    /// The rest, of which there must be so many; UsageError otherwise.
    const std::vector<std::string> &rest(size_t least, size_t most = SIZE_MAX) const;

private:
    friend class Parser;
    std::map<std::string, std::vector<std::string>> options_;
    std::vector<std::string> rest_;
};

struct Command {
    std::string name;
    std::string summary;       // one line, no full stop
    std::string usage = {};    // what follows the name
    std::string details = {};  // paragraphs and examples, as they are to be printed
    std::vector<Option> options = {};
    std::function<int(const Arguments &)> run = {};  // of a command without subcommands
    std::vector<Command> subcommands = {};
    bool optionsEndAtFirstWord = false;  // what follows the first word belongs to another program
};

struct Registration {
    explicit Registration(Command command);
};

/// All registered commands by name.
const std::map<std::string, Command> &allCommands();
/// The manual page, in roff, made of the same texts as the help.
std::string manualPage();
