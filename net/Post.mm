#import <Foundation/Foundation.h>
#include <Tarvik/net/CommunicationLibrary.h>
#import <Tarvik/net/MyUrlConnection.h>
#include <Tarvik/support/Bridge.h>
#include <Tarvik/support/Guard.h>
#include <Tarvik/support/Handle.h>
#include <Tarvik/support/Pool.h>
#include <Tarvik/system/FileFunctions.h>
#include <Tarvik/system/SpecialFolders.h>
#include <fcntl.h>
#include <unistd.h>

#include <random>

namespace {

constexpr NSTimeInterval kRequestTimeout = 60;
constexpr int32_t kTransferTimeout = 70;

NSURLRequest *postRequest(NSURL *url, const std::string &body)
{
    NSMutableURLRequest *request = [NSMutableURLRequest requestWithURL:url
                                                           cachePolicy:NSURLRequestReloadIgnoringCacheData
                                                       timeoutInterval:kRequestTimeout];
    [request setHTTPMethod:@"POST"];
    [request setValue:@"text/xml" forHTTPHeaderField:@"Content-type"];
    [request setValue:@"Tarvik" forHTTPHeaderField:@"User-Agent"];
    [request setHTTPBody:tarvik::nsdata(body)];
    return request;
}

/// The platform loads other URLs as well, files among them, and calls that a success.
bool isWeb(NSURL *url)
{
    NSString *scheme = [[url scheme] lowercaseString];
    return [scheme isEqualToString:@"http"] || [scheme isEqualToString:@"https"];
}

int postByURLLoading(const std::string &url, const std::string &body, std::string &response)
{
    tarvik::Pool pool;
    NSString *text = tarvik::nsstring(url);
    NSURL *destination = text ? [NSURL URLWithString:text] : nil;
    if (!isWeb(destination))
        return CommunicationLibrary::kFailure;
    bool hasFinished = false;
    tarvik::attempt([&] {
        MyUrlConnection *connection =
            [[[MyUrlConnection alloc] initWithTimeout:kTransferTimeout] autorelease];
        if (![connection sendRequest:postRequest(destination, body)])
            return;
        NSData *data = [connection wait];
        hasFinished = [connection hasFinished];
        if (data)
            response = *tarvik::bytes(data);
    });
    return hasFinished ? CommunicationLibrary::kSuccess : CommunicationLibrary::kFailure;
}

/// The two files of one exchange with the external client, removed with it. Their number is a random one that
/// no file has.
class ExchangeFiles {
public:
    explicit ExchangeFiles(const std::string &body)
    {
        const std::string folder = Utils::GetTempDirName();
        std::random_device random;
        for (int attempts = 0; attempts < 100 && !file_; ++attempts) {
            const std::string number = std::to_string(random());
            request = folder + "/request-" + number + ".xml";
            response = folder + "/response-" + number + ".xml";
            file_.reset(open(request.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        }
        size_t done = 0;
        while (file_ && done < body.size()) {
            const ssize_t count = write(file_.get(), body.data() + done, body.size() - done);
            if (count <= 0)
                return;
            done += size_t(count);
        }
        isWritten = bool(file_);
    }
    ~ExchangeFiles()
    {
        if (!file_)
            return;
        Utils::DoDeleteFile(request);
        Utils::DoDeleteFile(response);
    }

    std::string request, response;
    bool isWritten = false;

private:
    tarvik::FileDescriptor file_;
};

}  // namespace

int CommunicationLibrary::Post(const std::string &url, const std::string &body, std::string &response)
{
    response.clear();
    if (!IsCurlMode())
        return postByURLLoading(url, body, response);
    const ExchangeFiles files(body);
    return files.isWritten ? CurlExternSecureDownload(url, files.request, files.response, response)
                           : int(kFailure);
}
