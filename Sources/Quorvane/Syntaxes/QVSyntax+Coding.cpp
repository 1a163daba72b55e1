#include "Quorvane/Syntaxes/QVSyntax.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Detectors/QVDetector.h"
#include "Quorvane/Symbols/QVSymbolDocumentationBehavior.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntaxSurroundingPair.h"

namespace quorvane {

const NSCodingClass &QVSyntax::codingClass() {
    static const NSCodingClass coding{u"QVSyntax", nullptr, []() -> std::shared_ptr<NSSecureCoding> {
                                          return std::make_shared<QVSyntax>();
                                      }};
    return coding;
}

void QVSyntax::encodeWithCoder(NSCoder &coder) const {
    coder.encodeString(_name, u"name");
    coder.encodeString(_displayName, u"displayName");
    coder.encodeInteger(static_cast<NSInteger>(_syntaxType), u"syntaxType");
    coder.encodeString(_parentSyntaxName, u"parentSyntaxName");
    coder.encodeBool(_subsyntaxOnly, u"subsyntaxOnly");
    coder.encodeArray(_detectors, u"detectors");
    coder.encodeInteger(static_cast<NSInteger>(_symbolLocalScopeBehavior), u"symbolLocalScopeBehavior");
    coder.encodeInteger(static_cast<NSInteger>(_symbolRedefinitionBehavior), u"symbolRedefinitionBehavior");
    coder.encodeInteger(static_cast<NSInteger>(_symbolLookupBehavior), u"symbolLookupBehavior");
    coder.encodeArray(_symbolDocumentationBehaviors, u"symbolDocumentationBehaviors");
    coder.encodeArray(completionProviders(), u"completionProviders");
    coder.encodeInteger(static_cast<NSInteger>(_spellCheckingType), u"spellCheckingType");
    coder.encodeObject(_identifierCharacterSet, u"identifierCharacterSet");
    coder.encodeObject(_identifierPrefixCharacterSet, u"identifierPrefixCharacterSet");
    coder.encodeStringDictionary(_bracketPairs, u"bracketPairs");
    coder.encodeDictionary(_surroundingPairs, u"surroundingPairs");
    coder.encodeObject(_indentationIncrease, u"indentationIncrease");
    coder.encodeObject(_indentationDecrease, u"indentationDecrease");
    coder.encodeObject(_indentationNextLine, u"indentationNextLine");
    coder.encodeObject(_indentationIgnore, u"indentationIgnore");
    coder.encodeString(_singleLineCommentPrefix, u"singleLineCommentPrefix");
    coder.encodeString(_multilineCommentPrefix, u"multilineCommentPrefix");
    coder.encodeString(_multilineCommentSuffix, u"multilineCommentSuffix");
    coder.encodeString(_preferredFileExtension, u"preferredFileExtension");
    coder.encodeBool(_scriptable, u"scriptable");
    coder.encodeString(_scriptingShebang, u"scriptingShebang");
    if (const auto archivedGrammar = grammar())
        coder.encodeData(NSKeyedArchiver::archivedDataWithRootObject(archivedGrammar), u"grammarData");
}

std::shared_ptr<NSSecureCoding> QVSyntax::initWithCoder(NSCoder &coder,
                                                        std::shared_ptr<NSSecureCoding> self) {
    _name = coder.decodeString(u"name");
    _displayName = coder.decodeString(u"displayName");
    _syntaxType = static_cast<QVSyntaxType>(coder.decodeInteger(u"syntaxType"));
    _parentSyntaxName = coder.decodeString(u"parentSyntaxName");
    _subsyntaxOnly = coder.decodeBool(u"subsyntaxOnly");
    if (auto detectors = coder.decodeArrayOfClass<QVDetector>(u"detectors"))
        _detectors = std::move(*detectors);
    _symbolLocalScopeBehavior =
        static_cast<QVSymbolLocalScopeBehavior>(coder.decodeInteger(u"symbolLocalScopeBehavior"));
    _symbolRedefinitionBehavior =
        static_cast<QVSymbolRedefinitionBehavior>(coder.decodeInteger(u"symbolRedefinitionBehavior"));
    _symbolLookupBehavior = static_cast<NSUInteger>(coder.decodeInteger(u"symbolLookupBehavior"));
    _symbolDocumentationBehaviors =
        coder.decodeArrayOfClass<QVSymbolDocumentationBehavior>(u"symbolDocumentationBehaviors");
    if (auto providers = coder.decodeArrayOfClass<QVCompletionProvider>(u"completionProviders"))
        setCompletionProviders(std::move(*providers));
    _spellCheckingType = static_cast<QVSpellCheckingType>(coder.decodeInteger(u"spellCheckingType"));
    _identifierCharacterSet = coder.decodeObjectOfClass<NSCharacterSet>(u"identifierCharacterSet");
    _identifierPrefixCharacterSet =
        coder.decodeObjectOfClass<NSCharacterSet>(u"identifierPrefixCharacterSet");
    if (auto pairs = coder.decodeStringDictionary(u"bracketPairs"))
        _bracketPairs = std::move(*pairs);
    if (auto pairs = coder.decodeDictionaryOfClass<QVSyntaxSurroundingPair>(u"surroundingPairs"))
        _surroundingPairs = std::move(*pairs);
    _indentationIncrease = coder.decodeObjectOfClass<NSRegularExpression>(u"indentationIncrease");
    _indentationDecrease = coder.decodeObjectOfClass<NSRegularExpression>(u"indentationDecrease");
    _indentationNextLine = coder.decodeObjectOfClass<NSRegularExpression>(u"indentationNextLine");
    _indentationIgnore = coder.decodeObjectOfClass<NSRegularExpression>(u"indentationIgnore");
    _singleLineCommentPrefix = coder.decodeString(u"singleLineCommentPrefix");
    _multilineCommentPrefix = coder.decodeString(u"multilineCommentPrefix");
    _multilineCommentSuffix = coder.decodeString(u"multilineCommentSuffix");
    _preferredFileExtension = coder.decodeString(u"preferredFileExtension");
    _scriptable = coder.decodeBool(u"scriptable");
    _scriptingShebang = coder.decodeString(u"scriptingShebang");

    NSData grammarData = coder.decodeData(u"grammarData");
    const std::lock_guard guard(_stateLock);
    _grammarData = std::move(grammarData);
    return self;
}

} // namespace quorvane
