#include "BackgroundRun.h"
#include "Command.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>

/// Reads the percentages that the tool writes while it makes an image.
@interface CreationProgress : NSObject {
@public
    Progress *mProgress;
    int mPercent;
}
@end

@implementation CreationProgress

- (BOOL)commandTool:(CommandTool *)tool readStandardOutputData:(NSData *)piece
{
    (void)tool;
    const std::string text = *tarvik::bytes(piece);
    const std::string mark = "PERCENT:";
    if (const size_t at = text.rfind(mark); at != std::string::npos) {
        const int percent = std::atoi(text.c_str() + at + mark.size());
        mProgress->advance(uint64_t(std::max(percent - mPercent, 0)));
        mPercent = std::max(percent, mPercent);
    }
    return YES;
}

@end

namespace {

namespace fs = std::filesystem;

NSString *pathString(const std::string &path)
{
    NSString *string = tarvik::nsstring(path);
    if (!string)
        throw Failure(path + ": a path must be UTF-8");
    return string;
}
std::string text(NSString *string) { return tarvik::utf8(string).value_or(""); }

/// The path as reports have it: full, without links.
std::string fullPath(const std::string &path)
{
    std::error_code failed;
    const fs::path full = fs::canonical(path, failed);
    if (failed)
        throw systemFailure(path, failed.value());
    return full;
}

/// For a line of a table: control characters as a C program writes them.
std::string shown(const std::string &text)
{
    std::string out;
    for (char c : text) {
        if (c == '\n')
            out += "\\n";
        else if (c == '\t')
            out += "\\t";
        else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            out += '?';
        else
            out += c;
    }
    return out;
}

NSDictionary *reported(const std::string &path)
{
    for (NSDictionary *image :
         tarvik::each<NSDictionary>([[DiskImage frameworkInfomation] objectForKey:@"images"]))
        if (text([image objectForKey:@"image-path"]) == path)
            return image;
    return nil;
}

int info(const Arguments &arguments)
{
    tarvik::Pool pool;
    for (const std::string &given : arguments.rest(1)) {
        const std::string path = fullPath(given);
        struct stat status;
        if (stat(path.c_str(), &status) != 0)
            throw systemFailure(given, errno);
        if (S_ISDIR(status.st_mode))
            throw systemFailure(given, EISDIR);
        NSDictionary *image = reported(path);
        std::printf("image:    %s\nsize:     %lld bytes\n", shown(path).c_str(),
                    static_cast<long long>(status.st_size));
        if (!image) {
            std::printf("attached: no\n");
            continue;
        }
        std::printf("attached: %s, %s\n", text([image objectForKey:@"image-type"]).c_str(),
                    [[image objectForKey:@"writeable"] boolValue] ? "writable" : "read-only");
        for (NSDictionary *entity : tarvik::each<NSDictionary>([image objectForKey:@"system-entities"])) {
            const std::string point = text([entity objectForKey:@"mount-point"]),
                              device = text([entity objectForKey:@"dev-entry"]);
            std::printf("mounted:  %s%s\n", point.empty() ? "no" : shown(point).c_str(),
                        device.empty() ? "" : (" (" + device + ")").c_str());
        }
    }
    return kSuccess;
}

int list(const Arguments &arguments)
{
    tarvik::Pool pool;
    arguments.rest(0, 0);
    if (arguments.has("plist")) {
        CommandTool *tool = [CommandTool commandToolWithPath:kDiskImageEditorPath];
        [tool setArguments:[NSArray arrayWithObjects:@"info", @"-plist", nil]];
        [tool setReadStandardOutput:YES];
        if (![tool run:NO])
            throw Failure("the report tool could not be run (is Tarvik's libexec folder in place?)");
        writeOutput(*tarvik::bytes([tool standardOutputData]));
        return kSuccess;
    }
    NSDictionary *volumes = [DiskImage mountingVolumes];
    std::vector<std::pair<std::string, std::string>> rows;
    for (NSString *point : tarvik::each<NSString>([volumes allKeys]))
        rows.emplace_back(shown(text(point)), shown(text([volumes objectForKey:point])));
    std::sort(rows.begin(), rows.end());
    size_t width = 11;
    for (const auto &row : rows)
        width = std::max(width, row.first.size());
    std::string out;
    if (!rows.empty() && !arguments.has("no-header"))
        out = "MOUNT POINT" + std::string(width - 11 + 2, ' ') + "IMAGE\n";
    for (const auto &[point, image] : rows)
        out += point + std::string(width - point.size() + 2, ' ') + image + '\n';
    writeOutput(out);
    return kSuccess;
}

int create(const Arguments &arguments)
{
    tarvik::Pool pool;
    const auto &words = arguments.rest(2, 2);
    const std::string folder = fullPath(words[0]);
    if (!fs::is_directory(folder))
        throw systemFailure(words[0], ENOTDIR);
    const std::string path = fs::absolute(words[1]);
    struct stat before = {};
    const bool there = lstat(path.c_str(), &before) == 0;
    if (there && !arguments.has("force"))
        throw Failure(words[1] + ": is there already (--force replaces it)");

    CommandTool *tool = [CommandTool commandToolWithPath:kDiskImageEditorPath];
    NSMutableArray *toolArguments = [NSMutableArray arrayWithObjects:@"create", @"-puppetstrings", nil];
    if (there)
        [toolArguments addObject:@"-ov"];
    [toolArguments addObjectsFromArray:[NSArray arrayWithObjects:@"-srcfolder", pathString(folder),
                                                                 pathString(path), nil]];
    [tool setArguments:toolArguments];
    [tool setReadStandardOutput:YES];
    Progress progress(fs::path(path).filename(), 100);
    CreationProgress *watcher = [[[CreationProgress alloc] init] autorelease];
    watcher->mProgress = &progress;
    runInBackground(tool, watcher);
    struct stat after = {};
    // The tool's exit status is not to be had; a new file is there whole or not at all.
    if (![tool succeeded] || lstat(path.c_str(), &after) != 0 || (there && after.st_ino == before.st_ino))
        throw Failure(words[1] + ": no image was made (the tool's own message says why)");
    return kSuccess;
}

int mountImages(const Arguments &arguments)
{
    tarvik::Pool pool;
    for (const std::string &given : arguments.rest(1)) {
        DiskImage *image = [DiskImage diskImageWithFilepath:pathString(fullPath(given))];
        if (![image mount])
            throw Failure(given + ": could not be mounted (the tool's own message says why)");
        for (NSDictionary *entity :
             tarvik::each<NSDictionary>([reported(fullPath(given)) objectForKey:@"system-entities"]))
            if (NSString *point = [entity objectForKey:@"mount-point"])
                std::printf("%s\n", text(point).c_str());
    }
    return kSuccess;
}

int unmountImages(const Arguments &arguments)
{
    tarvik::Pool pool;
    for (const std::string &given : arguments.rest(1)) {
        const std::string path = fullPath(given);
        DiskImage *image = [DiskImage diskImageWithMountingVolume:pathString(path)];
        if (!image && fs::is_directory(path))
            throw Failure(given + ": no image is mounted there ('tarvik image list' shows those that are)");
        if (!image)
            image = [DiskImage diskImageWithFilepath:pathString(path)];
        if (![image unmount])
            throw Failure(given + ": is still mounted (a program has a file or folder of it open)");
    }
    return kSuccess;
}

const Registration registration({
    .name = "image",
    .summary = "make, mount, list and unmount disk images",
    .details = "Images are squashfs (which create makes), ext4 and ISO 9660, or disks with partitions of "
               "those (for root); what one\n"
               "is, is told by its content. A mounted image, each of its partitions, stands in the user's "
               "media folder, under its own name.\n\n"
               "Examples:\n"
               "  tarvik image create ~/Photos photos.img\n"
               "  folder=$(tarvik image mount photos.img)\n"
               "  tarvik image list --plist\n"
               "  tarvik image unmount photos.img",
    .subcommands =
        {
            {.name = "info",
             .summary = "the size of an image and, when it is attached, its kind and mount points",
             .usage = "IMAGE...",
             .run = info},
            {.name = "create",
             .summary = "make a compressed read-only image of a folder's contents",
             .usage = "[--force] FOLDER IMAGE",
             .options = {{'f', "force", nullptr, "replace a file that is there"}},
             .run = create},
            {.name = "mount",
             .summary = "mount images and print where",
             .usage = "IMAGE...",
             .run = mountImages},
            {.name = "unmount",
             .summary = "unmount and eject images",
             .usage = "IMAGE|MOUNTPOINT...",
             .run = unmountImages},
            {.name = "list",
             .summary = "every mounted image, whoever mounted it",
             .usage = "[--plist]",
             .options = {{'p', "plist", nullptr, "the whole report, as a property list"},
                         {'n', "no-header", nullptr, "no heading above the table"}},
             .run = list},
        },
});

}  // namespace
