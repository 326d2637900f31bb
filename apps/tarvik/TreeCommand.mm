#include "Command.h"
#include "ObjectiveC.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Pool.h>

#include <cerrno>
#include <cstdio>

namespace {

NSString *pathOf(const std::string &word)
{
    return [[NSFileManager defaultManager] stringWithFileSystemRepresentation:word.c_str()
                                                                       length:word.size()];
}

int run(const Arguments &arguments)
{
    const bool sizes = arguments.has("sizes"), zero = arguments.has("null");
    for (const std::string &word :
         arguments.rest().empty() ? std::vector<std::string>{"."} : arguments.rest()) {
        NSString *folder = pathOf(word);
        if (![folder existsDirectory])
            throw systemFailure(word, [folder exists] ? ENOTDIR : ENOENT);
        if (arguments.has("total")) {
            std::printf("%llu\t%s%c", static_cast<unsigned long long>([folder logicalSize]), word.c_str(),
                        zero ? 0 : '\n');
            continue;
        }
        std::string out;
        for (NSString *path : tarvik::each<NSString>([folder subfilepaths])) {
            const tarvik::Pool pool;
            if (sizes)
                out += std::to_string([[folder stringByAppendingPathComponent:path] logicalSize]) + '\t';
            out += [[NSFileManager defaultManager] fileSystemRepresentationWithPath:path];
            out += zero ? '\0' : '\n';
            if (out.size() > 1 << 16) {
                writeOutput(out);
                out.clear();
            }
        }
        writeOutput(out);
    }
    return kSuccess;
}

const Registration registration({
    .name = "tree",
    .summary = "the files below folders, each package as one",
    .usage = "[--sizes|--total] [--null] [FOLDER]...",
    .details = "Lists files and packages (folders such as Ink.app) by their paths within the folder, "
               "invisible ones left out.\n"
               "Sizes are those of both forks, in bytes.\n\n"
               "Examples:\n"
               "  tarvik tree --sizes ~/Documents | sort -rn | head\n"
               "  tarvik tree --total /usr/share/*",
    .options = {{'s', "sizes", nullptr, "the size in front of each path"},
                {'t', "total", nullptr, "only the folder's whole size, invisible files included"},
                {'0', "null", nullptr, "end each line with a zero byte"}},
    .run = inPool(run),
});

}  // namespace
