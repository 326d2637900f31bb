// XML property lists of 10 MB, read and written, beside libplist.
#include <CoreFoundation/CFPropertyList.h>
#import <Foundation/Foundation.h>
#import <Tarvik/support/Pool.h>
#include <benchmark/benchmark.h>
#include <plist/plist.h>

namespace {

/// Rows of a table, about 10 MB of XML.
CFPropertyListRef table()
{
    static CFPropertyListRef list = [] {
        tarvik::Pool pool;
        NSMutableArray *rows = [NSMutableArray array];
        for (int i = 0; i < 38000; ++i)
            [rows addObject:[NSDictionary
                                dictionaryWithObjectsAndKeys:
                                    [NSString stringWithFormat:@"Row number %d of the table", i], @"Name",
                                    [NSString stringWithFormat:@"/Users/someone/Gr\u00f6\u00dfe/%d.txt", i],
                                    @"Path", [NSNumber numberWithInt:i], @"Index",
                                    [NSNumber numberWithBool:i & 1], @"Flag",
                                    [NSNumber numberWithDouble:i / 7.0], @"Ratio", nil]];
        return CFPropertyListRef([rows retain]);
    }();
    return list;
}

CFDataRef xml()
{
    static CFDataRef data = CFPropertyListCreateXMLData(nullptr, table());
    return data;
}

void bytes(benchmark::State &state)
{
    state.SetBytesProcessed(int64_t(state.iterations()) * CFDataGetLength(xml()));
}

void read(benchmark::State &state)
{
    for (auto _ : state)
        CFRelease(CFPropertyListCreateFromXMLData(nullptr, xml(), kCFPropertyListImmutable, nullptr));
    bytes(state);
}
BENCHMARK(read)->Name("plistread/10MB:tarvik")->Unit(benchmark::kMillisecond);

void readByPeer(benchmark::State &state)
{
    for (auto _ : state) {
        plist_t list = nullptr;
        plist_from_xml(reinterpret_cast<const char *>(CFDataGetBytePtr(xml())),
                       uint32_t(CFDataGetLength(xml())), &list);
        plist_free(list);
    }
    bytes(state);
}
BENCHMARK(readByPeer)->Name("plistread/10MB:libplist")->Unit(benchmark::kMillisecond);

void write(benchmark::State &state)
{
    for (auto _ : state)
        CFRelease(CFPropertyListCreateXMLData(nullptr, table()));
    bytes(state);
}
BENCHMARK(write)->Name("plistwrite/10MB:tarvik")->Unit(benchmark::kMillisecond);

void writeByPeer(benchmark::State &state)
{
    plist_t list = nullptr;
    plist_from_xml(reinterpret_cast<const char *>(CFDataGetBytePtr(xml())), uint32_t(CFDataGetLength(xml())),
                   &list);
    for (auto _ : state) {
        char *text = nullptr;
        uint32_t length = 0;
        plist_to_xml(list, &text, &length);
        free(text);
    }
    plist_free(list);
    bytes(state);
}
BENCHMARK(writeByPeer)->Name("plistwrite/10MB:libplist")->Unit(benchmark::kMillisecond);

}  // namespace
