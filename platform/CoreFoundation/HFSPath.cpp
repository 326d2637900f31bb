#include "platform/CoreFoundation/private/HFSPath.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace tarvik::hfs {
namespace {

/// Takes the octal escapes of the kernel's tables ("\040") or udev's hexadecimal ones ("\x20") out.
std::string unescaped(std::string_view text, int digits, int base)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        const size_t first = i + (base == 16 ? 2 : 1);
        if (text[i] == '\\' && first + size_t(digits) <= text.size()) {
            out += char(strtol(std::string(text.substr(first, size_t(digits))).c_str(), nullptr, base));
            i = first + size_t(digits) - 1;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string swapped(std::string_view name, char from, char to)
{
    std::string out(name);
    std::replace(out.begin(), out.end(), from, to);
    return out;
}

/// The label of the file system at "/".
const std::string &bootVolume()
{
    static const std::string name = [] {
        namespace fs = std::filesystem;
        struct stat root, device;
        std::error_code error;
        if (stat("/", &root) == 0)
            for (const auto &entry : fs::directory_iterator("/dev/disk/by-label", error))
                if (stat(entry.path().c_str(), &device) == 0 && device.st_rdev == root.st_dev)
                    return swapped(unescaped(entry.path().filename().native(), 2, 16), ':', '/');
        return std::string("Disk");
    }();
    return name;
}

/// Where other volumes are mounted: file systems of a device or an image, whole ones.
std::vector<std::string> mountPoints()
{
    std::vector<std::string> points;
    std::ifstream table("/proc/self/mountinfo");
    for (std::string line; std::getline(table, line);) {
        std::istringstream fields(line);
        std::string id, parent, device, root, point, option, type, source;
        fields >> id >> parent >> device >> root >> point;
        while (fields >> option && option != "-") {
        }
        if (fields >> type >> source && root == "/" && source.starts_with('/') && point != "/")
            points.push_back(unescaped(point, 3, 8));
    }
    return points;
}

std::string_view lastPart(std::string_view path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

std::string fromPosix(std::string_view path)
{
    while (path.size() > 1 && path.ends_with('/'))
        path.remove_suffix(1);
    std::string out = ":";
    if (path.starts_with('/')) {
        std::string_view volume;
        const auto points = mountPoints();
        for (const auto &point : points)
            if (path.starts_with(point) && (path.size() == point.size() || path[point.size()] == '/') &&
                point.size() > volume.size())
                volume = point;
        out = volume.empty() ? bootVolume() : swapped(lastPart(volume), ':', '/');
        path.remove_prefix(volume.size());
        if (path.empty() || path == "/")
            return out + ":";
    }
    std::istringstream parts{std::string(path)};
    for (std::string part; std::getline(parts, part, '/');) {
        if (part.empty() || part == ".")
            continue;
        if (!out.ends_with(':'))
            out += ':';
        out += part == ".." ? ":" : swapped(part, ':', '/');
    }
    return out;
}

std::optional<std::string> toPosix(std::string_view path)
{
    if (path.empty())
        return std::nullopt;
    std::string out;
    const bool isRelative = path.starts_with(':');
    if (!isRelative) {
        const size_t colon = std::min(path.find(':'), path.size());
        const std::string volume = swapped(path.substr(0, colon), '/', ':');
        path.remove_prefix(colon);
        if (volume != swapped(bootVolume(), '/', ':')) {
            const auto points = mountPoints();
            const auto found = std::find_if(points.begin(), points.end(),
                                            [&](const auto &point) { return lastPart(point) == volume; });
            if (found == points.end())
                return std::nullopt;
            out = *found;
        }
        if (path.empty() || path == ":")
            return out.empty() ? "/" : out;
    }
    // Each colon begins a part; a part that is empty, but for the one at the end, goes a folder up.
    for (path.remove_prefix(1);;) {
        const size_t colon = std::min(path.find(':'), path.size());
        const bool isLast = colon == path.size();
        if (colon > 0)
            out.append("/").append(swapped(path.substr(0, colon), '/', ':'));
        else if (!isLast)
            out += "/..";
        if (isLast)
            break;
        path.remove_prefix(colon + 1);
    }
    if (isRelative)
        return out.empty() ? "." : out.substr(1);
    return out;
}

}  // namespace tarvik::hfs
