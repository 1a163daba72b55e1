// Archives of attributed strings, documents, views with folds and attachments. The first byte chooses what is
// read, and whether the rest is an archive or a script for one: few changes of an archive's bytes are an
// archive again, so scripts choose classes, keys and values. What is read must bear being used and edited,
// and once written it reads and writes the same for ever.
#include "Fuzz/FuzzTarget.h"

#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/NSParagraphStyle.h"
#include "Platform/AppKit/NSShadow.h"
#include "Platform/Foundation/NSAttributedString+Coding.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Quorvane/Text/QVConcreteTextStorage.h"
#include "Quorvane/Text/QVFoldingTextStorage.h"
#include "Quorvane/Text/QVTextFoldAttachment.h"
#include "Quorvane/Text/QVTokenTextAttachment.h"

#include <algorithm>
#include <array>
#include <functional>

using namespace quorvane;

// Seen from outside, for the checker of leaks can be a library of its own.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions();
/// Fontconfig keeps the patterns of its configuration by their distance from each other, which the search for
/// leaks can't follow.
extern "C" const char *__lsan_default_suppressions() { return "leak:libfontconfig"; }

namespace {

/// Has an attributed string and attributes among its fields.
class Holder final : public NSObject, public NSSecureCoding {
public:
    std::shared_ptr<const NSAttributedString> text;
    std::optional<NSAttributes> attributes;

    static const NSCodingClass &codingClass() {
        static const NSCodingClass codingClass{u"Holder", nullptr, +[]() -> std::shared_ptr<NSSecureCoding> {
                                                   return std::make_shared<Holder>();
                                               }};
        return codingClass;
    }
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override {
        if (text)
            qv_encodeAttributedString(coder, *text, u"contents");
        if (attributes)
            qv_encodeAttributes(coder, *attributes, u"NSValues");
    }
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override {
        const std::array accepted{&CTFont::codingClass(),
                                  &NSColor::codingClass(),
                                  &NSShadow::codingClass(),
                                  &NSParagraphStyle::codingClass(),
                                  &NSTextAttachment::codingClass(),
                                  &QVTextAttachment::codingClass(),
                                  &QVTextFoldAttachment::codingClass()};
        text = qv_decodeAttributedString(coder, u"contents", accepted);
        attributes = qv_decodeAttributes(coder, u"NSValues", accepted);
        return self;
    }
};

// Scripts

const NSCodingClass stringClass{u"NSAttributedString", nullptr, nullptr};
const NSCodingClass attributesClass{u"NSAttributes", nullptr, nullptr};

class Script {
public:
    Script(const std::uint8_t *data, std::size_t size) : _next(data), _end(data + size) {}

    std::uint8_t byte() { return _next < _end ? *_next++ : 0; }
    bool isAtEnd() const { return _next == _end; }
    template <typename T, std::size_t Count> const T &oneOf(const std::array<T, Count> &choices) {
        return choices[byte() % Count];
    }

    NSString text() {
        std::u16string units;
        for (std::uint8_t count = byte() % 8; count > 0; --count)
            units += oneOf(std::array<char16_t, 8>{u'a', u'b', u'\r', u'\n', u'\t', 0xFFFC, 0xD83D, 0xDE00});
        return NSString(units);
    }
    NSInteger number() {
        const NSInteger value = byte();
        switch (value) {
        case 255:
            return NSNotFound;
        case 254:
            return std::numeric_limits<NSInteger>::min();
        case 253:
            return -1;
        default:
            return value;
        }
    }

private:
    const std::uint8_t *_next;
    const std::uint8_t *_end;
};

/// Writes in the name of another class.
class Forged final : public NSSecureCoding {
public:
    using Field = std::function<void(NSCoder &)>;
    Forged(const NSCodingClass &codingClass, std::vector<Field> fields)
        : _codingClass(codingClass), _fields(std::move(fields)) {}
    const NSCodingClass &classForCoder() const override { return _codingClass; }
    void encodeWithCoder(NSCoder &coder) const override {
        for (const Field &field : _fields)
            field(coder);
    }
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &, std::shared_ptr<NSSecureCoding>) override {
        return nullptr;
    }

private:
    const NSCodingClass &_codingClass;
    std::vector<Field> _fields;
};

using Object = std::shared_ptr<const NSSecureCoding>;

Object objectOfScript(Script &script, const NSCodingClass &codingClass, int depth);

Object anyObject(Script &script, int depth) {
    static const std::array classes{
        &stringClass,
        &attributesClass,
        &CTFont::codingClass(),
        &NSColor::codingClass(),
        &NSShadow::codingClass(),
        &NSParagraphStyle::codingClass(),
        &NSTextAttachment::codingClass(),
        &QVTextAttachment::codingClass(),
        &QVTextFoldAttachment::codingClass(),
        &QVTokenTextAttachment::codingClass(),
        &QVConcreteTextStorage::codingClass(),
        &QVFoldingTextStorage::codingClass(),
    };
    return objectOfScript(script, *script.oneOf(classes), depth);
}

Forged::Field fieldOfScript(Script &script, int depth) {
    static const std::array<NSString, 24> keys{u"contents",
                                               u"NSString",
                                               u"NSAttributes",
                                               u"NSAttributeInfo",
                                               u"NSValues",
                                               u"backingStorage",
                                               u"string",
                                               u"defaultTextAttributes",
                                               u"lineEndings",
                                               u"indentationStyle",
                                               u"tabWidth",
                                               u"range",
                                               u"subfolds",
                                               u"cursor",
                                               u"NSAttachmentContents",
                                               u"NSAttachmentFileType",
                                               u"text",
                                               u"groupingIdentifier",
                                               u"index",
                                               u"textColor",
                                               u"selectedTextColor",
                                               u"backgroundColor",
                                               u"selectedBackgroundColor",
                                               u"other"};
    static const std::array<NSAttributeKey, 6> attributes{
        NSFontAttributeName,       NSForegroundColorAttributeName, NSShadowAttributeName,
        NSAttachmentAttributeName, NSParagraphStyleAttributeName,  NSAttributeKey(u"other")};
    const NSString key = script.oneOf(keys);
    switch (script.byte() % 8) {
    case 0:
        return [key, value = script.text()](NSCoder &coder) { coder.encodeString(value, key); };
    case 1:
        return [key, value = script.number()](NSCoder &coder) { coder.encodeInteger(value, key); };
    case 2: {
        std::vector<std::uint8_t> bytes;
        for (std::uint8_t count = script.byte() % 16; count > 0; --count)
            bytes.push_back(script.byte());
        return [key, bytes](NSCoder &coder) { coder.encodeData(bytes, key); };
    }
    case 3: {
        const auto location = static_cast<NSUInteger>(script.number());
        const auto length = static_cast<NSUInteger>(script.number());
        return [key, location, length](NSCoder &coder) { coder.encodeRange(NSRange{location, length}, key); };
    }
    case 4: {
        std::map<NSString, NSCodingValue> values;
        for (std::uint8_t count = script.byte() % 4; count > 0; --count) {
            const NSString name = script.oneOf(attributes).string();
            switch (script.byte() % 4) {
            case 0:
                values[name] = script.number();
                break;
            case 1:
                values[name] = script.text();
                break;
            case 2:
                values[name] = nullptr;
                break;
            default:
                if (auto object = anyObject(script, depth))
                    values[name] = std::const_pointer_cast<NSSecureCoding>(object);
            }
        }
        return [key, values](NSCoder &coder) { coder.encodeValueDictionary(values, key); };
    }
    case 5: {
        std::vector<Object> objects;
        for (std::uint8_t count = script.byte() % 4; count > 0; --count)
            if (auto object = anyObject(script, depth))
                objects.push_back(std::move(object));
        return [key, objects](NSCoder &coder) { coder.encodeObjectArray(objects, key); };
    }
    default:
        return [key, object = anyObject(script, depth)](NSCoder &coder) { coder.encodeObject(object, key); };
    }
}

Object objectOfScript(Script &script, const NSCodingClass &codingClass, int depth) {
    if (depth == 0 || script.isAtEnd())
        return nullptr;
    std::vector<Forged::Field> fields;
    for (std::uint8_t count = script.byte() % 8; count > 0 && !script.isAtEnd(); --count)
        fields.push_back(fieldOfScript(script, depth - 1));
    return std::make_shared<const Forged>(codingClass, std::move(fields));
}

// Using

/// Reads all that a reader of the text would.
void readThrough(const NSAttributedString &string) {
    NSUInteger covered = 0;
    string.enumerateAttributesInRange({0, string.length()}, 0,
                                      [&](const NSAttributes &, NSRange range, bool &) {
                                          fuzz::require(range.location == covered && range.length > 0);
                                          covered = NSMaxRange(range);
                                      });
    fuzz::require(covered == string.length() && string.string().length() == string.length());
}

void use(Holder &holder) {
    if (holder.text)
        readThrough(*holder.text);
}

void use(QVConcreteTextStorage &document) {
    readThrough(document);
    fuzz::require(document.numberOfLines() > 0);
    document.replaceCharactersInRange({0, document.length() / 2}, u"x\r\ny");
    document.fixAttributesInRange({0, document.length()});
    readThrough(document);
}

/// Of a view that came back with folds only its look is left, so what it is asked for may be refused.
void use(QVFoldingTextStorage &view) {
    readThrough(view);
    const auto attempt = [](auto action) {
        try {
            action();
        } catch (const NSException &) {
        }
    };
    attempt([&] { view.convertRangeToBacking({0, view.length()}); });
    attempt([&] { view.convertRangeFromBacking({0, view.backingStorage()->length()}); });
    attempt([&] {
        view.enumerateDiscreteBackingRangesInRange({0, view.length()}, [](NSRange, NSUInteger, bool &) {});
    });
    attempt([&] { view.foldRange({0, view.length()}); });
    attempt([&] { view.backingStorage()->replaceCharactersInRange({0, 0}, u"abc"); });
    attempt([&] { view.foldRange({1, 2}); });
    attempt([&] { view.unfoldAllInRange({0, view.length()}); });
    attempt([&] { view.replaceCharactersInRange({0, view.length()}, u"z"); });
    attempt([&] { view.lineNumberForCharacterIndex(view.length(), nullptr); });
}

void use(NSTextAttachment &) {}

template <typename T> std::shared_ptr<T> throughArchive(const std::shared_ptr<T> &object) {
    const NSData written = NSKeyedArchiver::archivedDataWithRootObject(object);
    auto again = NSKeyedUnarchiver::unarchivedObjectOfClass<T>(written);
    fuzz::require(!written.isNull() && again != nullptr);
    return again;
}

template <typename T> void readAndWrite(const NSData &data) {
    std::shared_ptr<NSError> error;
    const auto object = NSKeyedUnarchiver::unarchivedObjectOfClass<T>(data, &error);
    fuzz::require((object == nullptr) == (error != nullptr));
    if (!object)
        return;
    const auto again = throughArchive(object);
    const NSData written = NSKeyedArchiver::archivedDataWithRootObject(again);
    // From the second time on: a fold's archive does not hold its range.
    fuzz::require(std::ranges::equal(
        written.bytes(), NSKeyedArchiver::archivedDataWithRootObject(throughArchive(again)).bytes()));
    use(*object);
    use(*again);
}

template <typename T> void readArchiveOrScript(const std::uint8_t *data, std::size_t size, bool isScript) {
    if (!isScript)
        return readAndWrite<T>(NSData(std::vector<std::uint8_t>(data, data + size)));
    Script script(data, size);
    if (const Object object = objectOfScript(script, T::codingClass(), 6))
        readAndWrite<T>(NSKeyedArchiver::archivedDataWithRootObject(object));
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::silenceLog();
    if (size == 0)
        return 0;
    const bool isScript = (data[0] & 0x80) != 0;
    switch (data[0] % 6) {
    case 0:
        readArchiveOrScript<Holder>(data + 1, size - 1, isScript);
        break;
    case 1:
        readArchiveOrScript<QVConcreteTextStorage>(data + 1, size - 1, isScript);
        break;
    case 2:
        readArchiveOrScript<QVFoldingTextStorage>(data + 1, size - 1, isScript);
        break;
    case 3:
        readArchiveOrScript<QVTextFoldAttachment>(data + 1, size - 1, isScript);
        break;
    case 4:
        readArchiveOrScript<QVTokenTextAttachment>(data + 1, size - 1, isScript);
        break;
    default:
        readArchiveOrScript<QVTextAttachment>(data + 1, size - 1, isScript);
        break;
    }
    return 0;
}
