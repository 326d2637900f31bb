#include "CheckList.h"
#include "Command.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace {

struct Algorithm {
    const char *name;
    CSSM_ALGORITHMS number;
    size_t digits;
};
constexpr Algorithm kAlgorithms[] = {{"md5", CSSM_ALGID_MD5, 32}, {"sha1", CSSM_ALGID_SHA1, 40}};

const Algorithm *findAlgorithm(auto matches)
{
    for (const Algorithm &algorithm : kAlgorithms) {
        if (matches(algorithm))
            return &algorithm;
    }
    return nullptr;
}

void check(const std::string &name, CSSM_RETURN status)
{
    if (status != CSSM_OK)
        throw Failure(name + ": " + cssmErrorString(status));
}

/// An attached provider, for as long as the command runs.
CSSM_CSP_HANDLE provider()
{
    static CSSM_CSP_HANDLE attached = [] {
        CSSM_CSP_HANDLE csp = CSSM_INVALID_HANDLE;
        check("the crypto service", CDSAUtilityBase::cdsaCspAttach(&csp));
        return csp;
    }();
    return attached;
}

std::string digestOf(const std::string &path, const Algorithm &algorithm)
{
    static std::vector<uint8_t> block(1 << 20);
    Input input(path);
    Progress progress(input.name(), input.length());
    CSSM_CC_HANDLE context = CSSM_INVALID_HANDLE;
    check(path, CDSAUtilityBase::cdsaStagedDigestInit(provider(), algorithm.number, &context));
    CSSM_DATA digest{};
    bool last = false;
    while (!last) {
        size_t count;
        try {
            count = input.read(block.data(), block.size());
        } catch (const Failure &) {
            CSSM_DeleteContext(context);
            throw;
        }
        last = count < block.size();
        const CSSM_DATA piece = {count, block.data()};
        check(path, CDSAUtilityBase::cdsaStagedDigest(context, last, &piece, &digest));
        progress.advance(count);
    }
    const std::unique_ptr<uint8_t, decltype(&std::free)> bytes(digest.Data, &std::free);
    std::string text(2 * digest.Length + 1, '\0');
    CDSAUtilityBase::convertHEXValueToHEXString(bytes.get(), static_cast<int>(digest.Length), text.data());
    text.pop_back();
    return text;
}

int run(const Arguments &arguments)
{
    const auto name = arguments.value("algorithm");
    const Algorithm *chosen =
        findAlgorithm([&](const Algorithm &a) { return a.name == name.value_or("sha1"); });
    if (!chosen)
        throw UsageError("unknown algorithm '" + *name + "' (md5 or sha1)");
    return printOrVerify(
        arguments, {.command = "digest",
                    .form = name ? std::string("a ") + chosen->name + " digest has " +
                                       std::to_string(chosen->digits) + " hexadecimal digits"
                                 : "a digest has 32 or 40 hexadecimal digits",
                    .takes =
                        [=](size_t digits) {
                            return name ? digits == chosen->digits : findAlgorithm([=](const Algorithm &a) {
                                                                         return a.digits == digits;
                                                                     }) != nullptr;
                        },
                    .compute =
                        [=](const std::string &path, size_t digits) {
                            const Algorithm *listed =
                                findAlgorithm([=](const Algorithm &a) { return a.digits == digits; });
                            return digestOf(path, listed ? *listed : *chosen);
                        }});
}

std::vector<Option> options()
{
    std::vector<Option> all = checkOptions();
    all.insert(all.begin(), {'a', "algorithm", "NAME",
                             "md5 or sha1 (the default); a list's digests tell by their length"});
    return all;
}

const Registration registration({
    .name = "digest",
    .summary = "print or verify the MD5 or SHA-1 digest of files",
    .usage = "[OPTION]... [FILE]...",
    .details =
        "Prints the digest and the name of each FILE, one a line, as md5sum and sha1sum do; of standard "
        "input when "
        "there is none or FILE is -.\n"
        "With --check, FILE is a list of such lines, and the files named in it are verified.\n"
        "Both digests find damage. Neither withstands somebody who wants two files to have the same.\n\n"
        "Examples:\n"
        "  tarvik digest *.iso > digests\n"
        "  tarvik digest --check digests\n"
        "  printf abc | tarvik digest -a md5      prints 900150983cd24fb0d6963f7d28e17f72  -",
    .options = options(),
    .run = run,
});

}  // namespace
