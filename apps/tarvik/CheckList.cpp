#include "CheckList.h"

#include "Streams.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <optional>
#include <sstream>

namespace {

// One file that can't be read doesn't keep the others from being read.
void complain(const CheckKind &kind, const std::exception &failure)
{
    std::fflush(stdout);
    std::fprintf(stderr, "tarvik %s: %s\n", kind.command.c_str(), failure.what());
}

std::string lineOf(const std::string &check, const std::string &name)
{
    std::string escaped;
    for (char c : name)
        escaped += c == '\\' ? "\\\\" : c == '\n' ? "\\n" : std::string(1, c);
    return (escaped == name ? "" : "\\") + check + "  " + escaped + "\n";
}

struct Entry {
    std::string check, name;
};

std::optional<std::string> unescaped(std::string_view name)
{
    std::string plain;
    for (size_t i = 0; i < name.size(); ++i) {
        if (name[i] != '\\') {
            plain += name[i];
            continue;
        }
        if (++i == name.size() || (name[i] != '\\' && name[i] != 'n'))
            return std::nullopt;
        plain += name[i] == 'n' ? '\n' : '\\';
    }
    return plain;
}

std::optional<Entry> entryOf(std::string_view line, const CheckKind &kind)
{
    const bool escaped = line.starts_with('\\');
    line.remove_prefix(escaped);
    const size_t digits = std::min(line.find(' '), line.size());
    const size_t name = digits + 2;  // a space, and one more or an asterisk
    if (line.size() <= name || !kind.takes(digits) || (line[digits + 1] != ' ' && line[digits + 1] != '*'))
        return std::nullopt;
    Entry entry{std::string(line.substr(0, digits)), std::string(line.substr(name))};
    for (char &digit : entry.check) {
        if (!std::isxdigit(static_cast<unsigned char>(digit)))
            return std::nullopt;
        digit = static_cast<char>(std::tolower(static_cast<unsigned char>(digit)));
    }
    if (escaped) {
        auto plain = unescaped(entry.name);
        if (!plain)
            return std::nullopt;
        entry.name = std::move(*plain);
    }
    return entry;
}

int print(const std::vector<std::string> &names, const CheckKind &kind)
{
    int status = kSuccess;
    for (const std::string &name : names) {
        try {
            writeOutput(lineOf(kind.compute(name, 0), name));
        } catch (const Failure &failure) {
            complain(kind, failure);
            status = kFailure;
        }
    }
    return status;
}

struct Tally {
    size_t good = 0, bad = 0;
};

void verify(const std::string &list, const CheckKind &kind, bool quiet, Tally &tally)
{
    std::istringstream lines(readInput(list));
    std::string line;
    for (size_t number = 1; std::getline(lines, line); ++number) {
        if (line.empty())
            continue;
        try {
            const auto entry = entryOf(line, kind);
            if (!entry)
                throw Failure(list + ", line " + std::to_string(number) +
                              ": not of the form 'CHECK  NAME' (" + kind.form + ")");
            const bool same = kind.compute(entry->name, entry->check.size()) == entry->check;
            ++(same ? tally.good : tally.bad);
            if (!same || !quiet)
                writeOutput(entry->name + (same ? ": OK\n" : ": FAILED\n"));
        } catch (const Failure &failure) {
            complain(kind, failure);
            ++tally.bad;
        }
    }
}

}  // namespace

std::vector<Option> checkOptions()
{
    return {{'c', "check", nullptr,
             "verify the files that a list names; exit status 1 when one differs or is missing"},
            {'q', "quiet", nullptr, "with --check, print only what differs"}};
}

int printOrVerify(const Arguments &arguments, const CheckKind &kind)
{
    std::vector<std::string> names = arguments.rest();
    if (names.empty())
        names.push_back("-");
    if (arguments.has("quiet") && !arguments.has("check"))
        throw UsageError("--quiet goes with --check");
    if (!arguments.has("check"))
        return print(names, kind);

    Tally tally;
    for (const std::string &list : names)
        verify(list, kind, arguments.has("quiet"), tally);
    if (tally.bad > 0)
        throw Failure(std::to_string(tally.bad) + " of " + std::to_string(tally.good + tally.bad) +
                      " not verified");
    if (tally.good == 0)
        throw Failure("nothing to verify: the list has no line");
    return kSuccess;
}
