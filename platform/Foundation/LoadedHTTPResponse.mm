#include "LoadedHTTPResponse.h"

#include <strings.h>

#include <cctype>
#include <charconv>
#include <string_view>

NSString *HTTPText(std::string_view bytes)
{
    for (NSStringEncoding encoding : {NSUTF8StringEncoding, NSISOLatin1StringEncoding})
        if (NSString *text = [[NSString alloc] initWithBytes:bytes.data()
                                                      length:bytes.size()
                                                    encoding:encoding])
            return [text autorelease];
    return @"";
}

NSString *HTTPFieldParameter(std::string_view field, std::string_view name)
{
    for (size_t at = field.find(';'); at != field.npos;) {
        at = field.find_first_not_of("; \t", at);
        if (at == field.npos)
            return nil;
        const size_t equals = field.find_first_of("=;", at);
        if (equals == field.npos)
            return nil;
        if (field[equals] == ';') {
            at = equals;
            continue;
        }
        std::string_view key = field.substr(at, equals - at);
        while (key.ends_with(' '))
            key.remove_suffix(1);
        std::string value;
        size_t next = equals + 1;
        if (next < field.size() && field[next] == '"') {
            for (++next; next < field.size() && field[next] != '"'; ++next) {
                if (field[next] == '\\' && next + 1 < field.size())
                    ++next;
                value += field[next];
            }
            next = field.find(';', next);
        } else {
            const size_t end = std::min(field.find(';', next), field.size());
            value = field.substr(next, end - next);
            while (value.ends_with(' '))
                value.pop_back();
            next = end == field.size() ? field.npos : end;
        }
        if (key.size() == name.size() && strncasecmp(key.data(), name.data(), name.size()) == 0)
            return HTTPText(value);
        at = next;
    }
    return nil;
}

static NSString *usualSpelling(const std::string &name)
{
    std::string text = name;
    bool first = true;
    for (char &c : text) {
        c = char(first ? toupper(static_cast<unsigned char>(c)) : tolower(static_cast<unsigned char>(c)));
        first = c == '-';
    }
    if (text == "Etag")
        text = "ETag";
    if (text == "Www-Authenticate")
        text = "WWW-Authenticate";
    return HTTPText(text);
}

static NSInteger statedLength(const http::Head &head)
{
    const std::string *field = head.find("Content-Length");
    if (!field || head.find("Content-Encoding") || head.find("Transfer-Encoding"))
        return NSURLResponseUnknownLength;
    long long length = 0;
    const auto [end, error] = std::from_chars(field->data(), field->data() + field->size(), length);
    return error == std::errc() && length >= 0 ? NSInteger(length) : NSInteger(NSURLResponseUnknownLength);
}

@implementation LoadedHTTPResponse

- (id)initWithURL:(NSURL *)url head:(const http::Head &)head
{
    NSString *type = nil;
    NSString *encoding = nil;
    if (const std::string *field = head.find("Content-Type")) {
        std::string name = field->substr(0, field->find(';'));
        while (name.ends_with(' '))
            name.pop_back();
        type = [HTTPText(name) lowercaseString];
        encoding = [HTTPFieldParameter(*field, "charset") lowercaseString];
    }
    self = [super initWithURL:url
                     MIMEType:type
        expectedContentLength:statedLength(head)
             textEncodingName:encoding];
    if (!self)
        return nil;
    _status = head.status;
    NSMutableDictionary *fields = [[NSMutableDictionary alloc] initWithCapacity:head.fields.size()];
    for (const auto &[name, value] : head.fields) {
        NSString *key = usualSpelling(name);
        NSString *text = HTTPText(value);
        NSString *earlier = [fields objectForKey:key];
        [fields setObject:earlier ? [NSString stringWithFormat:@"%@, %@", earlier, text] : text forKey:key];
    }
    _fields = fields;
    if (const std::string *field = head.find("Content-Disposition"))
        _fileName =
            [[HTTPFieldParameter(*field, "filename") lastPathComponent] copy];  // a name, never a path
    return self;
}

- (void)dealloc
{
    [_fields release];
    [_fileName release];
    [super dealloc];
}

- (id)copyWithZone:(NSZone *)zone
{
    (void)zone;
    return [self retain];
}

- (NSInteger)statusCode
{
    return _status;
}

- (NSDictionary *)allHeaderFields
{
    return _fields;
}

- (NSString *)suggestedFilename
{
    if ([_fileName length])
        return _fileName;
    NSString *last = [[[self URL] path] lastPathComponent];
    if ([last length] && ![last isEqualToString:@"/"])
        return last;
    return [[[self URL] host] length] ? [[self URL] host] : @"unknown";
}

@end
