#include "Command.h"
#include "Secrets.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

constexpr size_t kKeyLength = 32, kWord = 4, kMask = 256;

// 1 to 4 bytes, each of which says how many they are.
void pad(std::string &message)
{
    const size_t count = kWord - message.size() % kWord;
    message.append(count, static_cast<char>(count));
}

void unpad(std::string &message, const std::string &name)
{
    const size_t count = message.empty() ? 0 : static_cast<uint8_t>(message.back());
    if (count < 1 || count > kWord || message.size() % kWord != 0 ||
        message.find_last_not_of(static_cast<char>(count)) + 1 > message.size() - count)
        throw Failure(name + ": no padding at its end (another key, or enciphered without --pad)");
    message.resize(message.size() - count);
}

void process(std::string &message, const std::vector<uint8_t> &key, const std::string &name)
{
    // The cipher would never come back from such a call.
    if (message.size() >= kMask && message.size() % kWord != 0)
        throw Failure(name + ": " + std::to_string(message.size()) +
                      " bytes: WAKE takes fewer than 256 bytes or a multiple of 4 (use --pad)");
    constexpr size_t kAtOnce = 1 << 20;
    Progress progress(name, message.size());
    WAKE_OFB cipher;
    cipher.SetKey(key.data(), kKeyLength);
    for (size_t done = 0; done < message.size();) {
        const size_t count = std::min(kAtOnce, message.size() - done);
        cipher.ProcessString(reinterpret_cast<uint8_t *>(message.data()) + done,
                             static_cast<uint32_t>(count));
        progress.advance(count);
        done += count;
    }
}

int run(const Arguments &arguments, bool encipher)
{
    const auto &files = arguments.rest(0, 1);
    const std::string path = files.empty() ? "-" : files[0];
    if (path == "-" && arguments.value("key-file") == "-")
        throw UsageError("key and message can't both come from standard input");
    const std::vector<uint8_t> key = keyFrom(arguments, kKeyLength);
    Input input(path);
    std::string message = input.readAll();
    if (encipher && arguments.has("pad"))
        pad(message);
    process(message, key, input.name());
    if (!encipher && arguments.has("pad"))
        unpad(message, input.name());
    writeOutput(message);
    return kSuccess;
}

std::vector<Option> options()
{
    std::vector<Option> all = keyOptions(kKeyLength);
    all.push_back(
        {'p', "pad", nullptr,
         "fill the message up to a multiple of 4 bytes when enciphering, cut it back when deciphering"});
    return all;
}

constexpr const char *kDetails =
    "The message is FILE, or standard input; the result goes to standard output. The two directions are one "
    "operation.\n"
    "WAKE takes messages of fewer than 256 bytes, and of any multiple of 4: others need --pad, both ways.\n"
    "It is an old cipher, for data that needs it: it doesn't notice changes, and a key must serve one "
    "message only.\n\n"
    "Example:\n"
    "  head -c 32 /dev/urandom > key\n"
    "  tarvik wake encipher --pad -k key letter.txt > letter.wake\n"
    "  tarvik wake decipher --pad -k key letter.wake";

const Registration registration({
    .name = "wake",
    .summary = "encipher and decipher with the stream cipher WAKE",
    .usage = "encipher|decipher",
    .subcommands = {{.name = "encipher",
                     .summary = "encipher a message",
                     .usage = "--key-file=FILE [--pad] [FILE]",
                     .details = kDetails,
                     .options = options(),
                     .run = [](const Arguments &arguments) { return run(arguments, true); }},
                    {.name = "decipher",
                     .summary = "decipher a message",
                     .usage = "--key-file=FILE [--pad] [FILE]",
                     .details = kDetails,
                     .options = options(),
                     .run = [](const Arguments &arguments) { return run(arguments, false); }}},
});

}  // namespace
