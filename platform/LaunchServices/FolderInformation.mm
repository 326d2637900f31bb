#include "platform/LaunchServices/private/FolderInformation.h"

#import <Foundation/Foundation.h>
#import <Tarvik/support/Bridge.h>

#include <fstream>

namespace tarvik::launch {

namespace {

constexpr OSType kUnknownSignature = 0x3F3F3F3F;  // '????'

OSType codeOf(std::string_view text)
{
    if (text.size() != 4)
        return 0;
    OSType code = 0;
    for (const char c : text)
        code = code << 8 | static_cast<unsigned char>(c);
    return code == kUnknownSignature ? 0 : code;
}

}  // namespace

NSDictionary *information(const std::string &folder)
{
    for (const char *place :
         {"/Resources/Info-gnustep.plist", "/Contents/Info.plist", "/Resources/Info.plist"})
        if (NSString *path = nsstring(folder + place);
            NSDictionary *found = path ? [NSDictionary dictionaryWithContentsOfFile:path] : nil)
            return found;
    return nil;
}

std::string textOf(NSDictionary *information, NSString *key)
{
    id value = [information objectForKey:key];
    return [value isKindOfClass:[NSString class]] ? utf8(value).value_or("") : "";
}

OSType signatureOf(const std::string &folder, NSDictionary *information)
{
    if (const OSType code = codeOf(textOf(information, @"CFBundleSignature")))
        return code;
    for (const char *place : {"/Contents/PkgInfo", "/Resources/PkgInfo"}) {
        char text[8] = {};
        if (std::ifstream(folder + place).read(text, sizeof text))
            return codeOf({text + 4, 4});
    }
    return 0;
}

std::string nameOf(const std::string &folder, NSDictionary *information)
{
    for (NSString *key : {@"CFBundleName", @"ApplicationName"})
        if (const std::string name = textOf(information, key); !name.empty())
            return name;
    const std::string name = folder.substr(folder.rfind('/') + 1);
    return name.substr(0, name.rfind('.'));
}

}  // namespace tarvik::launch
