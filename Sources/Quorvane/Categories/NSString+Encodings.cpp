#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

#include "Platform/Foundation/QVTextSearching.h"

namespace quorvane {

namespace {

constexpr std::u16string_view attachmentCharacter = u"\uFFFC";

/// The part of a reader, itself in one or two pieces.
QVTextReader partOf(QVTextReader string, NSRange range) {
    if (range.length == 0)
        return {};
    const std::u16string_view first = string.pieceAtIndex(range.location).substr(0, range.length);
    if (first.size() == range.length)
        return first;
    return {first, string.pieceAtIndex(range.location + first.size()).substr(0, range.length - first.size())};
}

} // namespace

bool qv_canBeConvertedToEncodingIgnoringAttachments(QVTextReader string, NSStringEncoding encoding) {
    for (NSUInteger start = 0; start < string.length();) {
        const NSUInteger end =
            std::min(QVLocationOfText(string, attachmentCharacter, start), string.length());
        if (!QVCanBeConvertedToEncoding(partOf(string, {start, end - start}), encoding))
            return false;
        start = end + 1;
    }
    return true;
}

} // namespace quorvane
