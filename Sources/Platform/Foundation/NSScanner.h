#pragma once

#include "Platform/Foundation/QVExport.h"
#include "Platform/Foundation/QVTextReader.h"

namespace quorvane {

class NSCharacterSet;

/// A position that moves through a text. Skips nothing of itself: every unit is asked for. Works on text in
/// two pieces without copying it as a whole.
class QV_EXPORT NSScanner {
public:
    explicit NSScanner(QVTextReader text) : _text(text) {}

    NSUInteger scanLocation() const { return _location; }
    /// A location up to the length; beyond it `NSRangeException` is thrown.
    void setScanLocation(NSUInteger location);
    bool isAtEnd() const { return _location >= _text.length(); }

    /// Each answers whether at least one unit was consumed, and fills the out text, if given, only then.
    bool scanString(std::u16string_view text);
    bool scanUpToString(std::u16string_view text, std::u16string *scanned = nullptr);
    bool scanCharactersFromSet(const NSCharacterSet &set, std::u16string *scanned = nullptr);
    bool scanUpToCharactersFromSet(const NSCharacterSet &set, std::u16string *scanned = nullptr);

private:
    QVTextReader _text;
    NSUInteger _location = 0;
};

} // namespace quorvane
