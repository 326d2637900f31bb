#include "platform/CoreFoundation/private/HFSPath.h"
#include "private/Component.h"
#include "private/FileAccess.h"
#include "private/Parser.h"

#include <Carbon/Folders.h>

#include <cerrno>
#include <climits>
#include <cstdio>

namespace tarvik::osa {

int32_t ComponentHost::poll() { return component_.active ? component_.active(component_.activeRefCon) : 0; }

void ComponentHost::log(const std::string &text) { std::fprintf(stderr, "%s\n", text.c_str()); }

std::string ComponentHost::programName() { return program_invocation_short_name; }

std::string ComponentHost::posixPath(const std::string &hfs)
{
    const auto path = hfs::toPosix(hfs);
    if (!path)
        raise(error::noSuchFile, "File " + hfs + " wasn’t found.");
    return hfs.ends_with(':') && !path->ends_with('/') ? *path + "/" : *path;
}

/// A folder's path ends with a colon where the other form ends with a slash.
std::string ComponentHost::hfsPath(const std::string &posix)
{
    const std::string path = hfs::fromPosix(posix);
    return posix.ends_with('/') && !path.ends_with(':') ? path + ":" : path;
}

std::string ComponentHost::folder(uint32_t type, bool local, bool create)
{
    char path[PATH_MAX];
    if (FSFindFolderPath(local ? kLocalDomain : kUserDomain, type, create, path, sizeof path) != noErr)
        return "";
    return path;
}

namespace {

/// An owned program.
struct Owned {
    Program *program;
    ~Owned() { program->release(); }
};

Value rootOf(Machine &machine, const std::string &source, const std::string &state)
{
    try {
        const Tree tree = parse(source, machine.heap, machine.vocabulary);
        const Owned program{compile(tree, source, machine.heap, nullptr, false)};
        Value root = machine.instantiate(program.program);
        restoreState(machine, root, state);
        return root;
    } catch (ScriptError &failure) {
        failure.located = false;  // that place is in another source
        throw;
    } catch (const OSAError &error) {
        raise(error, messageFor(error));
    }
}

Value rootOf(Machine &machine, std::string_view bytes)
{
    Stored script;
    try {
        script = loaded(bytes);
    } catch (const OSAError &error) {
        raise(error, "The data is no script.");
    }
    return rootOf(machine, script.source, script.state);
}

}  // namespace

Value ComponentHost::runScript(Machine &machine, const Value &source, const Value *parameters)
{
    if (source.is(Kind::data))  // a stored script: the script itself
        return rootOf(machine, source.data()->bytes);
    Value script = source;
    if (!script.is(Kind::script))
        script = source.is(Kind::file) ? loadScript(machine, source.file()->path)
                                       : rootOf(machine, machine.textOf(source), "");
    std::vector<Value> arguments;
    if (parameters)
        arguments.push_back(machine.coerced(*parameters, type::list));
    return machine.call(script, Word::run, std::move(arguments));
}

Value ComponentHost::loadScript(Machine &machine, const std::string &path)
{
    FileAccess::OpenFile file = FileAccess::opened(path, false);
    return rootOf(machine, FileAccess::read(file, int64_t(1) << 30));
}

std::string displayForPeople(Machine &machine, const Value &value, int depth)
{
    if (depth > 100)
        raise(error::stackOverflow, "Stack overflow.");
    // Nested lists lose their braces, too.
    switch (value.kind()) {
    case Kind::text: return utf8(value);
    case Kind::list: {
        std::string out;
        for (size_t i = 0; i < value.list()->items.size(); ++i)
            out += (i ? ", " : "") + displayForPeople(machine, value.list()->items[i], depth + 1);
        return out;
    }
    case Kind::record: {
        std::string out;
        for (size_t i = 0; i < value.record()->fields.size(); ++i)
            out += (i ? ", " : "") + machine.displayName(value.record()->fields[i].first) + ":" +
                   displayForPeople(machine, value.record()->fields[i].second, depth + 1);
        return out;
    }
    case Kind::date: return "date " + dateText(value.date()->seconds);
    case Kind::file:
        return (value.file()->isAlias ? "alias " : "file ") + machine.host.hfsPath(value.file()->path);
    default: return machine.display(value);
    }
}

}  // namespace tarvik::osa
