/// \file
/// What stands between an application and its server: the proxies that the system is set to use, whether a
/// host can be reached, and the transfer itself, a text/xml body sent by POST.
///
///     char proxy[150];
///     unsigned short port;
///     CommunicationLibrary::GetHTTPProxySetting(proxy, sizeof proxy, &port)    // true: proxy.example, 8080
///     CommunicationLibrary::IsProxyRequiredFor("http://10.0.0.5/")             // false, by "10.0.0.*"
///     CommunicationLibrary::Post("https://server.example/", "<report/>", answer)    // 0
///
/// The static functions keep no state and read the settings afresh at each call. Thread: any; a transfer by
/// the platform's URL loading runs the calling thread's run loop, and the look-up of a host's name blocks its
/// caller.
#pragma once
#include <stdint.h>

#ifdef __cplusplus
#include <Tarvik/net/ILockable.h>
#include <Tarvik/text/WideString.h>

#include <string>

class CommunicationLibrary {
public:
    CommunicationLibrary() = default;
    virtual ~CommunicationLibrary() = default;

    /// The instance's own lock, for callers that share it. No function here takes it.
    ILockable &GetLock() { return m_lock; }

    // --- Proxies and reachability

    /// The proxy that is configured for http URLs: true, its host as ASCII and its port. False, an empty host
    /// and port 0 when there is none, or when its host does not fit. A null host or port stops the program
    /// with an assertion.
    static bool GetHTTPProxySetting(char *host, unsigned long hostSize, unsigned short *port);
    /// The same for https URLs.
    static bool GetHTTPSProxySetting(char *host, unsigned long hostSize, unsigned short *port);

    /// Whether traffic to the URL goes through the proxy of its scheme. False without such a proxy, for a
    /// null URL and for a scheme other than http and https (which is told to the file log); with a list of
    /// exceptions also for a host that can't be resolved. Entries of the list except:
    ///     "10.0.0.*", "10.0.0."    hosts whose first address begins so ("*" at the end is dropped first)
    ///     "example.org"            that host, and every name that ends in ".example.org"
    ///     ".example.org"           the latter only
    static bool IsProxyRequiredFor(const char *url);
    /// The same, and why it is so: "its address 10.0.0.5 is excepted by '10.0.0.*'", for people to read.
    static bool IsProxyRequiredFor(const char *url, std::string &rule);

    /// Whether the URL's host can be reached without raising a connection first.
    static bool IsOSXConnectionUp(const wstring &url);
    /// The same for a well-known site.
    static bool IsConnectionUp();
    /// Whether transfers take the external client: on systems before 10.3.2.
    static bool IsCurlMode();

    // --- Transfer

    enum : int { kSuccess = 0, kSecureConnectionFailure = 3, kFailure = 4 };

    /// Sends `body` (text/xml) to an http or https URL and takes the bytes of the answer: by the platform's
    /// URL loading (MyUrlConnection, 70 seconds at most), or by the external client where IsCurlMode says so.
    /// One of the constants above; the platform's loading tells every failure as kFailure. The answer is
    /// empty after a failure.
    static int Post(const std::string &url, const std::string &body, std::string &response);

    /// The external client: posts the file `requestFile`, has the answer written to `responseFile` and reads
    /// it. Callers must have encoded the URL, which stands unquoted in a shell's command line. HTTP errors
    /// are failures; the response is untouched then. A response file that can't be read is a success with an
    /// empty response. The response is text: a NUL byte cuts the rest of its 2048-byte piece.
    static int CurlExternSecureDownload(std::string url, std::string requestFile, std::string responseFile,
                                        std::string &response);

    // --- Percent-encoding, byte by byte. Letters, digits and the marks -_.+!*'(),;/?:@=& stay as they are.

    /// Other bytes as "%" and two upper-case digits: "a b/é" gives "a%20b/%C3%A9".
    static std::string EncodeUrl(const std::string &text);
    /// A blank as "+", a line feed as "%0D%0A" (after a carriage return too: "\r\n" gives "%0D%0D%0A"), other
    /// bytes as above.
    static std::string EncodeFormValue(const std::string &text);

private:
    LockableImpl m_lock;
};

#endif
