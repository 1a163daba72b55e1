#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

namespace quorvane {

NSString qv_stringForLineEndings(QVLineEndings lineEndings) {
    switch (lineEndings) {
    case QVLineEndingsLF:
        return u"\n";
    case QVLineEndingsCR:
        return u"\r";
    case QVLineEndingsCRLF:
        return u"\r\n";
    }
    return {};
}

NSString QVLineEndingsToStringRepresentation(QVLineEndings lineEndings) {
    switch (lineEndings) {
    case QVLineEndingsCR:
        return u"CR";
    case QVLineEndingsCRLF:
        return u"CRLF";
    case QVLineEndingsLF:
        break;
    }
    return u"LF";
}

QVLineEndings QVLineEndingsFromStringRepresentation(const NSString &string) {
    if (string == u"CRLF")
        return QVLineEndingsCRLF;
    return string == u"CR" ? QVLineEndingsCR : QVLineEndingsLF;
}

bool qv_getBestQuickGuessLineEndings(QVTextReader string, QVLineEndings *lineEndings) {
    for (NSUInteger index = 0; index < string.length(); ++index) {
        const char16_t unit = string.characterAtIndex(index);
        if (unit != u'\n' && unit != u'\r')
            continue;
        const bool pair =
            unit == u'\r' && index + 1 < string.length() && string.characterAtIndex(index + 1) == u'\n';
        if (lineEndings != nullptr)
            *lineEndings = pair ? QVLineEndingsCRLF : unit == u'\n' ? QVLineEndingsLF : QVLineEndingsCR;
        return true;
    }
    return false;
}

bool qv_getDominantLineEndings(QVTextReader string, QVLineEndings *lineEndings, bool *homogeneous) {
    NSUInteger lf = 0;
    NSUInteger cr = 0;
    NSUInteger crlf = 0;
    // A CR counts alone until the LF behind it shows that it was half of a pair.
    bool afterCR = false;
    for (NSUInteger location = 0; location < string.length();) {
        const std::u16string_view piece = string.pieceAtIndex(location);
        for (const char16_t unit : piece) {
            if (unit == u'\n') {
                if (afterCR) {
                    --cr;
                    ++crlf;
                } else {
                    ++lf;
                }
            } else if (unit == u'\r') {
                ++cr;
            }
            afterCR = unit == u'\r';
        }
        location += piece.size();
    }
    if (lf + cr + crlf == 0)
        return false;
    QVLineEndings dominant = QVLineEndingsCR;
    NSUInteger count = cr;
    if (lf >= crlf && lf >= cr) {
        dominant = QVLineEndingsLF;
        count = lf;
    } else if (crlf >= cr && crlf >= lf) {
        dominant = QVLineEndingsCRLF;
        count = crlf;
    }
    if (lineEndings != nullptr)
        *lineEndings = dominant;
    if (homogeneous != nullptr)
        *homogeneous = count == lf + cr + crlf;
    return true;
}

} // namespace quorvane
