#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

namespace {

namespace fs = std::filesystem;

TEST(ProcessCommands, ListAndFindProcesses)
{
    unsetenv("DISPLAY");
    TemporaryFolder folder;
    const fs::path root = fs::canonical(folder.path());
    fs::create_directory(root / "Ink.app");
    fs::copy_file("/bin/sleep", root / "Ink.app/Ink");
    const std::string program = root / "Ink.app/Ink", bundle = root / "Ink.app";
    char *words[] = {const_cast<char *>(program.c_str()), const_cast<char *>("60"), nullptr};
    pid_t pid = 0;
    ASSERT_EQ(posix_spawn(&pid, program.c_str(), nullptr, nullptr, words, environ), 0);
    const std::string id = std::to_string(pid);

    ProgramResult all = runTarvik({"ps"});
    EXPECT_EQ(all.status, 0);
    const size_t line = all.out.find(id + "   Ink ");
    ASSERT_NE(line, all.out.npos) << all.out;
    EXPECT_EQ(all.out.substr(line, all.out.find('\n', line) - line),
              id + "   Ink                   " + bundle);
    EXPECT_NE(all.out.find("tarvik"), all.out.npos) << "itself";
    EXPECT_EQ(runTarvik({"ps", "--pids", bundle}).out, id + "\n");
    EXPECT_EQ(runTarvik({"ps", "--pids", id}).out, id + "\n");
    EXPECT_NE(runTarvik({"ps", "--long", bundle}).out.find(":"), std::string::npos);

    const ProgramResult inner = runTarvik({"ps", bundle, program});
    EXPECT_EQ(inner.status, 1);
    EXPECT_NE(inner.error.find(program + ": no process"), std::string::npos);
    EXPECT_EQ(runTarvik({"ps", root / "none"}).status, 1);
    EXPECT_EQ(runTarvik({"ps", "99999999999999"}).status, 1);
    EXPECT_EQ(runTarvik({"ps", "--front"}).status, 1);
    EXPECT_EQ(runTarvik({"ps", "--front", bundle}).status, 2);
    EXPECT_NE(runTarvik({"ps", "--activate=" + bundle}).error.find("DISPLAY"), std::string::npos);
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    EXPECT_EQ(runTarvik({"ps", bundle}).status, 1);
}

TEST(ProcessCommands, LaunchApplications)
{
    TemporaryFolder folder;
    const fs::path root = fs::canonical(folder.path());
    setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (root / "config").c_str(), 1);
    fs::create_directories(root / "data/applications");
    fs::create_directories(root / "config");
    folder.write("data/applications/looker.desktop",
                 "[Desktop Entry]\nType=Application\nName=Looker\nExec=true "
                 "%f\nMimeType=text/plain;\nCategories=Office;Viewer;\n");
    folder.write("data/applications/writer.desktop",
                 "[Desktop Entry]\nType=Application\nName=Writer\nExec=true %f\nMimeType=text/plain;\n");
    folder.write("config/mimeapps.list", "[Default Applications]\ntext/plain=looker.desktop\n[Added "
                                         "Associations]\ntext/plain=looker.desktop;writer.desktop;\n");
    const std::string text = folder.write("a.txt", "text\n"), data = root / "data/applications/";
    EXPECT_EQ(runTarvik({"launch", "--which", text}).out, data + "looker.desktop\n");
    EXPECT_EQ(runTarvik({"launch", "--which", "--role=viewer", text}).out, data + "looker.desktop\n");
    EXPECT_EQ(runTarvik({"launch", "--which", "--role=editor", text}).out, data + "writer.desktop\n");
    EXPECT_EQ(runTarvik({"launch", "--role=owner", text}).status, 2);
    EXPECT_EQ(runTarvik({"launch"}).status, 2);
    EXPECT_EQ(runTarvik({"launch", "--creator=abc"}).status, 2);
    EXPECT_EQ(runTarvik({"launch", "--creator=none"}).status, 1);
    EXPECT_EQ(runTarvik({"launch", "None.app"}).status, 1);

    fs::create_directory(root / "Ink.app");
    folder.write("Ink.app/Ink", "#!/bin/sh\necho started > '" + (root / "said").native() + "'\n");
    fs::permissions(root / "Ink.app/Ink", fs::perms(0755));
    EXPECT_EQ(runTarvik({"launch", root / "Ink.app"}).status, 0);
    for (int i = 0; i < 300 && readFile(root / "said").empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(readFile(root / "said"), "started\n");
}

}  // namespace
