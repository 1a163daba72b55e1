#include "Quorvane/Text/QVConcreteTextStorage.h"

#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Quorvane/Text/QVLineRunArray.h"
#include "Quorvane/Text/QVMutableRLEArray.h"
#include "Quorvane/Text/QVTextStorageStyling.h"

#include <boost/container/small_vector.hpp>

namespace quorvane {

// MARK: - Making

QVConcreteTextStorage::QVConcreteTextStorage()
    : _contents(NSMutableAttributedString::initWithString(u"")),
      _extendedAttributes(std::make_unique<Attributes>()),
      _syntaxHighlightingAttributes(std::make_shared<Attributes>()), _syntaxes(std::make_shared<Syntaxes>()),
      _lines(std::make_unique<QVLineRunArray>()), _defaultTextAttributes(completedTextAttributes({})),
      _link(std::make_shared<Link>()) {}

QVConcreteTextStorage::~QVConcreteTextStorage() {
    // Tasks that are on their way find nobody home.
    _link->parse.store(nullptr, std::memory_order_relaxed);
    _notificationTokens.clear();
    _observations.clear();
    if (_parse)
        _parse->cancelParsing();
}

std::shared_ptr<QVConcreteTextStorage> QVConcreteTextStorage::init() {
    return initWithOwnedMutableAttributedString(NSMutableAttributedString::initWithString(u""));
}

std::shared_ptr<QVConcreteTextStorage> QVConcreteTextStorage::initWithString(std::u16string_view string,
                                                                             const NSAttributes &attributes) {
    return initWithOwnedMutableAttributedString(
        NSMutableAttributedString::initWithString(string, attributes));
}

std::shared_ptr<QVConcreteTextStorage>
QVConcreteTextStorage::initWithAttributedString(const NSAttributedString &attributedString) {
    return initWithOwnedMutableAttributedString(
        NSMutableAttributedString::initWithAttributedString(attributedString));
}

std::shared_ptr<QVConcreteTextStorage> QVConcreteTextStorage::initWithOwnedMutableAttributedString(
    std::shared_ptr<NSMutableAttributedString> contents) {
    const std::shared_ptr<QVConcreteTextStorage> storage = allocate();
    if (contents)
        storage->adoptContents(std::move(contents));
    return storage;
}

std::shared_ptr<QVConcreteTextStorage> QVConcreteTextStorage::allocate() {
    const std::shared_ptr<QVConcreteTextStorage> storage(new QVConcreteTextStorage);
    storage->_link->storage = storage;
    storage->startObserving();
    return storage;
}

void QVConcreteTextStorage::adoptContents(std::shared_ptr<NSMutableAttributedString> contents) {
    _contents = std::move(contents);
    const NSUInteger count = length();
    _extendedAttributes->replaceObjectsInRange({0, _extendedAttributes->count()}, NSAttributes(), count);
    _syntaxHighlightingAttributes->replaceObjectsInRange({0, _syntaxHighlightingAttributes->count()},
                                                         NSAttributes(), count);
    _syntaxes->replaceObjectsInRange({0, _syntaxes->count()}, nullptr, count);
    _lines->replaceCharactersInRange({0, _lines->length()}, string());
    completeAttributes(*_contents);
    invalidateAttributesInRange({0, count});
}

std::shared_ptr<QVConcreteTextStorage> QVConcreteTextStorage::copy() const {
    const auto copy =
        initWithOwnedMutableAttributedString(NSMutableAttributedString::initWithAttributedString(*_contents));
    copy->setSyntax(_syntax);
    copy->setDefaultTextAttributes(_defaultTextAttributes);
    copy->setLineEndings(_lineEndings);
    copy->setIndentationStyle(_indentationStyle);
    copy->setTabWidth(_tabWidth);
    return copy;
}

// MARK: - Text

NSUInteger QVConcreteTextStorage::length() const { return _contents->length(); }
QVTextReader QVConcreteTextStorage::string() const { return _contents->string(); }

NSAttributes QVConcreteTextStorage::attributesAtIndex(NSUInteger index, NSRange *effectiveRange) const {
    if (index >= length()) {
        if (effectiveRange != nullptr)
            *effectiveRange = {index, 0};
        return _defaultTextAttributes;
    }
    prepareToReadAttributesInRange({index, 1});
    return _contents->attributesAtIndex(index, effectiveRange);
}

// MARK: - Settings

void QVConcreteTextStorage::setParsingEnabled(bool parsingEnabled) {
    willChangeValueForKey(u"parsingEnabled");
    _parsingEnabled = parsingEnabled;
    didChangeValueForKey(u"parsingEnabled");
}

void QVConcreteTextStorage::setSyntax(std::shared_ptr<QVSyntax> syntax) {
    _syntaxNameForReloading = NSString();
    willChangeValueForKey(u"syntax");
    _syntax = std::move(syntax);
    didChangeValueForKey(u"syntax");
}

std::shared_ptr<QVSyntax> QVConcreteTextStorage::syntaxAtLocation(NSUInteger location) const {
    if (location == NSNotFound || _syntaxes->numberOfRuns() == 0)
        return _syntax;
    const std::shared_ptr<QVSyntax> &syntax =
        _syntaxes->objectAtIndex(location == _syntaxes->count() ? location - 1 : location);
    return syntax ? syntax : _syntax;
}

void QVConcreteTextStorage::setParseDelegate(const std::shared_ptr<QVParseDelegate> &parseDelegate) {
    willChangeValueForKey(u"parseDelegate");
    _parseDelegate = parseDelegate;
    if (_parse)
        _parse->setDelegate(parseDelegate);
    didChangeValueForKey(u"parseDelegate");
}

void QVConcreteTextStorage::setLineEndings(QVLineEndings lineEndings) {
    willChangeValueForKey(u"lineEndings");
    _lineEndings = lineEndings;
    didChangeValueForKey(u"lineEndings");
}

void QVConcreteTextStorage::setIndentationStyle(QVIndentationStyle indentationStyle) {
    willChangeValueForKey(u"indentationStyle");
    _indentationStyle = indentationStyle;
    didChangeValueForKey(u"indentationStyle");
}

void QVConcreteTextStorage::setTabWidth(NSUInteger tabWidth) {
    willChangeValueForKey(u"tabWidth");
    _tabWidth = tabWidth;
    didChangeValueForKey(u"tabWidth");
}

// MARK: - Observing itself

namespace {

const char16_t *const parseContext = u"QVConcreteTextStorageParseObservationContext";
const char16_t *const syntaxContext = u"QVConcreteTextStorageSyntaxObservationContext";
const char16_t *const tabWidthContext = u"QVConcreteTextStorageTabWidthObservationContext";

template <typename Value> Value valueOf(const std::any &value) {
    const Value *const held = std::any_cast<Value>(&value);
    return held ? *held : Value();
}

template <typename Value> bool hasChanged(const NSKeyValueChange &change) {
    return valueOf<Value>(change.oldValue) != valueOf<Value>(change.newValue);
}

} // namespace

std::any QVConcreteTextStorage::valueForKey(const NSString &key) const {
    if (key == u"parsingEnabled")
        return _parsingEnabled;
    if (key == u"syntax")
        return _syntax;
    if (key == u"parse")
        return _parse;
    if (key == u"parseDelegate")
        return parseDelegate();
    if (key == u"defaultTextAttributes")
        return _defaultTextAttributes;
    // Enumerations as numbers, so that observers compare them without their types.
    if (key == u"lineEndings")
        return static_cast<NSUInteger>(_lineEndings);
    if (key == u"indentationStyle")
        return static_cast<NSUInteger>(_indentationStyle);
    if (key == u"tabWidth")
        return _tabWidth;
    return QVTextStorage::valueForKey(key);
}

void QVConcreteTextStorage::startObserving() {
    const auto observe = [this](const char16_t *key, NSKeyValueObservingOptions options,
                                const char16_t *context) {
        _observations.push_back(addObserver(
            key, options, [this](const NSKeyValueChange &change) { observeValueForKeyPath(change); },
            context));
    };
    const auto bothValues = NSKeyValueObservingOptionOld | NSKeyValueObservingOptionNew;
    observe(u"parsingEnabled", bothValues, parseContext);
    observe(u"syntax", bothValues, syntaxContext);
    observe(u"tabWidth", NSKeyValueObservingOptionNew, tabWidthContext);
    startObservingPackages();
}

void QVConcreteTextStorage::observeValueForKeyPath(const NSKeyValueChange &change) {
    if (change.context == parseContext && hasChanged<bool>(change)) {
        if (valueOf<bool>(change.newValue))
            didEnableParsing();
        else
            didDisableParsing();
    } else if (change.context == syntaxContext && hasChanged<std::shared_ptr<QVSyntax>>(change)) {
        didDisableParsing();
        didEnableParsing();
    } else if (change.context == tabWidthContext) {
        tabWidthDidChange(valueOf<NSUInteger>(change.newValue));
    }
}

// MARK: - Views

void QVConcreteTextStorage::addFoldingTextStorage(QVBackingStorageView *foldingTextStorage) {
    if (foldingTextStorage != nullptr &&
        std::ranges::find(_foldingTextStorages, foldingTextStorage) == _foldingTextStorages.end())
        _foldingTextStorages.push_back(foldingTextStorage);
}

void QVConcreteTextStorage::removeFoldingTextStorage(QVBackingStorageView *foldingTextStorage) {
    std::erase(_foldingTextStorages, foldingTextStorage);
}

void QVConcreteTextStorage::beginEditingWithFoldingTextStorage(QVBackingStorageView *) { beginEditing(); }
void QVConcreteTextStorage::endEditingWithFoldingTextStorage(QVBackingStorageView *) { endEditing(); }

void QVConcreteTextStorage::performBlockWithFoldingTextStorages(
    QVBlock<void(QVBackingStorageView &foldingTextStorage)> block) {
    if (_foldingTextStorages.empty())
        return;
    // A copy, for views come and go while they are told.
    const boost::container::small_vector<QVBackingStorageView *, 4> views(_foldingTextStorages.begin(),
                                                                          _foldingTextStorages.end());
    for (QVBackingStorageView *const view : views)
        if (std::ranges::find(_foldingTextStorages, view) != _foldingTextStorages.end())
            block(*view);
}

} // namespace quorvane
