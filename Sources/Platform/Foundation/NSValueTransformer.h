#pragma once

#include "Platform/Foundation/NSData.h"
#include "Platform/Foundation/NSObject.h"

#include <variant>
#include <vector>

namespace quorvane {

/// Turns values of one type into those of another, and back: the hook by which a host's storage keeps values
/// that it knows nothing of. Transformers have no state; any thread.
class QV_EXPORT NSValueTransformer : public NSObject {
public:
    /// What stores hold and programs see; the null pointer, a null text and null data stand for nothing.
    using Value =
        std::variant<std::nullptr_t, NSString, NSData, std::vector<NSString>, std::shared_ptr<NSObject>>;

    /// The name of the class that `transformedValue` answers objects of.
    virtual std::u16string_view transformedValueClass() const = 0;
    virtual bool allowsReverseTransformation() const = 0;
    virtual Value transformedValue(const Value &value) const = 0;
    virtual Value reverseTransformedValue(const Value &value) const = 0;

    std::u16string_view className() const override { return u"NSValueTransformer"; }
};

} // namespace quorvane
