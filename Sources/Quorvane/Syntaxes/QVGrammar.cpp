#include "Quorvane/Syntaxes/QVGrammar.h"

#include "Quorvane/Categories/QVTreeDecoding.h"
#include "Quorvane/Scopes/QVScope.h"

namespace quorvane {

std::shared_ptr<QVCollection> QVGrammar::collectionWithName(const NSString &name) const {
    const auto found = _collections.find(name);
    return found != _collections.end() ? found->second : nullptr;
}

std::shared_ptr<QVGrammar> QVGrammar::copy() const {
    auto grammar = std::make_shared<QVGrammar>();
    copyInto(*grammar);
    for (const auto &scope : _templateScopes)
        grammar->_templateScopes.push_back(scope->copy());
    for (const auto &[name, collection] : _collections)
        grammar->_collections.emplace(name, collection->copy());
    return grammar;
}

const NSCodingClass &QVGrammar::codingClass() {
    static const NSCodingClass coding{
        u"QVGrammar", &QVCollection::codingClass(),
        []() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<QVGrammar>(); }};
    return coding;
}

void QVGrammar::encodeWithCoder(NSCoder &coder) const {
    QVCollection::encodeWithCoder(coder);
    coder.encodeArray(_templateScopes, u"templateScopes");
    coder.encodeDictionary(_collections, u"collections");
}

std::shared_ptr<NSSecureCoding> QVGrammar::initWithCoder(NSCoder &coder,
                                                         std::shared_ptr<NSSecureCoding> self) {
    QVTreeDecoding tree(this);
    if (!QVCollection::initWithCoder(coder, self))
        return nullptr;
    _templateScopes = coder.decodeArrayOfClass<QVScope>(u"templateScopes").value_or(Scopes());
    _collections = coder.decodeDictionaryOfClass<QVCollection>(u"collections").value_or(Collections());
    bool isTree = tree.adoptAll(_templateScopes);
    for (const auto &[name, collection] : _collections)
        isTree = isTree && tree.adopt(collection.get());
    if (isTree)
        return self;
    // Nothing may be left that holds itself.
    _templateScopes.clear();
    _collections.clear();
    QVFailTreeDecoding(coder);
    return nullptr;
}

} // namespace quorvane
