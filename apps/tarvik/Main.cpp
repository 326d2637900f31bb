#include "Command.h"
#include "Help.h"

#include <csignal>
#include <cstdio>
#include <cstring>

class Parser {
public:
    Parser(const Command &command, const std::vector<std::string> &words, size_t first)
    {
        bool onlyWords = false;
        for (size_t i = first; i < words.size(); ++i) {
            const std::string &word = words[i];
            if (onlyWords || word.size() < 2 || word[0] != '-') {
                arguments_.rest_.push_back(word);
                onlyWords |= command.optionsEndAtFirstWord;
            } else if (word == "--") {
                onlyWords = true;
            } else if (word[1] == '-') {
                const size_t equals = word.find('=');
                const Option &option = find(command, word.substr(2, equals - 2), word);
                if (option.value)
                    take(option,
                         equals == std::string::npos ? next(option, words, i) : word.substr(equals + 1));
                else if (equals != std::string::npos)
                    throw UsageError("--" + std::string(option.name) + " takes no value");
                else
                    take(option, "");
            } else {
                shortOptions(command, words, i);
            }
        }
    }
    const Arguments &arguments() const { return arguments_; }

private:
    void shortOptions(const Command &command, const std::vector<std::string> &words, size_t &i)
    {
        const std::string word = words[i];
        for (size_t at = 1; at < word.size(); ++at) {
            const Option *option = nullptr;
            for (const Option &candidate : command.options) {
                if (candidate.letter == word[at])
                    option = &candidate;
            }
            if (!option)
                throw UsageError(std::string("unknown option '-") + word[at] + "'");
            if (!option->value) {
                take(*option, "");
                continue;
            }
            take(*option, at + 1 < word.size() ? word.substr(at + 1) : next(*option, words, i));
            return;
        }
    }
    static const Option &find(const Command &command, const std::string &name, const std::string &word)
    {
        for (const Option &option : command.options) {
            if (name == option.name)
                return option;
        }
        throw UsageError("unknown option '" + word + "'");
    }
    static std::string next(const Option &option, const std::vector<std::string> &words, size_t &i)
    {
        if (i + 1 >= words.size())
            throw UsageError("--" + std::string(option.name) + " takes a value (" + option.value + ")");
        return words[++i];
    }
    void take(const Option &option, std::string value)
    {
        arguments_.options_[option.name].push_back(std::move(value));
    }

    Arguments arguments_;
};

namespace {

// Help is asked for anywhere before "--"; the words of another program are its own.
bool wantsHelp(const Command &command, const std::vector<std::string> &words, size_t first)
{
    for (size_t i = first; i < words.size() && words[i] != "--"; ++i) {
        if (words[i] == "--help" || words[i] == "-h")
            return true;
        if (command.optionsEndAtFirstWord && words[i][0] != '-')
            return false;
    }
    return false;
}

int finish(int status)
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::fprintf(stderr, "tarvik: standard output: %s\n", std::strerror(errno));
        return kFailure;
    }
    return status;
}

int print(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    return finish(kSuccess);
}

/// `path` becomes the command's whole name, for messages too.
int runCommand(const Command *command, const std::vector<std::string> &words, std::string &path)
{
    size_t at = 1;
    while (!command->subcommands.empty()) {
        if (at == words.size())
            throw UsageError("a command is missing");
        if (words[at] == "--help" || words[at] == "-h")
            return print(helpText(path, *command));
        const Command *chosen = nullptr;
        for (const Command &sub : command->subcommands) {
            if (sub.name == words[at])
                chosen = &sub;
        }
        if (!chosen)
            throw UsageError("no command '" + words[at] + "'");
        command = chosen;
        path += " " + words[at++];
    }
    if (wantsHelp(*command, words, at))
        return print(helpText(path, *command));
    return finish(command->run(Parser(*command, words, at).arguments()));
}

}  // namespace

int main(int argc, char **argv)
{
    std::signal(SIGPIPE, SIG_DFL);  // a reader that goes away ends us quietly, as it ends any filter
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.empty()) {
        std::fputs(programHelp().c_str(), stderr);
        return kUsage;
    }
    if (words[0] == "--help" || words[0] == "-h" || words[0] == "help")
        return print(programHelp());
    if (words[0] == "--version")
        return print("tarvik " TARVIK_VERSION "\n");
    if (words[0] == "manual")  // the build's own: writes the manual page
        return print(manualPage());
    const auto found = allCommands().find(words[0]);
    if (found == allCommands().end()) {
        std::fprintf(stderr, "tarvik: no command '%s'; 'tarvik --help' lists them\n", words[0].c_str());
        return kUsage;
    }
    const char *name = found->first.c_str();
    std::string path = "tarvik " + found->first;
    try {
        return runCommand(&found->second, words, path);
    } catch (const UsageError &error) {
        std::fprintf(stderr, "%s: %s\nTry '%s --help'.\n", path.c_str(), error.what(), path.c_str());
        return kUsage;
    } catch (const std::exception &error) {
        std::fflush(stdout);
        std::fprintf(stderr, "tarvik %s: %s\n", name, error.what());
        return kFailure;
    }
}
