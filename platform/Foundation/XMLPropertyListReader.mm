#include "platform/CoreFoundation/private/Text.h"
#include "platform/Foundation/private/PropertyListTypes.h"
#include "platform/Foundation/private/XMLPropertyList.h"
#include "platform/TextEncoding/private/Encodings.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <climits>
#include <cstring>
#include <locale.h>
#include <unordered_map>
#include <vector>

namespace tarvik::plist {
namespace {

/// The elements of a property list, by their names.
enum class Element { plist, dict, array, key, string, integer, real, yes, no, date, data, count };
constexpr const char *kNames[] = {"plist", "dict", "array", "key",  "string", "integer",
                                  "real",  "true", "false", "date", "data"};

/// The classes of what is made. Naming a class in a message looks it up by its name each time.
struct Classes {
    Class string = [NSString class], mutableString = [NSMutableString class];
    Class data = [NSData class], mutableData = [NSMutableData class];
    Class array = [NSArray class], mutableArray = [NSMutableArray class];
    Class dictionary = [NSDictionary class], mutableDictionary = [NSMutableDictionary class];
    Class number = [NSNumber class], date = [NSDate class];
    id yes = [[NSNumber numberWithBool:YES] retain], no = [[NSNumber numberWithBool:NO] retain];

    /// Most of a list is strings: their two messages are looked up once.
    id newASCII(const void *bytes, NSUInteger length) const
    {
        return initString(allocString(string, @selector(alloc)), @selector(initWithBytes:length:encoding:),
                          bytes, length, NSASCIIStringEncoding);
    }

private:
    using Alloc = id (*)(id, SEL);
    using Init = id (*)(id, SEL, const void *, NSUInteger, NSStringEncoding);
    Alloc allocString = std::bit_cast<Alloc>([string methodForSelector:@selector(alloc)]);
    Init initString =
        std::bit_cast<Init>([[string alloc] methodForSelector:@selector(initWithBytes:length:encoding:)]);
};
const Classes &classes()
{
    static const Classes all;
    return all;
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view white = " \t\r\n";
    const size_t first = text.find_first_not_of(white);
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(white) - first + 1);
}

/// Keeps libxml2's conversion of encodings, which knows no parser to tell of an error, from writing to
/// standard error.
class Quiet {
public:
    Quiet()
    {
        xmlSetStructuredErrorFunc(nullptr, [](void *, xmlErrorPtr) {});
    }
    ~Quiet() { xmlSetStructuredErrorFunc(oldContext_, oldFunction_); }
    Quiet(const Quiet &) = delete;

private:
    xmlStructuredErrorFunc oldFunction_ = xmlStructuredError;  // the thread's
    void *oldContext_ = xmlStructuredErrorContext;
};

/// Builds the objects while libxml2 reads. Everything made stands, owned, on one stack, so that a failure
/// anywhere releases it.
class Reader {
public:
    explicit Reader(Mutability mutability) : mutability_(mutability) {}
    ~Reader()
    {
        for (id object : objects_)
            [object release];
        for (id key : keys_)
            [key release];
    }
    Reader(const Reader &) = delete;

    id read(const uint8_t *bytes, size_t count, std::string &why);

private:
    struct Open {
        Element element;
        size_t first;  ///< where its contents begin on the stack of objects
        size_t firstKey;
        bool keyIsDue;  ///< in a dictionary: whether a key comes next
    };

    void start(const xmlChar *name);
    void end();
    void text(const char *bytes, size_t count);
    void instruction(const char *target, const char *data);
    void fail(const std::string &why);

    bool isLeaf() const { return !open_.empty() && open_.back().element >= Element::key; }
    void push(id object) { objects_.push_back(object); }
    void close(const Open &open);
    void pushKey();
    void pushDictionary(const Open &open);
    void pushArray(size_t first);
    void replace(size_t first, id container);
    id newString(bool isMutable);
    id newNumber(Element element);

    static Reader &of(void *context) { return *static_cast<Reader *>(context); }
    static xmlSAXHandler handler();

    Mutability mutability_;
    xmlParserCtxtPtr parser_ = nullptr;
    const xmlChar *names_[int(Element::count)] = {};
    std::vector<Open> open_;
    std::vector<id> objects_;                    ///< owned
    std::vector<id> dictionaryKeys_;             ///< of the dictionaries that are open; borrowed from keys_
    std::unordered_map<std::string, id> known_;  ///< the same few keys come again and again
    std::vector<id> keys_;                       ///< all keys, owned
    std::string text_;
    std::u16string units_;  ///< text_ so far, where an instruction put in what UTF-8 can't hold
    bool hasUnits_ = false;
    std::string why_;
};

void Reader::fail(const std::string &why)
{
    if (why_.empty())
        why_ = "line " + std::to_string(std::max(xmlSAX2GetLineNumber(parser_), 1)) + ": " + why;
    xmlStopParser(parser_);
}

void Reader::start(const xmlChar *name)
{
    // Names are kept once in the parser's dictionary, so that pointers compare.
    const auto *found = std::find(std::begin(names_), std::end(names_), name);
    if (found == std::end(names_)) {
        const std::string_view unknown = reinterpret_cast<const char *>(name);
        return fail(
            std::string("<").append(unknown.substr(0, 40)).append("> is no element of a property list"));
    }
    const auto element = Element(found - names_);
    const auto shown = [&] { return std::string("<").append(kNames[int(element)]).append(">"); };
    if (isLeaf())
        return fail(shown().append(" within <").append(kNames[int(open_.back().element)]).append(">"));
    if (open_.size() > size_t(kDeepest))
        return fail("nested deeper than " + std::to_string(kDeepest) + " levels");
    if (element == Element::plist) {
        if (!open_.empty())
            return fail("<plist> within <" + std::string(kNames[int(open_.back().element)]) + ">");
    } else if (open_.empty() || open_.back().element == Element::plist) {
        if (element == Element::key)
            return fail("<key> outside a dictionary");
        if (!objects_.empty())
            return fail("more than one object");
    } else if (open_.back().element == Element::dict) {
        if ((element == Element::key) != open_.back().keyIsDue)
            return fail(open_.back().keyIsDue ? shown().append(" where a key belongs")
                                              : "a key without a value");
        open_.back().keyIsDue = !open_.back().keyIsDue;
    } else if (element == Element::key) {
        return fail("<key> outside a dictionary");
    }
    open_.push_back({element, objects_.size(), dictionaryKeys_.size(), true});
    text_.clear();
    units_.clear();
    hasUnits_ = false;
}

void Reader::text(const char *bytes, size_t count)
{
    const std::string_view more(bytes, count);
    if (isLeaf()) {
        text_ += more;
        return;
    }
    if (!trimmed(more).empty())
        fail("text outside an element that holds text");
}

// The writer's form for characters that XML has no place for.
void Reader::instruction(const char *target, const char *data)
{
    if (!isLeaf() || strcmp(target, "u") != 0 || !data)
        return;
    uint16_t unit = 0;
    const std::string_view digits = trimmed(data);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
    if (error != std::errc() || end != digits.data() + digits.size())
        return;
    const auto *bytes = reinterpret_cast<const uint8_t *>(text_.data());
    units_ += encodings::decode(*encodings::find(0x08000100), bytes, text_.size(), false).value_or(u"");
    units_ += char16_t(unit);
    text_.clear();
    hasUnits_ = true;
}

id Reader::newString(bool isMutable)
{
    const auto *bytes = reinterpret_cast<const uint8_t *>(text_.data());
    uint8_t all = 0;
    for (size_t i = 0; i < text_.size(); ++i)
        all |= bytes[i];
    if (all < 0x80 && !hasUnits_) {
        if (!isMutable)
            return classes().newASCII(bytes, text_.size());
        return [[classes().mutableString alloc] initWithBytes:bytes
                                                       length:text_.size()
                                                     encoding:NSASCIIStringEncoding];
    }
    static const auto &utf8 = *encodings::find(0x08000100);
    units_ += encodings::decode(utf8, bytes, text_.size(), false).value_or(u"");
    NSString *string = cf::newString(units_);
    if (!isMutable)
        return string;
    NSMutableString *copy = [string mutableCopy];
    [string release];
    return copy;
}

id Reader::newNumber(Element element)
{
    std::string_view text = trimmed(text_);
    if (element == Element::integer) {
        const bool isNegative = text.starts_with('-');
        if (isNegative || text.starts_with('+'))
            text.remove_prefix(1);
        const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
        if (isHexadecimal)
            text.remove_prefix(2);
        uint64_t magnitude = 0;
        const auto [end, error] =
            std::from_chars(text.data(), text.data() + text.size(), magnitude, isHexadecimal ? 16 : 10);
        if (text.empty() || error != std::errc() || end != text.data() + text.size() ||
            (isNegative && magnitude > uint64_t(INT64_MAX) + 1)) {
            fail("no integer: \"" + text_.substr(0, 40) + "\"");
            return nil;
        }
        if (!isNegative && magnitude > uint64_t(INT64_MAX))
            return [[classes().number alloc] initWithUnsignedLongLong:magnitude];
        return [[classes().number alloc] initWithLongLong:int64_t(isNegative ? 0 - magnitude : magnitude)];
    }
    const bool hasSign = text.starts_with('+');
    const char *const first = text.data() + hasSign, *const last = text.data() + text.size();
    double value = 0;  // "nan", "infinity" and "inf" are numbers here too
    const auto [end, error] = std::from_chars(first, last, value);
    if (text.empty() || (error != std::errc() && error != std::errc::result_out_of_range) || end != last) {
        fail("no number: \"" + text_.substr(0, 40) + "\"");
        return nil;
    }
    return [[classes().number alloc] initWithDouble:value];
}

void Reader::pushKey()
{
    constexpr size_t kShort = 64, kMost = 4096;  // what is worth remembering
    const bool isShort = !hasUnits_ && text_.size() <= kShort;
    if (isShort)
        if (const auto found = known_.find(text_); found != known_.end())
            return dictionaryKeys_.push_back(found->second);
    keys_.push_back(newString(false));
    if (isShort && known_.size() < kMost)
        known_.emplace(text_, keys_.back());
    dictionaryKeys_.push_back(keys_.back());
}

void Reader::pushDictionary(const Open &open)
{
    Class type = mutability_ == Mutability::none ? classes().dictionary : classes().mutableDictionary;
    id dictionary = [[type alloc] initWithObjects:objects_.data() + open.first
                                          forKeys:dictionaryKeys_.data() + open.firstKey
                                            count:objects_.size() - open.first];
    dictionaryKeys_.resize(open.firstKey);
    replace(open.first, dictionary);
}

void Reader::pushArray(size_t first)
{
    Class type = mutability_ == Mutability::none ? classes().array : classes().mutableArray;
    replace(first, [[type alloc] initWithObjects:objects_.data() + first count:objects_.size() - first]);
}

/// Puts a container in the place of what it has taken.
void Reader::replace(size_t first, id container)
{
    for (size_t i = first; i < objects_.size(); ++i)
        [objects_[i] release];
    objects_.resize(first);
    push(container);
}

void Reader::close(const Open &open)
{
    const Element element = open.element;
    const bool leavesAreMutable = mutability_ == Mutability::containersAndLeaves;
    switch (element) {
    case Element::plist:
    case Element::count: return;
    case Element::dict: return pushDictionary(open);
    case Element::array: return pushArray(open.first);
    case Element::key: return pushKey();
    case Element::string: return push(newString(leavesAreMutable));
    case Element::integer:
    case Element::real:
        if (id number = newNumber(element))
            push(number);
        return;
    case Element::yes:
    case Element::no:
        if (!trimmed(text_).empty())
            return fail("text within <" + std::string(kNames[int(element)]) + ">");
        return push([element == Element::yes ? classes().yes : classes().no retain]);
    case Element::date:
        if (const auto date = parseDate(trimmed(text_)))
            return push([[classes().date alloc] initWithTimeIntervalSinceReferenceDate:*date]);
        return fail("no date: \"" + text_.substr(0, 40) + "\"");
    case Element::data:
        if (const auto bytes = parseBase64(text_)) {
            Class type = leavesAreMutable ? classes().mutableData : classes().data;
            return push([[type alloc] initWithBytes:bytes->data() length:bytes->size()]);
        }
        return fail("data that is not base64");
    }
}

void Reader::end()
{
    const Open closed = open_.back();
    if (closed.element == Element::dict && !closed.keyIsDue)
        return fail("a key without a value");
    open_.pop_back();
    close(closed);
}

xmlSAXHandler Reader::handler()
{
    xmlSAXHandler sax = {};
    sax.initialized = XML_SAX2_MAGIC;
    sax.startElementNs = [](void *context, const xmlChar *name, const xmlChar *, const xmlChar *, int,
                            const xmlChar **, int, int, const xmlChar **) { of(context).start(name); };
    sax.endElementNs = [](void *context, const xmlChar *, const xmlChar *, const xmlChar *) {
        if (of(context).why_.empty())
            of(context).end();
    };
    sax.characters = sax.ignorableWhitespace =
        sax.cdataBlock = [](void *context, const xmlChar *bytes, int count) {
            if (of(context).why_.empty())
                of(context).text(reinterpret_cast<const char *>(bytes), size_t(count));
        };
    sax.processingInstruction = [](void *context, const xmlChar *target, const xmlChar *data) {
        of(context).instruction(reinterpret_cast<const char *>(target), reinterpret_cast<const char *>(data));
    };
    // A list has no entities of its own: a document that declares some, or names one, is refused.
    sax.entityDecl = [](void *context, const xmlChar *, int, const xmlChar *, const xmlChar *, xmlChar *) {
        of(context).fail("a property list declares no entities");
    };
    sax.reference = [](void *context, const xmlChar *) { of(context).fail("an unknown entity"); };
    sax.serror = [](void *context, xmlErrorPtr error) {
        Reader &reader = of(context);
        if (error->level < XML_ERR_ERROR || !reader.why_.empty())
            return;
        const std::string_view message = trimmed(error->message ? error->message : "not well-formed");
        reader.why_ = "line " + std::to_string(std::max(error->line, 1)) + ": " + std::string(message);
    };
    return sax;
}

id Reader::read(const uint8_t *bytes, size_t count, std::string &why)
{
    while (count > 0 && strchr(" \t\r\n", *bytes) &&
           *bytes) {  // XML takes no white space before its declaration
        ++bytes;
        --count;
    }
    if (count == 0 || count > INT_MAX) {
        why = count == 0 ? "no data" : "more than 2 GiB of data";
        return nil;
    }
    parser_ = xmlCreateMemoryParserCtxt(reinterpret_cast<const char *>(bytes), int(count));
    if (!parser_) {
        why = "out of memory";
        return nil;
    }
    xmlSAXHandler sax = handler();
    *parser_->sax = sax;
    parser_->userData = this;
    // Of itself the parser stops at 256 levels and at 10 MB in one text; the first limit is ours, and text is
    // as long as the data.
    xmlCtxtUseOptions(parser_, XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOWARNING);
    for (size_t i = 0; i < std::size(names_); ++i)
        names_[i] = xmlDictLookup(parser_->dict, reinterpret_cast<const xmlChar *>(kNames[i]), -1);
    {
        const Quiet quiet;
        xmlParseDocument(parser_);
    }
    const bool isWhole = parser_->wellFormed && why_.empty();
    xmlDocPtr document = parser_->myDoc;
    parser_->myDoc = nullptr;
    xmlFreeParserCtxt(parser_);
    xmlFreeDoc(document);
    parser_ = nullptr;
    if (!isWhole || objects_.size() != 1) {
        why = !why_.empty() ? why_ : isWhole ? "a property list without an object" : "not well-formed";
        return nil;
    }
    id root = objects_.back();
    objects_.clear();
    return root;
}

}  // namespace

bool looksLikeXML(const uint8_t *bytes, size_t count)
{
    std::string start;  // the first characters that are not NUL, which takes UTF-16 in
    for (size_t i = 0; i < count && start.size() < 9; ++i) {
        const uint8_t byte = bytes[i];
        const bool isMark = i < 4 && byte >= 0x80;
        if (byte == 0 || isMark || (start.empty() && strchr(" \t\r\n", byte)))
            continue;
        start += char(byte);
    }
    return start.starts_with("<?xml") || start.starts_with("<!DOCTYPE") || start.starts_with("<plist") ||
           start.starts_with("<!--");
}

id newFromXML(const uint8_t *bytes, size_t count, Mutability mutability, std::string &why)
{
    return Reader(mutability).read(bytes, count, why);
}

}  // namespace tarvik::plist
