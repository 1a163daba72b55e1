#include "Host/QVCompletionsArchive.h"

namespace quorvane {

const NSCodingClass &QVCompletionsArchive::codingClass() {
    static const NSCodingClass coding{
        u"QVCompletionsArchive", nullptr,
        []() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<QVCompletionsArchive>(); }};
    return coding;
}

void QVCompletionsArchive::encodeWithCoder(NSCoder &coder) const {
    coder.encodeDictionary(sets, u"sets");
    coder.encodeArray(providers, u"providers");
}

std::shared_ptr<NSSecureCoding> QVCompletionsArchive::initWithCoder(NSCoder &coder,
                                                                    std::shared_ptr<NSSecureCoding> self) {
    auto decodedSets = coder.decodeDictionaryOfClass<QVCompletionSet>(u"sets");
    auto decodedProviders = coder.decodeArrayOfClass<QVCompletionProvider>(u"providers");
    if (!decodedSets || !decodedProviders)
        return nullptr;
    sets = std::move(*decodedSets);
    providers = std::move(*decodedProviders);
    return self;
}

} // namespace quorvane
