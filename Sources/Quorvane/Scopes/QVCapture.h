#pragma once

#include "Platform/Foundation/NSCoder.h"
#include "Quorvane/Scopes/QVStyleList.h"
#include "Quorvane/Selectors/QVSelectable.h"

namespace quorvane {

class QVScope;
class QVSimpleSelector;
class QVXMLElement;

/// A named group of a scope's expression: a part of a match that themes and queries can aim at.
class QV_EXPORT QVCapture final : public NSObject,
                                  public QVStyleList,
                                  public QVSelectable,
                                  public NSSecureCoding {
public:
    /// Named "unknown", number 0.
    QVCapture();
    ~QVCapture() override;
    /// Reads a `capture` element; null with an error when its number is missing or no integer.
    static std::shared_ptr<QVCapture> captureWithXMLElement(const QVXMLElement &element,
                                                            std::shared_ptr<NSError> *error = nullptr);

    /// The group in the scope's expression.
    NSUInteger number() const { return _number; }
    void setNumber(NSUInteger number) { _number = number; }
    const NSString &name() const { return _name; }
    /// Sets name, selector and lexical class.
    void setName(NSString name);
    const NSString &lexicalClass() const { return _lexicalClass; }

    /// Null when the scope is gone or there is none.
    std::shared_ptr<QVScope> parent() const { return _parent.lock(); }
    void setParent(const std::shared_ptr<QVScope> &parent) { _parent = parent; }

    const QVSimpleSelector *selector() const override { return _selector.get(); }
    QVSelectable *parentSelectable() const override;
    /// The capture itself, where it stands in one of its scope's lists: the step forward is missing, and
    /// everyone who walks along siblings counts on that.
    QVSelectable *nextSelectable() const override;
    bool offersSelectableChildren() const override { return true; }
    void enumerateSelectableChildrenUsingBlock(QVBlock<void(QVSelectable *, bool &)>) const override {}

    /// A new capture with the same number, name and styles, and no parent.
    std::shared_ptr<QVCapture> copy() const;
    std::u16string_view className() const override { return u"QVCapture"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    NSUInteger _number = 0;
    NSString _name;
    NSString _lexicalClass;
    std::shared_ptr<const QVSimpleSelector> _selector;
    std::weak_ptr<QVScope> _parent;
};

} // namespace quorvane
