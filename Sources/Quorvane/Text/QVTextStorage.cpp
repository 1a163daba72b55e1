#include "Quorvane/Text/QVTextStorage.h"

#include "Platform/Foundation/NSException.h"
#include "Quorvane/Text/QVConcreteTextStorage.h"

#include <algorithm>
#include <boost/container/small_vector.hpp>

namespace quorvane {

QVTextStorage::QVTextStorage() = default;
QVTextStorage::~QVTextStorage() = default;

std::shared_ptr<QVTextStorage> QVTextStorage::init() { return QVConcreteTextStorage::init(); }

std::shared_ptr<QVTextStorage> QVTextStorage::initWithString(std::u16string_view string) {
    return QVConcreteTextStorage::initWithString(string);
}

std::shared_ptr<QVTextStorage> QVTextStorage::initWithString(std::u16string_view string,
                                                             const NSAttributes &attributes) {
    return QVConcreteTextStorage::initWithString(string, attributes);
}

std::shared_ptr<QVTextStorage>
QVTextStorage::initWithAttributedString(const NSAttributedString &attributedString) {
    return QVConcreteTextStorage::initWithAttributedString(attributedString);
}

// MARK: - Primitives

namespace {

[[noreturn]] void throwMustOverride(const char16_t *operation) {
    throw NSException(NSInvalidArgumentException,
                      NSString::stringWithFormat(u"Subclasses must override %@.", operation));
}

} // namespace

bool QVTextStorage::isParsingEnabled() const { throwMustOverride(u"isParsingEnabled"); }
void QVTextStorage::setParsingEnabled(bool) { throwMustOverride(u"setParsingEnabled:"); }
void QVTextStorage::cancelParsing() { throwMustOverride(u"cancelParsing"); }
void QVTextStorage::clearContents() { throwMustOverride(u"clearContents"); }
std::shared_ptr<QVSyntax> QVTextStorage::syntax() const { throwMustOverride(u"syntax"); }
void QVTextStorage::setSyntax(std::shared_ptr<QVSyntax>) { throwMustOverride(u"setSyntax:"); }
std::shared_ptr<QVSyntax> QVTextStorage::syntaxAtLocation(NSUInteger) const {
    throwMustOverride(u"syntaxAtLocation:");
}
std::shared_ptr<QVParse> QVTextStorage::parse() const { throwMustOverride(u"parse"); }
std::shared_ptr<QVParseDelegate> QVTextStorage::parseDelegate() const { throwMustOverride(u"parseDelegate"); }
void QVTextStorage::setParseDelegate(const std::shared_ptr<QVParseDelegate> &) {
    throwMustOverride(u"setParseDelegate:");
}

NSAttributes QVTextStorage::defaultTextAttributes() const { throwMustOverride(u"defaultTextAttributes"); }
void QVTextStorage::setDefaultTextAttributes(const NSAttributes &) {
    throwMustOverride(u"setDefaultTextAttributes:");
}
QVLineEndings QVTextStorage::lineEndings() const { throwMustOverride(u"lineEndings"); }
void QVTextStorage::setLineEndings(QVLineEndings) { throwMustOverride(u"setLineEndings:"); }
QVIndentationStyle QVTextStorage::indentationStyle() const { throwMustOverride(u"indentationStyle"); }
void QVTextStorage::setIndentationStyle(QVIndentationStyle) { throwMustOverride(u"setIndentationStyle:"); }
NSUInteger QVTextStorage::tabWidth() const { throwMustOverride(u"tabWidth"); }
void QVTextStorage::setTabWidth(NSUInteger) { throwMustOverride(u"setTabWidth:"); }
std::shared_ptr<NSUndoManager> QVTextStorage::undoManager() const { throwMustOverride(u"undoManager"); }
void QVTextStorage::setUndoManager(std::shared_ptr<NSUndoManager>) { throwMustOverride(u"setUndoManager:"); }

NSUInteger QVTextStorage::numberOfLines() const { throwMustOverride(u"numberOfLines"); }
NSRange QVTextStorage::characterRangeForLineNumber(NSUInteger) const {
    throwMustOverride(u"characterRangeForLineNumber:");
}
NSRange QVTextStorage::characterRangeForLineNumbersInRange(NSRange) const {
    throwMustOverride(u"characterRangeForLineNumbersInRange:");
}
void QVTextStorage::enumerateLinesInRange(NSRange, LineBlock) const {
    throwMustOverride(u"enumerateLinesInRange:usingBlock:");
}
NSUInteger QVTextStorage::lineNumberForCharacterIndex(NSUInteger, NSRange *) const {
    throwMustOverride(u"lineNumberForCharacterIndex:actualCharacterRange:");
}
NSRange QVTextStorage::rangeOfLineNumbersForCharacterRange(NSRange, NSRange *) const {
    throwMustOverride(u"rangeOfLineNumbersForCharacterRange:actualCharacterRange:");
}
void QVTextStorage::enumerateLinesForCharacterRange(NSRange, LineBlock) const {
    throwMustOverride(u"enumerateLinesForCharacterRange:usingBlock:");
}

NSAttributes QVTextStorage::syntaxHighlightingAttributesAtIndex(NSUInteger, NSRange *) const {
    throwMustOverride(u"syntaxHighlightingAttributesAtIndex:effectiveRange:");
}
NSAttributes QVTextStorage::extendedAttributesAtIndex(NSUInteger, NSRange *) const {
    throwMustOverride(u"extendedAttributesAtIndex:effectiveRange:");
}
void QVTextStorage::setExtendedAttributes(const NSAttributes &, NSRange) {
    throwMustOverride(u"setExtendedAttributes:range:");
}

// MARK: - Change observers

void QVTextStorage::addChangeObserver(const std::shared_ptr<Observer> &changeObserver) {
    if (!changeObserver)
        return;
    removeChangeObserver(changeObserver);
    _changeObservers.push_back(changeObserver);
}

void QVTextStorage::removeChangeObserver(const std::shared_ptr<Observer> &changeObserver) {
    std::erase_if(_changeObservers, [&](const std::weak_ptr<Observer> &observer) {
        return observer.expired() || observer.lock() == changeObserver;
    });
}

template <typename Tell> void QVTextStorage::tellChangeObservers(Tell tell) {
    // A copy, for observers come and go while they are told: who goes before its turn is not told any more.
    const boost::container::small_vector<std::weak_ptr<Observer>, 4> told(_changeObservers.begin(),
                                                                          _changeObservers.end());
    for (const std::weak_ptr<Observer> &weak : told)
        if (const std::shared_ptr<Observer> observer = weak.lock();
            observer && std::ranges::any_of(_changeObservers, [&](const std::weak_ptr<Observer> &other) {
                return other.lock() == observer;
            }))
            tell(*observer);
}

void QVTextStorage::willChange(NSTextStorageEditActions mask, NSRange range,
                               const NSAttributedString *replacementText) {
    tellChangeObservers(
        [&](Observer &observer) { observer.textStorageWillChange(*this, mask, range, replacementText); });
}

void QVTextStorage::processEditing() {
    NSTextStorage::processEditing();
    const NSTextStorageEditActions mask = editedMask();
    const NSRange range = editedRange();
    const NSInteger change = changeInLength();
    tellChangeObservers(
        [&](Observer &observer) { observer.textStorageDidProcessChanges(*this, mask, range, change); });
}

} // namespace quorvane
