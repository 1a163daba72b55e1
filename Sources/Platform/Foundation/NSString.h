#pragma once

#include "Platform/Foundation/NSRange.h"
#include "Platform/Foundation/QVBlock.h"
#include "Platform/Foundation/QVExport.h"
#include "Platform/Foundation/QVTextReader.h"

#include <compare>
#include <concepts>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

class NSCharacterSet;
class QVFormatArgument;

enum NSComparisonResult : NSInteger { NSOrderedAscending = -1, NSOrderedSame = 0, NSOrderedDescending = 1 };

/// Options of string searches; a bit mask.
using NSStringCompareOptions = std::uint64_t;
inline constexpr NSStringCompareOptions NSCaseInsensitiveSearch = 1;
inline constexpr NSStringCompareOptions NSLiteralSearch = 2;
inline constexpr NSStringCompareOptions NSBackwardsSearch = 4;
inline constexpr NSStringCompareOptions NSAnchoredSearch = 8;

/// Takes nonspacing marks off the letters they stand on.
inline constexpr const char16_t *NSStringTransformStripDiacritics = u"Strip Diacritics";

/// An immutable, shared and nullable UTF-16 string: a value of two pointers that is cheap to copy and safe to
/// share between threads. A null string answers length 0 and differs from an empty one. All positions are
/// UTF-16 code units. Text that is being built is a `std::u16string`; functions that only read take
/// `std::u16string_view`.
class QV_EXPORT NSString {
public:
    /// The null string.
    NSString() = default;
    NSString(std::nullptr_t) {}
    NSString(std::u16string text) : _text(std::make_shared<const std::u16string>(std::move(text))) {}
    explicit NSString(std::u16string_view text) : NSString(std::u16string(text)) {}
    NSString(const char16_t *text) : NSString(std::u16string(text)) {}

    /// UTF-8 to string; malformed bytes become U+FFFD, one for each maximal ill-formed piece.
    static NSString stringWithUTF8String(std::string_view utf8);
    /// UTF-8 of the text, for files, messages and libraries that demand it; lone surrogates become U+FFFD.
    std::string UTF8String() const;

    /// Fills a format: "%@" takes any value that has a description (null gives "(null)"), "%ld", "%lu", "%d",
    /// "%f" with width and precision, "%p" and "%%" work as in C.
    template <typename... Values>
    static NSString stringWithFormat(std::u16string_view format, const Values &...values);

    bool isNull() const { return _text == nullptr; }
    explicit operator bool() const { return _text != nullptr; }
    operator std::u16string_view() const { return view(); }
    operator QVTextReader() const { return QVTextReader(view()); }

    /// The characters; valid as long as any copy of this string lives. Empty for null.
    std::u16string_view view() const { return _text ? std::u16string_view(*_text) : std::u16string_view(); }
    NSUInteger length() const { return _text ? _text->size() : 0; }
    /// The unit at an index below the length.
    char16_t characterAtIndex(NSUInteger index) const { return (*_text)[index]; }

    /// The units of a range. Throws `NSRangeException` when the range leaves the string.
    NSString substringWithRange(NSRange range) const;
    NSString substringFromIndex(NSUInteger index) const;
    NSString substringToIndex(NSUInteger index) const;

    bool hasPrefix(std::u16string_view prefix) const { return view().starts_with(prefix); }
    bool hasSuffix(std::u16string_view suffix) const { return view().ends_with(suffix); }
    NSString stringByAppendingString(std::u16string_view other) const;

    /// Unicode case mapping in the root locale.
    NSString lowercaseString() const;
    NSString uppercaseString() const;
    /// Full case folding, for comparisons without regard to case.
    NSString caseFoldedString() const;
    /// The text with a transform applied; null for an unknown one, and for the reverse of one that has none.
    NSString stringByApplyingTransform(std::u16string_view transform, bool reverse) const;

    /// Order by UTF-16 code units, the same on every machine.
    NSComparisonResult compare(const NSString &other) const;
    NSComparisonResult caseInsensitiveCompare(const NSString &other) const;

    /// The first occurrence of a text (the last with `NSBackwardsSearch`; only one at the start or end with
    /// `NSAnchoredSearch`), unit by unit or case-folded; `{NSNotFound, 0}` where there is none. An empty text
    /// is never found.
    NSRange rangeOfString(std::u16string_view text, NSStringCompareOptions options = 0) const;
    /// The first unit (the last with `NSBackwardsSearch`) that belongs to the set; with `NSAnchoredSearch`
    /// only the range's own first (last) one counts. A pair of surrogates is one character and answered
    /// whole. Throws `NSRangeException` when the range leaves the string.
    NSRange rangeOfCharacterFromSet(const NSCharacterSet &set, NSStringCompareOptions options = 0) const;
    NSRange rangeOfCharacterFromSet(const NSCharacterSet &set, NSStringCompareOptions options,
                                    NSRange range) const;
    bool containsString(std::u16string_view text) const {
        return view().find(text) != std::u16string_view::npos;
    }

    /// The pieces between the separators; one empty piece for an empty string, none for null.
    std::vector<NSString> componentsSeparatedByString(std::u16string_view separator) const;
    static NSString componentsJoinedByString(const std::vector<NSString> &components,
                                             std::u16string_view separator);
    NSString stringByTrimmingCharactersInSet(const NSCharacterSet &set) const;
    NSString stringByReplacingOccurrencesOfString(std::u16string_view target,
                                                  std::u16string_view replacement) const;

    /// The decimal number that the text begins with after white space, 0 where there is none; clamped to its
    /// type's finite range.
    NSInteger integerValue() const;
    float floatValue() const;
    double doubleValue() const;

    /// The part behind the last "/", trailing slashes left aside.
    NSString lastPathComponent() const;
    /// The part behind the last dot of the last path component; empty where there is none or the dot comes
    /// first.
    NSString pathExtension() const;
    NSString stringByDeletingPathExtension() const;

    /// The range of the composed character sequence that holds the unit at the index (extended grapheme
    /// cluster). Throws `NSRangeException` when the index is not below the length.
    NSRange rangeOfComposedCharacterSequenceAtIndex(NSUInteger index) const;

    std::size_t hash() const { return std::hash<std::u16string_view>()(view()); }

    /// Null equals only null.
    friend bool operator==(const NSString &a, const NSString &b) {
        return a._text == b._text || (a._text && b._text && *a._text == *b._text);
    }
    friend bool operator==(const NSString &a, std::same_as<std::u16string_view> auto b) {
        return a._text && a.view() == b;
    }
    friend bool operator==(const NSString &a, const char16_t *b) { return a._text && a.view() == b; }
    /// Null first, then by UTF-16 code units; makes ordered dictionaries with string keys deterministic.
    friend std::strong_ordering operator<=>(const NSString &a, const NSString &b) {
        if (!a._text || !b._text)
            return (a._text != nullptr) <=> (b._text != nullptr);
        return a.view().compare(b.view()) <=> 0;
    }

private:
    std::shared_ptr<const std::u16string> _text;
};

/// Fills a format from prepared arguments; `NSString::stringWithFormat` is the way to call it.
QV_EXPORT NSString QVStringWithFormatArguments(std::u16string_view format, const QVFormatArgument *arguments,
                                               std::size_t count);

/// Order of strings as dictionary keys that can be looked up by view.
struct QVStringHash {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view text) const { return std::hash<std::u16string_view>()(text); }
};

} // namespace quorvane

template <> struct std::hash<quorvane::NSString> {
    std::size_t operator()(const quorvane::NSString &string) const { return string.hash(); }
};

// The way to fill a format stands behind the arguments, which need strings.
#include "Platform/Foundation/QVFormatArgument.h"
