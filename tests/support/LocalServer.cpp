#include "LocalServer.h"

#include "Program.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

Companion::Companion(std::vector<std::string> words)
{
    int in[2], out[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    std::vector<char *> arguments;
    for (std::string &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    process_ = fork();
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(in[0], 0);
        dup2(out[1], 1);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    input_ = in[1];
    output_ = out[0];
}

Companion::~Companion()
{
    close(input_);
    close(output_);
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
}

std::string Companion::firstLine()
{
    std::string line;
    for (char c; read(output_, &c, 1) == 1 && c != '\n';)
        line += c;
    return line;
}

Authority::Authority(const TemporaryFolder &folder) : folder_(folder)
{
    runProgram({"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                "-days", "30", "-subj", "/CN=Test authority", "-keyout", folder / "ca.key", "-out",
                folder / "ca.crt"});
}

std::string Authority::file() const { return folder_ / "ca.crt"; }

Certificate Authority::issue(const std::string &label, int days, const std::string &names)
{
    const Certificate made{folder_ / (label + ".crt"), folder_ / (label + ".key")};
    const std::string request = folder_ / (label + ".csr");
    runProgram({"openssl", "req", "-new", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                "-subj", "/CN=" + label, "-keyout", made.key, "-out", request});
    const std::string extensions = folder_.write(label + ".ext", "subjectAltName=" + names + "\n");
    // A negative number of days: a certificate that has already ended.
    runProgram({"openssl", "x509", "-req", "-in", request, "-CA", file(), "-CAkey", folder_ / "ca.key",
                "-CAcreateserial", "-days", std::to_string(days), "-extfile", extensions, "-out", made.file});
    return made;
}

Certificate Authority::selfSigned(const std::string &label)
{
    const Certificate made{folder_ / (label + ".crt"), folder_ / (label + ".key")};
    runProgram({"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                "-days", "30", "-subj", "/CN=localhost", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout",
                made.key, "-out", made.file});
    return made;
}

static const char *const kServer = TARVIK_TESTS_HELPER "/tarvik-test-server";

LocalServer::LocalServer() : scheme_("http"), program_({kServer}), port_(std::stoi(program_.firstLine())) {}

LocalServer::LocalServer(const Certificate &certificate)
    : scheme_("https"), program_({kServer, certificate.file, certificate.key}),
      port_(std::stoi(program_.firstLine()))
{
}

std::string LocalServer::url(const std::string &path) const
{
    return scheme_ + "://127.0.0.1:" + std::to_string(port_) + path;
}

static std::string proxyConfiguration(const TemporaryFolder &folder, int port)
{
    const std::string log = folder / "proxy.log";
    return folder.write("proxy.conf",
                        "Port " + std::to_string(port) +
                            "\nListen 127.0.0.1\nTimeout 60\nMaxClients 50\nLogLevel Connect\nLogFile \"" +
                            log + "\"\nAllow 127.0.0.1\n");
}

ForwardProxy::ForwardProxy(const TemporaryFolder &folder)
    : folder_(folder), port_(freePort()),
      program_({"tinyproxy", "-d", "-c", proxyConfiguration(folder, port_)})
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(uint16_t(port_));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    for (int attempts = 0; attempts < 200; ++attempts) {
        const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const bool isUp = connect(socket, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
        close(socket);
        if (isUp)
            return;
        usleep(20000);
    }
    throw std::runtime_error("tinyproxy does not come up");
}

std::string ForwardProxy::log() const { return folder_.read("proxy.log"); }

int freePort()
{
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    bind(socket, reinterpret_cast<sockaddr *>(&address), length);
    getsockname(socket, reinterpret_cast<sockaddr *>(&address), &length);
    close(socket);
    return ntohs(address.sin_port);
}
