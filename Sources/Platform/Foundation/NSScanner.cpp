#include "Platform/Foundation/NSScanner.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/QVTextSearching.h"

namespace quorvane {

namespace {

bool moveTo(QVTextReader text, NSUInteger &location, NSUInteger end, std::u16string *scanned) {
    if (end == location)
        return false;
    if (scanned != nullptr)
        *scanned = text.substringWithRange({location, end - location});
    location = end;
    return true;
}

} // namespace

void NSScanner::setScanLocation(NSUInteger location) {
    if (location > _text.length())
        throw NSException(NSRangeException, NSString::stringWithFormat(
                                                u"Scan location %lu is outside of a string of length %lu",
                                                location, _text.length()));
    _location = location;
}

bool NSScanner::scanString(std::u16string_view text) {
    if (text.empty() || text.size() > _text.length() - _location)
        return false;
    for (std::size_t index = 0; index < text.size(); ++index)
        if (_text.characterAtIndex(_location + index) != text[index])
            return false;
    _location += text.size();
    return true;
}

bool NSScanner::scanUpToString(std::u16string_view text, std::u16string *scanned) {
    const NSUInteger found = QVLocationOfText(_text, text, _location);
    return moveTo(_text, _location, found == NSNotFound ? _text.length() : found, scanned);
}

bool NSScanner::scanCharactersFromSet(const NSCharacterSet &set, std::u16string *scanned) {
    NSUInteger end = _location;
    for (NSRange hit;
         (hit = QVRangeOfCharacterFromSet(_text, set, NSAnchoredSearch, {end, _text.length() - end}))
             .length != 0;)
        end = NSMaxRange(hit);
    return moveTo(_text, _location, end, scanned);
}

bool NSScanner::scanUpToCharactersFromSet(const NSCharacterSet &set, std::u16string *scanned) {
    const NSRange hit = QVRangeOfCharacterFromSet(_text, set, 0, {_location, _text.length() - _location});
    return moveTo(_text, _location, hit.length == 0 ? _text.length() : hit.location, scanned);
}

} // namespace quorvane
