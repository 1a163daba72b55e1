#include "Quorvane/Symbols/QVSymbolTypes.h"

#include <array>
#include <unordered_map>

namespace quorvane {

namespace {

struct Row {
    NSUInteger symbolType;
    const char16_t *word;
};

constexpr Row rows[] = {
    {QVSymbolTypeType, u"type"},
    {QVSymbolTypeClass, u"class"},
    {QVSymbolTypeCategory, u"category"},
    {QVSymbolTypeInterface, u"interface"},
    {QVSymbolTypeEnum, u"enum"},
    {QVSymbolTypeUnion, u"union"},
    {QVSymbolTypeStruct, u"struct"},
    {QVSymbolTypeFunction, u"function"},
    {QVSymbolTypeMethod, u"method"},
    {QVSymbolTypeClosure, u"closure"},
    {QVSymbolTypeConstructor, u"constructor"},
    {QVSymbolTypeGetter, u"getter"},
    {QVSymbolTypeSetter, u"setter"},
    {QVSymbolTypeDestructor, u"destructor"},
    {QVSymbolTypeStaticMethod, u"static-method"},
    {QVSymbolTypeVariable, u"variable"},
    {QVSymbolTypeConstant, u"constant"},
    {QVSymbolTypeProperty, u"property"},
    {QVSymbolTypeArgument, u"argument"},
    {QVSymbolTypeColor, u"color"},
    {QVSymbolTypeEnumMember, u"enum-member"},
    {QVSymbolTypeStaticProperty, u"static-property"},
    {QVSymbolTypeExpression, u"expression"},
    {QVSymbolTypeStatement, u"statement"},
    {QVSymbolTypeBlock, u"block"},
    {QVSymbolTypeHeading, u"heading"},
    {QVSymbolTypeComment, u"comment"},
    {QVSymbolTypePackage, u"package"},
    {QVSymbolTypeFile, u"file"},
    {QVSymbolTypeReference, u"reference"},
    {QVSymbolTypeKeyword, u"keyword"},
    {QVSymbolTypeBookmark, u"bookmark"},
    {QVSymbolTypeSeparator, u"separator"},
    {QVSymbolTypeTodo, u"todo"},
    {QVSymbolTypeStyleRuleset, u"style-ruleset"},
    {QVSymbolTypeStyleDirective, u"style-directive"},
    {QVSymbolTypeStyleID, u"style-id"},
    {QVSymbolTypeStyleClass, u"style-class"},
    {QVSymbolTypeStylePseudoclass, u"style-pseudoclass"},
    {QVSymbolTypeStylePseudoelement, u"style-pseudoelement"},
    {QVSymbolTypeTag, u"tag"},
    {QVSymbolTypeTagHead, u"tag-head"},
    {QVSymbolTypeTagTitle, u"tag-title"},
    {QVSymbolTypeTagMeta, u"tag-meta"},
    {QVSymbolTypeTagLink, u"tag-link"},
    {QVSymbolTypeTagBody, u"tag-body"},
    {QVSymbolTypeTagScript, u"tag-script"},
    {QVSymbolTypeTagStyle, u"tag-style"},
    {QVSymbolTypeTagHeading, u"tag-heading"},
    {QVSymbolTypeTagSection, u"tag-section"},
    {QVSymbolTypeTagContainer, u"tag-container"},
    {QVSymbolTypeTagUL, u"tag-ul"},
    {QVSymbolTypeTagOL, u"tag-ol"},
    {QVSymbolTypeTagLI, u"tag-li"},
    {QVSymbolTypeTagAnchor, u"tag-anchor"},
    {QVSymbolTypeTagImage, u"tag-image"},
    {QVSymbolTypeTagMedia, u"tag-media"},
    {QVSymbolTypeTagForm, u"tag-form"},
    {QVSymbolTypeTagFormField, u"tag-form-field"},
    {QVSymbolTypeTagFramework, u"tag-framework"},
};

/// Both directions, built by whichever thread asks first and never destroyed, so that threads which outlive
/// the process's statics may go on asking.
struct Tables {
    std::array<NSString, QVSymbolTypeTagFramework + 1> words;
    std::unordered_map<NSString, NSUInteger> types;

    static const Tables &shared() {
        static const Tables *const tables = new Tables;
        return *tables;
    }

    Tables() {
        for (const Row &row : rows) {
            words[row.symbolType] = row.word;
            types.emplace(words[row.symbolType], row.symbolType);
        }
    }
};

} // namespace

NSUInteger QVSymbolTypeFromString(const NSString &string) {
    const auto &types = Tables::shared().types;
    const auto found = types.find(string);
    return found == types.end() ? NSUInteger(QVSymbolTypeNone) : found->second;
}

NSString QVSymbolTypeToString(NSUInteger symbolType) {
    const auto &words = Tables::shared().words;
    return symbolType < words.size() ? words[symbolType] : NSString();
}

bool QVSymbolTypeIsType(NSUInteger symbolType) { return symbolType >= 1 && symbolType <= 9; }

bool QVSymbolTypeIsFunction(NSUInteger symbolType) { return symbolType >= 10 && symbolType <= 19; }

bool QVSymbolTypeIsValue(NSUInteger symbolType) { return symbolType >= 20 && symbolType <= 29; }

bool QVSymbolTypeIsTag(NSUInteger symbolType) {
    return symbolType >= QVSymbolTypeTag && symbolType <= QVSymbolTypeTagFormField;
}

} // namespace quorvane
