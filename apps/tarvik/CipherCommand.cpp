#include "Command.h"
#include "Secrets.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>

#include <algorithm>
#include <cerrno>
#include <sstream>
#include <sys/random.h>

namespace {

struct Algorithm {
    const char *name;
    CSSM_ALGORITHMS number;
};
constexpr Algorithm kAlgorithms[] = {{"aes", CSSM_ALGID_AES}, {"rc2", CSSM_ALGID_RC2},
                                     {"rc4", CSSM_ALGID_RC4}, {"rc5", CSSM_ALGID_RC5},
                                     {"des", CSSM_ALGID_DES}, {"3des", CSSM_ALGID_3DES_3KEY}};
constexpr size_t kVectorSize = 16;

const Algorithm *findAlgorithm(std::string_view name)
{
    const auto *found = std::find_if(std::begin(kAlgorithms), std::end(kAlgorithms),
                                     [&](const Algorithm &algorithm) { return algorithm.name == name; });
    return found == std::end(kAlgorithms) ? nullptr : found;
}

std::string randomVector()
{
    unsigned char bytes[kVectorSize];
    if (getrandom(bytes, sizeof bytes, 0) != sizeof bytes)
        throw systemFailure("random numbers", errno);
    char text[2 * kVectorSize + 1];
    CDSAUtilityBase::convertHEXValueToHEXString(bytes, sizeof bytes, text);
    return text;
}

Input openInput(const Arguments &arguments)
{
    const auto &files = arguments.rest(0, 1);
    const std::string path = files.empty() ? "-" : files[0];
    if (path == "-" && arguments.value("password-file") == "-")
        throw UsageError("password and message can't both come from standard input");
    return Input(path);
}

int encrypt(const Arguments &arguments)
{
    const std::string name = arguments.value("algorithm").value_or("aes");
    const Algorithm *algorithm = findAlgorithm(name);
    if (!algorithm)
        throw UsageError("unknown algorithm '" + name + "' (aes, rc2, rc4 or rc5)");
    Input input = openInput(arguments);
    const std::string plain = input.readAll(), password = passwordFrom(arguments, true);
    std::string secret, vector = randomVector();
    if (const CSSM_RETURN status =
            CDSAUtilityBase::encryptData(algorithm->number, plain, password, secret, vector, true))
        throw Failure(input.name() + ": " + cssmErrorString(status));
    writeOutput(name + " " + vector + " " + secret + "\n");
    return kSuccess;
}

int decrypt(const Arguments &arguments)
{
    Input input = openInput(arguments);
    std::istringstream words(input.readAll());
    std::string name, vector, secret, more;
    words >> name >> vector >> secret;
    const Algorithm *algorithm = findAlgorithm(name);
    if (!algorithm || vector.size() != 2 * kVectorSize || !isHexadecimal(vector) || secret.size() % 2 != 0 ||
        !isHexadecimal(secret) || words >> more)
        throw Failure(input.name() +
                      ": not what 'tarvik cipher encrypt' writes: an algorithm, 32 digits and the "
                      "cipher text's digits");
    const std::string password = passwordFrom(arguments, false);
    std::string plain;
    if (const CSSM_RETURN status =
            CDSAUtilityBase::encryptData(algorithm->number, secret, password, plain, vector, false))
        throw Failure(input.name() + ": " + cssmErrorString(status) + " (another password, or damaged)");
    writeOutput(plain);
    return kSuccess;
}

std::vector<Option> encryptOptions()
{
    std::vector<Option> all = passwordOptions();
    all.push_back(
        {'a', "algorithm", "NAME", "aes (the default), rc2, rc4 or rc5; des and 3des don't take 256 bits"});
    return all;
}

constexpr const char *kDetails =
    "The message is FILE, or standard input; the result goes to standard output. The password is asked for "
    "on the "
    "terminal unless an option says where it is.\n"
    "Enciphered text is one line: the algorithm, the vector (random for each message) and the cipher text in "
    "hexadecimal. The key comes from the password by PBKDF2 with 1000 rounds and a salt that is always the "
    "same.\n"
    "For exchange with what already works this way. It doesn't notice changes, and a short password is soon "
    "guessed. With "
    "rc4 a password must serve one message only, as the vector has no part in it.\n\n"
    "Example:\n"
    "  tarvik cipher encrypt letter.txt > letter.secret\n"
    "  tarvik cipher decrypt letter.secret";

const Registration registration({
    .name = "cipher",
    .summary = "encipher and decipher with a password",
    .usage = "encrypt|decrypt",
    .subcommands = {{.name = "encrypt",
                     .summary = "encipher a message",
                     .usage = "[OPTION]... [FILE]",
                     .details = kDetails,
                     .options = encryptOptions(),
                     .run = encrypt},
                    {.name = "decrypt",
                     .summary = "decipher a message",
                     .usage = "[OPTION]... [FILE]",
                     .details = kDetails,
                     .options = passwordOptions(),
                     .run = decrypt}},
});

}  // namespace
