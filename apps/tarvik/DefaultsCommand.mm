#include "ObjectiveC.h"
#include "PropertyLists.h"
#include "Streams.h"

#import <Foundation/Foundation.h>
#include <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>

#include <cstdio>

namespace {

NSUserDefaults *defaults() { return [NSUserDefaults standardUserDefaults]; }

/// The domain's entries, to be changed; empty when there is none yet.
NSMutableDictionary *entriesOf(const std::string &domain)
{
    NSDictionary *entries = [defaults() persistentDomainForName:textOf(domain)];
    return entries ? [NSMutableDictionary dictionaryWithDictionary:entries]
                   : [NSMutableDictionary dictionary];
}

void store(const std::string &domain, NSDictionary *entries)
{
    NSString *name = textOf(domain);
    [defaults() removePersistentDomainForName:name];  // what a domain held is merged otherwise
    if ([entries count] > 0)
        [defaults() setPersistentDomain:entries forName:name];
    if (![defaults() synchronize])
        throw Failure("the defaults of " + domain +
                      " can't be written (is the folder of the user defaults writable?)");
}

int read(const Arguments &arguments)
{
    const auto &words = arguments.rest(0, 2);
    if (words.empty()) {
        std::string out;
        for (NSString *name : tarvik::each<NSString>(
                 [[defaults() persistentDomainNames] sortedArrayUsingSelector:@selector(compare:)]))
            out += utf8Of(name) + "\n";
        writeOutput(out);
        return kSuccess;
    }
    id found = [defaults() persistentDomainForName:textOf(words[0])];
    if (!found)
        throw Failure("'" + words[0] +
                      "': no such domain (without a name, 'tarvik defaults read' lists them)");
    if (words.size() > 1 && !(found = [found objectForKey:textOf(words[1])]))
        throw Failure("'" + words[1] + "': no such key in " + words[0]);
    writeOutput(arguments.has("xml") ? xmlOfList(found) : showList(found));
    return kSuccess;
}

/// The word as a value of the type.
id valueOf(const std::string &word, const std::string &type)
{
    if (type == "string")
        return textOf(word);
    if (type == "plist")
        return word == "-" ? readList("-") : parseList(word, "the value");
    if (type == "bool") {
        for (const char *yes : {"yes", "true", "1"})
            if (word == yes)
                return [NSNumber yesNumber];
        for (const char *no : {"no", "false", "0"})
            if (word == no)
                return [NSNumber noNumber];
        throw UsageError("'" + word + "': yes or no");
    }
    if (type == "integer" || type == "real" || type == "date" || type == "data") {
        // The reader of lists knows what is one.
        if (word.find_first_of("<&") != word.npos)
            throw UsageError("'" + word + "': is no " + type);
        return parseList("<?xml version=\"1.0\"?><plist><" + type + ">" + word + "</" + type + "></plist>",
                         "'" + word + "'");
    }
    throw UsageError("--type=" + type + ": string, integer, real, bool, date, data or plist");
}

int write(const Arguments &arguments)
{
    const auto &words = arguments.rest(3, 3);
    NSMutableDictionary *entries = entriesOf(words[0]);
    [entries setObject:valueOf(words[2], arguments.value("type").value_or("string")) forKey:textOf(words[1])];
    store(words[0], entries);
    return kSuccess;
}

int remove(const Arguments &arguments)
{
    const auto &words = arguments.rest(1, 2);
    NSMutableDictionary *entries = entriesOf(words[0]);
    if (words.size() > 1 && ![entries objectForKey:textOf(words[1])])
        throw Failure("'" + words[1] + "': no such key in " + words[0]);
    if (words.size() > 1)
        [entries removeObjectForKey:textOf(words[1])];
    else
        [entries removeAllObjects];
    store(words[0], entries);
    return kSuccess;
}

const Registration registration({
    .name = "defaults",
    .summary = "user defaults of a domain: read, write, remove",
    .details = "A domain is a program's name, or NSGlobalDomain.\n\n"
               "Examples:\n"
               "  tarvik defaults read NSGlobalDomain\n"
               "  tarvik defaults write Shelf Columns '(Name, Size)' --type=plist\n"
               "  tarvik defaults remove Shelf Columns",
    .subcommands = {{.name = "read",
                     .summary = "print a domain, or one of its keys; without a domain, the domains' names",
                     .usage = "[OPTION]... [DOMAIN [KEY]]",
                     .options = {{'x', "xml", nullptr, "print XML instead of a tree"}},
                     .run = inPool(read)},
                    {.name = "write",
                     .summary = "store a value under a key",
                     .usage = "[OPTION]... DOMAIN KEY VALUE",
                     .options = {{'t', "type", "TYPE",
                                  "string (the default), integer, real, bool, date, data (base64), plist "
                                  "('-': standard input)"}},
                     .run = inPool(write)},
                    {.name = "remove",
                     .summary = "remove a key, or a whole domain",
                     .usage = "DOMAIN [KEY]",
                     .run = inPool(remove)}},
});

}  // namespace
