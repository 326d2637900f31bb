#include "Command.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

std::map<std::string, Command> &registry()
{
    static std::map<std::string, Command> all;
    return all;
}

}  // namespace

Registration::Registration(Command command)
{
    std::string name = command.name;
    registry().emplace(std::move(name), std::move(command));
}

const std::map<std::string, Command> &allCommands() { return registry(); }

Failure systemFailure(const std::string &what, int code)
{
    return Failure(what + ": " + std::strerror(code));
}

std::optional<std::string> Arguments::value(const std::string &option) const
{
    auto found = options_.find(option);
    if (found == options_.end())
        return std::nullopt;
    return found->second.back();
}

std::vector<std::string> Arguments::values(const std::string &option) const
{
    auto found = options_.find(option);
    return found == options_.end() ? std::vector<std::string>{} : found->second;
}

std::optional<int64_t> Arguments::number(const std::string &option, int64_t least, int64_t most) const
{
    auto text = value(option);
    if (!text)
        return std::nullopt;
    char *end = nullptr;
    errno = 0;
    const bool hexadecimal = text->size() > 2 && (*text)[0] == '0' && ((*text)[1] | 0x20) == 'x';
    const long long number = std::strtoll(text->c_str(), &end, hexadecimal ? 16 : 10);
    if (text->empty() || *end || errno == ERANGE || number < least || number > most)
        throw UsageError("--" + option + " takes a whole number from " + std::to_string(least) + " to " +
                         std::to_string(most) + ", not '" + *text + "'");
    return number;
}

const std::vector<std::string> &Arguments::rest(size_t least, size_t most) const
{
    if (rest_.size() < least)
        throw UsageError(rest_.empty() ? "an argument is missing" : "too few arguments");
    if (rest_.size() > most)
        throw UsageError("unexpected argument '" + rest_[most] + "'");
    return rest_;
}
