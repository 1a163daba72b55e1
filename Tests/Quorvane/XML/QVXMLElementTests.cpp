#include "Quorvane/XML/QVXMLElement.h"

#include "Platform/Foundation/NSException.h"
#include "Quorvane/XML/QVXMLTextNode.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

std::shared_ptr<QVXMLElement> element(const char16_t *name) {
    auto made = std::make_shared<QVXMLElement>();
    made->setName(name);
    return made;
}

std::shared_ptr<QVXMLTextNode> text(const char16_t *characters) {
    return std::make_shared<QVXMLTextNode>(characters);
}

NSString rangeReason(auto work) {
    try {
        work();
    } catch (const NSException &exception) {
        EXPECT_EQ(exception.name(), NSRangeException);
        return exception.reason();
    }
    return {};
}

} // namespace

TEST(QVXMLElement, ANewOneIsNamelessAndEmpty) {
    const QVXMLElement made;
    EXPECT_TRUE(made.name().isNull());
    EXPECT_TRUE(made.attributes().empty());
    EXPECT_TRUE(made.children().empty());
    EXPECT_EQ(made.lineNumber(), 0u);
    EXPECT_EQ(made.columnNumber(), 0u);
    EXPECT_EQ(made.stringValue(), u"");
    EXPECT_EQ(made.text(), u"");
    EXPECT_TRUE(made.elementsForName(u"x").empty());
    // No name is not the empty name.
    const auto parent = element(u"parent");
    parent->addChild(std::make_shared<QVXMLElement>());
    EXPECT_TRUE(parent->elementsForName(u"").empty());
}

TEST(QVXMLElement, AttributesAreSetReplacedAndRemoved) {
    QVXMLElement made;
    made.setValue(u"1", u"a");
    made.setValue(u"2", u"a");
    made.setValue(u"", u"b");
    EXPECT_EQ(made.valueForAttribute(u"a"), u"2");
    EXPECT_EQ(made.valueForAttribute(u"b"), u"");
    EXPECT_EQ(made.valueForAttribute(u"c"), NSString());
    made.removeValueForAttribute(u"a");
    made.setValue(nullptr, u"b");
    EXPECT_TRUE(made.attributes().empty());
    made.setValue(u"gone", u"old");
    made.setAttributes({{u"k", u"v"}});
    EXPECT_EQ(made.attributes(), (std::map<NSString, NSString>{{u"k", u"v"}}));
}

TEST(QVXMLElement, ChildrenAreAddedInsertedAndRemovedByIndex) {
    const auto made = element(u"parent");
    const auto a = element(u"a");
    const auto b = text(u"b");
    const auto c = element(u"c");
    made->addChild(a);
    made->insertChild(c, 1);
    made->insertChild(b, 1);
    EXPECT_EQ(made->children(), (std::vector<std::shared_ptr<QVXMLNode>>{a, b, c}));
    EXPECT_EQ(made->childAtIndex(2), c);
    made->removeChildAtIndex(0);
    EXPECT_EQ(made->children(), (std::vector<std::shared_ptr<QVXMLNode>>{b, c}));
    made->setChildren({a});
    EXPECT_EQ(made->children(), (std::vector<std::shared_ptr<QVXMLNode>>{a}));
}

TEST(QVXMLElement, AnIndexOutsideOfTheChildrenThrows) {
    const auto made = element(u"parent");
    EXPECT_EQ(rangeReason([&] { made->childAtIndex(0); }), u"index 0 beyond bounds for empty array");
    EXPECT_EQ(rangeReason([&] { made->removeChildAtIndex(0); }), u"index 0 beyond bounds for empty array");
    made->addChild(element(u"a"));
    EXPECT_EQ(rangeReason([&] { made->childAtIndex(1); }), u"index 1 beyond bounds [0 .. 0]");
    EXPECT_EQ(rangeReason([&] { made->insertChild(element(u"b"), 2); }), u"index 2 beyond bounds [0 .. 1]");
    EXPECT_EQ(rangeReason([&] { made->childAtIndex(NSNotFound); }),
              u"index 9223372036854775807 beyond bounds [0 .. 0]");
}

TEST(QVXMLElement, ElementsAreFoundByNameAmongDirectChildrenOnly) {
    const auto made = element(u"parent");
    const auto first = element(u"x");
    const auto other = element(u"y");
    const auto second = element(u"x");
    other->addChild(element(u"x"));
    made->setChildren({first, text(u"x"), other, second});
    EXPECT_EQ(made->elementsForName(u"x"), (std::vector{first, second}));
    EXPECT_TRUE(made->elementsForName(u"X").empty());
    EXPECT_EQ(made->lastElementForName(u"x"), second);
    EXPECT_EQ(made->lastElementForName(u"z"), nullptr);
    // The order is the document's, whatever the names' is.
    EXPECT_EQ(made->elementsForNames({u"y", u"x"}), (std::vector{first, other, second}));
    EXPECT_TRUE(made->elementsForNames({}).empty());
}

TEST(QVXMLElement, TextNodesAreTheDirectOnesInOrder) {
    const auto made = element(u"parent");
    const auto child = element(u"child");
    const auto first = text(u"1");
    const auto second = text(u"2");
    child->addChild(text(u"inner"));
    made->setChildren({first, child, second});
    EXPECT_EQ(made->textNodes(), (std::vector{first, second}));
}

TEST(QVXMLElement, ItsTextIsAllThatIsBelowWithoutSeparatorsOrTrimming) {
    const auto made = element(u"parent");
    const auto child = element(u"child");
    child->setChildren({text(u" b "), element(u"empty"), text(u"c")});
    made->setChildren({text(u"a\n"), child, text(u"d")});
    EXPECT_EQ(made->stringValue(), u"a\n b cd");
    EXPECT_EQ(made->text(), u"a\n b cd");
}

TEST(QVXMLElement, ItIsDescribedByClassAddressAndName) {
    const auto made = element(u"scope");
    EXPECT_EQ(made->description(), NSString::stringWithFormat(u"<QVXMLElement: %p, scope>",
                                                              static_cast<const void *>(made.get())));
    EXPECT_TRUE(QVXMLElement().description().hasSuffix(u", (null)>"));
}

TEST(QVXMLTextNode, ItHoldsItsTextAndNoChildren) {
    QVXMLTextNode node(u"text");
    EXPECT_EQ(node.stringValue(), u"text");
    EXPECT_EQ(node.text(), u"text");
    node.setText(u"other");
    EXPECT_EQ(node.stringValue(), u"other");
    EXPECT_TRUE(node.children().empty());
    EXPECT_EQ(rangeReason([&] { node.childAtIndex(0); }), u"Node does not contain any children");
}

TEST(QVXMLNode, TheBaseHasNoChildrenAndNoText) {
    const QVXMLNode node;
    EXPECT_TRUE(node.children().empty());
    EXPECT_EQ(node.stringValue(), u"");
    EXPECT_EQ(node.text(), u"");
    EXPECT_EQ(rangeReason([&] { node.childAtIndex(3); }), u"Node does not contain any children");
}
