#include "Command.h"
#include "Secrets.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>

#include <cstdlib>
#include <memory>

namespace {

constexpr size_t kBlock = 8;

struct Message {
    std::string name, bytes;
    std::vector<uint8_t> key;
};

Message readMessage(const Arguments &arguments)
{
    const auto &files = arguments.rest(0, 1);
    const std::string path = files.empty() ? "-" : files[0];
    if (path == "-" && arguments.value("key-file") == "-")
        throw UsageError("key and message can't both come from standard input");
    const std::vector<uint8_t> key = keyFrom(arguments, kBlock);
    Input input(path);
    return {input.name(), input.readAll(), key};
}

int encrypt(const Arguments &arguments)
{
    const Message message = readMessage(arguments);
    if (message.bytes.empty())
        return kSuccess;
    void *copy = nullptr;
    size_t length = 0;
    if (MemAllocateEncryptedCopy(message.bytes.data(), message.bytes.size(), &copy, &length,
                                 message.key.data()) != 0)
        throw Failure(message.name + ": can't encipher (no memory, or OpenSSL without its legacy provider)");
    const std::unique_ptr<void, decltype(&std::free)> owned(copy, &std::free);
    writeOutput({static_cast<const char *>(copy), length});
    return kSuccess;
}

int decrypt(const Arguments &arguments)
{
    Message message = readMessage(arguments);
    std::string &bytes = message.bytes;
    if (bytes.size() % kBlock != 0)
        throw Failure(message.name + ": " + std::to_string(bytes.size()) +
                      " bytes: cipher text has a multiple of 8");
    if (!bytes.empty() && MemDecrypt(bytes.data(), bytes.size(), message.key.data()) != 0)
        throw Failure(message.name + ": can't decipher (OpenSSL without its legacy provider)");
    if (arguments.has("strip"))
        bytes.resize(bytes.find_last_not_of('\0') + 1);
    writeOutput(bytes);
    return kSuccess;
}

std::vector<Option> decryptOptions()
{
    std::vector<Option> all = keyOptions(kBlock);
    all.push_back({'s', "strip", nullptr, "leave out the zero bytes at the end"});
    return all;
}

constexpr const char *kDetails = "The message is FILE, or standard input; the result goes to standard "
                                 "output. Each 8 bytes are enciphered by "
                                 "themselves, after the message has been filled up with zero bytes; how long "
                                 "it was is not kept (see --strip).\n"
                                 "The bits of each byte are taken from the lowest, so that the result is "
                                 "that of a textbook DES with the bits of all "
                                 "bytes reversed. The highest bit of each key byte doesn't count.\n"
                                 "For data that is already written this way: DES keeps no secrets today.\n\n"
                                 "Example:\n"
                                 "  printf 'the key!' > key\n"
                                 "  tarvik des encrypt -k key letter.txt > letter.des\n"
                                 "  tarvik des decrypt -k key --strip letter.des";

const Registration registration({
    .name = "des",
    .summary = "encipher and decipher with DES, in the toolkit's bit order",
    .usage = "encrypt|decrypt",
    .subcommands = {{.name = "encrypt",
                     .summary = "encipher a message",
                     .usage = "--key-file=FILE [FILE]",
                     .details = kDetails,
                     .options = keyOptions(kBlock),
                     .run = encrypt},
                    {.name = "decrypt",
                     .summary = "decipher a message",
                     .usage = "--key-file=FILE [--strip] [FILE]",
                     .details = kDetails,
                     .options = decryptOptions(),
                     .run = decrypt}},
});

}  // namespace
