#include "Quorvane/Scopes/QVScope.h"

#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScopeList.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"

namespace quorvane {

NSString QVScopeTypeToString(QVScopeType type) {
    switch (type) {
    case QVScopeTypeUnknown:
        return u"Unknown";
    case QVScopeTypeRoot:
        return u"Root";
    case QVScopeTypeWhitespace:
        return u"Whitespace";
    case QVScopeTypeNewline:
        return u"Newline";
    case QVScopeTypeStartEnd:
        return u"StartEnd";
    case QVScopeTypeMatch:
        return u"Match";
    case QVScopeTypeCutoff:
        return u"Cutoff";
    case QVScopeTypeInclude:
        return u"Include";
    }
    // A type from a strange archive.
    return {};
}

QVScope::QVScope() = default;
QVScope::~QVScope() = default;

std::shared_ptr<QVScope> QVScope::scopeWithType(QVScopeType type,
                                                const std::shared_ptr<QVSyntax> &parentSyntax, NSString name,
                                                std::shared_ptr<QVRegularExpression> regularExpression,
                                                std::shared_ptr<QVRegularExpression> endRegularExpression) {
    auto scope = std::make_shared<QVScope>();
    scope->_type = type;
    scope->_parentSyntax = parentSyntax;
    scope->_name = std::move(name);
    scope->_regularExpression = std::move(regularExpression);
    scope->_endRegularExpression = std::move(endRegularExpression);
    if (type != QVScopeTypeInclude) {
        scope->_selector = QVSimpleSelector::simpleSelectorWithString(scope->_name);
        scope->setLexicalClass(QVLexicalClassForClasses(scope->_selector->classes()));
    }
    scope->_atomic = type != QVScopeTypeStartEnd || scope->_lexicalClass == QVLexicalClassString.string() ||
                     scope->_lexicalClass == QVLexicalClassComment.string();
    return scope;
}

std::shared_ptr<QVScope> QVScope::self() const {
    return std::const_pointer_cast<QVScope>(std::static_pointer_cast<const QVScope>(shared_from_this()));
}

void QVScope::setLexicalClass(NSString lexicalClass) {
    _isComment = lexicalClass == QVLexicalClassComment.string();
    _lexicalClass = std::move(lexicalClass);
    noteChange();
}

bool QVScope::optionsHaveSymbol() const { return _symbolOptions->symbolType() != 0; }

void QVScope::setRegularExpression(std::shared_ptr<QVRegularExpression> expression) {
    setDirectRegularExpression(this, std::move(expression));
}

void QVScope::setEndRegularExpression(std::shared_ptr<QVRegularExpression> expression) {
    setDirectEndRegularExpression(this, std::move(expression));
}

void QVScope::setCaptures(Captures captures) { setDirectCaptures(this, std::move(captures)); }
void QVScope::setEndCaptures(Captures captures) { setDirectEndCaptures(this, std::move(captures)); }

namespace {

void replaceCaptures(QVScope::Captures &list, QVScope::Captures captures,
                     const std::shared_ptr<QVScope> &parent) {
    for (const auto &capture : list)
        capture->setParent(nullptr);
    list = std::move(captures);
    for (const auto &capture : list)
        capture->setParent(parent);
}

QVScope::Captures copiesOfCaptures(const QVScope::Captures &captures) {
    QVScope::Captures result;
    result.reserve(captures.size());
    for (const auto &capture : captures)
        result.push_back(capture->copy());
    return result;
}

} // namespace

void QVScope::setDirectCaptures(QVScope *scope, Captures captures) {
    if (scope)
        replaceCaptures(scope->_captures, std::move(captures), scope->self());
}

void QVScope::setDirectEndCaptures(QVScope *scope, Captures captures) {
    if (scope)
        replaceCaptures(scope->_endCaptures, std::move(captures), scope->self());
}

void QVScope::setSubscopes(Scopes subscopes) { scopeList::assign(_subscopes, std::move(subscopes), self()); }
void QVScope::addSubscope(std::shared_ptr<QVScope> subscope) {
    insertSubscope(std::move(subscope), _subscopes.size());
}
void QVScope::addSubscopes(const Scopes &subscopes) { scopeList::append(_subscopes, subscopes, self()); }
void QVScope::insertSubscope(std::shared_ptr<QVScope> subscope, NSUInteger atIndex) {
    scopeList::insert(_subscopes, std::move(subscope), atIndex, self());
}
void QVScope::insertSubscopes(const Scopes &subscopes, const NSIndexSet &atIndexes) {
    scopeList::insertAtIndexes(_subscopes, subscopes, atIndexes, self());
}
void QVScope::removeSubscopeAtIndex(NSUInteger index) { removeSubscopesAtIndexes({index}); }
void QVScope::removeSubscopesAtIndexes(const NSIndexSet &indexes) {
    scopeList::removeAtIndexes(_subscopes, indexes);
}
void QVScope::removeSubscope(const std::shared_ptr<QVScope> &subscope) {
    scopeList::removeObject(_subscopes, subscope, self());
}
void QVScope::removeSubscopes(const Scopes &subscopes) {
    for (const auto &subscope : subscopes)
        removeSubscope(subscope);
}

QVSelectable *QVScope::parentSelectable() const { return parent().get(); }

QVSelectable *QVScope::nextSelectable() const {
    const auto scope = parent();
    if (!scope)
        return nullptr;
    const auto found = std::find_if(scope->_subscopes.begin(), scope->_subscopes.end(),
                                    [this](const auto &subscope) { return subscope.get() == this; });
    return found == scope->_subscopes.end() ? nullptr : found->get();
}

void QVScope::enumerateSelectableChildrenUsingBlock(
    QVBlock<void(QVSelectable *child, bool &stop)> block) const {
    bool stop = false;
    const auto enumerate = [&](const auto &list) {
        for (const auto &child : list) {
            if (stop)
                return;
            block(child.get(), stop);
        }
    };
    enumerate(_captures);
    enumerate(_subscopes);
    enumerate(_endCaptures);
}

std::shared_ptr<QVScope> QVScope::copy() const {
    auto scope = std::make_shared<QVScope>();
    scope->setPackage(package());
    static_cast<QVStyleList &>(*scope) = *this;
    scope->_type = _type;
    scope->_atomic = _atomic;
    scope->_optional = _optional;
    scope->_repeating = _repeating;
    scope->_templateScope = _templateScope;
    scope->_usesAnchoredSubscopeMatching = _usesAnchoredSubscopeMatching;
    scope->_shouldResetStyleAttributes = _shouldResetStyleAttributes;
    scope->_isComment = _isComment;
    scope->_whitespaceSkipBehavior = _whitespaceSkipBehavior;
    scope->_spellCheckingType = _spellCheckingType;
    scope->_symbolLookupBehavior = _symbolLookupBehavior;
    scope->_regularExpression = _regularExpression;
    scope->_endRegularExpression = _endRegularExpression;
    scope->setCaptures(copiesOfCaptures(_captures));
    scope->setEndCaptures(copiesOfCaptures(_endCaptures));
    scope->setSubscopes(scopeList::copies(_subscopes));
    scope->_symbolOptions = _symbolOptions ? _symbolOptions->copy() : nullptr;
    scope->_subsyntaxOptions = _subsyntaxOptions ? _subsyntaxOptions->copy() : nullptr;
    scope->_selector = _selector;
    scope->_name = _name;
    scope->_lexicalClass = _lexicalClass;
    scope->_endRegularExpressionTemplate = _endRegularExpressionTemplate;
    scope->_includeSyntaxName = _includeSyntaxName;
    scope->_includeCollectionName = _includeCollectionName;
    scope->_parentSyntax = _parentSyntax;
    scope->_parent = _parent;
    return scope;
}

NSString QVScope::description() const {
    return NSString::stringWithFormat(u"<%@: %p : name=%@, type=%@, regex=%@, endRegex=%@>", className(),
                                      static_cast<const void *>(this), _name, QVScopeTypeToString(_type),
                                      _regularExpression, _endRegularExpression);
}

} // namespace quorvane
