#include "Quorvane/Syntaxes/QVSyntaxSurroundingPair.h"

#include "Quorvane/Selectors/QVSimpleSelector.h"

namespace quorvane {

std::shared_ptr<QVSyntaxSurroundingPair> QVSyntaxSurroundingPair::copy() const {
    return std::make_shared<QVSyntaxSurroundingPair>(*this);
}

const NSCodingClass &QVSyntaxSurroundingPair::codingClass() {
    static const NSCodingClass coding{
        u"QVSyntaxSurroundingPair", nullptr,
        []() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<QVSyntaxSurroundingPair>(); }};
    return coding;
}

void QVSyntaxSurroundingPair::encodeWithCoder(NSCoder &coder) const {
    coder.encodeString(_open, u"open");
    coder.encodeString(_close, u"close");
    coder.encodeArray(_skipSelectors, u"skipSelectors");
}

std::shared_ptr<NSSecureCoding> QVSyntaxSurroundingPair::initWithCoder(NSCoder &coder,
                                                                       std::shared_ptr<NSSecureCoding> self) {
    _open = coder.decodeString(u"open");
    _close = coder.decodeString(u"close");
    if (const auto selectors = coder.decodeArrayOfClass<QVSimpleSelector>(u"skipSelectors"))
        _skipSelectors.emplace(selectors->begin(), selectors->end());
    return self;
}

} // namespace quorvane
