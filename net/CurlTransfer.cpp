#include <Tarvik/net/CommunicationLibrary.h>
#include <Tarvik/net/FileLog.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

constexpr size_t kPiece = 2048;

std::string quoted(const std::string &text) { return "\"" + text + "\""; }

/// The client's option for the proxy, if it needs one. The HTTPS proxy comes first whatever the URL's scheme:
/// callers rely on it.
std::string proxyOption(const std::string &url)
{
    if (!CommunicationLibrary::IsProxyRequiredFor(url.c_str()))
        return {};
    Utils::LogMessage("CommLib,proxy required for destination URL");
    char host[150];
    unsigned short port = 0;
    if (!CommunicationLibrary::GetHTTPSProxySetting(host, sizeof host, &port) &&
        !CommunicationLibrary::GetHTTPProxySetting(host, sizeof host, &port))
        return {};
    return std::string(" -x ") + host + ":" + std::to_string(port);
}

/// Exit codes of the client that tell of the secure connection or its certificates.
bool isSecurityFailure(int code)
{
    switch (code) {
    case 35:
    case 51:
    case 53:
    case 54:
    case 58:
    case 59:
    case 60:
    case 66: return true;
    default: return false;
    }
}

std::string readText(FILE *file)
{
    std::string text;
    char buffer[kPiece + 1];
    size_t count;
    do {
        count = fread(buffer, 1, kPiece, file);
        buffer[count] = 0;
        text += buffer;
    } while (count == kPiece);
    return text;
}

}  // namespace

int CommunicationLibrary::CurlExternSecureDownload(std::string url, std::string requestFile,
                                                   std::string responseFile, std::string &response)
{
    std::string command = "/usr/bin/curl ";
    command += " --url " + url;
    command += " --connect-timeout "
               "60";
    command += " -m "
               "70";
    command += " -f ";
    command += " -s";
    command += " --data-binary @" + quoted(requestFile);
    command += " -o " + quoted(responseFile);
    command += " -H " + quoted("Content-Type: text/xml");
    command += " -H " + quoted("User-Agent: Tarvik");
    command += proxyOption(url);
    Utils::LogMessage("curl command line: \n" + command);

    const int status = system(command.c_str());
    if (status != 0) {
        const int code = status / 256;
        Utils::LogMessage("curlerrcode original:", status);
        Utils::LogMessage("curlerrcode:", code);
        return isSecurityFailure(code) ? kSecureConnectionFailure : kFailure;
    }
    const std::unique_ptr<FILE, decltype(&fclose)> file(fopen(responseFile.c_str(), "rbe"), fclose);
    if (!file)
        Utils::LogMessage("curlexec err,file = nil");
    response = file ? readText(file.get()) : "";
    return kSuccess;
}
