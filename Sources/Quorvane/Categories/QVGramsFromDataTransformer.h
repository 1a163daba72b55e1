#pragma once

#include "Platform/Foundation/NSValueTransformer.h"

namespace quorvane {

/// Keeps the grams of names in a store as data: the UTF-8 of their string representation. Any thread.
class QV_EXPORT QVGramsFromDataTransformer final : public NSValueTransformer {
public:
    std::u16string_view transformedValueClass() const override { return u"NSData"; }
    bool allowsReverseTransformation() const override { return true; }
    /// The data of a list of texts. Nothing gives nothing, and so do halves of surrogate pairs, which UTF-8
    /// can't hold. Throws `NSInvalidArgumentException` for any other type.
    Value transformedValue(const Value &value) const override;
    /// The list of texts of data. Nothing gives nothing, and so does what is no UTF-8. Throws
    /// `NSInvalidArgumentException` for any other type.
    Value reverseTransformedValue(const Value &value) const override;

    std::u16string_view className() const override { return u"QVGramsFromDataTransformer"; }
};

} // namespace quorvane
