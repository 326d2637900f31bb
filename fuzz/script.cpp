// Source text of scripts, and compiled scripts: whatever they hold, they compile or do not, run or fail, and end when they are told to.
// Commands that reach outside the machine are refused.
#include "platform/OpenScripting/private/Component.h"
#include "platform/OpenScripting/private/Parser.h"

#include <cstdlib>

using namespace tarvik::osa;

namespace {

struct Closed : Host {
    int polls = 0;
    int32_t poll() override { return ++polls > 20 ? -128 : 0; }
    void permit(const Command &command) override
    {
        for (const uint32_t harmless : {code("rand"), code("offs"), code("rond"), code("ntoc"), code("cton"),
                                        code("cdat"), code("dsct")}) {
            if (command.id == harmless)
                return;
        }
        raise(-1708, "not here");
    }
    void log(const std::string &) override {}
    std::string programName() override { return "fuzz"; }
    std::string posixPath(const std::string &hfs) override { return hfs; }
    std::string hfsPath(const std::string &posix) override { return posix; }
    std::string folder(uint32_t, bool, bool) override { return ""; }
    Value interact(Machine &, const Invocation &) override { return {}; }
    Value sendEvent(Machine &, const std::string &, uint32_t, uint32_t, const Invocation &) override
    {
        return {};
    }
    Value callApplication(Machine &, const std::string &, Name, const std::vector<Value> &arguments) override
    {
        return arguments.empty() ? Value() : arguments[0];
    }
    Value applicationProperty(Machine &, const Value &) override { return Value::of(int64_t(1)); }
    void setApplicationProperty(Machine &, const Value &, const Value &) override {}
    Value runScript(Machine &machine, const Value &source, const Value *) override
    {
        if (!source.is(Kind::text))
            raise(-1708, "not here");
        return run(machine, utf8(source), "");
    }
    Value loadScript(Machine &, const std::string &) override { return {}; }

    static Value run(Machine &machine, const std::string &source, const std::string &state)
    {
        const Tree tree = parse(source, machine.heap, machine.vocabulary);
        struct Owned {
            Program *program;
            ~Owned() { program->release(); }
        } program{compile(tree, source, machine.heap, nullptr, false)};
        Value root = machine.instantiate(program.program);
        restoreState(machine, root, state);
        return machine.call(root, Word::run, {});
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Heap heap;
    heap.limit = 8 << 20;
    const Vocabulary vocabulary(heap.names);
    Closed host;
    try {
        Machine machine(heap, host, vocabulary);
        try {
            const Stored script = loaded({reinterpret_cast<const char *>(data), size});
            const Value value = Closed::run(machine, script.source, script.state);
            machine.display(value);
            AEDesc desc;
            toDescriptor(machine, value, &desc);
            AEDisposeDesc(&desc);
        } catch (const ScriptError &failure) {
            // An error's place lies in the source.
            if (failure.located && failure.range.from > failure.range.to)
                std::abort();
        }
        // Values that the error held are gone before the heap is.
    } catch (const OSAError &) {
    }
    return 0;
}
