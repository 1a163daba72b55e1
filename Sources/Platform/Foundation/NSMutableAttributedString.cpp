#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSAttributedString.h"
#include "Platform/Foundation/QVAttributeRuns.h"
#include "Platform/Foundation/QVGapBuffer.h"

namespace quorvane {

namespace {

/// The plain string behind the factories of both classes; those of the class that can't change hand it out
/// for reading alone.
class ConcreteAttributedString final : public NSMutableAttributedString {
public:
    ConcreteAttributedString(std::u16string_view string, const NSAttributes &attributes) : _text(string) {
        _runs.replaceRange({0, 0}, _text.length(), attributes);
    }
    explicit ConcreteAttributedString(const NSAttributedString &other) {
        if (const auto *const plain = dynamic_cast<const ConcreteAttributedString *>(&other)) {
            _text = plain->_text;
            _runs = plain->_runs;
        } else {
            ConcreteAttributedString::replaceCharactersInRange({0, 0}, other);
        }
    }

    using NSMutableAttributedString::attributesAtIndex;

    NSUInteger length() const override { return _text.length(); }
    QVTextReader string() const override { return _text.reader(); }
    NSAttributes attributesAtIndex(NSUInteger index, NSRange *effectiveRange) const override {
        checkIndex(index);
        return _runs.attributesAtIndex(index, effectiveRange);
    }

    void replaceCharactersInRange(NSRange range, std::u16string_view withString) override {
        checkRange(range);
        NSAttributes inherited;
        if (range.length > 0 || range.location > 0)
            inherited = _runs.attributesAtIndex(range.location - (range.length > 0 ? 0 : 1), nullptr);
        else if (length() > 0)
            inherited = _runs.attributesAtIndex(0, nullptr);
        const NSUInteger length = withString.size();
        _text.replaceCharactersInRange(range, withString);
        _runs.replaceRange(range, length, inherited);
    }
    void replaceCharactersInRange(NSRange range, const NSAttributedString &withAttributedString) override {
        checkRange(range);
        if (const auto *const plain = dynamic_cast<const ConcreteAttributedString *>(&withAttributedString)) {
            // Copied where it is this very string.
            const QVAttributeRuns copy = plain == this ? _runs : QVAttributeRuns();
            replaceText(range, plain->_text.reader());
            _runs.replaceRange(range, plain == this ? copy : plain->_runs);
            return;
        }
        const NSUInteger length = withAttributedString.length();
        QVAttributeRuns runs;
        withAttributedString.enumerateAttributesInRange(
            {0, length}, NSAttributedStringEnumerationLongestEffectiveRangeNotRequired,
            [&](const NSAttributes &attributes, NSRange stretch, bool &) {
                runs.replaceRange({runs.length(), 0}, stretch.length, attributes);
            });
        replaceText(range, withAttributedString.string());
        _runs.replaceRange(range, runs);
    }
    void replaceCharactersInRangeWithAttributes(NSRange range, std::u16string_view withString,
                                                const NSAttributes &attributes) override {
        checkRange(range);
        const NSUInteger length = withString.size();
        _text.replaceCharactersInRange(range, withString);
        _runs.replaceRange(range, length, attributes);
    }
    void setAttributes(const NSAttributes &attributes, NSRange range) override {
        checkRange(range);
        if (range.length > 0)
            _runs.replaceRange(range, range.length, attributes);
    }
    void changeAttributesInRange(NSRange range,
                                 QVBlock<NSAttributes(const NSAttributes &)> usingBlock) override {
        checkRange(range);
        QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
        if (usingBlock)
            _runs.changeRange(range, usingBlock);
    }

private:
    void replaceText(NSRange range, QVTextReader with) {
        if (with.isContiguous())
            _text.replaceCharactersInRange(range, with.contiguousView());
        else
            _text.replaceCharactersInRange(range, with.substringWithRange({0, with.length()}));
    }

    QVGapBuffer _text;
    QVAttributeRuns _runs;
};

} // namespace

std::shared_ptr<NSAttributedString> NSAttributedString::initWithString(std::u16string_view string,
                                                                       const NSAttributes &attributes) {
    return std::make_shared<ConcreteAttributedString>(string, attributes);
}

std::shared_ptr<NSAttributedString>
NSAttributedString::initWithAttributedString(const NSAttributedString &attributedString) {
    return std::make_shared<ConcreteAttributedString>(attributedString);
}

std::shared_ptr<NSMutableAttributedString>
NSMutableAttributedString::initWithString(std::u16string_view string, const NSAttributes &attributes) {
    return std::make_shared<ConcreteAttributedString>(string, attributes);
}

std::shared_ptr<NSMutableAttributedString>
NSMutableAttributedString::initWithAttributedString(const NSAttributedString &attributedString) {
    return std::make_shared<ConcreteAttributedString>(attributedString);
}

void NSMutableAttributedString::addAttribute(NSAttributeKey key, NSAttributeValue value, NSRange range) {
    changeAttributesInRange(range, [&](const NSAttributes &attributes) {
        return attributes.attributesBySettingValue(value, key);
    });
}

void NSMutableAttributedString::addAttributes(const NSAttributes &attributes, NSRange range) {
    // A copy: the caller's may be those of a run of this very string.
    changeAttributesInRange(range, [added = attributes](const NSAttributes &present) {
        return present.attributesByAddingAttributes(added);
    });
}

void NSMutableAttributedString::removeAttribute(NSAttributeKey key, NSRange range) {
    changeAttributesInRange(
        range, [&](const NSAttributes &attributes) { return attributes.attributesByRemovingKeys({key}); });
}

void NSMutableAttributedString::changeAttributesInRange(
    NSRange range, QVBlock<NSAttributes(const NSAttributes &)> usingBlock) {
    checkRange(range);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (!usingBlock)
        return;
    beginEditing();
    enumerateAttributesInRange(range, NSAttributedStringEnumerationLongestEffectiveRangeNotRequired,
                               [&](const NSAttributes &attributes, NSRange stretch, bool &) {
                                   const NSAttributes changed = usingBlock(attributes);
                                   if (changed != attributes)
                                       setAttributes(changed, stretch);
                               });
    endEditing();
}

void NSMutableAttributedString::replaceCharactersInRange(NSRange range,
                                                         const NSAttributedString &withAttributedString) {
    if (&withAttributedString == this) {
        replaceCharactersInRange(range, *NSAttributedString::initWithAttributedString(*this));
        return;
    }
    checkRange(range);
    beginEditing();
    const NSUInteger length = withAttributedString.length();
    replaceCharactersInRange(range, withAttributedString.string().substringWithRange({0, length}));
    withAttributedString.enumerateAttributesInRange(
        {0, length}, NSAttributedStringEnumerationLongestEffectiveRangeNotRequired,
        [&](const NSAttributes &attributes, NSRange stretch, bool &) {
            setAttributes(attributes, {range.location + stretch.location, stretch.length});
        });
    endEditing();
}

void NSMutableAttributedString::replaceCharactersInRangeWithAttributes(NSRange range,
                                                                       std::u16string_view withString,
                                                                       const NSAttributes &attributes) {
    replaceCharactersInRange(range, *NSAttributedString::initWithString(withString, attributes));
}

void NSMutableAttributedString::insertAttributedString(const NSAttributedString &attributedString,
                                                       NSUInteger atIndex) {
    replaceCharactersInRange({atIndex, 0}, attributedString);
}

void NSMutableAttributedString::appendAttributedString(const NSAttributedString &attributedString) {
    replaceCharactersInRange({length(), 0}, attributedString);
}

void NSMutableAttributedString::setAttributedString(const NSAttributedString &attributedString) {
    replaceCharactersInRange({0, length()}, attributedString);
}

} // namespace quorvane
