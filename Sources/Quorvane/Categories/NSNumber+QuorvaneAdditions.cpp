#include "Quorvane/Categories/NSNumber+QuorvaneAdditions.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSNumberFormatter.h"
#include "Platform/Foundation/NSRegularExpression.h"

namespace quorvane {

std::optional<double> qv_numberWithCSSLengthValue(const NSString &string) {
    QVParameterAssert(string, "string != nil");
    if (!string)
        return std::nullopt;
    static const auto &pattern = *new auto(NSRegularExpression::regularExpressionWithPattern(
        uR"(^([-+]?(?:(?:\d+(?:\.\d*)?)|(?:\.\d+)))(px|pt)?$)", 0));
    const auto match = pattern->firstMatchInString(string, 0, NSMakeRange(0, string.length()));
    if (!match)
        return std::nullopt;
    const auto number = QVNumberFromDecimalString(string.substringWithRange((*match)[1]));
    const NSRange unit = (*match)[2];
    if (!number || unit.location == NSNotFound)
        return number == 0 ? number : std::nullopt;
    return string.substringWithRange(unit) == u"pt" ? *number * 4 / 3 : *number;
}

} // namespace quorvane
