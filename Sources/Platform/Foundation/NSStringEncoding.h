#pragma once

#include "Platform/Foundation/NSData.h"
#include "Platform/Foundation/NSString.h"

namespace quorvane {

/// The encodings of text files. The numbers are stable, since hosts keep them in settings.
using NSStringEncoding = NSUInteger;
inline constexpr NSStringEncoding NSASCIIStringEncoding = 1;
inline constexpr NSStringEncoding NSJapaneseEUCStringEncoding = 3;
inline constexpr NSStringEncoding NSUTF8StringEncoding = 4;
inline constexpr NSStringEncoding NSISOLatin1StringEncoding = 5;
inline constexpr NSStringEncoding NSShiftJISStringEncoding = 8;
inline constexpr NSStringEncoding NSISOLatin2StringEncoding = 9;
/// With a byte order mark when written; either order, with or without one, when read.
inline constexpr NSStringEncoding NSUTF16StringEncoding = 10;
inline constexpr NSStringEncoding NSWindowsCP1251StringEncoding = 11;
inline constexpr NSStringEncoding NSWindowsCP1252StringEncoding = 12;
inline constexpr NSStringEncoding NSWindowsCP1253StringEncoding = 13;
inline constexpr NSStringEncoding NSWindowsCP1254StringEncoding = 14;
inline constexpr NSStringEncoding NSWindowsCP1250StringEncoding = 15;
inline constexpr NSStringEncoding NSISO2022JPStringEncoding = 21;
inline constexpr NSStringEncoding NSMacOSRomanStringEncoding = 30;
inline constexpr NSStringEncoding NSUTF16BigEndianStringEncoding = 0x90000100;
inline constexpr NSStringEncoding NSUTF16LittleEndianStringEncoding = 0x94000100;

/// Whether the text can be written in the encoding without loss. An empty text always can; lone surrogates
/// can in UTF-16 alone, and an unknown encoding takes nothing else. Any thread.
QV_EXPORT bool QVCanBeConvertedToEncoding(QVTextReader text, NSStringEncoding encoding);

/// The bytes of the text in the encoding; null where it can't be written without loss.
QV_EXPORT NSData QVDataUsingEncoding(QVTextReader text, NSStringEncoding encoding);

/// The text of the bytes; null where they are malformed, or the encoding is unknown.
QV_EXPORT NSString QVStringWithDataUsingEncoding(const NSData &data, NSStringEncoding encoding);

/// The text of a file: UTF-16 where its byte order mark says so, else UTF-8; the mark is no part of the text.
/// Null with an error where the file can't be read, has more bytes than allowed, or is malformed. The
/// encoding, if asked for, is set only on success.
QV_EXPORT NSString QVStringWithContentsOfURL(const NSURL &url, std::size_t maximumLength,
                                             NSStringEncoding *usedEncoding = nullptr,
                                             std::shared_ptr<NSError> *error = nullptr);

} // namespace quorvane
