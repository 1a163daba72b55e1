#include "Quorvane/Selectors/QVSelectorCombinator.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/QVLimits.h"

namespace quorvane {

NSString QVSelectorCombinatorTypeToString(NSUInteger type) {
    static constexpr const char16_t *names[] = {
        u"none", u"simple",    u"child",  u"indirect-adjacent", u"direct-adjacent",
        u"not",  u"has-child", u"capture"};
    return type < std::size(names) ? names[type] : u"unknown";
}

QVSelectorCombinator::~QVSelectorCombinator() {
    // Step by step: a destructor that left the chain to its members would recurse once for each step.
    std::shared_ptr<QVSelectorCombinator> step = std::move(_next);
    if (step && step->_previous == this)
        step->_previous = nullptr;
    while (step && step.use_count() == 1) {
        std::shared_ptr<QVSelectorCombinator> following = std::move(step->_next);
        if (following && following->_previous == step.get())
            following->_previous = nullptr;
        step = std::move(following);
    }
}

bool QVSelectorCombinator::setNext(std::shared_ptr<QVSelectorCombinator> next) {
    std::size_t steps = 1;
    for (const QVSelectorCombinator *step = _previous; step; step = step->_previous)
        ++steps;
    for (const QVSelectorCombinator *step = next.get(); step; step = step->_next.get())
        if (step == this || ++steps > limits::selectorChainLength)
            return false;

    if (_next && _next->_previous == this)
        _next->_previous = nullptr;
    _next = std::move(next);
    if (_next)
        _next->_previous = this;
    return true;
}

void QVSelectorCombinator::clearMatches() {
    for (QVSelectorCombinator *step = this; step; step = step->_next.get()) {
        step->_matches.clear();
        step->_matchedThrough.clear();
    }
}

std::shared_ptr<QVSelectorCombinator> QVSelectorCombinator::copy() const {
    std::shared_ptr<QVSelectorCombinator> head;
    QVSelectorCombinator *last = nullptr;
    for (const QVSelectorCombinator *step = this; step; step = step->_next.get()) {
        auto copied = std::make_shared<QVSelectorCombinator>();
        copied->_type = step->_type;
        copied->_simpleSelectors = step->_simpleSelectors;
        copied->_captureName = step->_captureName;
        copied->_previous = last;
        QVSelectorCombinator *const current = copied.get();
        (last ? last->_next : head) = std::move(copied);
        last = current;
    }
    return head;
}

NSString QVSelectorCombinator::description() const {
    return NSString::stringWithFormat(u"<%@: %p : type=%@>", className(), static_cast<const void *>(this),
                                      QVSelectorCombinatorTypeToString(_type));
}

const NSCodingClass &QVSelectorCombinator::codingClass() {
    static const NSCodingClass codingClass{
        u"QVSelectorCombinator", nullptr,
        +[]() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<QVSelectorCombinator>(); }};
    return codingClass;
}

void QVSelectorCombinator::encodeWithCoder(NSCoder &coder) const {
    coder.encodeInteger(static_cast<NSInteger>(_type), u"type");
    coder.encodeArray(_simpleSelectors, u"simpleSelectors");
    coder.encodeObject(_next, u"next");
    if (_previous)
        coder.encodeObject(
            std::static_pointer_cast<const QVSelectorCombinator>(_previous->weak_from_this().lock()),
            u"previous");
    coder.encodeString(_captureName, u"captureName");
}

std::shared_ptr<NSSecureCoding> QVSelectorCombinator::initWithCoder(NSCoder &coder,
                                                                    std::shared_ptr<NSSecureCoding> self) {
    _type = static_cast<NSUInteger>(coder.decodeInteger(u"type"));
    if (auto selectors = coder.decodeArrayOfClass<QVSimpleSelector>(u"simpleSelectors"))
        _simpleSelectors.assign(selectors->begin(), selectors->end());
    _captureName = coder.decodeString(u"captureName");
    // The links back follow from the links forward. An archive's own word on them could name a step that
    // nothing keeps alive.
    if (!setNext(coder.decodeObjectOfClass<QVSelectorCombinator>(u"next"))) {
        coder.failWithError(NSError::errorWithDomain(
            NSCocoaErrorDomain, 4864,
            {{NSLocalizedDescriptionKey,
              NSString(u"The steps of a selector form a circle or are too many.")}}));
        return nullptr;
    }
    return self;
}

} // namespace quorvane
