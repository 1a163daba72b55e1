#include "Quorvane/Scopes/QVScope.h"

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSIndexSet.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Styles/QVStyle.h"
#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>

using namespace quorvane;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::shared_ptr<QVScope> scopeNamed(const NSString &name, QVScopeType type = QVScopeTypeMatch) {
    return QVScope::scopeWithType(type, nullptr, name, nullptr, nullptr);
}

std::shared_ptr<QVCapture> captureNamed(const NSString &name) {
    auto capture = std::make_shared<QVCapture>();
    capture->setName(name);
    return capture;
}

/// Something to point to where only the pointer matters.
template <typename T> std::shared_ptr<T> placeOf(const std::shared_ptr<int> &owner) {
    return std::shared_ptr<T>(owner, reinterpret_cast<T *>(owner.get()));
}

/// A scope with subscopes, drawn as their names; every subscope's parent is checked.
class Subscopes : public testing::Test {
protected:
    std::string names() const {
        std::string result;
        for (const auto &subscope : parent->subscopes()) {
            result += subscope->name().UTF8String();
            EXPECT_EQ(subscope->parent(), parent);
        }
        return result;
    }

    const std::shared_ptr<QVScope> parent = scopeNamed(u"parent", QVScopeTypeStartEnd);
    const std::shared_ptr<QVScope> a = scopeNamed(u"a");
    const std::shared_ptr<QVScope> b = scopeNamed(u"b");
    const std::shared_ptr<QVScope> c = scopeNamed(u"c");
    const std::shared_ptr<QVScope> d = scopeNamed(u"d");
};

} // namespace

TEST(QVScope, TypesHaveTheNumbersOfArchivesAndNamesToPrint) {
    const std::vector<std::pair<QVScopeType, const char16_t *>> types{
        {QVScopeTypeUnknown, u"Unknown"},       {QVScopeTypeRoot, u"Root"},
        {QVScopeTypeWhitespace, u"Whitespace"}, {QVScopeTypeNewline, u"Newline"},
        {QVScopeTypeStartEnd, u"StartEnd"},     {QVScopeTypeMatch, u"Match"},
        {QVScopeTypeCutoff, u"Cutoff"},         {QVScopeTypeInclude, u"Include"}};
    for (std::size_t number = 0; number < types.size(); ++number) {
        EXPECT_EQ(types[number].first, number);
        EXPECT_EQ(QVScopeTypeToString(types[number].first), types[number].second);
    }
    EXPECT_EQ(QVScopeTypeToString(static_cast<QVScopeType>(99)), NSString());
    EXPECT_EQ(QVWhitespaceSkipNone, 0u);
    EXPECT_EQ(QVWhitespaceSkipGreedy, 1u);
    EXPECT_EQ(QVWhitespaceSkipLazy, 2u);
    EXPECT_EQ(QVSpellCheckingInherit, 0u);
    EXPECT_EQ(QVSpellCheckingEnabled, 1u);
    EXPECT_EQ(QVSpellCheckingDisabled, 2u);
}

TEST(QVScope, ANewScopeHasItsInitialValues) {
    const auto scope = std::make_shared<QVScope>();
    EXPECT_EQ(scope->symbolLookupBehavior(), 1u);
    EXPECT_EQ(scope->spellCheckingType(), QVSpellCheckingInherit);
    EXPECT_EQ(scope->whitespaceSkipBehavior(), QVWhitespaceSkipNone);
    EXPECT_FALSE(scope->isOptional() || scope->isRepeating() || scope->isTemplateScope());
    EXPECT_FALSE(scope->usesAnchoredSubscopeMatching() || scope->shouldResetStyleAttributes());
    EXPECT_FALSE(scope->definesSubsyntax());
    EXPECT_EQ(scope->parent(), nullptr);
    EXPECT_EQ(scope->parentSyntax(), nullptr);
    EXPECT_EQ(scope->resolvedStyle(), nullptr);
    EXPECT_THAT(scope->subscopes(), IsEmpty());
}

TEST(QVScope, IsMadeOfTypeNameAndExpressions) {
    const auto start = QVRegularExpression::regularExpressionWithPattern(u"<", 82);
    const auto end = QVRegularExpression::regularExpressionWithPattern(u">", 82);
    const auto owner = std::make_shared<int>();
    const auto syntax = placeOf<QVSyntax>(owner);
    const auto scope = QVScope::scopeWithType(QVScopeTypeStartEnd, syntax, u"tag.keyword", start, end);
    EXPECT_EQ(scope->type(), QVScopeTypeStartEnd);
    EXPECT_EQ(scope->parentSyntax(), syntax);
    EXPECT_EQ(scope->name(), u"tag.keyword");
    EXPECT_EQ(scope->regularExpression(), start);
    EXPECT_EQ(scope->endRegularExpression(), end);
    EXPECT_EQ(scope->selector(), QVSimpleSelector::simpleSelectorWithString(u"tag.keyword").get());
    EXPECT_EQ(scope->lexicalClass(), QVLexicalClassKeyword.string());
}

TEST(QVScope, DoesNotKeepItsSyntaxAlive) {
    const auto scope = scopeNamed(u"a");
    auto owner = std::make_shared<int>();
    scope->setParentSyntax(placeOf<QVSyntax>(owner));
    EXPECT_NE(scope->parentSyntax(), nullptr);
    owner = nullptr;
    EXPECT_EQ(scope->parentSyntax(), nullptr);
}

TEST(QVScope, AnIncludeHasNeitherSelectorNorLexicalClass) {
    const auto scope = scopeNamed(u"keyword", QVScopeTypeInclude);
    EXPECT_EQ(scope->selector(), nullptr);
    EXPECT_EQ(scope->lexicalClass(), NSString());
    EXPECT_EQ(scope->name(), u"keyword");
}

TEST(QVScope, RegionsAreAtomicOnlyAsStringsAndCommentsAndAllOthersAlways) {
    EXPECT_TRUE(scopeNamed(u"string.quoted", QVScopeTypeStartEnd)->isAtomic());
    EXPECT_TRUE(scopeNamed(u"comment", QVScopeTypeStartEnd)->isAtomic());
    EXPECT_FALSE(scopeNamed(u"keyword", QVScopeTypeStartEnd)->isAtomic());
    EXPECT_FALSE(scopeNamed(u"block", QVScopeTypeStartEnd)->isAtomic());
    for (const QVScopeType type :
         {QVScopeTypeUnknown, QVScopeTypeRoot, QVScopeTypeWhitespace, QVScopeTypeNewline, QVScopeTypeMatch,
          QVScopeTypeCutoff, QVScopeTypeInclude})
        EXPECT_TRUE(scopeNamed(u"block", type)->isAtomic());
}

TEST(QVScope, CommentsAndScopesWithASymbolTypeMakeSymbols) {
    EXPECT_TRUE(scopeNamed(u"comment.line")->directHasSymbol());
    EXPECT_FALSE(scopeNamed(u"string")->directHasSymbol());
    const auto scope = scopeNamed(u"a");
    auto options = std::make_shared<QVScopeSymbolOptions>();
    options->setSymbolType(0);
    scope->setSymbolOptions(options);
    EXPECT_FALSE(scope->directHasSymbol());
    options->setSymbolType(7);
    EXPECT_TRUE(scope->directHasSymbol());
    scope->setSymbolOptions(nullptr);
    scope->setLexicalClass(QVLexicalClassComment);
    EXPECT_TRUE(scope->directHasSymbol());
    scope->setLexicalClass(nullptr);
    EXPECT_FALSE(scope->directHasSymbol());
}

TEST(QVScope, ValuesAreKept) {
    const auto scope = std::make_shared<QVScope>();
    scope->setType(QVScopeTypeCutoff);
    scope->setName(u"n");
    scope->setAtomic(true);
    scope->setOptional(true);
    scope->setRepeating(true);
    scope->setTemplateScope(true);
    scope->setUsesAnchoredSubscopeMatching(true);
    scope->setShouldResetStyleAttributes(true);
    scope->setWhitespaceSkipBehavior(QVWhitespaceSkipLazy);
    scope->setSpellCheckingType(QVSpellCheckingDisabled);
    scope->setSymbolLookupBehavior(2);
    scope->setEndRegularExpressionTemplate(u"\\1");
    scope->setIncludeSyntaxName(u"self");
    scope->setIncludeCollectionName(u"*");
    scope->setSubsyntaxOptions(std::make_shared<QVScopeSubsyntaxOptions>());
    EXPECT_EQ(scope->type(), QVScopeTypeCutoff);
    EXPECT_EQ(scope->name(), u"n");
    EXPECT_TRUE(scope->isAtomic() && scope->isOptional() && scope->isRepeating());
    EXPECT_TRUE(scope->isTemplateScope() && scope->usesAnchoredSubscopeMatching());
    EXPECT_TRUE(scope->shouldResetStyleAttributes());
    EXPECT_EQ(scope->whitespaceSkipBehavior(), QVWhitespaceSkipLazy);
    EXPECT_EQ(scope->spellCheckingType(), QVSpellCheckingDisabled);
    EXPECT_EQ(scope->symbolLookupBehavior(), 2u);
    EXPECT_EQ(scope->endRegularExpressionTemplate(), u"\\1");
    EXPECT_EQ(scope->includeSyntaxName(), u"self");
    EXPECT_EQ(scope->includeCollectionName(), u"*");
    EXPECT_TRUE(scope->definesSubsyntax());
}

TEST(QVScope, CapturesGetThisParentAndLoseItWhenReplaced) {
    const auto scope = scopeNamed(u"s");
    const auto first = captureNamed(u"first");
    const auto second = captureNamed(u"second");
    scope->setCaptures({first, second});
    EXPECT_EQ(first->parent(), scope);
    EXPECT_EQ(second->parent(), scope);
    scope->setCaptures({second});
    EXPECT_EQ(first->parent(), nullptr);
    EXPECT_EQ(second->parent(), scope);
    scope->setEndCaptures({first});
    EXPECT_EQ(first->parent(), scope);
    scope->setEndCaptures({});
    EXPECT_EQ(first->parent(), nullptr);
    EXPECT_THAT(scope->endCaptures(), IsEmpty());
}

TEST(QVScope, DirectOperationsAndPlainOnesAreTheSame) {
    const auto scope = scopeNamed(u"s");
    const auto expression = QVRegularExpression::regularExpressionWithPattern(u"a", 0);
    const auto end = QVRegularExpression::regularExpressionWithPattern(u"b", 0);
    const auto capture = captureNamed(u"c");
    QVScope::setDirectRegularExpression(scope.get(), expression);
    QVScope::setDirectEndRegularExpression(scope.get(), end);
    QVScope::setDirectCaptures(scope.get(), {capture});
    EXPECT_EQ(scope->regularExpression(), expression);
    EXPECT_EQ(scope->endRegularExpression(), end);
    EXPECT_THAT(scope->captures(), ElementsAre(capture));
    EXPECT_EQ(capture->parent(), scope);
    QVScope::setDirectEndCaptures(scope.get(), {capture});
    EXPECT_THAT(scope->endCaptures(), ElementsAre(capture));
    EXPECT_EQ(QVScope::directRegularExpression(scope.get()), expression.get());
    EXPECT_EQ(QVScope::directEndRegularExpression(scope.get()), end.get());
    EXPECT_EQ(QVScope::directCaptures(scope.get()), &scope->captures());
    EXPECT_EQ(QVScope::directEndCaptures(scope.get()), &scope->endCaptures());
    scope->setRegularExpression(end);
    scope->setEndRegularExpression(nullptr);
    EXPECT_EQ(QVScope::directRegularExpression(scope.get()), end.get());
    EXPECT_EQ(QVScope::directEndRegularExpression(scope.get()), nullptr);
}

TEST(QVScope, DirectOperationsTolerateNull) {
    EXPECT_EQ(QVScope::directRegularExpression(nullptr), nullptr);
    EXPECT_EQ(QVScope::directEndRegularExpression(nullptr), nullptr);
    EXPECT_EQ(QVScope::directCaptures(nullptr), nullptr);
    EXPECT_EQ(QVScope::directEndCaptures(nullptr), nullptr);
    QVScope::setDirectRegularExpression(nullptr, nullptr);
    QVScope::setDirectEndRegularExpression(nullptr, nullptr);
    QVScope::setDirectCaptures(nullptr, {captureNamed(u"c")});
    QVScope::setDirectEndCaptures(nullptr, {captureNamed(u"c")});
}

// Subscopes

TEST_F(Subscopes, AreAddedAndInserted) {
    parent->addSubscope(b);
    parent->addSubscopes({c, d});
    EXPECT_EQ(names(), "bcd");
    parent->insertSubscope(a, 0);
    EXPECT_EQ(names(), "abcd");
}

TEST_F(Subscopes, OfAListEndUpAtTheirIndexes) {
    parent->addSubscopes({b, d});
    parent->insertSubscopes({a, c}, {0, 2});
    EXPECT_EQ(names(), "abcd");
    EXPECT_THROW(parent->insertSubscopes({scopeNamed(u"e")}, {0, 1}), NSException);
    EXPECT_EQ(names(), "abcd");
}

TEST_F(Subscopes, AreReplacedAndTheOldOnesLoseTheirParent) {
    parent->setSubscopes({a, b});
    parent->setSubscopes({b, c});
    EXPECT_EQ(names(), "bc");
    EXPECT_EQ(a->parent(), nullptr);
    parent->setSubscopes({});
    EXPECT_EQ(names(), "");
    EXPECT_EQ(b->parent(), nullptr);
}

TEST_F(Subscopes, AreRemovedByIndex) {
    parent->setSubscopes({a, b, c, d});
    parent->removeSubscopeAtIndex(1);
    EXPECT_EQ(names(), "acd");
    EXPECT_EQ(b->parent(), nullptr);
    parent->removeSubscopesAtIndexes({0, 2});
    EXPECT_EQ(names(), "c");
    EXPECT_EQ(a->parent(), nullptr);
    EXPECT_EQ(d->parent(), nullptr);
    parent->removeSubscopesAtIndexes({});
    EXPECT_EQ(names(), "c");
}

TEST_F(Subscopes, AreRemovedByIdentity) {
    parent->setSubscopes({a, b, c});
    parent->removeSubscope(b);
    EXPECT_EQ(names(), "ac");
    EXPECT_EQ(b->parent(), nullptr);
    parent->removeSubscopes({c, a, d});
    EXPECT_EQ(names(), "");
    EXPECT_EQ(a->parent(), nullptr);
}

TEST_F(Subscopes, RemovedByIdentityKeepAParentThatIsAnother) {
    const auto other = scopeNamed(u"other", QVScopeTypeStartEnd);
    parent->setSubscopes({a, b});
    other->addSubscope(a);
    parent->removeSubscopes({a});
    EXPECT_EQ(a->parent(), other);
    EXPECT_EQ(names(), "b");
    // One that is not among the subscopes is left alone.
    parent->removeSubscope(a);
    EXPECT_EQ(a->parent(), other);
    // Removing by index asks nobody.
    parent->insertSubscope(a, 0);
    other->addSubscope(a);
    parent->removeSubscopeAtIndex(0);
    EXPECT_EQ(a->parent(), nullptr);
}

TEST_F(Subscopes, OutsideOfTheBoundsThrow) {
    parent->setSubscopes({a});
    EXPECT_THROW(parent->insertSubscope(b, 2), NSException);
    EXPECT_THROW(parent->removeSubscopeAtIndex(1), NSException);
    EXPECT_THROW(parent->removeSubscopesAtIndexes({0, 1}), NSException);
    EXPECT_EQ(names(), "a");
    EXPECT_EQ(b->parent(), nullptr);
}

TEST_F(Subscopes, ThatAreSharedKeepTheParentsThatTheyHave) {
    parent->setSubscopes({a});
    const auto root = scopeNamed(u"root", QVScopeTypeRoot);
    root->setSharedSubscopes({a, b});
    EXPECT_THAT(root->subscopes(), ElementsAre(a, b));
    EXPECT_EQ(a->parent(), parent);
    EXPECT_EQ(b->parent(), nullptr);
}

TEST_F(Subscopes, DoNotKeepTheirParentAlive) {
    auto temporary = scopeNamed(u"t", QVScopeTypeStartEnd);
    temporary->addSubscope(a);
    temporary = nullptr;
    EXPECT_EQ(a->parent(), nullptr);
    EXPECT_EQ(a->parentSelectable(), nullptr);
    EXPECT_EQ(a->nextSelectable(), nullptr);
}

// Selectables

TEST_F(Subscopes, AnswerThemselvesAsTheNextSelectable) {
    // There is no step forward, and that is to stay.
    parent->setSubscopes({a, b});
    EXPECT_EQ(a->nextSelectable(), a.get());
    EXPECT_EQ(b->nextSelectable(), b.get());
    EXPECT_EQ(parent->nextSelectable(), nullptr);
    c->setParent(parent);
    EXPECT_EQ(c->nextSelectable(), nullptr);
    EXPECT_EQ(a->parentSelectable(), parent.get());
    EXPECT_EQ(parent->parentSelectable(), nullptr);
}

TEST_F(Subscopes, StandBetweenCapturesAndEndCapturesAsChildren) {
    const auto first = captureNamed(u"1");
    const auto second = captureNamed(u"2");
    parent->setCaptures({first});
    parent->setEndCaptures({second});
    parent->setSubscopes({a, b});
    const auto children = [&](std::size_t count) {
        std::vector<QVSelectable *> result;
        parent->enumerateSelectableChildrenUsingBlock([&](QVSelectable *child, bool &stop) {
            result.push_back(child);
            stop = result.size() == count;
        });
        return result;
    };
    EXPECT_TRUE(parent->offersSelectableChildren());
    EXPECT_THAT(children(99), ElementsAre(first.get(), a.get(), b.get(), second.get()));
    for (std::size_t count = 1; count <= 4; ++count)
        EXPECT_EQ(children(count).size(), count);
}

// Copies and descriptions

TEST(QVScope, ACopyHasAllValuesAndItsOwnTree) {
    const auto owner = std::make_shared<int>();
    const auto scope = QVScope::scopeWithType(QVScopeTypeStartEnd, placeOf<QVSyntax>(owner), u"comment.block",
                                              QVRegularExpression::regularExpressionWithPattern(u"a", 0),
                                              QVRegularExpression::regularExpressionWithPattern(u"b", 0));
    scope->setPackage(placeOf<QVPackage>(owner));
    scope->setAtomic(false);
    scope->setOptional(true);
    scope->setRepeating(true);
    scope->setTemplateScope(true);
    scope->setUsesAnchoredSubscopeMatching(true);
    scope->setShouldResetStyleAttributes(true);
    scope->setWhitespaceSkipBehavior(QVWhitespaceSkipGreedy);
    scope->setSpellCheckingType(QVSpellCheckingEnabled);
    scope->setSymbolLookupBehavior(0);
    scope->setEndRegularExpressionTemplate(u"t");
    scope->setIncludeSyntaxName(u"i");
    scope->setIncludeCollectionName(u"c");
    const auto style = std::make_shared<QVStyle>();
    scope->addStyle(style);
    auto symbolOptions = std::make_shared<QVScopeSymbolOptions>();
    symbolOptions->setSymbolType(5);
    scope->setSymbolOptions(symbolOptions);
    auto subsyntaxOptions = std::make_shared<QVScopeSubsyntaxOptions>();
    subsyntaxOptions->setName(u"inner");
    scope->setSubsyntaxOptions(subsyntaxOptions);
    scope->setCaptures({captureNamed(u"first")});
    scope->setEndCaptures({captureNamed(u"last")});
    const auto child = scopeNamed(u"child");
    child->addSubscope(scopeNamed(u"grandchild"));
    scope->addSubscope(child);
    const auto above = scopeNamed(u"above", QVScopeTypeStartEnd);
    above->addSubscope(scope);

    const auto copy = scope->copy();
    EXPECT_NE(copy, scope);
    EXPECT_EQ(copy->package(), scope->package());
    EXPECT_EQ(copy->type(), QVScopeTypeStartEnd);
    EXPECT_EQ(copy->parentSyntax(), scope->parentSyntax());
    EXPECT_EQ(copy->name(), u"comment.block");
    EXPECT_EQ(copy->selector(), scope->selector());
    EXPECT_EQ(copy->lexicalClass(), QVLexicalClassComment.string());
    EXPECT_TRUE(copy->directHasSymbol());
    // Expressions never change, so they are shared.
    EXPECT_EQ(copy->regularExpression(), scope->regularExpression());
    EXPECT_EQ(copy->endRegularExpression(), scope->endRegularExpression());
    EXPECT_FALSE(copy->isAtomic());
    EXPECT_TRUE(copy->isOptional() && copy->isRepeating() && copy->isTemplateScope());
    EXPECT_TRUE(copy->usesAnchoredSubscopeMatching() && copy->shouldResetStyleAttributes());
    EXPECT_EQ(copy->whitespaceSkipBehavior(), QVWhitespaceSkipGreedy);
    EXPECT_EQ(copy->spellCheckingType(), QVSpellCheckingEnabled);
    EXPECT_EQ(copy->symbolLookupBehavior(), 0u);
    EXPECT_EQ(copy->endRegularExpressionTemplate(), u"t");
    EXPECT_EQ(copy->includeSyntaxName(), u"i");
    EXPECT_EQ(copy->includeCollectionName(), u"c");
    EXPECT_THAT(*copy->styles(), ElementsAre(style));
    EXPECT_NE(copy->resolvedStyle(), nullptr);
    ASSERT_NE(copy->symbolOptions(), nullptr);
    EXPECT_NE(copy->symbolOptions(), symbolOptions);
    EXPECT_EQ(copy->symbolOptions()->symbolType(), 5u);
    ASSERT_TRUE(copy->definesSubsyntax());
    EXPECT_NE(copy->subsyntaxOptions(), subsyntaxOptions);
    EXPECT_EQ(copy->subsyntaxOptions()->name(), u"inner");
    EXPECT_EQ(copy->parent(), above);

    ASSERT_EQ(copy->captures().size(), 1u);
    EXPECT_NE(copy->captures()[0], scope->captures()[0]);
    EXPECT_EQ(copy->captures()[0]->name(), u"first");
    EXPECT_EQ(copy->captures()[0]->parent(), copy);
    EXPECT_EQ(scope->captures()[0]->parent(), scope);
    ASSERT_EQ(copy->endCaptures().size(), 1u);
    EXPECT_EQ(copy->endCaptures()[0]->name(), u"last");
    ASSERT_EQ(copy->subscopes().size(), 1u);
    EXPECT_NE(copy->subscopes()[0], child);
    EXPECT_EQ(copy->subscopes()[0]->parent(), copy);
    EXPECT_EQ(child->parent(), scope);
    const auto grandchild = copy->subscopes()[0]->subscopes()[0];
    EXPECT_EQ(grandchild->name(), u"grandchild");
    EXPECT_EQ(grandchild->parent(), copy->subscopes()[0]);
}

TEST(QVScope, DescriptionNamesTypeAndExpressions) {
    const auto expression = QVRegularExpression::regularExpressionWithPattern(u"a", 82);
    const auto scope = QVScope::scopeWithType(QVScopeTypeStartEnd, nullptr, u"block", expression, nullptr);
    EXPECT_EQ(
        scope->description(),
        NSString::stringWithFormat(u"<QVScope: %p : name=block, type=StartEnd, regex=%@, endRegex=(null)>",
                                   static_cast<const void *>(scope.get()), expression->description()));
}
