#include "Platform/Foundation/NSStringEncoding.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSURL.h"

#include <filesystem>
#include <unicode/ucnv.h>

namespace quorvane {

namespace {

enum class ByteOrder { Big, Little };

const char *converterName(NSStringEncoding encoding) {
    switch (encoding) {
    case NSASCIIStringEncoding:
        return "US-ASCII";
    case NSJapaneseEUCStringEncoding:
        return "EUC-JP";
    case NSUTF8StringEncoding:
        return "UTF-8";
    case NSISOLatin1StringEncoding:
        return "ISO-8859-1";
    case NSShiftJISStringEncoding:
        return "Shift_JIS";
    case NSISOLatin2StringEncoding:
        return "ISO-8859-2";
    case NSWindowsCP1250StringEncoding:
        return "windows-1250";
    case NSWindowsCP1251StringEncoding:
        return "windows-1251";
    case NSWindowsCP1252StringEncoding:
        return "windows-1252";
    case NSWindowsCP1253StringEncoding:
        return "windows-1253";
    case NSWindowsCP1254StringEncoding:
        return "windows-1254";
    case NSISO2022JPStringEncoding:
        return "ISO-2022-JP";
    case NSMacOSRomanStringEncoding:
        return "macintosh";
    default:
        return nullptr;
    }
}

/// UTF-16 is done here, unit by unit, so that a text with a lone surrogate can be saved as it is.
bool isUTF16(NSStringEncoding encoding) {
    return encoding == NSUTF16StringEncoding || encoding == NSUTF16BigEndianStringEncoding ||
           encoding == NSUTF16LittleEndianStringEncoding;
}

struct CloseConverter {
    void operator()(UConverter *converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

/// A converter that stops at what it can't convert and takes no near matches; null for unknown encodings.
Converter strictConverter(NSStringEncoding encoding) {
    const char *name = converterName(encoding);
    UErrorCode status = U_ZERO_ERROR;
    Converter converter(name == nullptr ? nullptr : ucnv_open(name, &status));
    if (converter == nullptr)
        return nullptr;
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFallback(converter.get(), false);
    return U_SUCCESS(status) ? std::move(converter) : nullptr;
}

/// Converts the pieces one after the other through a small buffer; the converter keeps what a piece cuts.
template <typename Take> bool convert(QVTextReader text, NSStringEncoding encoding, Take take) {
    const Converter converter = strictConverter(encoding);
    if (converter == nullptr)
        return false;
    char buffer[4096];
    for (NSUInteger location = 0; location < text.length();) {
        const std::u16string_view piece = text.pieceAtIndex(location);
        location += piece.size();
        const char16_t *source = piece.data();
        UErrorCode status;
        do {
            char *target = buffer;
            status = U_ZERO_ERROR;
            ucnv_fromUnicode(converter.get(), &target, std::end(buffer), &source, piece.data() + piece.size(),
                             nullptr, location == text.length(), &status);
            take(buffer, target);
        } while (status == U_BUFFER_OVERFLOW_ERROR);
        if (U_FAILURE(status))
            return false;
    }
    return true;
}

NSString stringWithUTF16(std::span<const std::uint8_t> bytes, NSStringEncoding encoding) {
    if (bytes.size() % 2 != 0)
        return {};
    ByteOrder order = encoding == NSUTF16LittleEndianStringEncoding ? ByteOrder::Little : ByteOrder::Big;
    if (encoding == NSUTF16StringEncoding && bytes.size() >= 2) {
        const bool littleMark = bytes[0] == 0xFF && bytes[1] == 0xFE;
        const bool bigMark = bytes[0] == 0xFE && bytes[1] == 0xFF;
        order = littleMark ? ByteOrder::Little : ByteOrder::Big;
        if (littleMark || bigMark)
            bytes = bytes.subspan(2);
    }
    std::u16string text(bytes.size() / 2, u'\0');
    for (std::size_t index = 0; index < text.size(); ++index) {
        const unsigned first = bytes[index * 2];
        const unsigned second = bytes[index * 2 + 1];
        text[index] =
            static_cast<char16_t>(order == ByteOrder::Big ? first << 8 | second : second << 8 | first);
    }
    return text;
}

NSData dataWithUTF16(QVTextReader text, NSStringEncoding encoding) {
    const bool big = encoding == NSUTF16BigEndianStringEncoding;
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.length() * 2 + 2);
    const auto append = [&](char16_t unit) {
        bytes.push_back(static_cast<std::uint8_t>(big ? unit >> 8 : unit));
        bytes.push_back(static_cast<std::uint8_t>(big ? unit : unit >> 8));
    };
    if (encoding == NSUTF16StringEncoding)
        append(0xFEFF);
    for (NSUInteger index = 0; index < text.length(); ++index)
        append(text.characterAtIndex(index));
    return bytes;
}

} // namespace

bool QVCanBeConvertedToEncoding(QVTextReader text, NSStringEncoding encoding) {
    return text.length() == 0 || isUTF16(encoding) ||
           convert(text, encoding, [](const char *, const char *) {});
}

NSData QVDataUsingEncoding(QVTextReader text, NSStringEncoding encoding) {
    if (isUTF16(encoding))
        return dataWithUTF16(text, encoding);
    std::vector<std::uint8_t> bytes;
    if (!convert(text, encoding,
                 [&](const char *start, const char *end) { bytes.insert(bytes.end(), start, end); }))
        return {};
    return bytes;
}

NSString QVStringWithDataUsingEncoding(const NSData &data, NSStringEncoding encoding) {
    if (data.isNull())
        return {};
    if (isUTF16(encoding))
        return stringWithUTF16(data.bytes(), encoding);
    const Converter converter = strictConverter(encoding);
    if (converter == nullptr)
        return {};
    if (data.length() == 0)
        return u"";
    std::u16string text;
    char16_t buffer[4096];
    const char *source = data.view().data();
    const char *end = source + data.length();
    UErrorCode status;
    do {
        char16_t *target = buffer;
        status = U_ZERO_ERROR;
        ucnv_toUnicode(converter.get(), &target, std::end(buffer), &source, end, nullptr, true, &status);
        text.append(buffer, target);
    } while (status == U_BUFFER_OVERFLOW_ERROR);
    return U_SUCCESS(status) ? NSString(std::move(text)) : NSString();
}

NSString QVStringWithContentsOfURL(const NSURL &url, std::size_t maximumLength,
                                   NSStringEncoding *usedEncoding, std::shared_ptr<NSError> *error) {
    // The codes of the platform.
    constexpr NSInteger tooLargeError = 263, unknownEncodingError = 264;
    const auto fail = [&](NSInteger code, std::u16string_view problem) {
        QVSetError(
            error,
            NSError::errorWithDomain(
                NSCocoaErrorDomain, code,
                {{NSLocalizedDescriptionKey,
                  NSString::stringWithFormat(u"The file “%@” couldn’t be read: %@", url.path(), problem)}}));
        return NSString();
    };

    std::error_code noSize;
    const auto size = std::filesystem::file_size(url.path().UTF8String(), noSize);
    if (!noSize && size > maximumLength)
        return fail(tooLargeError, u"It is too large");
    const NSData data = NSData::dataWithContentsOfURL(url, error);
    if (!data)
        return nullptr;
    // It may have grown.
    if (data.length() > maximumLength)
        return fail(tooLargeError, u"It is too large");

    const std::string_view bytes = data.view();
    NSString text;
    NSStringEncoding encoding = NSUTF8StringEncoding;
    if (bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE")) {
        encoding = NSUTF16StringEncoding;
        text = QVStringWithDataUsingEncoding(data, encoding);
    } else if (bytes.starts_with("\xEF\xBB\xBF")) {
        text = QVStringWithDataUsingEncoding(NSData(bytes.substr(3)), encoding);
    } else {
        text = QVStringWithDataUsingEncoding(data, encoding);
    }
    if (!text)
        return fail(unknownEncodingError, u"Its text encoding can’t be determined");
    if (usedEncoding != nullptr)
        *usedEncoding = encoding;
    return text;
}

} // namespace quorvane
