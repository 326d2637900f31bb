#include <CoreFoundation/CFSystemVersion.h>
#import <Foundation/Foundation.h>
#include <Tarvik/support/Bridge.h>
#include <Tarvik/support/Pool.h>
#include <sys/utsname.h>

#include <fstream>
#include <map>
#include <string>

namespace {

/// A release file's lines, NAME=value, the value quoted and escaped as in a shell (os-release(5)).
std::map<std::string, std::string> readRelease(std::istream &file)
{
    std::map<std::string, std::string> fields;
    for (std::string line; std::getline(file, line);) {
        const size_t equals = line.find('=');
        if (equals == line.npos || line[0] == '#')
            continue;
        std::string value;
        char quote = 0;
        for (size_t i = equals + 1; i < line.size(); ++i) {
            const char c = line[i];
            if (c == '\\' && quote != '\'' && i + 1 < line.size())
                value += line[++i];
            else if (c == quote)
                quote = 0;
            else if (!quote && (c == '"' || c == '\''))
                quote = c;
            else
                value += c;
        }
        fields[line.substr(0, equals)] = value;
    }
    return fields;
}

void put(NSMutableDictionary *dictionary, NSString *key, const std::string &value)
{
    NSString *text = tarvik::nsstring(value);
    if ([text length])
        [dictionary setObject:text forKey:key];
}

}  // namespace

CFDictionaryRef CFCopySystemVersionDictionary(void)
{
    tarvik::Pool pool;
    NSString *list = @"/System/Library/CoreServices/SystemVersion.plist";
    if (NSDictionary *stored = [NSDictionary dictionaryWithContentsOfFile:list])
        return (CFDictionaryRef)[stored retain];
    std::ifstream file("/etc/os-release");
    if (!file)
        file.open("/usr/lib/os-release");
    if (!file)
        return nullptr;
    std::map<std::string, std::string> release = readRelease(file);
    if (utsname kernel; !release.contains("BUILD_ID") && uname(&kernel) == 0)
        release["BUILD_ID"] = kernel.release;
    NSMutableDictionary *result = [NSMutableDictionary dictionary];
    put(result, @"ProductName", release["NAME"]);
    put(result, @"ProductVersion", release["VERSION_ID"]);
    put(result, @"ProductBuildVersion", release["BUILD_ID"]);
    return (CFDictionaryRef)[result retain];
}
