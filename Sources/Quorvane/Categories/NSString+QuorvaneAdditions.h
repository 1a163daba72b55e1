#pragma once

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSString.h"
#include "Platform/Foundation/NSStringEncoding.h"

#include <map>

namespace quorvane {

// Additions to strings that know the engine's idea of lines (only CR, LF and CR LF end one), line ending
// detection, the arithmetic of indentation, variable bindings, and patterns made of word lists. What only
// reads takes a text reader, so that it works on a document in place. Positions are UTF-16 code units. A
// range or position that leaves the text throws `NSRangeException`. All are free of state; any thread.

/// What ends the lines of a text.
enum QVLineEndings : std::uint64_t { QVLineEndingsLF = 0, QVLineEndingsCR = 1, QVLineEndingsCRLF = 2 };

/// What a level of indentation is made of.
enum QVIndentationStyle : std::uint64_t { QVIndentationStyleSpaces = 0, QVIndentationStyleTabs = 1 };

// MARK: - Line lookups

/// The maximal run of characters of the set that begins with the first one in the range, or, with
/// `NSBackwardsSearch`, ends with the last one. `{NSNotFound, 0}` where there is none. The exception's reason
/// is "Search range is out of bounds".
QV_EXPORT NSRange qv_rangeOfCharactersFromSet(QVTextReader string, const NSCharacterSet &set,
                                              NSStringCompareOptions options, NSRange range);

/// The whole terminator that the unit at the location is part of, or `{NSNotFound, 0}`.
QV_EXPORT NSRange qv_rangeOfNewlineAtLocation(QVTextReader string, NSUInteger location);

/// The range of the lines that the range touches, terminators included.
QV_EXPORT NSRange qv_lineRangeForRange(QVTextReader string, NSRange range);

/// Where the first line begins that a range touches, and where its last line ends, with and without the
/// terminator. A range that ends just behind a terminator reaches through the next line. Null out-parameters
/// cost nothing.
QV_EXPORT void qv_getLineStart(QVTextReader string, NSUInteger *start, NSUInteger *end,
                               NSUInteger *contentsEnd, NSRange range);

// MARK: - Line endings

/// The terminator itself; null for an unknown value.
QV_EXPORT NSString qv_stringForLineEndings(QVLineEndings lineEndings);

/// The name that files use: "LF", "CR", "CRLF"; "LF" for an unknown value.
QV_EXPORT NSString QVLineEndingsToStringRepresentation(QVLineEndings lineEndings);

/// The line endings of that name; LF for every other text and for null.
QV_EXPORT QVLineEndings QVLineEndingsFromStringRepresentation(const NSString &string);

/// Answers whether the text has a terminator, and what the first one is. The out-parameter is only set then.
QV_EXPORT bool qv_getBestQuickGuessLineEndings(QVTextReader string, QVLineEndings *lineEndings = nullptr);

/// Answers whether the text has a terminator, which kind is the most frequent (of equals LF, then CR LF), and
/// whether there is no other. The out-parameters are only set then.
QV_EXPORT bool qv_getDominantLineEndings(QVTextReader string, QVLineEndings *lineEndings = nullptr,
                                         bool *homogeneous = nullptr);

// MARK: - Indentation

/// The level of the indentation that the text begins with.
QV_EXPORT NSUInteger qv_indentationLevelWithTabWidth(QVTextReader string, NSUInteger tabWidth);

/// The level of the indentation at the range's start: a tab is one, a tab width of spaces is one. A tab width
/// of 0 means 4.
QV_EXPORT NSUInteger qv_indentationLevelInRange(QVTextReader string, NSRange range, NSUInteger tabWidth,
                                                NSUInteger *numberOfTabs = nullptr,
                                                NSUInteger *numberOfSpaces = nullptr);

/// Indentation of so many levels; empty for an unknown style.
QV_EXPORT NSString qv_stringWithIndentationLevel(NSUInteger level, QVIndentationStyle style,
                                                 NSUInteger tabWidth);

/// Indentation as wide as so many spaces: whole levels in the style, and the rest as spaces. The tab width is
/// asserted not to be 0; where the handler returns, all are spaces then.
QV_EXPORT NSString qv_stringWithIndentationStyle(QVIndentationStyle style, NSUInteger numberOfSpaces,
                                                 NSUInteger tabWidth);

/// Answers whether any line is indented, and by what most are (tabs, if as many). The tab width is set only
/// where spaces win and a line with content is indented by two spaces or more: to the smallest such number.
/// `homogeneous` tells that no line is indented the other way. The out-parameters are left alone when no line
/// is indented.
QV_EXPORT bool qv_getDominantIndentationStyle(QVTextReader string, QVIndentationStyle *style = nullptr,
                                              NSUInteger *tabWidth = nullptr, bool *homogeneous = nullptr);

/// The run of spaces and tabs at the range's start and its width, each tab counting a whole tab width in
/// whatever column it stands. A tab width of 0 gives an empty range and leaves the out-parameter alone. The
/// range's end is asserted to lie in the text.
QV_EXPORT NSRange qv_rangeOfIndentationInRange(QVTextReader string, NSRange range, NSUInteger tabWidth,
                                               NSUInteger *numberOfSpaces = nullptr);

/// The shortest run of spaces and tabs at the range's start that is at least so wide, or all of it where it
/// isn't. The out-parameter is the width reached, which a tab can carry beyond the wanted one; it is left
/// alone for 0 spaces.
QV_EXPORT NSRange qv_rangeOfIndentationForNumberOfSpaces(QVTextReader string, NSUInteger numberOfSpaces,
                                                         NSRange inRange, NSUInteger tabWidth,
                                                         NSUInteger *actualNumberOfSpaces = nullptr);

/// The width of indentation that all lines of the range share; lines without content don't count, and without
/// any other it is 0. Lines are the platform's. The additional width is added for the very first line of the
/// text, and not for the first line of a range that begins later.
QV_EXPORT NSUInteger qv_greatestCommonIndentationNumberOfSpacesForAllLinesInRange(
    QVTextReader string, NSRange range, NSUInteger additionalIndentationForFirstLine, NSUInteger tabWidth);

// MARK: - Variable bindings

// A text refers to variables as "$(name)", "${name}" or "$name" (the longest run of alphanumeric characters);
// a backslash takes the meaning from the composed character sequence behind it. A backslash at the very end
// has nothing behind it and throws `NSRangeException`.

/// Calls back for each well-formed binding with the name as it stands, untrimmed, until stop is set.
QV_EXPORT void qv_enumerateVariableBindingsUsingBlock(QVTextReader string,
                                                      QVBlock<void(const NSString &name, bool &stop)> block);

/// The text with each binding replaced by what the callback answers for its trimmed name; null leaves
/// nothing. When stop is set the rest of the text is dropped. An escape loses its backslash, and what is no
/// complete binding stays.
QV_EXPORT NSString qv_stringByReplacingVariableBindingsUsingBlock(
    QVTextReader string, QVBlock<NSString(const NSString &name, bool &stop)> block);

/// The same with the values of a dictionary; a missing key removes the binding.
QV_EXPORT NSString qv_stringByReplacingVariableBindingsUsingDictionary(
    QVTextReader string, const std::map<NSString, NSString> &dictionary);

// MARK: - Word lists

/// A pattern that matches each of the words, with words of the same first character grouped and longer ones
/// tried first, so that a long list of keywords compiles to a shallow tree. Empty words are dropped; without
/// any other the pattern is empty.
QV_EXPORT NSString qv_regularExpressionPatternForWordList(const std::vector<NSString> &wordList);

// MARK: - Encodings

/// Whether the text can be written in the encoding without loss, the characters that stand for attachments
/// left aside.
QV_EXPORT bool qv_canBeConvertedToEncodingIgnoringAttachments(QVTextReader string, NSStringEncoding encoding);

} // namespace quorvane
