#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

#include "Platform/Foundation/NSScanner.h"
#include "Platform/Foundation/QVTextSearching.h"

namespace quorvane {

namespace {

/// One step through a text with bindings.
struct Piece {
    enum Kind { Literal, Escape, Binding, Unclosed };
    Kind kind;
    /// The literal text, the sequence behind a backslash, the name, or what stands behind an opening without
    /// end.
    std::u16string text;
    /// What opened an unclosed binding.
    std::u16string_view opening;
};

class PieceScanner {
public:
    explicit PieceScanner(QVTextReader string) : _string(string), _scanner(string) {}

    bool next(Piece &piece) {
        if (_scanner.isAtEnd())
            return false;
        piece = {Piece::Literal, {}, {}};
        if (_scanner.scanString(u"\\")) {
            const NSRange sequence =
                QVRangeOfComposedCharacterSequenceAtIndex(_string, _scanner.scanLocation());
            piece.kind = Piece::Escape;
            piece.text = _string.substringWithRange(sequence);
            _scanner.setScanLocation(NSMaxRange(sequence));
        } else if (_scanner.scanString(u"$(")) {
            scanEnclosed(piece, u"$(", u")");
        } else if (_scanner.scanString(u"${")) {
            scanEnclosed(piece, u"${", u"}");
        } else if (_scanner.scanString(u"$")) {
            if (_scanner.scanCharactersFromSet(*NSCharacterSet::alphanumericCharacterSet(), &piece.text))
                piece.kind = Piece::Binding;
            else
                piece.text = u"$";
        } else {
            // Never destroyed: completions are made on queues while the process ends.
            static const auto &special =
                *new auto(NSCharacterSet::characterSetWithCharactersInString(u"\\$"));
            _scanner.scanUpToCharactersFromSet(*special, &piece.text);
        }
        return true;
    }

private:
    void scanEnclosed(Piece &piece, std::u16string_view opening, std::u16string_view closing) {
        // With no name the closing character is left where it stands, as literal text.
        const bool hasName = _scanner.scanUpToString(closing, &piece.text);
        piece.opening = opening;
        piece.kind = hasName && _scanner.scanString(closing) ? Piece::Binding : Piece::Unclosed;
    }

    QVTextReader _string;
    NSScanner _scanner;
};

} // namespace

void qv_enumerateVariableBindingsUsingBlock(QVTextReader string,
                                            QVBlock<void(const NSString &name, bool &stop)> block) {
    PieceScanner scanner(string);
    for (Piece piece; scanner.next(piece);) {
        if (piece.kind != Piece::Binding)
            continue;
        bool stop = false;
        block(std::move(piece.text), stop);
        if (stop)
            return;
    }
}

NSString
qv_stringByReplacingVariableBindingsUsingBlock(QVTextReader string,
                                               QVBlock<NSString(const NSString &name, bool &stop)> block) {
    std::u16string result;
    PieceScanner scanner(string);
    for (Piece piece; scanner.next(piece);) {
        if (piece.kind != Piece::Binding) {
            result += piece.opening;
            result += piece.text;
            continue;
        }
        bool stop = false;
        const NSString name(std::move(piece.text));
        result += block(name.stringByTrimmingCharactersInSet(*NSCharacterSet::whitespaceCharacterSet()), stop)
                      .view();
        if (stop)
            break;
    }
    return result;
}

NSString qv_stringByReplacingVariableBindingsUsingDictionary(QVTextReader string,
                                                             const std::map<NSString, NSString> &dictionary) {
    return qv_stringByReplacingVariableBindingsUsingBlock(string, [&](const NSString &name, bool &) {
        const auto found = dictionary.find(name);
        return found == dictionary.end() ? NSString() : found->second;
    });
}

} // namespace quorvane
