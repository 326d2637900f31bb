#include "Help.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace {

constexpr size_t kSummaryColumn = 26;

std::string padded(std::string text)
{
    if (text.size() + 2 > kSummaryColumn)
        return text + "\n" + std::string(kSummaryColumn, ' ');
    text.resize(kSummaryColumn, ' ');
    return text;
}

std::string optionForm(const Option &option)
{
    std::string form = option.letter ? std::string("-") + option.letter + ", " : "    ";
    form += std::string("--") + option.name;
    if (option.value)
        form += std::string("=") + option.value;
    return form;
}

// In roff a leading dot or quote is a request, a backslash an escape, a hyphen may be broken.
std::string roff(const std::string &text)
{
    std::string out;
    bool lineStart = true;
    for (char c : text) {
        if (lineStart && (c == '.' || c == '\''))
            out += "\\&";
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else
            out += c;
        lineStart = c == '\n';
    }
    return out;
}

std::string sentence(std::string summary)
{
    summary[0] = char(std::toupper(static_cast<unsigned char>(summary[0])));
    return summary + ".";
}

// Lines set in by two blanks are examples and stay as they are; the others are filled.
void writeDetails(std::ostringstream &out, const std::string &details)
{
    std::istringstream lines(details);
    bool asIs = false;
    out << ".PP\n";
    for (std::string line; std::getline(lines, line);) {
        if (const bool example = line.starts_with("  "); example != asIs) {
            out << (example ? ".nf\n" : ".fi\n");
            asIs = example;
        }
        out << (line.empty() ? ".PP" : roff(line)) << "\n";
    }
    if (asIs)
        out << ".fi\n";
}

void writeManual(std::ostringstream &out, const std::string &path, const Command &command)
{
    if (!command.subcommands.empty() && !command.details.empty()) {
        out << ".SS \"" << roff(path) << " COMMAND ...\"\n" << roff(sentence(command.summary)) << "\n";
        writeDetails(out, command.details);
    }
    if (command.run) {
        out << ".SS \"" << roff(path) << " " << roff(command.usage) << "\"\n"
            << roff(sentence(command.summary)) << "\n";
        for (const Option &option : command.options) {
            const std::string form = optionForm(option);
            out << ".TP\n.B " << roff(form.substr(form.find_first_not_of(' '))) << "\n"
                << roff(option.help) << "\n";
        }
        if (!command.details.empty())
            writeDetails(out, command.details);
    }
    for (const Command &sub : command.subcommands)
        writeManual(out, path + " " + sub.name, sub);
}

}  // namespace

std::string helpText(const std::string &path, const Command &command)
{
    std::ostringstream out;
    if (!command.subcommands.empty()) {
        out << "Usage: " << path << " COMMAND ...\n" << sentence(command.summary) << "\n\nCommands:\n";
        for (const Command &sub : command.subcommands)
            out << padded("  " + sub.name) << sub.summary << "\n";
        if (!command.details.empty())
            out << "\n" << command.details << "\n";
        out << "\n'" << path << " COMMAND --help' tells more of each.\n";
        return out.str();
    }
    out << "Usage: " << path << (command.usage.empty() ? "" : " ") << command.usage << "\n"
        << sentence(command.summary) << "\n\nOptions:\n";
    for (const Option &option : command.options)
        out << padded("  " + optionForm(option)) << option.help << "\n";
    out << padded("  -h, --help") << "this text\n";
    if (!command.details.empty())
        out << "\n" << command.details << "\n";
    return out.str();
}

std::string programHelp()
{
    std::ostringstream out;
    out << "Usage: tarvik COMMAND [ARGUMENT]...\nWhat the Tarvik toolkit does, from the command "
           "line.\n\nCommands:\n";
    for (const auto &[name, command] : allCommands())
        out << padded("  " + name) << command.summary << "\n";
    out << "\n'tarvik COMMAND --help' tells more of each; 'tarvik --version' tells the version.\n"
           "Exit status: 0 success, 1 failure (or a check that did not hold), 2 a call that is off.\n";
    return out.str();
}

std::string manualPage()
{
    std::ostringstream out;
    out << ".TH TARVIK 1 \"\" \"Tarvik " TARVIK_VERSION "\" \"User Commands\"\n"
           ".SH NAME\ntarvik \\- the Tarvik toolkit from the command line\n"
           ".SH SYNOPSIS\n.B tarvik\n.I COMMAND\n[\\fIARGUMENT\\fR]...\n"
           ".SH DESCRIPTION\nEach command shows one of the toolkit's services at work on files, standard "
           "input or the system.\n"
           ".SH COMMANDS\n";
    for (const auto &[name, command] : allCommands())
        writeManual(out, "tarvik " + name, command);
    out << ".SH EXIT STATUS\n0 success; 1 failure, or a check that did not hold; 2 a call that is off.\n";
    return out.str();
}
