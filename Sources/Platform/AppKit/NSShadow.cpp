#include "Platform/AppKit/NSShadow.h"

namespace quorvane {

std::shared_ptr<NSShadow> NSShadow::copy() const {
    auto shadow = std::make_shared<NSShadow>();
    shadow->_shadowOffset = _shadowOffset;
    shadow->_shadowBlurRadius = _shadowBlurRadius;
    shadow->_shadowColor = _shadowColor;
    return shadow;
}

bool NSShadow::isEqual(const NSObject *other) const {
    const auto *shadow = dynamic_cast<const NSShadow *>(other);
    return shadow && shadow->_shadowOffset == _shadowOffset &&
           shadow->_shadowBlurRadius == _shadowBlurRadius && CFEqual(shadow->_shadowColor, _shadowColor);
}

std::size_t NSShadow::hash() const {
    std::size_t hash = CFHash(_shadowColor);
    for (const CGFloat number : {_shadowOffset.width, _shadowOffset.height, _shadowBlurRadius})
        hash = hash * 31 + std::hash<CGFloat>()(number == 0 ? 0 : number);
    return hash;
}

NSString NSShadow::description() const {
    return NSString::stringWithFormat(u"<%@ {%.2f, %.2f} blur %.2f color %@>", className(),
                                      _shadowOffset.width, _shadowOffset.height, _shadowBlurRadius,
                                      _shadowColor);
}

const NSCodingClass &NSShadow::codingClass() {
    static const NSCodingClass codingClass{u"NSShadow", nullptr, +[]() -> std::shared_ptr<NSSecureCoding> {
                                               return std::make_shared<NSShadow>();
                                           }};
    return codingClass;
}

void NSShadow::encodeWithCoder(NSCoder &coder) const {
    coder.encodeDouble(_shadowOffset.width, u"NSShadowHoriz");
    coder.encodeDouble(_shadowOffset.height, u"NSShadowVert");
    coder.encodeDouble(_shadowBlurRadius, u"NSShadowBlurRadius");
    coder.encodeObject(_shadowColor, u"NSShadowColor");
}

std::shared_ptr<NSSecureCoding> NSShadow::initWithCoder(NSCoder &coder,
                                                        std::shared_ptr<NSSecureCoding> self) {
    const auto finite = [&coder](const char16_t *key) {
        const double number = coder.decodeDouble(key);
        return std::isfinite(number) ? number : 0;
    };
    _shadowOffset = {finite(u"NSShadowHoriz"), finite(u"NSShadowVert")};
    _shadowBlurRadius = finite(u"NSShadowBlurRadius");
    _shadowColor = coder.decodeObjectOfClass<NSColor>(u"NSShadowColor");
    return self;
}

} // namespace quorvane
