#include "Quorvane/Text/QVFoldingTextStorage.h"

#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/NSParagraphStyle.h"
#include "Platform/AppKit/NSShadow.h"
#include "Platform/Foundation/NSAttributedString+Coding.h"
#include "Platform/Foundation/NSException.h"
#include "Quorvane/Text/QVFoldMap.h"

#include <array>

namespace quorvane {

// MARK: - Making

QVFoldingTextStorage::QVFoldingTextStorage() = default;

QVFoldingTextStorage::~QVFoldingTextStorage() {
    if (_backingStorage)
        _backingStorage->removeFoldingTextStorage(this);
}

std::shared_ptr<QVFoldingTextStorage>
QVFoldingTextStorage::initWithBackingStorage(const std::shared_ptr<QVTextStorage> &backingStorage) {
    std::shared_ptr<QVConcreteTextStorage> concrete;
    if (!backingStorage)
        concrete = QVConcreteTextStorage::init();
    else if (const auto view = std::dynamic_pointer_cast<QVFoldingTextStorage>(backingStorage))
        concrete = view->_backingStorage;
    else
        concrete = std::dynamic_pointer_cast<QVConcreteTextStorage>(backingStorage);
    if (!concrete)
        throw NSException(NSInvalidArgumentException, u"Backing storage must be a concrete text storage");
    const std::shared_ptr<QVFoldingTextStorage> storage(new QVFoldingTextStorage);
    storage->attachToBackingStorage(std::move(concrete));
    return storage;
}

std::shared_ptr<QVFoldingTextStorage> QVFoldingTextStorage::init() { return initWithBackingStorage(nullptr); }

std::shared_ptr<QVFoldingTextStorage> QVFoldingTextStorage::initWithString(std::u16string_view string,
                                                                           const NSAttributes &attributes) {
    return initWithBackingStorage(QVConcreteTextStorage::initWithString(string, attributes));
}

std::shared_ptr<QVFoldingTextStorage>
QVFoldingTextStorage::initWithAttributedString(const NSAttributedString &attributedString) {
    return initWithBackingStorage(QVConcreteTextStorage::initWithAttributedString(attributedString));
}

void QVFoldingTextStorage::attachToBackingStorage(std::shared_ptr<QVConcreteTextStorage> backingStorage) {
    _backingStorage = std::move(backingStorage);
    _backingStorage->addFoldingTextStorage(this);
    _backingLength = _backingStorage->length();
    _folds = std::make_unique<QVFoldMap>(_backingLength);
}

// MARK: - The view's own text

void QVFoldingTextStorage::makeContents() {
    if (!_contents)
        _contents = NSMutableAttributedString::initWithAttributedString(_backingStorage->contents());
}

void QVFoldingTextStorage::dropContentsWithoutFolds() {
    if (_sharesContents && _folds->numberOfFolds() == 0)
        _contents.reset();
}

void QVFoldingTextStorage::replaceContents(NSRange range, const NSAttributedString &withAttributedString) {
    // Where the document's text serves it has changed already. What an archive brought may be shorter than
    // its document.
    if (!_contents)
        return;
    const NSUInteger location = std::min(range.location, _contents->length());
    _contents->replaceCharactersInRange({location, std::min(range.length, _contents->length() - location)},
                                        withAttributedString);
}

// MARK: - Settings of the document

void QVFoldingTextStorage::clearContents() { _backingStorage->clearContents(); }
void QVFoldingTextStorage::setParsingEnabled(bool parsingEnabled) {
    _backingStorage->setParsingEnabled(parsingEnabled);
}
void QVFoldingTextStorage::setSyntax(std::shared_ptr<QVSyntax> syntax) {
    _backingStorage->setSyntax(std::move(syntax));
}
std::shared_ptr<QVParseDelegate> QVFoldingTextStorage::parseDelegate() const {
    return _backingStorage->parseDelegate();
}
void QVFoldingTextStorage::setParseDelegate(const std::shared_ptr<QVParseDelegate> &parseDelegate) {
    _backingStorage->setParseDelegate(parseDelegate);
}
void QVFoldingTextStorage::setDefaultTextAttributes(const NSAttributes &defaultTextAttributes) {
    _backingStorage->setDefaultTextAttributes(defaultTextAttributes);
}
void QVFoldingTextStorage::setLineEndings(QVLineEndings lineEndings) {
    _backingStorage->setLineEndings(lineEndings);
}
void QVFoldingTextStorage::setIndentationStyle(QVIndentationStyle indentationStyle) {
    _backingStorage->setIndentationStyle(indentationStyle);
}
void QVFoldingTextStorage::setTabWidth(NSUInteger tabWidth) { _backingStorage->setTabWidth(tabWidth); }

// MARK: - Observing

std::any QVFoldingTextStorage::valueForKey(const NSString &key) const {
    if (key == u"backingStorage")
        return _backingStorage;
    return _backingStorage->valueForKey(key);
}

NSKeyValueObserving *QVFoldingTextStorage::observableForKey(const NSString &key) const {
    return key == u"backingStorage" ? _backingStorage.get() : nullptr;
}

std::set<NSString> QVFoldingTextStorage::keyPathsForValuesAffectingValueForKey(const NSString &key) const {
    static constexpr std::array<std::u16string_view, 8> forwarded{
        u"parsingEnabled",        u"parse",       u"parseDelegate",    u"syntax",
        u"defaultTextAttributes", u"lineEndings", u"indentationStyle", u"tabWidth"};
    if (std::ranges::find(forwarded, key.view()) == forwarded.end())
        return {};
    return {NSString(u"backingStorage.").stringByAppendingString(key)};
}

// MARK: - Archiving

const NSCodingClass &QVFoldingTextStorage::codingClass() {
    static const NSCodingClass codingClass{
        u"QVFoldingTextStorage", nullptr, +[]() -> std::shared_ptr<NSSecureCoding> {
            return std::shared_ptr<QVFoldingTextStorage>(new QVFoldingTextStorage);
        }};
    return codingClass;
}

void QVFoldingTextStorage::encodeWithCoder(NSCoder &coder) const {
    coder.encodeObject(_backingStorage, u"backingStorage");
    qv_encodeAttributedString(coder, contents(), u"contents");
}

std::shared_ptr<NSSecureCoding> QVFoldingTextStorage::initWithCoder(NSCoder &coder,
                                                                    std::shared_ptr<NSSecureCoding> self) {
    auto backingStorage = coder.decodeObjectOfClass<QVConcreteTextStorage>(u"backingStorage");
    attachToBackingStorage(backingStorage ? std::move(backingStorage) : QVConcreteTextStorage::init());
    const std::array accepted{&CTFont::codingClass(),
                              &NSColor::codingClass(),
                              &NSShadow::codingClass(),
                              &NSParagraphStyle::codingClass(),
                              &NSTextAttachment::codingClass(),
                              &QVTextAttachment::codingClass(),
                              &QVTextFoldAttachment::codingClass()};
    _contents = qv_decodeAttributedString(coder, u"contents", accepted);
    _sharesContents = _contents == nullptr;
    return self;
}

} // namespace quorvane
