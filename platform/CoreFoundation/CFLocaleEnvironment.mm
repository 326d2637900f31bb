#include <CoreFoundation/CFLocaleEnvironment.h>
#import <Foundation/Foundation.h>
#include <Tarvik/support/Bridge.h>
#include <Tarvik/support/Pool.h>

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <string>

namespace {

/// "de_AT.UTF-8@euro" as "de_AT"; empty for the locale without a language.
std::string plainLocale(std::string_view name)
{
    name = name.substr(0, name.find_first_of(".@"));
    return name == "C" || name == "POSIX" ? std::string() : std::string(name);
}

/// The first variable that is set and not empty, as the C library has it.
std::string firstLocale(std::initializer_list<const char *> variables)
{
    for (const char *variable : variables) {
        if (const char *value = getenv(variable); value && *value)
            return plainLocale(value);
    }
    return {};
}

}  // namespace

CFStringRef CFLocaleCopyEnvironmentIdentifier(void)
{
    tarvik::Pool pool;
    const std::string name = firstLocale({"LC_ALL", "LANG"});
    return name.empty() ? nullptr : (CFStringRef)[tarvik::nsstring(name) retain];
}

CFArrayRef CFLocaleCopyEnvironmentLanguages(void)
{
    tarvik::Pool pool;
    std::string list = firstLocale({"LC_ALL", "LC_MESSAGES", "LANG"});
    if (const char *language = getenv("LANGUAGE"); language && *language && !list.empty())
        list = language;
    NSMutableArray *languages = [NSMutableArray array];
    for (size_t at = 0; at <= list.size();) {
        const size_t end = std::min(list.find(':', at), list.size());
        std::string name = plainLocale(std::string_view(list).substr(at, end - at));
        std::replace(name.begin(), name.end(), '_', '-');
        NSString *text = tarvik::nsstring(name);
        if ([text length])
            [languages addObject:text];
        at = end + 1;
    }
    return [languages count] ? (CFArrayRef)[languages copy] : nullptr;
}
