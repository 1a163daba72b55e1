// Archives: the first byte chooses what is expected, the rest is the archive. It gives an object that can be
// written again, or an error.
#include "Fuzz/FuzzTarget.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Quorvane/Detectors/QVDetector.h"
#include "Quorvane/Formatters/QVFormatter.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Selectors/QVSelectorCombinator.h"
#include "Quorvane/Styles/QVStyle.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

using namespace quorvane;

namespace {

template <typename T> void readAndWrite(const NSData &data) {
    std::shared_ptr<NSError> error;
    const auto object = NSKeyedUnarchiver::unarchivedObjectOfClass<T>(data, &error);
    fuzz::require((object == nullptr) == (error != nullptr));
    if (object)
        fuzz::require(!NSKeyedArchiver::archivedDataWithRootObject(object).isNull());
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::silenceLog();
    if (size == 0)
        return 0;
    const NSData archive(std::vector<std::uint8_t>(data + 1, data + size));
    switch (data[0] % 8) {
    case 0:
        readAndWrite<QVDetector>(archive);
        break;
    case 1:
        readAndWrite<QVFormatter>(archive);
        break;
    case 2:
        readAndWrite<QVRegularExpression>(archive);
        break;
    case 3:
        readAndWrite<QVScope>(archive);
        break;
    case 4:
        readAndWrite<QVSelectorCombinator>(archive);
        break;
    case 5:
        readAndWrite<QVStyle>(archive);
        break;
    case 6:
        readAndWrite<QVGrammar>(archive);
        break;
    default:
        // Writing a syntax again unpacks its grammar, an archive of its own.
        readAndWrite<QVSyntax>(archive);
        break;
    }
    return 0;
}
