#include "PropertyLists.h"

#include "ObjectiveC.h"
#include "Streams.h"

#import <Foundation/Foundation.h>
#include <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>

#include <CoreFoundation/CFPropertyList.h>

namespace {

/// Text within quotes: what would break the line is escaped.
std::string quoted(const std::string &text)
{
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            out += {'\\', c};
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c == '\t') {
            out += "\\t";
        } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02x", c);
            out += escape;
        } else {
            out += c;
        }
    }
    return out + "\"";
}

std::string textOfString(NSString *string)
{
    const auto text = tarvik::utf8(string);
    return text ? *text
                : utf8Of([[[NSString alloc] initWithData:[string dataUsingEncoding:NSASCIIStringEncoding
                                                              allowLossyConversion:YES]
                                                encoding:NSASCIIStringEncoding] autorelease]);
}

/// Data, dates, numbers and booleans as one word.
std::string leaf(id object)
{
    const CFTypeID type = CFGetTypeID(object);
    if (type == CFBooleanGetTypeID())
        return [object boolValue] ? "true" : "false";
    if (type == CFDataGetTypeID()) {
        std::string out = std::to_string([object length]) + " bytes";
        const auto *bytes = static_cast<const uint8_t *>([object bytes]);
        constexpr NSUInteger kShown = 16;
        for (NSUInteger i = 0; i < [object length] && i < kShown; ++i) {
            char digits[4];
            std::snprintf(digits, sizeof digits, "%s%02x", i ? "" : " ", bytes[i]);
            out += digits;
        }
        return out + ([object length] > kShown ? "..." : "");
    }
    if (type == CFDateGetTypeID()) {
        // As XML has it, which is the one form without a time zone of its own.
        const std::string xml = xmlOfList(object);
        const size_t start = xml.find("<date>") + 6;
        return xml.substr(start, xml.find('<', start) - start);
    }
    return utf8Of([object description]);
}

void append(std::string &out, id object, const std::string &indent)
{
    const CFTypeID type = CFGetTypeID(object);
    if (type == CFStringGetTypeID()) {
        out.append(" ").append(quoted(textOfString(object))).append("\n");
    } else if (type == CFArrayGetTypeID()) {
        out += [object count] ? "\n" : " (empty array)\n";
        for (NSUInteger i = 0; i < [object count]; ++i) {
            out.append(indent).append("[").append(std::to_string(i)).append("]:");
            append(out, [object objectAtIndex:i], indent + "  ");
        }
    } else if (type == CFDictionaryGetTypeID()) {
        out += [object count] ? "\n" : " (empty dictionary)\n";
        for (NSString *key :
             tarvik::each<NSString>([[object allKeys] sortedArrayUsingSelector:@selector(compare:)])) {
            out.append(indent).append(textOfString(key)).append(":");
            append(out, [object objectForKey:key], indent + "  ");
        }
    } else {
        out.append(" ").append(leaf(object)).append("\n");
    }
}

}  // namespace

id parseList(const std::string &bytes, const std::string &name)
{
    CFStringRef error = nullptr;
    id list = (id)CFPropertyListCreateFromXMLData(nullptr, CFDataRef(tarvik::nsdata(bytes)),
                                                  kCFPropertyListImmutable, &error);
    const std::string why = utf8Of((NSString *)error);
    CFRelease(error);
    if (!list)
        throw Failure(name + ": is no property list: " + why);
    return [list autorelease];
}

id readList(const std::string &path)
{
    return parseList(readInput(path), path == "-" ? "standard input" : path);
}

std::string showList(id list)
{
    const CFTypeID type = CFGetTypeID(list);
    if (type == CFStringGetTypeID())
        return textOfString(list) + "\n";
    if (type != CFArrayGetTypeID() && type != CFDictionaryGetTypeID())
        return leaf(list) + "\n";
    std::string out;
    append(out, list, "");
    return out.substr(out.find_first_not_of(" \n"));
}

std::string xmlOfList(id list)
{
    NSData *xml = [NSData dataWithPropertyList:list];
    if (!xml)
        throw Failure("the list holds something that a property list can't hold, or is nested too deeply");
    return tarvik::bytes(xml).value_or("");
}
