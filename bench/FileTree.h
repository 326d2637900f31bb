// A tree of 100,000 files in 2,000 folders, made once and gone with the process.
#pragma once
#include <tests/support/TemporaryFolder.h>

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>

inline constexpr int kTreeFolders = 2000, kFilesInTreeFolder = 50,
                     kTreeFiles = kTreeFolders * kFilesInTreeFolder;

inline const std::string &fileTree()
{
    static const TemporaryFolder folder;
    static const std::string root = [] {
        const std::filesystem::path top = std::filesystem::canonical(folder.path()) / "tree";
        for (int i = 0; i < kTreeFolders; ++i) {
            const std::filesystem::path place =
                top / std::to_string(i % 40) / ("folder " + std::to_string(i));
            std::filesystem::create_directories(place);
            for (int j = 0; j < kFilesInTreeFolder; ++j)
                close(open((place / ("file number " + std::to_string(j) + ".txt")).c_str(),
                           O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
        }
        return top.native();
    }();
    return root;
}
