#include "Command.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace
{

constexpr size_t kKeyLength = 32, kWord = 4, kMask = 256;

std::vector<uint8_t> keyOf(const Arguments &arguments)
{
    const auto digits = arguments.value("key"), file = arguments.value("key-file");
    if (digits.has_value() == file.has_value())
        throw UsageError("give the key, by --key-file or by --key");
    if (file) {
        const std::string bytes = readInput(*file);
        if (bytes.size() != kKeyLength)
            throw Failure(*file + ": a key has 32 bytes, this file " + std::to_string(bytes.size()));
        return {bytes.begin(), bytes.end()};
    }
    if (digits->size() != 2 * kKeyLength ||
        digits->find_first_not_of("0123456789abcdefABCDEF") != digits->npos)
        throw UsageError("--key takes 64 hexadecimal digits");
    std::vector<uint8_t> key;
    for (size_t i = 0; i < digits->size(); i += 2)
        key.push_back(static_cast<uint8_t>(std::stoul(digits->substr(i, 2), nullptr, 16)));
    return key;
}

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
    const std::vector<uint8_t> key = keyOf(arguments);
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

const std::vector<Option> kOptions = {
    {'k', "key-file", "FILE", "the key: a file of 32 bytes"},
    {'K', "key", "DIGITS", "the key as 64 hexadecimal digits; other users see it in the list of processes"},
    {'p', "pad", nullptr,
     "fill the message up to a multiple of 4 bytes when enciphering, cut it back when deciphering"}};

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
                     .options = kOptions,
                     .run = [](const Arguments &arguments) { return run(arguments, true); }},
                    {.name = "decipher",
                     .summary = "decipher a message",
                     .usage = "--key-file=FILE [--pad] [FILE]",
                     .details = kDetails,
                     .options = kOptions,
                     .run = [](const Arguments &arguments) { return run(arguments, false); }}},
});

}  // namespace
