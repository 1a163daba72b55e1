// Package files: any bytes give a tree or an error, never both and never neither.
#include "Fuzz/FuzzTarget.h"

#include "Platform/Foundation/NSError.h"
#include "Quorvane/XML/QVXMLDocument.h"

using namespace quorvane;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::silenceLog();
    std::shared_ptr<NSError> error;
    const auto document =
        QVXMLDocument::initWithData(NSData(std::vector<std::uint8_t>(data, data + size)), &error);
    fuzz::require((document == nullptr) == (error != nullptr));
    if (document)
        document->rootElement()->description();
    return 0;
}
