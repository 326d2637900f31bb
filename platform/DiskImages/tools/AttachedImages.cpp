#include "AttachedImages.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <sys/stat.h>

namespace diskimages {
namespace {

namespace fs = std::filesystem;

std::string contents(const fs::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// One line's text, without its end. (A path in it may hold line feeds of its own.)
std::string attribute(const fs::path &path)
{
    std::string text = contents(path);
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

/// The kernel writes blanks, tabs, line feeds, backslashes and number signs as three octal digits.
std::string unescaped(std::string_view text)
{
    const auto digit = [](char c) { return c >= '0' && c <= '7'; };
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 3 < text.size() && digit(text[i + 1]) && digit(text[i + 2]) &&
            digit(text[i + 3])) {
            out += char((text[i + 1] - '0') << 6 | (text[i + 2] - '0') << 3 | (text[i + 3] - '0'));
            i += 3;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string_view nextField(std::string_view &line)
{
    const size_t end = std::min(line.find(' '), line.size());
    const std::string_view field = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    return field;
}

/// 36 35 98:0 /root /point rw,noatime optional:1 - type source superoptions
std::optional<Mount> parseMount(std::string_view line)
{
    Mount mount;
    nextField(line), nextField(line);
    const std::string device(nextField(line));
    char *end = nullptr;
    mount.major = unsigned(std::strtoul(device.c_str(), &end, 10));
    if (*end != ':')
        return std::nullopt;
    mount.minor = unsigned(std::strtoul(end + 1, nullptr, 10));
    mount.root = unescaped(nextField(line));
    mount.point = unescaped(nextField(line));
    mount.options = nextField(line);
    while (!line.empty())
        if (nextField(line) == "-") {
            mount.type = nextField(line);
            mount.source = unescaped(nextField(line));
            return mount;
        }
    return std::nullopt;
}

bool hasOption(const std::string &options, std::string_view wanted)
{
    std::string_view left = options;
    while (!left.empty()) {
        const size_t end = std::min(left.find(','), left.size());
        if (left.substr(0, end) == wanted)
            return true;
        left.remove_prefix(std::min(end + 1, left.size()));
    }
    return false;
}

/// Loop devices name a file that is gone with " (deleted)" behind it.
std::string withoutDeletion(std::string path)
{
    constexpr std::string_view kMark = " (deleted)";
    if (path.ends_with(kMark) && !fs::exists(fs::symlink_status(path)))
        path.resize(path.size() - kMark.size());
    return path;
}

/// The block device of a folder in /sys and the mounts of it.
void addDevice(AttachedImage &image, const fs::path &folder, const std::vector<Mount> &mounts)
{
    const std::string device = "/dev/" + folder.filename().native();
    const std::string number = attribute(folder / "dev");
    bool mounted = false;
    for (const Mount &mount : mounts) {
        if (mount.root != "/" ||  // a folder of it, shown elsewhere
            (std::to_string(mount.major) + ':' + std::to_string(mount.minor) != number &&
             mount.source != device))
            continue;
        image.entities.push_back({device, mount.point, mount.type});
        mounted = true;
    }
    if (!mounted)
        image.entities.push_back({device, {}, {}});
}

void addLoopDevices(std::vector<AttachedImage> &images, const std::vector<Mount> &mounts)
{
    constexpr std::string_view kLoop = "loop";
    std::vector<std::pair<int, fs::path>> loops;
    std::error_code failed;
    for (const auto &entry : fs::directory_iterator("/sys/block", failed)) {
        const std::string name = entry.path().filename();
        if (name.starts_with(kLoop) && fs::exists(entry.path() / "loop/backing_file", failed))
            loops.emplace_back(std::atoi(name.c_str() + kLoop.size()), entry.path());
    }
    std::sort(loops.begin(), loops.end());
    for (const auto &[number, folder] : loops) {
        AttachedImage image;
        image.path = loopBacking(number);
        if (image.path.empty())
            continue;  // went meanwhile
        image.loopNumber = number;
        image.readOnly = attribute(folder / "ro") == "1";
        addDevice(image, folder, mounts);
        std::map<int, fs::path> partitions;
        const std::string prefix = folder.filename().native() + 'p';  // loop3p1
        for (const auto &entry : fs::directory_iterator(folder, failed))
            if (const std::string name = entry.path().filename(); name.starts_with(prefix))
                partitions.emplace(std::atoi(name.c_str() + prefix.size()), entry.path());
        for (const auto &[partition, path] : partitions)
            addDevice(image, path, mounts);
        images.push_back(std::move(image));
    }
}

/// A FUSE file system that is served from an image has the image's path as its source; that of one served
/// from a folder or a network has not.
bool servedFromImage(const Mount &mount)
{
    if (!mount.source.starts_with('/') || mount.source.starts_with("/dev/"))
        return false;
    static const std::set<std::string, std::less<>> kImageServers{
        "fuse.squashfuse", "fuse.squashfuse_ll", "fuse.fuse2fs", "fuse.ext4", "fuse.fuseiso"};
    if (kImageServers.contains(mount.type))
        return true;
    struct stat status;
    return mount.type.starts_with("fuse") && stat(mount.source.c_str(), &status) == 0 &&
           S_ISREG(status.st_mode);
}

// ---- The report

/// Text as XML has it. What XML 1.0 can't hold, and what is no UTF-8, becomes U+FFFD; a carriage return must
/// be written as a reference or a reader would take it for a line's end.
std::string escaped(std::string_view text)
{
    constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
    std::string out;
    for (size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        const int length = c < 0x80                ? 1
                           : c >= 0xC2 && c < 0xE0 ? 2
                           : c >= 0xE0 && c < 0xF0 ? 3
                           : c >= 0xF0 && c < 0xF5 ? 4
                                                   : 0;
        uint32_t code = length == 1 ? c : c & (0xFF >> (length + 1));
        bool good = length > 0 && i + size_t(length) <= text.size();
        for (int k = 1; good && k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + size_t(k)]);
            good = (next & 0xC0) == 0x80;
            code = code << 6 | (next & 0x3F);
        }
        constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
        good = good && code >= kLeast[length] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF) &&
               code != 0xFFFE && code != 0xFFFF &&
               (code >= 0x20 || code == '\t' || code == '\n' || code == '\r');
        if (!good)
            out += kReplacement;
        else if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '\r')
            out += "&#13;";
        else
            out += text.substr(i, size_t(length));
        i += good ? size_t(length) : 1;
    }
    return out;
}

std::string stringPair(std::string_view indent, std::string_view key, std::string_view value)
{
    std::string out(indent);
    return out.append("<key>")
        .append(key)
        .append("</key>\n")
        .append(indent)
        .append("<string>")
        .append(escaped(value))
        .append("</string>\n");
}

std::string kindOf(const AttachedImage &image)
{
    for (const Entity &entity : image.entities)
        if (!entity.filesystem.empty())
            return entity.filesystem;
    return {};
}

}  // namespace

std::vector<Mount> parseMounts(std::string_view mountinfo)
{
    std::vector<Mount> mounts;
    while (!mountinfo.empty()) {
        const size_t end = std::min(mountinfo.find('\n'), mountinfo.size());
        if (auto mount = parseMount(mountinfo.substr(0, end)))
            mounts.push_back(*std::move(mount));
        mountinfo.remove_prefix(std::min(end + 1, mountinfo.size()));
    }
    return mounts;
}

std::vector<Mount> currentMounts() { return parseMounts(contents("/proc/self/mountinfo")); }

std::string loopBacking(int number)
{
    return withoutDeletion(attribute("/sys/block/loop" + std::to_string(number) + "/loop/backing_file"));
}

std::vector<AttachedImage> attachedImages()
{
    const std::vector<Mount> mounts = currentMounts();
    std::vector<AttachedImage> images;
    addLoopDevices(images, mounts);
    for (const Mount &mount : mounts) {
        if (!servedFromImage(mount) || mount.root != "/")
            continue;
        AttachedImage image;
        image.path = mount.source;
        image.fuse = true;
        image.readOnly = hasOption(mount.options, "ro");
        image.entities.push_back({{}, mount.point, mount.type});
        images.push_back(std::move(image));
    }
    return images;
}

std::string reportPropertyList(const std::vector<AttachedImage> &images)
{
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist "
                      "version=\"1.0\">\n<dict>\n\t<key>images</key>\n\t<array>\n";
    for (const AttachedImage &image : images) {
        out += "\t\t<dict>\n";
        out += stringPair("\t\t\t", "image-path", image.path);
        if (const std::string kind = kindOf(image); !kind.empty())
            out += stringPair("\t\t\t", "image-type", kind);
        out += "\t\t\t<key>writeable</key>\n\t\t\t";
        out += image.readOnly ? "<false/>\n" : "<true/>\n";
        out += "\t\t\t<key>system-entities</key>\n\t\t\t<array>\n";
        for (const Entity &entity : image.entities) {
            out += "\t\t\t\t<dict>\n";
            if (!entity.device.empty())
                out += stringPair("\t\t\t\t\t", "dev-entry", entity.device);
            if (!entity.filesystem.empty())
                out += stringPair("\t\t\t\t\t", "content-hint", entity.filesystem);
            if (!entity.mountPoint.empty())
                out += stringPair("\t\t\t\t\t", "mount-point", entity.mountPoint);
            out += "\t\t\t\t</dict>\n";
        }
        out += "\t\t\t</array>\n\t\t</dict>\n";
    }
    return out + "\t</array>\n</dict>\n</plist>\n";
}

std::string reportText(const std::vector<AttachedImage> &images)
{
    std::string out;
    for (const AttachedImage &image : images) {
        out += "================================================\nimage-path      : " + image.path +
               "\nwriteable       : " + (image.readOnly ? "FALSE\n" : "TRUE\n");
        for (const Entity &entity : image.entities)
            out += (entity.device.empty() ? "-" : entity.device) + '\t' + entity.filesystem + '\t' +
                   entity.mountPoint + '\n';
    }
    return out;
}

}  // namespace diskimages
