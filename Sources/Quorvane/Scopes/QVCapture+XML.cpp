#include "Quorvane/QuorvaneErrors.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/XML/QVXMLAttributes.h"

#include "Platform/Foundation/NSCharacterSet.h"

namespace quorvane {

namespace {

/// The number that the whole text is, nothing for any other text.
std::optional<NSInteger> integerOfText(const NSString &text) {
    const NSString trimmed = text.stringByTrimmingCharactersInSet(*NSCharacterSet::whitespaceCharacterSet());
    std::u16string_view digits = trimmed;
    if (digits.starts_with(u'-') || digits.starts_with(u'+'))
        digits.remove_prefix(1);
    const bool isInteger = !digits.empty() && digits.find_first_not_of(u"0123456789") == digits.npos;
    return isInteger ? std::optional(trimmed.integerValue()) : std::nullopt;
}

} // namespace

std::shared_ptr<QVCapture> QVCapture::captureWithXMLElement(const QVXMLElement &element,
                                                            std::shared_ptr<NSError> *error) {
    const NSString text = element.valueForAttribute(u"number");
    const auto number = integerOfText(text);
    if (!number) {
        QVSetError(error, QVDefinitionError(
                              NSString::stringWithFormat(u"Invalid capture number: %@ {%ld, %ld}", text,
                                                         element.lineNumber(), element.columnNumber())));
        return nullptr;
    }
    auto capture = std::make_shared<QVCapture>();
    capture->setNumber(static_cast<NSUInteger>(*number));
    if (NSString name = QVNonEmptyAttribute(element, u"name"))
        capture->setName(std::move(name));
    return capture;
}

} // namespace quorvane
