#import <Foundation/Foundation.h>
#include <SystemConfiguration/SystemConfiguration.h>
#include <Tarvik/net/CommunicationLibrary.h>
#include <Tarvik/net/SystemInformation.h>
#include <Tarvik/support/Bridge.h>
#include <Tarvik/support/Pool.h>
#include <Tarvik/text/UTF8.h>

namespace {

constexpr wchar_t kWellKnownSite[] = L"http://www.debian.org/";

/// 10.3.2, packed: the first system whose URL loading is used.
constexpr uint32_t kFirstSystemWithURLLoading = 0x1032;

}  // namespace

bool CommunicationLibrary::IsOSXConnectionUp(const wstring &url)
{
    tarvik::Pool pool;
    NSString *text = tarvik::nsstring(Utils::wstring2utf8(url));
    NSString *host = text ? [[NSURL URLWithString:text] host] : nil;
    SCNetworkConnectionFlags flags = 0;
    return SCNetworkCheckReachabilityByName([host UTF8String], &flags) &&
           (flags & kSCNetworkFlagsReachable) && !(flags & kSCNetworkFlagsConnectionRequired);
}

bool CommunicationLibrary::IsConnectionUp() { return IsOSXConnectionUp(kWellKnownSite); }

bool CommunicationLibrary::IsCurlMode() { return Utils::getOsBuildNumber() < kFirstSystemWithURLLoading; }
