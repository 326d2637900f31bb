#include "FileItems.h"
#include "Streams.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <unistd.h>

namespace {

constexpr size_t kTypeAt = 0, kCreatorAt = 4, kCodeLength = 4;

struct Label {
    const char *name;
    const char *escape;  // the terminal's colour
};
constexpr Label kLabels[kLabelColorCount] = {
    {"none", ""},         {"red", "\033[31m"},    {"orange", "\033[38;5;208m"}, {"yellow", "\033[33m"},
    {"blue", "\033[34m"}, {"purple", "\033[35m"}, {"green", "\033[32m"},        {"gray", "\033[90m"}};

std::string coloured(UInt32 index, const std::string &text)
{
    return isatty(STDOUT_FILENO) && *kLabels[index].escape ? kLabels[index].escape + text + "\033[0m" : text;
}

UInt32 labelOf(const std::string &word)
{
    for (UInt32 index = 0; index < kLabelColorCount; ++index)
        if (word == kLabels[index].name || word == std::to_string(index))
            return index;
    throw UsageError("'" + word +
                     "' is no label (none, red, orange, yellow, blue, purple, green, gray, or 0 to 7)");
}

/// A type or creator: up to four characters, filled up with spaces; empty for none.
std::string codeOf(const std::string &word)
{
    if (word.size() > kCodeLength)
        throw UsageError("'" + word + "' has more than four characters");
    return word.empty() ? std::string(kCodeLength, '\0') : word + std::string(kCodeLength - word.size(), ' ');
}

std::string shownCode(const UInt8 *code)
{
    std::string text;
    for (size_t i = 0; i < kCodeLength; ++i)
        text += code[i] >= ' ' && code[i] <= '~' ? char(code[i]) : code[i] == 0 ? '-' : '?';
    return text;
}

std::string shownDate(const UTCDateTime &date)
{
    constexpr int64_t kSeconds1904To1970 = 2082844800;
    const int64_t since = int64_t(date.highSeconds) << 32 | date.lowSeconds;
    if (since == 0)
        return "never";
    const time_t seconds = since - kSeconds1904To1970;
    tm local;
    char text[64];
    localtime_r(&seconds, &local);
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
    return text;
}

HFSUniStr255 forkName(bool isResource)
{
    HFSUniStr255 name;
    isResource ? FSGetResourceForkName(&name) : FSGetDataForkName(&name);
    return name;
}

void printLine(const char *name, const std::string &value)
{
    writeOutput(std::string(name) + std::string(12 - std::strlen(name), ' ') + value + "\n");
}

int info(const Arguments &arguments)
{
    return forEachFile("file info", arguments.rest(1), [&](const std::string &path) {
        const FSRef ref = itemAt(path);
        const FSCatalogInfo info = catalogOf(ref, kFSCatInfoGettableInfo, path);
        const bool isFolder = info.nodeFlags & kFSNodeIsDirectoryMask;
        const UInt32 label = LabelColorValueToIndex(info.finderInfo[9]);
        if (arguments.rest().size() > 1 && path != arguments.rest().front())
            writeOutput("\n");
        printLine("path", pathOfItem(ref));
        printLine("kind", isFolder ? "folder" : FSIsMachOBinary(&ref) ? "Mach-O binary" : "file");
        if (isFolder) {
            printLine("items", std::to_string(info.valence));
        } else {
            printLine("data", std::to_string(info.dataLogicalSize) + " bytes");
            printLine("resources", std::to_string(info.rsrcLogicalSize) + " bytes");
        }
        printLine("type", shownCode(info.finderInfo + kTypeAt));
        printLine("creator", shownCode(info.finderInfo + kCreatorAt));
        printLine("label", coloured(label, kLabels[label].name));
        char mode[64];
        std::snprintf(mode, sizeof mode, "%04o, user %u, group %u", info.permissions.mode & 07777,
                      info.permissions.userID, info.permissions.groupID);
        printLine("mode", mode);
        printLine("created", shownDate(info.createDate));
        printLine("modified", shownDate(info.contentModDate));
        printLine("node", std::to_string(info.nodeID));
    });
}

int label(const Arguments &arguments)
{
    const auto colour = arguments.value("set");
    const UInt32 index = colour ? labelOf(*colour) : 0;
    return forEachFile("file label", arguments.rest(1), [&](const std::string &path) {
        const FSRef ref = itemAt(path);
        FSCatalogInfo info = catalogOf(ref, kFSCatInfoFinderInfo, path);
        if (!colour) {
            const UInt32 present = LabelColorValueToIndex(info.finderInfo[9]);
            std::string name = kLabels[present].name;
            name.resize(8, ' ');
            writeOutput(coloured(present, name) + path + "\n");
        } else if (!FSSetLabelColorIndex(&ref, index)) {
            throw fileFailure(path, FSSetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info));
        }
    });
}

int type(const Arguments &arguments)
{
    const auto newType = arguments.value("type"), newCreator = arguments.value("creator");
    const std::string typeCode = codeOf(newType.value_or("")), creatorCode = codeOf(newCreator.value_or(""));
    return forEachFile("file type", arguments.rest(1), [&](const std::string &path) {
        const FSRef ref = itemAt(path);
        FSCatalogInfo info = catalogOf(ref, kFSCatInfoFinderInfo, path);
        if (newType)
            std::memcpy(info.finderInfo + kTypeAt, typeCode.data(), kCodeLength);
        if (newCreator)
            std::memcpy(info.finderInfo + kCreatorAt, creatorCode.data(), kCodeLength);
        if (!newType && !newCreator)
            writeOutput(shownCode(info.finderInfo + kTypeAt) + " " + shownCode(info.finderInfo + kCreatorAt) +
                        "  " + path + "\n");
        else if (const OSErr error = FSSetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info); error != noErr)
            throw fileFailure(path, error);
    });
}

int forks(const Arguments &arguments)
{
    return forEachFile("file forks", arguments.rest(1), [&](const std::string &path) {
        const FSRef ref = itemAt(path);
        CatPositionRec place{};
        HFSUniStr255 name;
        SInt64 size;
        OSErr error;
        while ((error = FSIterateForks(&ref, &place, &name, &size, nullptr)) == noErr) {
            char line[64];
            std::snprintf(line, sizeof line, "%-9s %12lld  ", name.length == 0 ? "data" : "resource",
                          static_cast<long long>(size));
            writeOutput(line + path + "\n");
        }
        if (error != errFSNoMoreItems)
            throw fileFailure(path, error);
    });
}

/// An open fork; closing it tells whether all was put in place.
class ForkStream {
public:
    ForkStream(const std::string &path, bool isResource, SInt8 permission) : path_(path)
    {
        const FSRef ref = itemAt(path);
        const HFSUniStr255 name = forkName(isResource);
        check(FSOpenFork(&ref, name.length, name.unicode, permission, &number_));
    }
    ~ForkStream()
    {
        if (number_ != 0)
            FSCloseFork(number_);
    }
    ForkStream(const ForkStream &) = delete;
    ForkStream &operator=(const ForkStream &) = delete;

    FSIORefNum number() const { return number_; }
    void check(OSErr error) const
    {
        if (error != noErr)
            throw fileFailure(path_, error);
    }
    void close()
    {
        const FSIORefNum number = number_;
        number_ = 0;
        check(FSCloseFork(number));
    }

private:
    std::string path_;
    FSIORefNum number_ = 0;
};

int cat(const Arguments &arguments)
{
    const ForkStream fork(arguments.rest(1, 1).front(), arguments.has("resource"), fsRdPerm);
    std::string block(1 << 20, '\0');
    for (OSErr error = noErr; error == noErr;) {
        ByteCount count = 0;
        error = FSReadFork(fork.number(), fsAtMark, 0, ByteCount(block.size()), block.data(), &count);
        if (error != eofErr)
            fork.check(error);
        writeOutput({block.data(), count});
    }
    return kSuccess;
}

int put(const Arguments &arguments)
{
    ForkStream fork(arguments.rest(1, 1).front(), arguments.has("resource"), fsRdWrPerm);
    Input input(arguments.value("from").value_or("-"));
    Progress progress(input.name(), input.length());
    fork.check(FSSetForkSize(fork.number(), fsFromStart, 0));
    std::string block(1 << 20, '\0');
    for (size_t count = block.size(); count == block.size();) {
        count = input.read(block.data(), block.size());
        if (count > 0)
            fork.check(FSWriteFork(fork.number(), fsAtMark, 0, ByteCount(count), block.data(), nullptr));
        progress.advance(count);
    }
    fork.close();
    return kSuccess;
}

const Option kResourceOption = {'r', "resource", nullptr, "the resource fork, not the data fork"};

const Registration registration({
    .name = "file",
    .summary = "what files carry besides their contents: forks, labels, types",
    .details = "A file's resource fork, label, type and creator are kept in an AppleDouble file beside it, "
               "._NAME.\n\n"
               "Examples:\n"
               "  tarvik file label --set=red *.txt\n"
               "  tarvik file cat --resource Icon > icon.rsrc\n"
               "  tarvik file type --type=TEXT --creator=ttxt notes",
    .subcommands =
        {{.name = "info",
          .summary = "all that is known of files and folders",
          .usage = "FILE...",
          .run = info},
         {.name = "label",
          .summary = "show or set label colours",
          .usage = "[--set=COLOUR] FILE...",
          .details = "Colours: none, red, orange, yellow, blue, purple, green, gray; or 0 to 7.\n\n"
                     "Example:\n  tarvik file label --set=green done.txt",
          .options = {{'s', "set", "COLOUR", "give the files this label"}},
          .run = label},
         {.name = "type",
          .summary = "show or set types and creators",
          .usage = "[OPTION]... FILE...",
          .details = "Codes have four characters; shorter ones are filled up with spaces, an empty one "
                     "clears it.\n\n"
                     "Example:\n  tarvik file type --type=TEXT notes",
          .options = {{'t', "type", "CODE", "set the type"}, {'c', "creator", "CODE", "set the creator"}},
          .run = type},
         {.name = "forks", .summary = "list forks and their sizes", .usage = "FILE...", .run = forks},
         {.name = "cat",
          .summary = "write a fork to standard output",
          .usage = "[--resource] FILE",
          .details = "Example:\n  tarvik file cat --resource Icon | xxd | head",
          .options = {kResourceOption},
          .run = cat},
         {.name = "put",
          .summary = "replace a fork by standard input",
          .usage = "[OPTION]... FILE",
          .details = "A resource fork is replaced whole or not at all.\n\nExample:\n  tarvik file put "
                     "--resource Icon < icon.rsrc",
          .options = {kResourceOption, {'f', "from", "INPUT", "read this file instead"}},
          .run = put}},
});

}  // namespace
