// HTTP on the loopback, beside libcurl used as one would, and beside
// gnustep-base's own loading.
#include "../tests/support/LocalServer.h"

#import <Foundation/Foundation.h>
#include <Tarvik/net/CommunicationLibrary.h>
#import <Tarvik/net/MyUrlConnection.h>
#import <Tarvik/support/Pool.h>
#include <benchmark/benchmark.h>
#include <curl/curl.h>

namespace {

constexpr size_t kBody = 1024, kResponse = 100'000'000;

const LocalServer &server()
{
    static const LocalServer one;
    return one;
}

/// While it lives, gnustep-base's own HTTP serves connections.
struct WithoutRepair {
    Class ours = NSClassFromString(@"HTTPURLProtocol");
    WithoutRepair() { [NSURLProtocol unregisterClass:ours]; }
    ~WithoutRepair() { [NSURLProtocol registerClass:ours]; }
};

size_t append(char *data, size_t, size_t size, void *text)
{
    static_cast<std::string *>(text)->append(data, size);
    return size;
}

/// One request with a handle and a connection of its own.
bool exchange(const std::string &url, const std::string *body, std::string &answer)
{
    CURL *handle = curl_easy_init();
    curl_slist *headers = curl_slist_append(curl_slist_append(nullptr, "Content-type: text/xml"), "Expect:");
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &answer);
    if (body) {
        curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE, long(body->size()));
        curl_easy_setopt(handle, CURLOPT_POSTFIELDS, body->c_str());
    }
    const CURLcode code = curl_easy_perform(handle);
    curl_slist_free_all(headers);
    curl_easy_cleanup(handle);
    return code == CURLE_OK;
}

void postAll(benchmark::State &state)
{
    const std::string url = server().url("/echo"), body(kBody, 'x');
    std::string first;
    CommunicationLibrary::Post(url, body, first);  // what is made once is made
    for (auto _ : state) {
        std::string answer;
        if (CommunicationLibrary::Post(url, body, answer) != 0 || answer.size() < kBody)
            return state.SkipWithError("the transfer failed");
    }
}

void post(benchmark::State &state) { postAll(state); }
BENCHMARK(post)->Name("http/post1KiB:tarvik")->UseRealTime();

void postByPeer(benchmark::State &state)
{
    const std::string url = server().url("/echo"), body(kBody, 'x');
    for (auto _ : state) {
        std::string answer;
        if (!exchange(url, &body, answer) || answer.size() < kBody)
            return state.SkipWithError("the transfer failed");
    }
}
BENCHMARK(postByPeer)->Name("http/post1KiB:libcurl")->UseRealTime();

void postWithoutRepair(benchmark::State &state)
{
    const WithoutRepair unrepaired;
    postAll(state);
}
BENCHMARK(postWithoutRepair)->Name("http/post1KiB:gnustep-base")->UseRealTime();

void getAll(benchmark::State &state)
{
    const tarvik::Pool around;
    NSURL *url = [NSURL
        URLWithString:[NSString
                          stringWithUTF8String:server().url("/bytes/" + std::to_string(kResponse)).c_str()]];
    for (auto _ : state) {
        tarvik::Pool pool;
        NSData *data = [MyUrlConnection sendMySynchronousRequest:[NSURLRequest requestWithURL:url]
                                                 transferTimeout:60];
        if ([data length] != kResponse)
            return state.SkipWithError("the transfer failed");
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kResponse));
}

void get(benchmark::State &state) { getAll(state); }
BENCHMARK(get)->Name("http/get100MB:tarvik")->UseRealTime()->Unit(benchmark::kMillisecond);

void getByPeer(benchmark::State &state)
{
    const std::string url = server().url("/bytes/" + std::to_string(kResponse));
    for (auto _ : state) {
        std::string answer;
        if (!exchange(url, nullptr, answer) || answer.size() != kResponse)
            return state.SkipWithError("the transfer failed");
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kResponse));
}
BENCHMARK(getByPeer)->Name("http/get100MB:libcurl")->UseRealTime()->Unit(benchmark::kMillisecond);

// (gnustep-base's own loading copies what it has with each piece that comes: minutes at this size.)

}  // namespace
