#include "platform/Processes/private/XCB.h"

#include <dlfcn.h>

#include <optional>

namespace tarvik::processes {

namespace {

template <class Function>
bool find(void *library, const char *name, Function &function)
{
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function;
}

std::optional<XCB> load()
{
    void *library = dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
    if (!library)
        return std::nullopt;
    XCB x;
#define TARVIK_FIND(name) find(library, "xcb_" #name, x.name)
    const bool isWhole =
        TARVIK_FIND(connect) && TARVIK_FIND(connection_has_error) && TARVIK_FIND(disconnect) &&
        TARVIK_FIND(flush) && TARVIK_FIND(get_input_focus) && TARVIK_FIND(get_input_focus_reply) &&
        TARVIK_FIND(get_property) && TARVIK_FIND(get_property_reply) && TARVIK_FIND(get_property_value) &&
        TARVIK_FIND(get_property_value_length) && TARVIK_FIND(get_setup) && TARVIK_FIND(intern_atom) &&
        TARVIK_FIND(intern_atom_reply) && TARVIK_FIND(screen_next) && TARVIK_FIND(send_event) &&
        TARVIK_FIND(setup_roots_iterator);
#undef TARVIK_FIND
    return isWhole ? std::optional(x) : std::nullopt;
}

}  // namespace

const XCB *xcb()
{
    static const std::optional<XCB> loaded = load();
    return loaded ? &*loaded : nullptr;
}

}  // namespace tarvik::processes
