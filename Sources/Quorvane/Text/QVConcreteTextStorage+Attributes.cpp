#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/NSParagraphStyle.h"
#include "Platform/CoreText/CTStringAttributes.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Text/QVBackingStorageView.h"
#include "Quorvane/Text/QVConcreteTextStorage.h"

#include <unordered_map>

namespace quorvane {

namespace {

CTFontRef fontOf(const NSAttributeValue *value) {
    const auto *const object = value ? std::get_if<NSAttributeValue::Object>(value)
                                     : static_cast<NSAttributeValue::Object *>(nullptr);
    return object ? std::dynamic_pointer_cast<const CTFont>(*object) : nullptr;
}

CTFontRef fontOf(const NSAttributes &attributes) {
    return fontOf(attributes.valueForKey(NSFontAttributeName));
}

bool haveSame(const NSAttributes &a, const NSAttributes &b, NSAttributeKey key) {
    const NSAttributeValue *const first = a.valueForKey(key);
    const NSAttributeValue *const second = b.valueForKey(key);
    return first != nullptr && second != nullptr && *first == *second;
}

bool haveSameFace(const CTFontRef &a, const CTFontRef &b) {
    return a && b && CTFontCopyPostScriptName(a) == CTFontCopyPostScriptName(b);
}

} // namespace

// MARK: - Default attributes

NSAttributes QVConcreteTextStorage::completedTextAttributes(const NSAttributes &attributes) {
    NSMutableAttributes completed(attributes);
    if (!fontOf(attributes)) {
        completed.remove(NSFontAttributeName);
        if (CTFontRef font = CTFontCreateWithName(u"Menlo-Regular", 12))
            completed.set(NSFontAttributeName, std::move(font));
    }
    if (!attributes.containsKey(NSForegroundColorAttributeName))
        completed.set(NSForegroundColorAttributeName, NSColor::blackColor());
    return completed.attributes();
}

void QVConcreteTextStorage::setDefaultTextAttributes(const NSAttributes &defaultTextAttributes) {
    const NSAttributes given = defaultTextAttributes;
    NSMutableAttributes highlighting;
    for (const NSAttributeKey key : QVParse::attributesAffectedBySyntaxHighlighting())
        if (const NSAttributeValue *const value = given.valueForKey(key);
            value != nullptr && key != NSFontAttributeName)
            highlighting.set(key, *value);
    // By the dictionary as given, so that one that lacks a font or a colour does its work each time.
    if (_defaultTextAttributes == given)
        return;

    const NSAttributes old = _defaultTextAttributes;
    const NSAttributes completed = completedTextAttributes(given);
    willChangeValueForKey(u"defaultTextAttributes");
    _defaultTextAttributes = completed;
    _defaultSyntaxHighlightingAttributes = highlighting.attributes();
    _tabbedParagraphStyle.reset();

    const NSRange range{0, length()};
    beginEditing();
    const CTFontRef font = fontOf(completed);
    if (haveSameFace(fontOf(old), font))
        updateFontSize(CTFontGetSize(font), range, true);
    else
        updateAttribute(NSFontAttributeName, completed.valueForKey(NSFontAttributeName), range, true);
    const bool updatesTracking = !haveSame(old, completed, kCTTrackingAttributeName);
    if (updatesTracking)
        updateAttribute(kCTTrackingAttributeName, completed.valueForKey(kCTTrackingAttributeName), range,
                        true);
    if (updatesTracking || !haveSame(old, completed, NSParagraphStyleAttributeName))
        updateParagraphStyle(defaultParagraphStyle(), range, true);
    endEditing();
    invalidateStylingInRange({0, length()});
    didChangeValueForKey(u"defaultTextAttributes");
}

// MARK: - Changes of attributes

template <typename Change> void QVConcreteTextStorage::markEdited(bool marks, NSRange range, Change change) {
    if (marks)
        willChange(NSTextStorageEditedAttributes, range, nullptr);
    change();
    if (marks)
        edited(NSTextStorageEditedAttributes, range, 0);
}

void QVConcreteTextStorage::updateAttribute(NSAttributeKey key, const NSAttributeValue *value,
                                            NSRange inRange, bool marks) {
    markEdited(marks, inRange, [&] {
        if (value != nullptr)
            _contents->addAttribute(key, *value, inRange);
        else
            _contents->removeAttribute(key, inRange);
        performBlockWithFoldingTextStorages([&](QVBackingStorageView &view) {
            if (value != nullptr)
                view.backingStorageDidAddAttribute(key, *value, inRange);
            else
                view.backingStorageDidRemoveAttribute(key, inRange);
        });
    });
}

void QVConcreteTextStorage::updateFontSize(CGFloat size, NSRange inRange, bool marks) {
    std::unordered_map<const CTFont *, std::pair<CTFontRef, NSAttributeValue>> resized;
    _contents->enumerateAttribute(
        NSFontAttributeName, inRange, NSAttributedStringEnumerationLongestEffectiveRangeNotRequired,
        [&](const NSAttributeValue *value, NSRange run, bool &) {
            const CTFontRef font = fontOf(value);
            if (!font)
                return;
            // The old font is kept with the new one, so that its address stands for it.
            auto found = resized.find(font.get());
            if (found == resized.end())
                found = resized
                            .emplace(
                                font.get(),
                                std::pair{font, NSAttributeValue(CTFontCreateCopyWithAttributes(font, size))})
                            .first;
            updateAttribute(NSFontAttributeName, &found->second.second, run, marks);
        });
}

std::shared_ptr<const NSParagraphStyle> QVConcreteTextStorage::defaultParagraphStyle() const {
    if (const NSAttributeValue *const value =
            _defaultTextAttributes.valueForKey(NSParagraphStyleAttributeName))
        if (const auto *const object = std::get_if<NSAttributeValue::Object>(value))
            if (auto style = std::dynamic_pointer_cast<const NSParagraphStyle>(*object))
                return style;
    return NSParagraphStyle::defaultParagraphStyle();
}

std::shared_ptr<const NSParagraphStyle>
QVConcreteTextStorage::paragraphStyleWithTabs(const std::shared_ptr<const NSParagraphStyle> &style) const {
    const CTFontRef font = fontOf(_defaultTextAttributes);
    CGGlyph glyph = 0;
    if (!font || !CTFontGetGlyphsForCharacters(font, u" ", std::span(&glyph, 1)))
        return style;
    const NSAttributeValue *const tracking = _defaultTextAttributes.valueForKey(kCTTrackingAttributeName);
    const CGFloat advance = CTFontGetAdvancesForGlyphs(font, std::span(&glyph, 1));
    const auto tabbed = style->mutableCopy();
    tabbed->setDefaultTabInterval(((tracking ? tracking->doubleValue() : 0) + advance) *
                                  static_cast<CGFloat>(_tabWidth));
    tabbed->setTabStops({});
    return tabbed;
}

void QVConcreteTextStorage::updateParagraphStyle(const std::shared_ptr<const NSParagraphStyle> &style,
                                                 NSRange inRange, bool marks) {
    if (inRange.location == length())
        return;
    std::shared_ptr<const NSParagraphStyle> tabbed;
    if (style) {
        tabbed = paragraphStyleWithTabs(style);
    } else {
        // One object for all stretches that are fixed one by one.
        if (!_tabbedParagraphStyle)
            _tabbedParagraphStyle = paragraphStyleWithTabs(defaultParagraphStyle());
        tabbed = _tabbedParagraphStyle;
    }
    const NSAttributeValue value(std::move(tabbed));
    updateAttribute(NSParagraphStyleAttributeName, &value, inRange, marks);
}

void QVConcreteTextStorage::tabWidthDidChange(NSUInteger tabWidth) {
    _tabbedParagraphStyle.reset();
    if (_parse)
        _parse->setTabWidth(tabWidth);
    const NSRange range{0, length()};
    willChange(NSTextStorageEditedAttributes, range, nullptr);
    invalidateAttributesInRange(range);
    edited(NSTextStorageEditedAttributes, range, 0);
    performBlockWithFoldingTextStorages(
        [&](QVBackingStorageView &view) { view.backingStorageDidInvalidateAttributesInRange(range); });
}

// MARK: - Fixing

void QVConcreteTextStorage::fixAttributesInRange(NSRange range) {
    struct Ensuring {
        NSUInteger &count;
        explicit Ensuring(NSUInteger &counted) : count(counted) { ++count; }
        ~Ensuring() { --count; }
    } const ensuring(_ensuringAttributesCount);
    updateParagraphStyle(nullptr, range, false);
    QVTextStorage::fixAttributesInRange(range);
    if (length() == 0)
        return;
    const NSAttributeValue noKerning(0);
    updateAttribute(kCTTrackingAttributeName, _defaultTextAttributes.valueForKey(kCTTrackingAttributeName),
                    range, false);
    updateAttribute(NSKernAttributeName, &noKerning, range, false);
}

} // namespace quorvane
