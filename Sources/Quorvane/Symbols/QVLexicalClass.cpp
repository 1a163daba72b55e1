#include "Quorvane/Symbols/QVLexicalClass.h"

#include <array>

namespace quorvane {

namespace {

constexpr std::size_t lexicalClassCount = 5;

using Strings = std::array<NSString, lexicalClassCount>;

const Strings &strings() {
    static const auto *const made = new Strings{u"keyword", u"string", u"comment", u"name", u"identifier"};
    return *made;
}

} // namespace

const NSString &QVLexicalClassConstant::string() const { return strings()[_index]; }

NSString QVLexicalClassForClasses(const std::set<NSString> &classes) {
    // The constants' order is the order of precedence.
    for (std::size_t index = 0; index < lexicalClassCount; ++index)
        if (classes.contains(strings()[index]))
            return strings()[index];
    return nullptr;
}

} // namespace quorvane
