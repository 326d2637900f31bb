// XML search against a loop over std::string::find, escaping against pugixml's writer and against a bare
// copy, which is the limit. The result is made anew each time, as a caller's first one is; "reused" rows keep
// the memory of the one before.
#include <Tarvik/net/XMLUtility.h>

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <random>
#include <string>
#include <vector>

namespace {

const XMLUtility kXML;

using List = std::vector<std::string>;

void tarvikValues(const std::string &text, const std::string &name, List &list)
{
    kXML.GetValuesForTag(text, name, list);
}

void findValues(const std::string &text, const std::string &name, List &list)
{
    const std::string start = "<" + name + ">", end = "</" + name + ">";
    list.clear();
    for (size_t at = 0; (at = text.find(start, at)) != std::string::npos;) {
        at += start.size();
        const size_t close = text.find(end, at);
        if (close == std::string::npos)
            return;
        list.push_back(text.substr(at, close - at));
        at = close + end.size();
    }
}

// A million elements; `least` to `most` bytes in each.
std::string document(const std::string &name, size_t least, size_t most)
{
    std::mt19937 random(1);
    std::string text;
    for (int i = 0; i < 1000000; ++i)
        text +=
            "<" + name + ">" + std::string(least + random() % (most - least + 1), 'x') + "</" + name + ">\n";
    return text;
}

void search(const std::string &what, const std::string &name, size_t least, size_t most)
{
    for (const auto &[who, values] : {std::pair{"tarvik", &tarvikValues}, {"find loop", &findValues}}) {
        benchmark::RegisterBenchmark(
            ("xml search/1M " + what + ":" + who).c_str(), [=](benchmark::State &state) {
                const std::string text = document(name, least, most);
                for (auto _ : state) {
                    List list;
                    values(text, name, list);
                    benchmark::DoNotOptimize(list.data());
                }
                state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
            });
        if (most > std::string().capacity())
            continue;  // what strings with memory of their own cost a second time is the allocator's matter
        benchmark::RegisterBenchmark(
            ("xml search/1M " + what + " reused:" + who).c_str(), [=](benchmark::State &state) {
                const std::string text = document(name, least, most);
                List list;
                for (auto _ : state) {
                    values(text, name, list);
                    benchmark::DoNotOptimize(list.data());
                }
                state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
            });
    }
}

// So many bytes with so many specials in ten thousand.
struct Sample {
    std::string name;
    size_t size;
    unsigned share;

    std::string text() const
    {
        std::mt19937 random(1);
        std::string text(size, ' ');
        for (char &byte : text)
            byte = random() % 10000 < share ? "&\"'<>\r\n"[random() % 7] : char('a' + random() % 26);
        return text;
    }
    std::string escaped() const
    {
        std::string out;
        kXML.ConvertStringUTF8ToReference(text(), out);
        return out;
    }
};

template <class Work>
void convert(const std::string &name, const Sample &sample, std::string (Sample::*made)() const, Work work)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
        const std::string text = (sample.*made)();
        for (auto _ : state) {
            std::string out;
            work(text, out);
            benchmark::DoNotOptimize(out.data());
        }
        state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
    });
}

void escape(const std::string &text, std::string &out) { kXML.ConvertStringUTF8ToReference(text, out); }
void unescape(const std::string &text, std::string &out)
{
    kXML.ConvertStringEntityReferenceToUTF8(text, out);
}
void copy(const std::string &text, std::string &out) { out = text; }

// The document is made outside the measured time.
void escapeByPugixml(benchmark::State &state, const Sample &sample)
{
    struct Writer : pugi::xml_writer {
        std::string out;
        void write(const void *data, size_t size) override
        {
            out.append(static_cast<const char *>(data), size);
        }
    };
    pugi::xml_document document;
    document.append_child(pugi::node_pcdata).set_value(sample.text().c_str());
    for (auto _ : state) {
        Writer writer;
        document.save(writer, "", pugi::format_raw | pugi::format_no_declaration);
        benchmark::DoNotOptimize(writer.out.data());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(sample.size));
}

const bool kRegistered = [] {
    search("<v> 7 bytes", "v", 7, 7);
    search("<v> 1-13 bytes", "v", 1, 13);
    search("<item> 1-100 bytes", "item", 1, 100);
    for (const Sample &sample : {Sample{"1KiB 0.1%", 1 << 10, 10},
                                 {"1KiB 5%", 1 << 10, 500},
                                 {"16MiB 0.1%", 1 << 24, 10},
                                 {"16MiB 5%", 1 << 24, 500},
                                 {"16MiB 100%", 1 << 24, 10000}}) {
        const std::string row = "xml escape/" + sample.name, back = "xml unescape/" + sample.name;
        convert(row + ":tarvik", sample, &Sample::text, escape);
        benchmark::RegisterBenchmark((row + ":pugixml").c_str(),
                                     [=](benchmark::State &state) { escapeByPugixml(state, sample); });
        convert(row + ":copy", sample, &Sample::text, copy);
        convert(back + ":tarvik", sample, &Sample::escaped, unescape);
        convert(back + ":copy", sample, &Sample::escaped, copy);
    }
    // A byte costs the same in a large text.
    convert("xml escape/1GiB 0.1%:tarvik", {"", 1 << 30, 10}, &Sample::text, escape);
    convert("xml escape/1GiB 0.1%:copy", {"", 1 << 30, 10}, &Sample::text, copy);
    return true;
}();

}  // namespace
