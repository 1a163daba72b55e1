#include "Quorvane/Styles/QVStyleAttributes.h"

#include <array>

namespace quorvane {

const NSString &QVStyleAttributeKey::string() const {
    static const auto *const strings = new std::array<NSString, 13>{
        u"BackgroundColor",     u"BackgroundGradient", u"TextColor",      u"FontWeight",
        u"FontStyle",           u"TextShadow",         u"TextDecoration", u"TextDecorationStyle",
        u"TextDecorationColor", u"BorderColor",        u"BorderGradient", u"BoxShadow",
        u"InsetShadow"};
    return (*strings)[_index];
}

} // namespace quorvane
