#include "Palette.h"

#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVSyntaxHighlighting.h"

#include <algorithm>

using namespace quorvane;

namespace highlight {

std::uint32_t Palette::newLookOver(std::uint32_t before, const NSAttributes &attributes,
                                   std::uint64_t flags) {
    const auto key = std::tuple(before, attributes.begin(), flags);
    if (const auto found = _known.find(key); found != _known.end())
        return found->second;
    NSMutableAttributes look(_looks[before]);
    if (flags != QVAttributeFlagsAdd) {
        for (const NSAttributeKey name : QVParse::attributesAffectedBySyntaxHighlighting())
            look.remove(name);
        look.add(_defaults);
    }
    look.add(attributes);
    const auto number = static_cast<std::uint32_t>(
        std::find(_looks.begin(), _looks.end(), look.attributes()) - _looks.begin());
    if (number == _looks.size())
        _looks.push_back(look.attributes());
    _kept.push_back(attributes);
    return _known[key] = number;
}

} // namespace highlight
