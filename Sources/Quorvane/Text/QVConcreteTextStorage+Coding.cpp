#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/NSParagraphStyle.h"
#include "Platform/AppKit/NSShadow.h"
#include "Platform/Foundation/NSAttributedString+Coding.h"
#include "Quorvane/Text/QVConcreteTextStorage.h"

#include <array>

namespace quorvane {

const NSCodingClass &QVConcreteTextStorage::codingClass() {
    static const NSCodingClass codingClass{
        u"QVConcreteTextStorage", nullptr,
        +[]() -> std::shared_ptr<NSSecureCoding> { return QVConcreteTextStorage::allocate(); }};
    return codingClass;
}

void QVConcreteTextStorage::encodeWithCoder(NSCoder &coder) const {
    coder.encodeString(NSString(string().substringWithRange({0, length()})), u"string");
    qv_encodeAttributes(coder, _defaultTextAttributes, u"defaultTextAttributes");
    coder.encodeInteger(static_cast<NSInteger>(_lineEndings), u"lineEndings");
    coder.encodeInteger(static_cast<NSInteger>(_indentationStyle), u"indentationStyle");
    coder.encodeInteger(static_cast<NSInteger>(_tabWidth), u"tabWidth");
}

std::shared_ptr<NSSecureCoding> QVConcreteTextStorage::initWithCoder(NSCoder &coder,
                                                                     std::shared_ptr<NSSecureCoding> self) {
    if (const NSString string = coder.decodeString(u"string"); !string.isNull())
        adoptContents(NSMutableAttributedString::initWithString(string));
    const std::array accepted{&CTFont::codingClass(), &NSColor::codingClass(), &NSShadow::codingClass(),
                              &NSParagraphStyle::codingClass()};
    if (const auto attributes = qv_decodeAttributes(coder, u"defaultTextAttributes", accepted))
        setDefaultTextAttributes(*attributes);
    // What other numbers would mean, nobody knows; they are passed over.
    if (coder.containsValueForKey(u"lineEndings"))
        if (const NSInteger value = coder.decodeInteger(u"lineEndings");
            value >= 0 && value <= NSInteger{QVLineEndingsCRLF})
            setLineEndings(static_cast<QVLineEndings>(value));
    if (coder.containsValueForKey(u"indentationStyle"))
        if (const NSInteger value = coder.decodeInteger(u"indentationStyle");
            value >= 0 && value <= NSInteger{QVIndentationStyleTabs})
            setIndentationStyle(static_cast<QVIndentationStyle>(value));
    if (coder.containsValueForKey(u"tabWidth"))
        if (const NSInteger value = coder.decodeInteger(u"tabWidth"); value >= 0)
            setTabWidth(static_cast<NSUInteger>(value));
    return self;
}

} // namespace quorvane
