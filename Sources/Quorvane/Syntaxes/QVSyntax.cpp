#include "Quorvane/Syntaxes/QVSyntax.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Detectors/QVDetector.h"
#include "Quorvane/Symbols/QVSymbolBehaviors.h"
#include "Quorvane/Symbols/QVSymbolDocumentationBehavior.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntaxSurroundingPair.h"

namespace quorvane {

namespace {

constexpr std::u16string_view syntaxTypeWords[] = {u"unknown", u"markup",   u"stylesheet",
                                                   u"script",  u"compiled", u"structured"};

template <typename T> std::vector<std::shared_ptr<T>> copies(const std::vector<std::shared_ptr<T>> &objects) {
    std::vector<std::shared_ptr<T>> result;
    result.reserve(objects.size());
    for (const auto &object : objects)
        result.push_back(object->copy());
    return result;
}

} // namespace

QVSyntaxType QVSyntaxTypeFromString(const NSString &string) {
    const auto found = std::find(std::begin(syntaxTypeWords), std::end(syntaxTypeWords), string.view());
    return found != std::end(syntaxTypeWords) ? static_cast<QVSyntaxType>(found - std::begin(syntaxTypeWords))
                                              : QVSyntaxTypeUnknown;
}

NSString QVSyntaxTypeToString(NSUInteger syntaxType) {
    return NSString(syntaxTypeWords[syntaxType < std::size(syntaxTypeWords) ? syntaxType : 0]);
}

QVSyntax::QVSyntax() : _symbolLookupBehavior(QVSymbolLookupBehaviorIndex) {}
QVSyntax::~QVSyntax() = default;

std::shared_ptr<QVGrammar> QVSyntax::visibleGrammar() const {
    const std::lock_guard guard(_stateLock);
    const bool isVisible = _grammarResolved || _connectingThread == std::this_thread::get_id();
    return isVisible ? _grammar : nullptr;
}

std::shared_ptr<QVGrammar> QVSyntax::grammarResolvingIfNecessary(bool resolve) const {
    // An unload asks without resolving while it holds the package lock, so this must not wait for a thread
    // that unpacks.
    auto grammar = visibleGrammar();
    if (grammar || !resolve)
        return grammar;

    std::shared_ptr<NSError> error;
    {
        // Let go before the package lock is waited for: whoever has that lock may ask for this grammar too.
        const std::lock_guard monitor(_monitor);
        error = unpackGrammar();
    }
    // The data is spent by now: a sink of the log may ask for this grammar.
    if (error)
        NSLog(u"Error unarchiving grammar for syntax: %@, %@", this, error);
    connectGrammar();
    // Also where an unload has come in between, behind which the grammar is not to be seen any more.
    const std::lock_guard guard(_stateLock);
    return _grammar;
}

std::shared_ptr<NSError> QVSyntax::unpackGrammar() const {
    const NSData data = grammarData();
    if (!data)
        return nullptr;
    std::shared_ptr<NSError> error;
    auto grammar = NSKeyedUnarchiver::unarchivedObjectOfClass<QVGrammar>(data, &error);
    const std::lock_guard guard(_stateLock);
    _grammarData = nullptr;
    _grammar = std::move(grammar);
    return error;
}

void QVSyntax::connectGrammar() const {
    {
        const std::lock_guard guard(_stateLock);
        if (!_grammar)
            return;
    }
    const auto self =
        std::const_pointer_cast<QVSyntax>(std::static_pointer_cast<const QVSyntax>(shared_from_this()));
    performBlockWithPackageLock([&] {
        // Another thread may have been here first.
        if (visibleGrammar())
            return;
        // What connects the grammar asks for it again; no other thread may see it before that is done.
        struct Connecting {
            const QVSyntax &syntax;
            bool done = false;
            explicit Connecting(const QVSyntax &syntaxToConnect) : syntax(syntaxToConnect) {
                const std::lock_guard guard(syntax._stateLock);
                syntax._connectingThread = std::this_thread::get_id();
            }
            ~Connecting() {
                const std::lock_guard guard(syntax._stateLock);
                syntax._connectingThread = {};
                syntax._grammarResolved = done;
            }
        } connecting(*this);
        loadResolvedSyntax(self);
        connecting.done = true;
    });
}

void QVSyntax::setGrammar(std::shared_ptr<QVGrammar> grammar) {
    const std::lock_guard guard(_stateLock);
    _grammar = std::move(grammar);
    _grammarResolved = false;
}

NSData QVSyntax::grammarData() const {
    const std::lock_guard guard(_stateLock);
    return _grammarData;
}

bool QVSyntax::grammarResolved() const {
    const std::lock_guard guard(_stateLock);
    return _grammarResolved;
}

void QVSyntax::didUnloadFromPackage() {
    const std::lock_guard guard(_stateLock);
    _grammarResolved = false;
}

float QVSyntax::confidenceForString(const NSString &string, const NSString &filename) const {
    float best = 0;
    for (const auto &detector : _detectors)
        best = std::max(best, detector->confidenceForString(string, filename) * detector->priority());
    return best;
}

bool QVSyntax::isDescendantOfSyntaxName(const NSString &name) const {
    std::set<NSString> visited;
    std::shared_ptr<const QVSyntax> ancestor;
    const QVSyntax *syntax = this;
    while (syntax != nullptr && visited.insert(syntax->_name).second) {
        if (syntax->_name == name)
            return true;
        const NSString parentName = syntax->_parentSyntaxName;
        ancestor = parentName ? syntaxForName(parentName) : nullptr;
        syntax = ancestor.get();
    }
    return false;
}

std::vector<std::shared_ptr<QVCompletionProvider>> QVSyntax::completionProviders() const {
    const std::lock_guard guard(_completionProvidersLock);
    return _completionProviders;
}

void QVSyntax::setCompletionProviders(std::vector<std::shared_ptr<QVCompletionProvider>> providers) {
    const std::lock_guard guard(_completionProvidersLock);
    _completionProviders = std::move(providers);
}

void QVSyntax::addCompletionProvider(std::shared_ptr<QVCompletionProvider> provider) {
    const std::lock_guard guard(_completionProvidersLock);
    _completionProviders.push_back(std::move(provider));
}

std::shared_ptr<QVSyntax> QVSyntax::copy() const {
    auto copy = std::make_shared<QVSyntax>();
    copy->setPackage(package());
    {
        const std::lock_guard guard(_stateLock);
        copy->_grammar = _grammar;
    }
    if (copy->_grammar)
        copy->_grammar = copy->_grammar->copy();
    copy->_completionProviders = copies(completionProviders());
    copy->_subsyntaxOnly = _subsyntaxOnly;
    copy->_scriptable = _scriptable;
    copy->_name = _name;
    copy->_displayName = _displayName;
    copy->_syntaxType = _syntaxType;
    copy->_parentSyntaxName = _parentSyntaxName;
    copy->_detectors = copies(_detectors);
    copy->_symbolLocalScopeBehavior = _symbolLocalScopeBehavior;
    copy->_symbolRedefinitionBehavior = _symbolRedefinitionBehavior;
    copy->_symbolLookupBehavior = _symbolLookupBehavior;
    if (_symbolDocumentationBehaviors)
        copy->_symbolDocumentationBehaviors = copies(*_symbolDocumentationBehaviors);
    copy->_spellCheckingType = _spellCheckingType;
    copy->_identifierCharacterSet = _identifierCharacterSet;
    copy->_identifierPrefixCharacterSet = _identifierPrefixCharacterSet;
    copy->_bracketPairs = _bracketPairs;
    for (const auto &[open, pair] : _surroundingPairs)
        copy->_surroundingPairs.emplace(open, pair->copy());
    copy->_indentationIncrease = _indentationIncrease;
    copy->_indentationDecrease = _indentationDecrease;
    copy->_indentationNextLine = _indentationNextLine;
    copy->_indentationIgnore = _indentationIgnore;
    copy->_singleLineCommentPrefix = _singleLineCommentPrefix;
    copy->_multilineCommentPrefix = _multilineCommentPrefix;
    copy->_multilineCommentSuffix = _multilineCommentSuffix;
    copy->_preferredFileExtension = _preferredFileExtension;
    copy->_scriptingShebang = _scriptingShebang;
    return copy;
}

NSString QVSyntax::description() const {
    return NSString::stringWithFormat(u"<%@: %p : name=%@>", className(), static_cast<const void *>(this),
                                      _name);
}

} // namespace quorvane
