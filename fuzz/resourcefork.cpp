// The resource-fork format: what is read can be written, and reads the same again.
#include "platform/Resources/private/ResourceFork.h"

#include <cstdlib>
#include <cstring>

using tarvik::resources::Resource;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto resources = tarvik::resources::parseFork({reinterpret_cast<const char *>(data), size});
    if (!resources)
        return 0;
    const auto fork = tarvik::resources::forkOf(*resources);
    if (!fork)
        return 0;
    auto again = tarvik::resources::parseFork(*fork);
    // The written map has each type once, so the order may change, the number may not.
    if (!again || again->size() != resources->size())
        std::abort();
    size_t bytes = 0, bytesAgain = 0;
    for (const Resource &resource : *resources)
        bytes += resource.data.size() + resource.name.value_or("").size();
    for (const Resource &resource : *again)
        bytesAgain += resource.data.size() + resource.name.value_or("").size();
    if (bytes != bytesAgain)
        std::abort();
    return 0;
}
