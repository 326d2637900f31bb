// The commands that every script has: do shell script, random number, read, write ...
#include "platform/Foundation/ChildProcess.h"
#include "private/FileAccess.h"
#include "private/Machine.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <thread>
#include <unistd.h>

namespace tarvik::osa {

namespace {

// --- do shell script -----------------------------------------------------------------------------------

struct Pipe {
    FileDescriptor out, in;
    Pipe()
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            raise(-42, "Too many files are open.");
        out.reset(ends[0]);
        in.reset(ends[1]);
    }
};

/// Runs the shell's command line and gathers what it writes; the host may stop it.
Value shellScript(Machine &machine, const Invocation &invocation)
{
    if (invocation.flag(code("badm"), false))
        raise(-60007, "Administrator privileges are not available here; run the script as that user.");
    const std::string command = machine.textOf(invocation.direct);
    Pipe output, errors;
    const FileDescriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    platform::SpawnPlan plan;
    plan.path = "/bin/sh";
    plan.arguments = {"-c", command};
    plan.streams[0] = nothing.get();
    plan.streams[1] = output.in.get();
    plan.streams[2] = errors.in.get();
    platform::ChildProcess child;
    if (const int failure = child.spawn(plan))
        raise(failure == E2BIG ? 255 : failure,
              "The command could not be started: " + std::string(strerror(failure)));
    output.in.reset();
    errors.in.reset();
    std::string texts[2];
    pollfd streams[2] = {{output.out.get(), POLLIN, 0}, {errors.out.get(), POLLIN, 0}};
    try {
        while (streams[0].fd >= 0 || streams[1].fd >= 0) {
            const int ready = ::poll(streams, 2, 100);
            machine.poll();
            for (int i = 0; ready > 0 && i < 2; ++i) {
                if (streams[i].fd < 0 || !streams[i].revents)
                    continue;
                char buffer[1 << 16];
                const ssize_t got = ::read(streams[i].fd, buffer, sizeof buffer);
                if (got > 0)
                    texts[i].append(buffer, size_t(got));
                else if (got == 0 || errno != EINTR)
                    streams[i].fd = -1;
                if (texts[i].size() > machine.heap.limit)
                    raise(error::outOfMemory, "Out of memory.");
            }
        }
        while (!child.exit()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            machine.poll();
        }
    } catch (...) {
        child.signal(SIGTERM);
        throw;
    }
    const auto end = child.wait();
    // Lines end with a return, and the last one's end is cut off, unless the script wants the bytes as they are.
    const bool alters = invocation.flag(code("alen"), true);
    const auto finished = [&](std::string text) {
        if (alters) {
            if (text.ends_with('\n'))
                text.pop_back();
            for (char &c : text)
                c = c == '\n' ? '\r' : c;
        }
        return text;
    };
    if (end.status != 0) {
        std::string message = finished(texts[1].empty() ? texts[0] : texts[1]);
        if (message.empty())
            message = "The command exited with a non-zero status.";
        raise(end.bySignal ? 128 + end.status : end.status, message);
    }
    return machine.heap.text(finished(std::move(texts[0])));
}

// --- numbers -------------------------------------------------------------------------------------------

Value randomNumber(Machine &machine, const Invocation &invocation)
{
    if (const Value *seed = invocation.parameter(code("seed")))
        machine.random.seed(uint64_t(machine.whole(*seed)));
    const Value *from = invocation.parameter(code("from")), *to = invocation.parameter(code("to  "));
    if (!from && !to && !invocation.direct)
        return Value::of(std::uniform_real_distribution<double>(0, 1)(machine.random));
    const Value low = from ? machine.asNumber(*from) : Value::of(int64_t(0));
    const Value high = to                  ? machine.asNumber(*to)
                       : invocation.direct ? machine.asNumber(invocation.direct)
                                           : Value::of(int64_t(1));
    const double least = std::min(low.number(), high.number()), most = std::max(low.number(), high.number());
    if (low.is(Kind::integer) && high.is(Kind::integer))
        return Value::of(
            std::uniform_int_distribution<int64_t>(int64_t(least), int64_t(most))(machine.random));
    return Value::of(std::uniform_real_distribution<double>(least, most)(machine.random));
}

Value roundNumber(Machine &machine, const Invocation &invocation)
{
    const double number = machine.number(invocation.direct);
    const Value *direction = invocation.parameter(code("dire"));
    double result;
    switch (direction && direction->is(Kind::constant) ? direction->code() : 0) {
    case code("rdup"): result = std::ceil(number); break;
    case code("rddn"): result = std::floor(number); break;
    case code("tozo"): result = std::trunc(number); break;
    case code("tats"): result = std::round(number); break;
    default: result = std::nearbyint(number);
    }
    return std::fabs(result) <= 536870911 ? Value::of(int64_t(result)) : Value::of(result);
}

Value offsetOf(Machine &machine, const Invocation &invocation)
{
    const Value *wanted = invocation.parameter(code("psof")), *whole = invocation.parameter(code("psin"));
    if (!wanted || !whole)
        raise(error::wrongData, "Some parameter is missing for offset.");
    const Value text = machine.asText(*whole), part = machine.asText(*wanted);
    if (!part.text()->length)
        return Value::of(int64_t(0));
    const auto found = find(text.text(), part.text(), 0, machine.considering);
    return Value::of(int64_t(found ? found->at + 1 : 0));
}

void delay(Machine &machine, double seconds)
{
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::duration<double>(std::clamp(seconds, 0.0, 1e9));
    for (;;) {
        machine.poll();
        const auto now = std::chrono::steady_clock::now();
        if (now >= end)
            return;
        std::this_thread::sleep_for(
            std::min<std::chrono::duration<double>>(end - now, std::chrono::milliseconds(50)));
    }
}

// --- files ---------------------------------------------------------------------------------------------

Value asRead(Machine &machine, std::string bytes, const Value *wanted)
{
    const uint32_t as = wanted && wanted->is(Kind::type) ? wanted->code() : type::text;
    switch (as) {
    case type::integer:
    case type::real:
    case type::number: return machine.coerced(machine.heap.text(bytes), as);
    case type::data: return machine.heap.data(type::data, std::move(bytes));
    default: return machine.heap.text(bytes);
    }
}

Value readFile(Machine &machine, const Invocation &invocation)
{
    const Value source = machine.contentsOf(invocation.direct);
    FileAccess &files = machine.files();
    FileAccess::OpenFile passing;
    FileAccess::OpenFile *file;
    if (source.is(Kind::integer)) {
        file = &files.at(source.integer());
    } else {
        const std::string path = machine.path(source);
        file = files.find(path, false);
        if (!file) {
            passing = FileAccess::opened(path, false);
            file = &passing;
        }
    }
    const int64_t length = FileAccess::length(*file);
    const auto number = [&](uint32_t key) -> std::optional<int64_t> {
        const Value *value = invocation.parameter(key);
        return value ? std::optional(machine.whole(*value)) : std::nullopt;
    };
    if (const auto from = number(code("from")))
        file->position = *from < 0 ? std::max<int64_t>(0, length + *from) : std::max<int64_t>(0, *from - 1);
    int64_t count = INT64_MAX / 2;
    if (const auto to = number(code("to  ")))
        count = (*to < 0 ? length + *to + 1 : *to) - file->position;
    if (const auto exactly = number(code("for ")))
        count = *exactly;
    std::string bytes = FileAccess::read(*file, std::min<int64_t>(count, int64_t(machine.heap.limit / 4)));
    if (bytes.empty() && count > 0)
        raise(-39, messageFor(-39));
    for (const bool until : {false, true}) {
        const Value *stop = invocation.parameter(until ? code("unti") : code("befo"));
        if (!stop)
            continue;
        const size_t place = bytes.find(machine.textOf(*stop));
        if (place != std::string::npos) {
            file->position -= int64_t(bytes.size() - place - 1);
            bytes.resize(place + until);
        }
    }
    if (const Value *delimiter = invocation.parameter(code("deli"))) {
        const Value text = machine.heap.text(bytes);
        Value parts = machine.heap.list();
        for (const auto &[from, to] : textItemsOf(text.text(), machine.contentsOf(*delimiter),
                                                  Considering::kDefault | Considering::caseCounts))
            parts.list()->items.push_back(part(text, from, to - from));
        auto &items = parts.list()->items;
        if (!items.empty() && !items.back().text()->length)
            items.pop_back();
        return parts;
    }
    const Value *wanted = invocation.parameter(code("as  "));
    if (wanted && wanted->is(Kind::type) && wanted->code() == type::list) {
        const Value text = machine.heap.text(bytes);
        return machine.get({Specifier::every, Word::paragraph, type::paragraph}, text, {}, {});
    }
    return asRead(machine, std::move(bytes), wanted);
}

Value writeFile(Machine &machine, const Invocation &invocation)
{
    const Value *to = invocation.parameter(code("refn"));
    if (!to)
        raise(error::wrongData, "The to parameter is missing for write.");
    const Value value = machine.contentsOf(invocation.direct);
    std::string bytes = value.is(Kind::data) ? value.data()->bytes : machine.textOf(value);
    if (const Value *count = invocation.parameter(code("nmwr")))
        bytes.resize(std::min<size_t>(bytes.size(), size_t(std::max<int64_t>(0, machine.whole(*count)))));
    const Value target = machine.contentsOf(*to);
    FileAccess &files = machine.files();
    FileAccess::OpenFile passing;
    FileAccess::OpenFile *file;
    if (target.is(Kind::integer)) {
        file = &files.at(target.integer());
    } else {
        const std::string path = machine.path(target);
        file = files.find(path, true);
        if (!file) {
            passing = FileAccess::opened(path, true);
            file = &passing;
        }
    }
    if (const Value *start = invocation.parameter(code("wrat"))) {
        const Value at = machine.contentsOf(*start);
        const int64_t length = FileAccess::length(*file);
        if (at.is(Kind::constant) && at.code() == code("eof "))
            file->position = length;
        else
            file->position = std::max<int64_t>(0, machine.whole(at) < 0 ? length + machine.whole(at) + 1
                                                                        : machine.whole(at) - 1);
    }
    FileAccess::write(*file, bytes);
    return {};
}

Value endOfFile(Machine &machine, const Invocation &invocation, bool sets)
{
    const Value source = machine.contentsOf(invocation.direct);
    FileAccess::OpenFile passing;
    FileAccess::OpenFile *file;
    if (source.is(Kind::integer)) {
        file = &machine.files().at(source.integer());
    } else {
        passing = FileAccess::opened(machine.path(source), sets);
        file = &passing;
    }
    if (!sets)
        return Value::of(FileAccess::length(*file));
    const Value *to = invocation.parameter(code("set2"));
    if (!to)
        raise(error::wrongData, "The to parameter is missing for set eof.");
    if (ftruncate(file->descriptor.get(), off_t(std::max<int64_t>(0, machine.whole(*to)))) != 0)
        raise(-61, "File " + file->path + " is not open with write permission.");
    return {};
}

Value pathTo(Machine &machine, const Invocation &invocation)
{
    const Value what = machine.contentsOf(invocation.direct);
    std::string found;
    if (what.is(Kind::constant)) {
        const Value *domain = invocation.parameter(code("from"));
        const bool local = domain && domain->is(Kind::constant) && domain->code() == code("fldl");
        found = machine.host.folder(what.code(), local, invocation.flag(code("crfl"), true));
    } else if (what.is(Kind::script)) {
        found = machine.host.folder(type::script, false, false);
    }
    if (found.empty())
        raise(error::noSuchFile,
              "Can’t make " + machine.display(what) + " into a path: there is no such folder.", what);
    const Value *as = invocation.parameter(code("rtyp"));
    const Value file = machine.alias(found);
    return as ? machine.coerced(file, as->code()) : file;
}

}  // namespace

FileAccess &Machine::files()
{
    if (!files_)
        files_ = std::make_unique<FileAccess>();
    return *files_;
}

Value Machine::command(const Invocation &invocation)
{
    const Command *known = invocation.site.command;
    if (!known || known->toApplications) {
        Value target = contentsOf(invocation.target);
        const uint32_t eventClass = known ? code("aevt") : invocation.site.eventClass,
                       eventID = known ? known->id : invocation.site.eventID;
        // An application, or what is to run: to itself.
        const bool runs = known && eventID == code("oapp");
        Value direct = runs ? contentsOf(invocation.direct) : invocation.direct;
        if (direct.is(Kind::application) || (runs && direct))
            target = std::exchange(direct, {});
        if (target.is(Kind::script)) {
            // A script's own handlers come first.
            if (known) {
                const Name handler = heap.names.of(known->phrase);
                if (responds(target, handler))
                    return call(target, handler, direct ? std::vector<Value>{direct} : std::vector<Value>{});
            }
            target = heap.application("");
        }
        if (!target.is(Kind::application))
            raise(error::notUnderstood,
                  display(target) + " doesn’t understand the “" + (known ? known->phrase : "«event»") +
                      "” message.",
                  target);
        return host.sendEvent(*this, target.application()->name, eventClass, eventID, invocation);
    }
    host.permit(*known);
    switch (known->id) {
    case code("exec"): return shellScript(*this, invocation);
    case code("cdat"): return heap.date(currentSeconds());
    case code("rand"): return randomNumber(*this, invocation);
    case code("dela"): delay(*this, invocation.direct ? number(invocation.direct) : 1); return {};
    case code("offs"): return offsetOf(*this, invocation);
    case code("rond"): return roundNumber(*this, invocation);
    case code("rtph"): return pathTo(*this, invocation);
    case code("read"): return readFile(*this, invocation);
    case code("writ"): return writeFile(*this, invocation);
    case code("open"):
        return Value::of(files().open(path(invocation.direct), invocation.flag(code("perm"), false)));
    case code("clos"): {
        const Value file = contentsOf(invocation.direct);
        if (file.is(Kind::integer))
            files().close(file.integer());
        else
            files().close(path(file));
        return {};
    }
    case code("geof"): return endOfFile(*this, invocation, false);
    case code("seof"): return endOfFile(*this, invocation, true);
    case code("ntoc"):
        return get({Specifier::id, Word::character, type::character}, Value::missing(), invocation.direct,
                   {});
    case code("cton"): {
        const Value text = asText(invocation.direct);
        if (!text.text()->length)
            cantMake(text, "character");
        return Value::of(int64_t((*text.text())[0]));
    }
    case code("fndi"): {
        const char *value = getenv(textOf(invocation.direct).c_str());
        return heap.text(value ? value : "");
    }
    case code("dsct"):
        return host.runScript(*this, contentsOf(invocation.direct), invocation.parameter(code("plst")));
    case code("load"): return host.loadScript(*this, path(invocation.direct));
    default: return host.interact(*this, invocation);
    }
}

}  // namespace tarvik::osa
