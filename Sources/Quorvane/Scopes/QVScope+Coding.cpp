#include "Quorvane/Scopes/QVScope.h"

#include "Quorvane/Categories/QVTreeDecoding.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVCollection.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"

// The archives of the scope tree, in one place since they must stay a tree together: links to parents,
// syntaxes and styles are made anew when a grammar is loaded.

namespace quorvane {

namespace {

template <typename T> std::shared_ptr<NSSecureCoding> allocate() { return std::make_shared<T>(); }

/// The objects of a list, each adopted; nothing where one of them has its place elsewhere.
template <typename T>
std::optional<std::vector<std::shared_ptr<T>>> decodeOwned(NSCoder &coder, QVTreeDecoding &tree,
                                                           const NSString &key) {
    auto objects = coder.decodeArrayOfClass<T>(key).value_or(std::vector<std::shared_ptr<T>>());
    if (tree.adoptAll(objects))
        return objects;
    QVFailTreeDecoding(coder);
    return std::nullopt;
}

} // namespace

const NSCodingClass &QVScope::codingClass() {
    static const NSCodingClass coding{u"QVScope", nullptr, allocate<QVScope>};
    return coding;
}

void QVScope::encodeWithCoder(NSCoder &coder) const {
    coder.encodeString(_name, u"name");
    coder.encodeObject(_selector, u"selector");
    coder.encodeString(_lexicalClass, u"lexicalClass");
    coder.encodeInteger(static_cast<NSInteger>(_type), u"type");
    coder.encodeObject(_regularExpression, u"regularExpression");
    coder.encodeObject(_endRegularExpression, u"endRegularExpression");
    coder.encodeString(_endRegularExpressionTemplate, u"endRegularExpressionTemplate");
    coder.encodeBool(_atomic, u"atomic");
    coder.encodeBool(_optional, u"optional");
    coder.encodeBool(_repeating, u"repeating");
    coder.encodeBool(_templateScope, u"templateScope");
    coder.encodeObject(_symbolOptions, u"symbolOptions");
    coder.encodeInteger(static_cast<NSInteger>(_symbolLookupBehavior), u"symbolLookupBehavior");
    coder.encodeInteger(static_cast<NSInteger>(_spellCheckingType), u"spellCheckingType");
    coder.encodeArray(_subscopes, u"subscopes");
    coder.encodeArray(_captures, u"captures");
    coder.encodeArray(_endCaptures, u"endCaptures");
    coder.encodeString(_includeSyntaxName, u"includeSyntaxName");
    coder.encodeString(_includeCollectionName, u"includeCollectionName");
    coder.encodeBool(_usesAnchoredSubscopeMatching, u"usesAnchoredSubscopeMatching");
    coder.encodeInteger(static_cast<NSInteger>(_whitespaceSkipBehavior), u"whitespaceSkipBehavior");
    coder.encodeBool(_shouldResetStyleAttributes, u"shouldResetStyleAttributes");
    coder.encodeObject(_subsyntaxOptions, u"subsyntaxOptions");
}

std::shared_ptr<NSSecureCoding> QVScope::initWithCoder(NSCoder &coder, std::shared_ptr<NSSecureCoding> self) {
    QVTreeDecoding tree(this);
    _name = coder.decodeString(u"name");
    _selector = coder.decodeObjectOfClass<QVSimpleSelector>(u"selector");
    setLexicalClass(coder.decodeString(u"lexicalClass"));
    _type = static_cast<QVScopeType>(coder.decodeInteger(u"type"));
    _regularExpression = coder.decodeObjectOfClass<QVRegularExpression>(u"regularExpression");
    _endRegularExpression = coder.decodeObjectOfClass<QVRegularExpression>(u"endRegularExpression");
    _endRegularExpressionTemplate = coder.decodeString(u"endRegularExpressionTemplate");
    _atomic = coder.decodeBool(u"atomic");
    _optional = coder.decodeBool(u"optional");
    _repeating = coder.decodeBool(u"repeating");
    _templateScope = coder.decodeBool(u"templateScope");
    _symbolOptions = coder.decodeObjectOfClass<QVScopeSymbolOptions>(u"symbolOptions");
    _symbolLookupBehavior = static_cast<NSUInteger>(coder.decodeInteger(u"symbolLookupBehavior"));
    _spellCheckingType = static_cast<QVSpellCheckingType>(coder.decodeInteger(u"spellCheckingType"));
    _includeSyntaxName = coder.decodeString(u"includeSyntaxName");
    _includeCollectionName = coder.decodeString(u"includeCollectionName");
    _usesAnchoredSubscopeMatching = coder.decodeBool(u"usesAnchoredSubscopeMatching");
    _whitespaceSkipBehavior =
        static_cast<QVWhitespaceSkipBehavior>(coder.decodeInteger(u"whitespaceSkipBehavior"));
    _shouldResetStyleAttributes = coder.decodeBool(u"shouldResetStyleAttributes");

    auto options = coder.decodeObjectOfClass<QVScopeSubsyntaxOptions>(u"subsyntaxOptions");
    if (options && !tree.adopt(options.get())) {
        QVFailTreeDecoding(coder);
        return nullptr;
    }
    _subsyntaxOptions = std::move(options);
    auto captures = decodeOwned<QVCapture>(coder, tree, u"captures");
    auto endCaptures = decodeOwned<QVCapture>(coder, tree, u"endCaptures");
    auto subscopes = decodeOwned<QVScope>(coder, tree, u"subscopes");
    if (!captures || !endCaptures || !subscopes)
        return nullptr;
    setCaptures(std::move(*captures));
    setEndCaptures(std::move(*endCaptures));
    setSubscopes(std::move(*subscopes));
    return self;
}

const NSCodingClass &QVCapture::codingClass() {
    static const NSCodingClass coding{u"QVCapture", nullptr, allocate<QVCapture>};
    return coding;
}

void QVCapture::encodeWithCoder(NSCoder &coder) const {
    coder.encodeInteger(static_cast<NSInteger>(_number), u"number");
    coder.encodeString(_name, u"name");
    coder.encodeObject(_selector, u"selector");
    coder.encodeString(_lexicalClass, u"lexicalClass");
}

std::shared_ptr<NSSecureCoding> QVCapture::initWithCoder(NSCoder &coder,
                                                         std::shared_ptr<NSSecureCoding> self) {
    _number = static_cast<NSUInteger>(coder.decodeInteger(u"number"));
    _name = coder.decodeString(u"name");
    _selector = coder.decodeObjectOfClass<QVSimpleSelector>(u"selector");
    _lexicalClass = coder.decodeString(u"lexicalClass");
    return self;
}

const NSCodingClass &QVCollection::codingClass() {
    static const NSCodingClass coding{u"QVCollection", nullptr, allocate<QVCollection>};
    return coding;
}

void QVCollection::encodeWithCoder(NSCoder &coder) const {
    coder.encodeString(_name, u"name");
    coder.encodeBool(_overrides, u"overrides");
    coder.encodeArray(_scopes, u"scopes");
}

std::shared_ptr<NSSecureCoding> QVCollection::initWithCoder(NSCoder &coder,
                                                            std::shared_ptr<NSSecureCoding> self) {
    QVTreeDecoding tree(this);
    _name = coder.decodeString(u"name");
    _overrides = coder.decodeBool(u"overrides");
    auto scopes = decodeOwned<QVScope>(coder, tree, u"scopes");
    if (!scopes)
        return nullptr;
    setScopes(std::move(*scopes));
    return self;
}

const NSCodingClass &QVScopeSubsyntaxOptions::codingClass() {
    static const NSCodingClass coding{u"QVScopeSubsyntaxOptions", nullptr, allocate<QVScopeSubsyntaxOptions>};
    return coding;
}

void QVScopeSubsyntaxOptions::encodeWithCoder(NSCoder &coder) const {
    coder.encodeString(_name, u"name");
    coder.encodeString(_collection, u"collection");
    coder.encodeNumber(_captureNumber, u"captureNumber");
    coder.encodeBool(_noncontiguous, u"noncontiguous");
    coder.encodeBool(_exportsSymbols, u"exportsSymbols");
    coder.encodeStringDictionary(_aliases, u"aliases");
    coder.encodeArray(_cutoffScopes, u"cutoffScopes");
}

std::shared_ptr<NSSecureCoding> QVScopeSubsyntaxOptions::initWithCoder(NSCoder &coder,
                                                                       std::shared_ptr<NSSecureCoding> self) {
    QVTreeDecoding tree(this);
    _name = coder.decodeString(u"name");
    _collection = coder.decodeString(u"collection");
    _captureNumber = coder.decodeNumber(u"captureNumber");
    _noncontiguous = coder.decodeBool(u"noncontiguous");
    _exportsSymbols = coder.decodeBool(u"exportsSymbols");
    _aliases = coder.decodeStringDictionary(u"aliases").value_or(std::map<NSString, NSString>());
    auto cutoffScopes = decodeOwned<QVScope>(coder, tree, u"cutoffScopes");
    if (!cutoffScopes)
        return nullptr;
    setCutoffScopes(std::move(*cutoffScopes));
    return self;
}

} // namespace quorvane
