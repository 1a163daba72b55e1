#pragma once

#include "Platform/Foundation/NSAttributes.h"

#include <set>

namespace quorvane {

/// One of the words for what a piece of a document is to a reader, as a constant that costs nothing before
/// its first use. It stands wherever a string is taken, and always gives the very same one, so that comparing
/// a node's lexical class with a constant is a comparison of two pointers.
class QV_EXPORT QVLexicalClassConstant {
public:
    constexpr explicit QVLexicalClassConstant(std::size_t index) : _index(index) {}

    const NSString &string() const;
    operator const NSString &() const { return string(); }

private:
    std::size_t _index;
};

inline constexpr QVLexicalClassConstant QVLexicalClassKeyword{0};
inline constexpr QVLexicalClassConstant QVLexicalClassString{1};
inline constexpr QVLexicalClassConstant QVLexicalClassComment{2};
inline constexpr QVLexicalClassConstant QVLexicalClassName{3};
inline constexpr QVLexicalClassConstant QVLexicalClassIdentifier{4};

/// The key under which a text attribute carries the lexical class of a range.
inline constinit const NSAttributeName QVLexicalClassAttributeName{u"QVLexicalClass"};

/// The constant for a node with these classes: of several, the first of keyword, string, comment, name and
/// identifier decides. Null for none of them.
QV_EXPORT NSString QVLexicalClassForClasses(const std::set<NSString> &classes);

} // namespace quorvane
