#include "Quorvane/Categories/QVGramsFromDataTransformer.h"

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSStringEncoding.h"
#include "Quorvane/Categories/QVGrams.h"

namespace quorvane {

namespace {

bool isNothing(const NSValueTransformer::Value &value) {
    if (const auto *const string = std::get_if<NSString>(&value))
        return string->isNull();
    if (const auto *const data = std::get_if<NSData>(&value))
        return data->isNull();
    if (const auto *const object = std::get_if<std::shared_ptr<NSObject>>(&value))
        return *object == nullptr;
    return std::holds_alternative<std::nullptr_t>(value);
}

} // namespace

NSValueTransformer::Value QVGramsFromDataTransformer::transformedValue(const Value &value) const {
    if (isNothing(value))
        return nullptr;
    const auto *const grams = std::get_if<std::vector<NSString>>(&value);
    if (!grams)
        throw NSException(NSInvalidArgumentException,
                          u"Argument to grams to string representation transformer must be a gram array.");
    const NSString representation = qv_stringRepresentationForGrams(QVGrams(*grams));
    if (NSData data = QVDataUsingEncoding(representation, NSUTF8StringEncoding))
        return data;
    return nullptr;
}

NSValueTransformer::Value QVGramsFromDataTransformer::reverseTransformedValue(const Value &value) const {
    if (isNothing(value))
        return nullptr;
    const auto *const data = std::get_if<NSData>(&value);
    if (!data)
        throw NSException(NSInvalidArgumentException,
                          u"Argument to grams from string representation transformer must be a string.");
    const NSString representation = QVStringWithDataUsingEncoding(*data, NSUTF8StringEncoding);
    if (!representation)
        return nullptr;
    return qv_gramsForStringRepresentation(representation).strings();
}

} // namespace quorvane
