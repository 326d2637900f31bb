#include "CatalogueXML.h"

#include "Catalogue.h"

#include <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>

#include <charconv>
#include <utility>
#include <vector>

namespace shelf {
namespace {

/// Without what no XML document may hold: control characters other than tab and line ends, U+FFFE and U+FFFF.
std::string allowed(std::string text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
            continue;
        if (c == 0xEF && text.compare(i, 2, "\xEF\xBF") == 0 && i + 2 < text.size() &&
            static_cast<unsigned char>(text[i + 2]) >= 0xBE) {
            i += 2;
            continue;
        }
        out += text[i];
    }
    return out;
}

void append(std::string &xml, const char *name, NSString *value)
{
    const std::string text = allowed(tarvik::utf8(value).value_or(""));
    std::string escaped;
    if (!XMLUtility().ConvertStringUTF8ToReference(text, escaped))
        return;
    xml += std::string("    <") + name + '>' + escaped + "</" + name + ">\n";
}

/// What `append` wrote, back. One pass: a text that looks like a reference itself comes back as it was, which the toolkit's own
/// way back, entity after entity, does not give.
std::string unescaped(const std::string &text)
{
    static const std::pair<std::string, char> references[] = {
        {"&amp;", '&'}, {"&quot;", '"'}, {"&apos;", '\''}, {"&lt;", '<'},
        {"&gt;", '>'},  {"&#13;", '\r'}, {"&#10;", '\n'}};
    std::string out;
    for (size_t i = 0; i < text.size();) {
        size_t length = 1;
        char c = text[i];
        for (const auto &[reference, meaning] : references) {
            if (c == '&' && text.compare(i, reference.size(), reference) == 0) {
                c = meaning;
                length = reference.size();
                break;
            }
        }
        out += c;
        i += length;
    }
    return out;
}

NSString *element(const std::string &image, const char *name)
{
    std::string value;
    if (!XMLUtility().GetValueForOutermostTag(image, name, value))
        return nil;
    return tarvik::nsstring(unescaped(value));
}

int labelNamed(NSString *name)
{
    for (int index = 0; index < kLabelCount; ++index) {
        if ([labelName(index) isEqual:name])
            return index;
    }
    return 0;
}

}  // namespace

std::string xmlOfRows(NSArray *rows)
{
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<catalogue>\n";
    for (id row : tarvik::each<NSObject>(rows)) {
        if (![text(row, kPath) length])
            continue;
        xml += "  <image>\n";
        append(xml, "name", text(row, kName));
        append(xml, "path", text(row, kPath));
        append(xml, "size", [NSString stringWithFormat:@"%lld", static_cast<long long>(number(row, kSize))]);
        append(xml, "sha1", text(row, kChecksum));
        append(xml, "label", label(row) ? labelName(label(row)) : nil);
        append(xml, "note", text(row, kNote));
        xml += "  </image>\n";
    }
    return xml + "</catalogue>\n";
}

std::optional<NSArray *> rowsOfXML(const std::string &xml)
{
    std::string catalogue;
    if (!xml.starts_with("<?xml") || (!XMLUtility().GetValueForOutermostTag(xml, "catalogue", catalogue) &&
                                      xml.find("<catalogue></catalogue>") == std::string::npos))
        return {};
    std::vector<std::string> images;
    XMLUtility().GetValuesForTag(catalogue, "image", images);
    NSMutableArray *rows = [NSMutableArray arrayWithCapacity:images.size()];
    for (const std::string &image : images) {
        NSMutableDictionary *row = [NSMutableDictionary dictionary];
        for (const auto &[key, name] :
             {std::pair{kName, "name"}, {kPath, "path"}, {kChecksum, "sha1"}, {kNote, "note"}}) {
            if (NSString *value = element(image, name))
                [row setObject:value forKey:key];
        }
        const std::string size = tarvik::utf8(element(image, "size")).value_or("");
        int64_t bytes = 0;
        std::from_chars(size.data(), size.data() + size.size(), bytes);
        [row setObject:[NSNumber numberWithLongLong:bytes] forKey:kSize];
        [row setObject:[NSNumber numberWithInt:labelNamed(element(image, "label"))] forKey:kLabel];
        [rows addObject:row];
    }
    return adoptedRows(rows);
}

}  // namespace shelf
