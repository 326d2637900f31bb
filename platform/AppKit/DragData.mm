#include "platform/AppKit/private/DragData.h"

#import <Foundation/Foundation.h>
#import <Tarvik/support/ArrayRange.h>
#include <Tarvik/support/Owned.h>
#include <glib.h>

#include <string>
#include <string_view>

namespace tarvik::drags {

namespace {

constexpr std::string_view kFiles = "text/uri-list";

const Target kTargets[] = {
    {kFiles.data(), &NSFilenamesPboardType},
    {"UTF8_STRING", &NSStringPboardType},
    {"text/plain;charset=utf-8", &NSStringPboardType},
    {"text/plain", &NSStringPboardType},
    {"text/html", &NSHTMLPboardType},
    {"text/rtf", &NSRTFPboardType},
    {"application/rtf", &NSRTFPboardType},
    {"image/tiff", &NSTIFFPboardType},
};

bool areFiles(const Target &target) { return target.name == kFiles; }

bool isText(const Target &target) { return target.type == &NSStringPboardType; }

using Text = Owned<char, g_free>;

/// RFC 2483: a URL in each line, and comments. A file's may name the machine that it is on (RFC 8089).
NSArray *filesIn(NSData *data)
{
    const std::string list(static_cast<const char *>([data bytes]), [data length]);
    const Owned<char *, g_strfreev> urls(g_uri_list_extract_uris(list.c_str()));
    NSMutableArray *files = [NSMutableArray array];
    for (char **url = urls.get(); *url; ++url) {
        char *host = nullptr;
        const Text path(g_filename_from_uri(*url, &host, nullptr));
        const Text owned(host);
        const std::string_view machine = host ? host : "";
        NSString *file = path ? [NSString stringWithUTF8String:path.get()] : nil;
        if (file && (machine.empty() || machine == "localhost" || machine == g_get_host_name()))
            [files addObject:file];
    }
    return [files count] ? files : nil;
}

NSData *listOf(NSArray *files)
{
    NSMutableData *list = [NSMutableData data];
    for (NSString *file : each<NSString>([files isKindOfClass:[NSArray class]] ? files : nil)) {
        const Text url(g_filename_to_uri([file fileSystemRepresentation], nullptr, nullptr));
        if (!url)
            continue;
        [list appendBytes:url.get() length:std::string_view(url.get()).size()];
        [list appendBytes:"\r\n" length:2];
    }
    return [list length] ? list : nil;
}

}  // namespace

std::span<const Target> targets() { return kTargets; }

NSData *contents(NSPasteboard *pasteboard, const Target &target)
{
    if (![[pasteboard types] containsObject:*target.type])
        return nil;
    if (areFiles(target))
        return listOf([pasteboard propertyListForType:*target.type]);
    if (isText(target))
        return [[pasteboard stringForType:*target.type] dataUsingEncoding:NSUTF8StringEncoding];
    return [pasteboard dataForType:*target.type];
}

id valueOf(NSData *data, const Target &target)
{
    if (areFiles(target))
        return filesIn(data);
    if (isText(target))
        return [[[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding] autorelease];
    return [data length] ? data : nil;
}

void put(id value, const Target &target, NSPasteboard *pasteboard)
{
    if (areFiles(target))
        [pasteboard setPropertyList:value forType:*target.type];
    else if (isText(target))
        [pasteboard setString:value forType:*target.type];
    else
        [pasteboard setData:value forType:*target.type];
}

}  // namespace tarvik::drags
