/// \file
/// An instance of the scripting component.
#pragma once
#include "Code.h"
#include "Machine.h"
#include "Vocabulary.h"

#include <Carbon/OSA.h>

#include <map>

struct ComponentInstanceRecord;

namespace tarvik::osa {

/// What scripts see of the world, through the platform's own calls.
class ComponentHost : public Host {
public:
    explicit ComponentHost(ComponentInstanceRecord &component) : component_(component) {}
    int32_t poll() override;
    void log(const std::string &text) override;
    std::string programName() override;
    std::string posixPath(const std::string &hfs) override;
    std::string hfsPath(const std::string &posix) override;
    std::string folder(uint32_t type, bool local, bool create) override;
    Value interact(Machine &machine, const Invocation &invocation) override;
    Value sendEvent(Machine &machine, const std::string &application, uint32_t eventClass, uint32_t eventID,
                    const Invocation &invocation) override;
    Value applicationProperty(Machine &machine, const Value &place) override;
    void setApplicationProperty(Machine &machine, const Value &place, const Value &value) override;
    Value callApplication(Machine &machine, const std::string &application, Name handler,
                          const std::vector<Value> &arguments) override;
    Value runScript(Machine &machine, const Value &source, const Value *parameters) override;
    Value loadScript(Machine &machine, const std::string &path) override;

private:
    ComponentInstanceRecord &component_;
};

/// An owned descriptor.
class Descriptor {
public:
    Descriptor() { AEInitializeDesc(&desc_); }
    ~Descriptor() { AEDisposeDesc(&desc_); }
    Descriptor(const Descriptor &) = delete;
    AEDesc *operator&() { return &desc_; }
    const AEDesc *operator&() const { return &desc_; }
    AEDesc release()
    {
        const AEDesc desc = desc_;
        AEInitializeDesc(&desc_);
        return desc;
    }
    std::string bytes() const;

private:
    AEDesc desc_;
};

// Descriptors.cpp
/// Fills the descriptor. Throws ScriptError for what has no form outside.
void toDescriptor(Machine &machine, const Value &value, AEDesc *out, int depth = 0);
Value fromDescriptor(Machine &machine, const AEDesc *desc, int depth = 0);
std::string bytesOf(const AEDesc *desc);
OSErr makeText(std::string_view utf8, DescType type, AEDesc *out);  // coerced to the type
/// The text of a descriptor of any text type; nothing for another one.
std::optional<std::string> textOfDescriptor(const AEDesc *desc);

// Container.cpp
/// A compiled script as data: source, state of the properties.
std::string stored(Machine &machine, const std::string &source, const Value *root, bool hidesSource);
struct Stored {
    std::string source;
    bool hidesSource = false;
    std::string state;  // flattened; empty: none
};
/// Plain text is source. Throws OSAError.
Stored loaded(std::string_view bytes);
void restoreState(Machine &machine, const Value &root, const std::string &state);

/// The value as people read it: no quotes, no braces.
std::string displayForPeople(Machine &machine, const Value &value, int depth = 0);

}  // namespace tarvik::osa

struct ComponentInstanceRecord {
    ComponentInstanceRecord();
    ~ComponentInstanceRecord();

    struct Entry {
        tarvik::osa::Value value;                 // the root script, for scripts
        tarvik::osa::Program *program = nullptr;  // owned; null for values
        bool isContext = false;
        bool hidesSource = false;
        bool ran = false;
        Entry() = default;
        Entry(Entry &&other) noexcept
            : value(std::move(other.value)), program(std::exchange(other.program, nullptr)),
              isContext(other.isContext), hidesSource(other.hidesSource), ran(other.ran)
        {
        }
        ~Entry()
        {
            if (program)
                program->release();
        }
    };

    tarvik::osa::Heap heap;
    tarvik::osa::Vocabulary vocabulary;
    tarvik::osa::ComponentHost host;
    tarvik::osa::Machine machine;
    std::map<OSAID, Entry> entries;
    OSAID next = 1;
    OSAActiveUPP active = nullptr;
    SRefCon activeRefCon = 0;

    // the latest error
    tarvik::osa::ScriptError error{0};
    int32_t errorStart = 0, errorEnd = 0;  // characters

    OSAID add(tarvik::osa::Value value);
    Entry *find(OSAID id);
    /// Compiles text into a new script entry (or into the context).
    OSAID compile(const std::string &source, SInt32 modeFlags, OSAID context);
    /// Keeps the error, with its place in the source.
    void keep(const tarvik::osa::ScriptError &failure, const std::string *source);
};
