// One message to the system log, beside a bare syslog of the same text formatted with the same NSString.
#include "../tests/support/Namespace.h"

#import <Foundation/Foundation.h>
#include <Tarvik/core/Log.h>
#import <Tarvik/support/Pool.h>
#include <benchmark/benchmark.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>

#include <thread>

namespace {

// A reader at the system log's place; false where the kernel gives no mount namespace.
bool logIsRead()
{
    static const bool reading = [] {
        if (!enterPrivateMounts() || !mountPrivateDev())
            return false;
        const int log = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        const sockaddr_un address{AF_UNIX, "/dev/log"};
        if (bind(log, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
            return false;
        std::thread([log] {
            char record[2048];
            while (recv(log, record, sizeof record, 0) >= 0) {
            }
        }).detach();
        return true;
    }();
    return reading;
}

void logCore(benchmark::State &state)
{
    if (!logIsRead())
        return state.SkipWithError("no mount namespace");
    for (auto _ : state)
        LogCore("-[DiskImage mount]", 200, "unexpected exception: name[%@] reason[%@]", @"Name",
                @"a reason of some length");
}
BENCHMARK(logCore)->Name("log/message:tarvik");

void bareSyslog(benchmark::State &state)
{
    if (!logIsRead())
        return state.SkipWithError("no mount namespace");
    for (auto _ : state) {
        tarvik::Pool pool;
        NSString *text = [NSString stringWithFormat:@"unexpected exception: name[%@] reason[%@]", @"Name",
                                                    @"a reason of some length"];
        syslog(LOG_ERR, "%s:%lu: %s", "-[DiskImage mount]", 200ul, [text UTF8String]);
    }
}
BENCHMARK(bareSyslog)->Name("log/message:syslog");

}  // namespace
