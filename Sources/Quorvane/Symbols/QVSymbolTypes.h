#pragma once

#include "Platform/Foundation/NSString.h"

namespace quorvane {

/// What a symbol is. The numbers are part of archives and of grammars' meaning: they leave gaps on purpose,
/// and the predicates below test ranges of them. 0 is no symbol. Functions take plain numbers, since archives
/// and hosts may bring any.
enum QVSymbolType : std::uint64_t {
    QVSymbolTypeNone = 0,

    QVSymbolTypeType = 1,
    QVSymbolTypeClass = 2,
    QVSymbolTypeCategory = 3,
    QVSymbolTypeInterface = 4,
    QVSymbolTypeEnum = 5,
    QVSymbolTypeUnion = 6,
    QVSymbolTypeStruct = 7,

    QVSymbolTypeFunction = 10,
    QVSymbolTypeMethod = 11,
    QVSymbolTypeClosure = 12,
    QVSymbolTypeConstructor = 13,
    QVSymbolTypeGetter = 14,
    QVSymbolTypeSetter = 15,
    QVSymbolTypeDestructor = 16,
    QVSymbolTypeStaticMethod = 17,

    QVSymbolTypeVariable = 20,
    QVSymbolTypeConstant = 21,
    QVSymbolTypeProperty = 22,
    QVSymbolTypeArgument = 23,
    QVSymbolTypeColor = 24,
    QVSymbolTypeEnumMember = 25,
    QVSymbolTypeStaticProperty = 26,

    QVSymbolTypeExpression = 30,
    QVSymbolTypeStatement = 31,
    QVSymbolTypeBlock = 32,

    QVSymbolTypeHeading = 34,
    QVSymbolTypeComment = 35,
    QVSymbolTypePackage = 36,
    QVSymbolTypeFile = 37,
    QVSymbolTypeReference = 38,
    QVSymbolTypeKeyword = 39,
    QVSymbolTypeBookmark = 40,
    QVSymbolTypeSeparator = 41,
    QVSymbolTypeTodo = 42,

    QVSymbolTypeStyleRuleset = 50,
    QVSymbolTypeStyleDirective = 51,
    QVSymbolTypeStyleID = 52,
    QVSymbolTypeStyleClass = 53,
    QVSymbolTypeStylePseudoclass = 54,
    QVSymbolTypeStylePseudoelement = 55,

    QVSymbolTypeTag = 60,
    QVSymbolTypeTagHead = 61,
    QVSymbolTypeTagTitle = 62,
    QVSymbolTypeTagMeta = 63,
    QVSymbolTypeTagLink = 64,
    QVSymbolTypeTagBody = 65,
    QVSymbolTypeTagScript = 66,
    QVSymbolTypeTagStyle = 67,
    QVSymbolTypeTagHeading = 68,
    QVSymbolTypeTagSection = 69,
    QVSymbolTypeTagContainer = 70,
    QVSymbolTypeTagUL = 71,
    QVSymbolTypeTagOL = 72,
    QVSymbolTypeTagLI = 73,
    QVSymbolTypeTagAnchor = 74,
    QVSymbolTypeTagImage = 75,
    QVSymbolTypeTagMedia = 76,
    QVSymbolTypeTagForm = 77,
    QVSymbolTypeTagFormField = 78,
    QVSymbolTypeTagFramework = 79,
};

/// The number of a word, compared exactly; 0 for an unknown or null one. Any thread.
QV_EXPORT NSUInteger QVSymbolTypeFromString(const NSString &string);
/// The word of a number; null where it has none, 0 included. Any thread.
QV_EXPORT NSString QVSymbolTypeToString(NSUInteger symbolType);

/// Whether a type names a type: 1 to 9.
QV_EXPORT bool QVSymbolTypeIsType(NSUInteger symbolType);
/// Whether a type names a function: 10 to 19.
QV_EXPORT bool QVSymbolTypeIsFunction(NSUInteger symbolType);
/// Whether a type names a value: 20 to 29.
QV_EXPORT bool QVSymbolTypeIsValue(NSUInteger symbolType);
/// Whether a type names a tag: 60 to 78. A framework's tag, 79, is left out on purpose.
QV_EXPORT bool QVSymbolTypeIsTag(NSUInteger symbolType);

} // namespace quorvane
