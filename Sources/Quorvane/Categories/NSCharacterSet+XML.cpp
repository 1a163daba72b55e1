#include "Quorvane/Categories/NSCharacterSet+XML.h"

#include "Quorvane/XML/QVXMLElement.h"

namespace quorvane {

namespace {

/// Null for a child that names no set.
std::shared_ptr<const NSCharacterSet> setOfChild(const QVXMLElement &child) {
    using Factory = std::shared_ptr<const NSCharacterSet> (*)();
    static constexpr std::pair<std::u16string_view, Factory> factories[] = {
        {u"alphanumeric", &NSCharacterSet::alphanumericCharacterSet},
        {u"alpha", &NSCharacterSet::letterCharacterSet},
        {u"lower-alpha", &NSCharacterSet::lowercaseLetterCharacterSet},
        {u"upper-alpha", &NSCharacterSet::uppercaseLetterCharacterSet},
        {u"decimal", &NSCharacterSet::decimalDigitCharacterSet},
        {u"punctuation", &NSCharacterSet::punctuationCharacterSet},
        {u"symbols", &NSCharacterSet::symbolCharacterSet},
        {u"whitespace", &NSCharacterSet::whitespaceCharacterSet},
    };
    for (const auto &[name, factory] : factories)
        if (child.name() == name)
            return factory();
    if (child.name() == u"string")
        return NSCharacterSet::characterSetWithCharactersInString(child.text());
    return nullptr;
}

} // namespace

std::shared_ptr<const NSCharacterSet> qv_characterSetWithXMLElement(const QVXMLElement &element) {
    std::shared_ptr<const NSCharacterSet> result = NSCharacterSet::emptyCharacterSet();
    for (const auto &node : element.children()) {
        const auto child = std::dynamic_pointer_cast<QVXMLElement>(node);
        const auto set = child ? setOfChild(*child) : nullptr;
        if (set)
            result = result->characterSetByFormingUnion(*set);
    }
    return result;
}

} // namespace quorvane
