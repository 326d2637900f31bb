#include "ObjectiveC.h"

#include "Streams.h"

#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>

NSString *textOf(const std::string &word) { return textOf(word, "'" + word + "'"); }

NSString *textOf(const std::string &bytes, const std::string &name)
{
    NSString *text = tarvik::nsstring(bytes);
    if (!text)
        throw Failure(name + ": is not UTF-8 text (convert it first)");
    return text;
}

NSString *textInFile(const std::string &path)
{
    Input file(path);
    return textOf(file.readAll(), file.name());
}

std::string utf8Of(NSString *text) { return tarvik::utf8(text).value_or(""); }

std::function<int(const Arguments &)> inPool(int (*run)(const Arguments &))
{
    return [run](const Arguments &arguments) {
        tarvik::Pool pool;
        return run(arguments);
    };
}
