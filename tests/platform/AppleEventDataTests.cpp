// Descriptors, lists, records, events, coercions and the flattened form.
#include <Carbon/AppleEvents.h>
#include <Carbon/Files.h>
#include <Carbon/MacMemory.h>
#include <Tarvik/support/OwnedDesc.h>
#include <gtest/gtest.h>

#include "tests/support/AppleEvents.h"
#include "tests/support/TemporaryFolder.h"

#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

using tarvik::OwnedDesc;

namespace {

/// The bytes of a coercion, or its error.
std::string coerced(const OwnedDesc &desc, DescType to)
{
    OwnedDesc made;
    const OSErr error = AECoerceDesc(desc.get(), to, made.out());
    if (error) {
        EXPECT_EQ(made->descriptorType, DescType(typeNull));
        return "error " + std::to_string(error);
    }
    EXPECT_EQ(made->descriptorType, to);
    return bytesIn(made.get());
}
const std::string kFails = "error -1700";

OwnedDesc list(std::initializer_list<std::string_view> texts)
{
    OwnedDesc made;
    AECreateList(nullptr, 0, false, made.out());
    for (const std::string_view text : texts)
        EXPECT_EQ(AEPutPtr(made.get(), 0, typeUTF8Text, text.data(), Size(text.size())), noErr);
    return made;
}

/// A record in an event, a list in the record, an event in the list: everything that can be nested.
OwnedDesc everything()
{
    OwnedDesc event, record, inner;
    const SInt32 pid = 77;
    const OwnedDesc target = descOfNumber(typeKernelProcessID, pid);
    AECreateAppleEvent("book"_code, "borw"_code, target.get(), 1234, 99, event.out());
    AECreateList(nullptr, 0, true, record.out());
    OwnedDesc items = list({"Emma", "", "Persuasion"});
    AECreateAppleEvent("in  "_code, "side"_code, nullptr, kAutoGenerateReturnID, 0, inner.out());
    AEPutDesc(items.get(), 0, inner.get());
    AEPutKeyDesc(record.get(), "titl"_code, items.get());
    AEPutKeyPtr(record.get(), "none"_code, typeNull, nullptr, 0);
    AEPutParamDesc(event.get(), keyDirectObject, record.get());
    AEPutAttributePtr(event.get(), keyTimeoutAttr, typeSInt32, &pid, sizeof pid);
    return event;
}

std::string flattened(const AEDesc *desc)
{
    std::string form(size_t(AESizeOfFlattenedDesc(desc)), '\0');
    Size actual = 0;
    EXPECT_EQ(AEFlattenDesc(desc, form.data(), Size(form.size()), &actual), noErr);
    EXPECT_EQ(actual, Size(form.size()));
    return form;
}

}  // namespace

TEST(AppleEventDataTest, Values)
{
    OwnedDesc desc = descOf(typeText, "four"), copy;
    char buffer[8] = "-------";
    EXPECT_EQ(AEGetDescData(desc.get(), buffer, 2), noErr);
    EXPECT_STREQ(buffer, "fo-----");  // as many as fit
    EXPECT_EQ(AEGetDescDataRange(desc.get(), buffer, 2, 2), noErr);
    EXPECT_STREQ(buffer, "ur-----");
    EXPECT_EQ(AEGetDescDataRange(desc.get(), buffer, 2, 3), errAECorruptData);
    EXPECT_EQ(AEDuplicateDesc(desc.get(), copy.out()), noErr);
    EXPECT_EQ(AEReplaceDescData(typeUTF8Text, "5", 1, desc.get()), noErr);
    EXPECT_EQ(bytesIn(copy.get()), "four");
    EXPECT_EQ(bytesIn(desc.get()), "5");

    AEDesc raw = {typeText, nullptr};
    EXPECT_EQ(AECreateDesc(typeText, nullptr, 3, &raw), paramErr);
    EXPECT_EQ(raw.descriptorType, DescType(typeNull));
    EXPECT_EQ(AECreateDesc(typeText, "x", -1, &raw), paramErr);
    EXPECT_EQ(AECreateDesc(typeAEList, "no form", 7, &raw), paramErr);
    EXPECT_EQ(AEDisposeDesc(&raw), noErr);
    EXPECT_EQ(AEDisposeDesc(nullptr), noErr);
}

TEST(AppleEventDataTest, ListsAndRecords)
{
    OwnedDesc texts = list({"a", "b", "c"}), item;
    long count = 0;
    AEKeyword key;
    DescType type;
    Size size;
    char buffer[4];
    EXPECT_EQ(AEPutPtr(texts.get(), 2, typeUTF8Text, "B", 1), noErr);   // replaces
    EXPECT_EQ(AEPutPtr(texts.get(), 4, typeUTF8Text, "dd", 2), noErr);  // adds
    EXPECT_EQ(AEPutPtr(texts.get(), 6, typeUTF8Text, "x", 1), errAEIllegalIndex);
    EXPECT_EQ(AEDeleteItem(texts.get(), 1), noErr);
    EXPECT_EQ(AECountItems(texts.get(), &count), noErr);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(AEGetNthPtr(texts.get(), 3, typeUnicodeText, &key, &type, buffer, sizeof buffer, &size), noErr);
    EXPECT_EQ(std::string(buffer, size_t(size)), std::string("d\0d\0", 4));
    EXPECT_EQ(key, AEKeyword(typeWildCard));
    for (const long index : {0L, 4L, -1L})
        EXPECT_EQ(AEGetNthDesc(texts.get(), index, typeWildCard, &key, item.out()), errAEDescNotFound);
    EXPECT_EQ(AEPutKeyPtr(texts.get(), "name"_code, typeUTF8Text, "x", 1), errAEWrongDataType);

    OwnedDesc record;
    AECreateList(nullptr, 0, true, record.out());
    EXPECT_EQ(AEPutKeyPtr(record.get(), "name"_code, typeUTF8Text, "Emma", 4), noErr);
    EXPECT_EQ(AEPutKeyPtr(record.get(), "name"_code, typeUTF8Text, "Jane", 4), noErr);
    EXPECT_EQ(AEPutKeyDesc(record.get(), "all "_code, texts.get()), noErr);
    EXPECT_EQ(AEPutDesc(record.get(), 0, texts.get()), errAEWrongDataType);
    EXPECT_EQ(AEGetNthDesc(record.get(), 1, typeWildCard, &key, item.out()), noErr);
    EXPECT_EQ(key, "name"_code);
    EXPECT_EQ(bytesIn(item.get()), "Jane");
    EXPECT_EQ(AESizeOfKeyDesc(record.get(), "name"_code, &type, &size), noErr);
    EXPECT_EQ(size, 4);
    EXPECT_EQ(AEDeleteKeyDesc(record.get(), "name"_code), noErr);
    EXPECT_EQ(AEGetKeyDesc(record.get(), "name"_code, typeWildCard, item.out()), errAEDescNotFound);
    EXPECT_TRUE(AECheckIsRecord(record.get()));
    EXPECT_FALSE(AECheckIsRecord(texts.get()));
    record.get()->descriptorType = typeObjectSpecifier;  // its owner may
    EXPECT_TRUE(AECheckIsRecord(record.get()));

    const OwnedDesc text = descOf(typeText, "x");
    EXPECT_EQ(AECountItems(text.get(), &count), errAEWrongDataType);
}

TEST(AppleEventDataTest, Arrays)
{
    OwnedDesc numbers;
    AECreateList(nullptr, 0, false, numbers.out());
    const SInt16 shorts[] = {1, 2, 3};
    EXPECT_EQ(AEPutArray(numbers.get(), kAEPackedArray, reinterpret_cast<const AEArrayData *>(shorts),
                         typeSInt16, 2, 3),
              noErr);
    SInt16 back[3] = {};
    DescType type;
    Size size;
    long count;
    const auto array = [](void *memory) { return static_cast<AEArrayDataPointer>(memory); };
    EXPECT_EQ(AEGetArray(numbers.get(), kAEPackedArray, array(back), 5, &type, &size, &count),
              errAEBufferTooSmall);
    EXPECT_EQ(AEGetArray(numbers.get(), kAEPackedArray, array(back), 6, &type, &size, &count), noErr);
    EXPECT_EQ(std::vector<SInt16>(back, back + 3), std::vector<SInt16>(shorts, shorts + 3));
    EXPECT_EQ(std::vector<long>({long(type), size, count}), std::vector<long>({long(typeSInt16), 2, 3}));
    Handle handles[3];
    EXPECT_EQ(AEGetArray(numbers.get(), kAEHandleArray, array(handles), sizeof handles, &type, &size, &count),
              noErr);
    for (const Handle handle : handles) {
        EXPECT_EQ(GetHandleSize(handle), 2);
        DisposeHandle(handle);
    }
    AEPutPtr(numbers.get(), 0, typeSInt32, "four", 4);  // no longer alike
    EXPECT_EQ(AEGetArray(numbers.get(), kAEPackedArray, array(back), 6, &type, &size, &count),
              errAEWrongDataType);
}

TEST(AppleEventDataTest, EventsAndTheirAttributes)
{
    OwnedDesc event = everything(), other;
    SInt32 n = 0;
    OSType type = 0;
    DescType actual;
    Size size;
    const auto attribute = [&](AEKeyword key, DescType as, void *to) {
        return AEGetAttributePtr(event.get(), key, as, &actual, to, 4, &size);
    };
    EXPECT_EQ(attribute(keyEventClassAttr, typeType, &type), noErr);
    EXPECT_EQ(type, "book"_code);
    EXPECT_EQ(attribute(keyReturnIDAttr, typeSInt32, &n), noErr);
    EXPECT_EQ(n, 1234);
    EXPECT_EQ(attribute(keyAddressAttr, typeKernelProcessID, &n), noErr);
    EXPECT_EQ(n, 77);
    EXPECT_EQ(attribute(keySenderPIDAttr, typeSInt32, &n), errAEDescNotFound);
    EXPECT_EQ(AEPutAttributePtr(event.get(), keySenderPIDAttr, typeSInt32, &n, 4),
              errAENotAppleEvent);  // nobody forges it
    EXPECT_EQ(attribute(keyMissedKeywordAttr, typeKeyword, &type), noErr);
    EXPECT_EQ(type, OSType(keyDirectObject));
    EXPECT_EQ(AEGetParamDesc(event.get(), keyDirectObject, typeWildCard, other.out()), noErr);
    EXPECT_EQ(attribute(keyMissedKeywordAttr, typeKeyword, &type), errAEDescNotFound);
    EXPECT_EQ(AEGetAttributeDesc(other.get(), keyEventIDAttr, typeType, other.out()), errAENotAppleEvent);

    std::vector<SInt32> ids;
    for (int i = 0; i < 3; ++i) {
        AECreateAppleEvent(1, 2, nullptr, kAutoGenerateReturnID, 0, event.out());
        attribute(keyReturnIDAttr, typeSInt32, &n);
        EXPECT_TRUE(n >= 0 && std::find(ids.begin(), ids.end(), n) == ids.end());
        ids.push_back(n);
    }
}

TEST(AppleEventCoercionTest, Text)
{
    const std::string utf8 = "Zoë 🙂";
    const OwnedDesc text = descOf(typeUTF8Text, utf8);
    for (const DescType type :
         {DescType(typeText), DescType(typeUnicodeText), DescType(typeUTF16ExternalRepresentation),
          DescType(typeIntlText), DescType(typeCString), DescType(typePString)}) {
        OwnedDesc there;
        ASSERT_EQ(AECoerceDesc(text.get(), type, there.out()), noErr);
        EXPECT_EQ(coerced(there, typeUTF8Text), utf8);
    }
    EXPECT_EQ(coerced(descOf(typeUTF16ExternalRepresentation, std::string("\0Z\0\xEB", 4)), typeUTF8Text),
              "Zë");
    EXPECT_EQ(coerced(descOf(typeUTF16ExternalRepresentation, std::string("\xFF\xFEZ\0", 4)), typeUTF8Text),
              "Z");
    EXPECT_EQ(coerced(descOf(typeText, "Zo\x91"), typeUTF8Text), "Zoë");  // not UTF-8: what it was before
    EXPECT_EQ(coerced(descOf(typeUTF8Text, "\xFF"), typeText), kFails);
    EXPECT_EQ(coerced(descOf(typeUnicodeText, "odd"), typeUTF8Text), kFails);
    EXPECT_EQ(coerced(descOf(typePString, "\x05"
                                          "abc"),
                      typeUTF8Text),
              kFails);
}

TEST(AppleEventCoercionTest, NumbersBooleansCodes)
{
    const struct {
        OwnedDesc from;
        DescType to;
        std::string expected;
    } cases[] = {
        {descOfNumber(typeSInt32, 70000), typeSInt16, kFails},
        {descOfNumber(typeSInt32, -1), typeUInt32, kFails},
        {descOfNumber(typeSInt32, -1), typeSInt64, rawBytes(int64_t(-1))},
        {descOfNumber(typeUInt64, UINT64_MAX), typeSInt64, kFails},
        {descOfNumber(typeUInt64, UINT64_MAX), typeUTF8Text, "18446744073709551615"},
        {descOfNumber(typeIEEE64BitFloatingPoint, 2.5), typeSInt32, rawBytes(2)},
        {descOfNumber(typeIEEE64BitFloatingPoint, 3.5), typeSInt32, rawBytes(4)},
        {descOfNumber(typeIEEE64BitFloatingPoint, 9223372036854775808.0), typeSInt64, kFails},
        {descOfNumber(typeIEEE64BitFloatingPoint, -9223372036854775808.0), typeSInt64, rawBytes(INT64_MIN)},
        {descOfNumber(typeIEEE64BitFloatingPoint, 0.0 / 0.0), typeSInt32, kFails},
        {descOfNumber(typeIEEE64BitFloatingPoint, 1e300), typeIEEE32BitFloatingPoint, kFails},
        {descOfNumber(typeIEEE64BitFloatingPoint, 0.1), typeUTF8Text, "0.1"},
        {descOf(typeText, " -12 "), typeSInt16, rawBytes(int16_t(-12))},
        {descOf(typeText, "+3.5e2"), typeIEEE64BitFloatingPoint, rawBytes(350.0)},
        {descOf(typeText, "12 apples"), typeSInt32, kFails},
        {descOf(typeText, "nan"), typeIEEE64BitFloatingPoint, kFails},
        {descOf(typeText, ""), typeSInt32, kFails},
        {descOf(typeText, "TRUE"), typeBoolean, "\1"},
        {descOf(typeText, "yes"), typeBoolean, kFails},
        {descOf(typeTrue, ""), typeUTF8Text, "true"},
        {descOf(typeBoolean, std::string(1, '\0')), typeFalse, ""},
        {descOf(typeBoolean, std::string(1, '\0')), typeTrue, kFails},
        {descOf(typeBoolean, "\2"), typeSInt32, rawBytes(1)},
        {descOfNumber(typeSInt32, 7), typeBoolean, "\1"},
        {descOf(typeSInt32, "abc"), typeSInt64, kFails},  // three bytes
        {descOfNumber(typeType, "docu"_code), typeUTF8Text, "docu"},
        {descOf(typeText, "odoc"), typeEnumerated, rawBytes("odoc"_code)},
        {descOfNumber(typeType, "docu"_code), typeKeyword, rawBytes("docu"_code)},
        {descOf(typeText, "five5"), typeType, kFails},
        {descOfNumber(typeType, "docu"_code), typeSInt32, kFails},
    };
    for (const auto &one : cases)
        EXPECT_EQ(coerced(one.from, one.to), one.expected) << &one - cases;
}

TEST(AppleEventCoercionTest, ListsRecordsEvents)
{
    const OwnedDesc one = list({"12"}), event = everything();
    EXPECT_EQ(coerced(one, typeSInt32), rawBytes(12));
    EXPECT_EQ(coerced(list({"1", "2"}), typeSInt32), kFails);
    EXPECT_EQ(coerced(list({}), typeUTF8Text), kFails);
    EXPECT_EQ(coerced(one, typeAERecord), kFails);
    OwnedDesc made, item;
    AEKeyword key;
    ASSERT_EQ(AECoerceDesc(descOf(typeText, "x").get(), typeAEList, made.out()), noErr);
    EXPECT_EQ(AEGetNthDesc(made.get(), 1, typeWildCard, &key, item.out()), noErr);
    EXPECT_EQ(bytesIn(item.get()), "x");
    ASSERT_EQ(AECoerceDesc(event.get(), typeAERecord, made.out()), noErr);
    ASSERT_EQ(AEGetKeyDesc(made.get(), keyDirectObject, typeWildCard, item.out()), noErr);
    OwnedDesc object;
    ASSERT_EQ(AECoerceDesc(item.get(), typeObjectSpecifier, object.out()), noErr);
    EXPECT_EQ(object->descriptorType, DescType(typeObjectSpecifier));
    EXPECT_TRUE(AECheckIsRecord(object.get()));
    EXPECT_EQ(coerced(item, typeUTF8Text), kFails);
    long count = 0;
    ASSERT_EQ(AECoerceDesc(item.get(), typeAEList, made.out()), noErr);
    EXPECT_EQ(AECountItems(made.get(), &count), noErr);
    EXPECT_EQ(count, 2);
}

TEST(AppleEventCoercionTest, Files)
{
    const TemporaryFolder folder;
    const std::string path = folder.write("naïve file.txt", "x");
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, nullptr), noErr);
    const OwnedDesc reference = descOfNumber(typeFSRef, ref);
    OwnedDesc alias, url, text;
    ASSERT_EQ(AECoerceDesc(reference.get(), typeAlias, alias.out()), noErr);
    std::filesystem::rename(path, folder / "other.txt");
    ASSERT_EQ(AECoerceDesc(alias.get(), typeFileURL, url.out()), noErr);  // the alias finds it
    EXPECT_TRUE(bytesIn(url.get()).ends_with("/other.txt")) << bytesIn(url.get());
    ASSERT_EQ(AECoerceDesc(url.get(), typeUTF8Text, text.out()), noErr);
    EXPECT_TRUE(bytesIn(text.get()).ends_with(":other.txt")) << bytesIn(text.get());
    EXPECT_EQ(coerced(text, typeFileURL), bytesIn(url.get()));
    EXPECT_EQ(coerced(descOf(typeFileURL, "file:///no/such/file"), typeAlias), kFails);
    EXPECT_EQ(coerced(descOf(typeFileURL, "http://host/"), typeUTF8Text), kFails);
    EXPECT_EQ(coerced(descOf(typeAlias, "rubbish"), typeFSRef), kFails);
    EXPECT_EQ(coerced(descOf(typeFSRef, "rubbish"), typeAlias), kFails);
}

TEST(AppleEventCoercionTest, HandlersComeFirst)
{
    static const auto shout = [](DescType, const void *data, Size size, DescType to, SRefCon refcon,
                                 AEDesc *result) -> OSErr {
        const std::string text(static_cast<const char *>(data), size_t(size));
        if (text == "leave")
            return errAECoercionFail;
        const std::string loud = text + std::string(size_t(refcon), '!');
        return AECreateDesc(to, loud.data(), Size(loud.size()), result);
    };
    const AECoercionHandlerUPP handler = NewAECoercePtrUPP(shout);
    ASSERT_EQ(AEInstallCoercionHandler(typeText, typeWildCard, handler, 2, false, false), noErr);
    EXPECT_EQ(coerced(descOf(typeText, "hey"), typeUTF8Text), "hey!!");
    EXPECT_EQ(coerced(descOf(typeText, "leave"), typeUTF8Text), "leave");  // to what comes behind it
    ASSERT_EQ(AEInstallCoercionHandler(typeText, typeUTF8Text, handler, 3, false, false), noErr);
    EXPECT_EQ(coerced(descOf(typeText, "hey"), typeUTF8Text), "hey!!!");  // the more particular one
    EXPECT_EQ(AERemoveCoercionHandler(typeText, typeUTF8Text, handler, true), errAEHandlerNotFound);
    EXPECT_EQ(AERemoveCoercionHandler(typeText, typeUTF8Text, handler, false), noErr);
    EXPECT_EQ(AERemoveCoercionHandler(typeText, typeWildCard, nullptr, false), noErr);
    EXPECT_EQ(coerced(descOf(typeText, "hey"), typeUTF8Text), "hey");
}

TEST(AppleEventFlatteningTest, ComesBackAsItWas)
{
    const OwnedDesc event = everything();
    const std::string form = flattened(event.get());
    OwnedDesc back;
    ASSERT_EQ(AEUnflattenDesc(form.data(), back.out()), noErr);
    EXPECT_EQ(flattened(back.get()), form);
    SInt32 id = 0;
    EXPECT_EQ(AEGetAttributePtr(back.get(), keyReturnIDAttr, typeSInt32, nullptr, &id, 4, nullptr), noErr);
    EXPECT_EQ(id, 1234);
    EXPECT_EQ(AECreateDesc(typeAppleEvent, form.data(), Size(form.size()), back.out()), noErr);
    EXPECT_EQ(bytesIn(back.get()), form);
    std::string small(form.size() - 1, '\0');
    EXPECT_EQ(AEFlattenDesc(event.get(), small.data(), Size(small.size()), nullptr), errAEBufferTooSmall);

    OwnedDesc deep = list({"bottom"});
    for (int i = 1; i < 256; ++i) {
        OwnedDesc outer = list({});
        AEPutDesc(outer.get(), 0, deep.get());
        deep = std::move(outer);
    }
    const std::string deepest = flattened(deep.get());
    EXPECT_EQ(AEUnflattenDesc(deepest.data(), back.out()), noErr);
    OwnedDesc tooDeep = list({});
    AEPutDesc(tooDeep.get(), 0, deep.get());
    EXPECT_EQ(AESizeOfFlattenedDesc(tooDeep.get()), 0);
}

TEST(AppleEventFlatteningTest, RefusesWhatIsNoForm)
{
    const std::string form = flattened(everything().get());
    OwnedDesc made;
    const auto read = [&](const std::string &bytes) {
        return AEUnflattenDescFromBytes(bytes.data(), bytes.size(), made.out());
    };
    for (size_t size = 0; size < form.size(); ++size)
        EXPECT_EQ(read(form.substr(0, size)), errAECorruptData) << size;
    EXPECT_EQ(read(form + '\0'), errAECorruptData);
    std::string changed = form;
    changed[4] = 2;
    EXPECT_EQ(read(changed), errAENewerVersion);
    // A count of items that the bytes can't hold takes no memory.
    std::string huge = flattened(list({}).get());
    std::memset(huge.data() + huge.size() - 8, 0x7F, 8);
    EXPECT_EQ(read(huge), errAECorruptData);
    EXPECT_EQ(made->descriptorType, DescType(typeNull));
    // A keyword twice.
    OwnedDesc record;
    AECreateList(nullptr, 0, true, record.out());
    AEPutKeyPtr(record.get(), "aaaa"_code, typeText, "1", 1);
    AEPutKeyPtr(record.get(), "bbbb"_code, typeText, "2", 1);
    std::string twice = flattened(record.get());
    twice.replace(twice.find("bbbb"), 4, "aaaa");
    EXPECT_EQ(read(twice), errAECorruptData);
}
