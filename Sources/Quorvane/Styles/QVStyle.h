#pragma once

#include "Platform/Foundation/NSCoder.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Packages/QVLoadable.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Styles/QVColor.h"
#include "Quorvane/Styles/QVStyleAttributes.h"

namespace quorvane {

class NSShadow;
class QVGradient;

/// A selector with what nodes that it matches look like: properties as a theme writes them, and the typed
/// attributes that they were read into. Several styles that match one node are merged into one without a
/// selector. A style is set up by one thread; once its theme is built it is only read, from any thread.
class QV_EXPORT QVStyle final : public QVLoadable, public NSSecureCoding {
public:
    using Attributes = std::map<NSString, QVStyleValue>;
    using Properties = std::map<NSString, NSString>;

    QVStyle() = default;

    /// The attributes are read from the properties, in the order of their names; a property that is not known
    /// is kept without a meaning, and a value that can't be read says nothing.
    static std::shared_ptr<QVStyle> styleWithSelector(std::shared_ptr<const QVSimpleSelector> selector,
                                                      Properties properties);

    /// One style with the attributes of all: a later style's attribute replaces an earlier one's, null
    /// markers included. The result has neither selector nor properties.
    static std::shared_ptr<QVStyle>
    styleByResolvingStyles(const std::vector<std::shared_ptr<QVStyle>> &styles);

    // Values, as style sheets write them; any thread

    /// The words, strings with their quotes, and functions of a value. Null where it is no such list, which
    /// an empty value is not either. Words are parted by white space or a comma that follows at once, behind
    /// a function only a comma or the end may stand. A backslash does not keep a quote from ending its
    /// string.
    static std::optional<std::vector<NSString>> componentsForCSSValue(const NSString &value);
    /// What stands between the commas of a function: words, functions, or pairs of these. Any other argument
    /// is left out, and an empty one ends the list.
    static std::vector<NSString> argumentsForCSSFunction(const NSString &string);
    /// The value without quotes, if the same ones stand at both ends.
    static NSString stringWithCSSValue(const NSString &value);
    /// The colour that a theme writes: a name, "#" with three or six hexadecimal digits, "rgb(1, 2, 3)" of 0
    /// to 255, "hsb(1, 2%, 3%)" and "hsl(1, 2%, 3%)" of degrees and percents, each with an "a" and an alpha
    /// of 0 to 1 besides, and "color(srgb 1 0 0 / 0.5)" or "color(display-p3 ...)". Small letters alone;
    /// numbers are not held to their range. Null for null, "none", "default", "inherit" and whatever is no
    /// colour.
    static std::shared_ptr<const QVColor> colorWithCSSValue(const NSString &value);
    /// The colour of one of 146 names, small letters alone; null for any other.
    static std::shared_ptr<const QVColor> colorWithCSSName(const NSString &name);
    /// The colours of a "linear-gradient(...)", evenly spaced; what is no colour, a direction or a colour
    /// with a place, is left out. Null without a colour.
    static std::shared_ptr<const QVGradient> gradientWithCSSValue(const NSString &value);
    /// The platform's weight, from -1 to 1, of a style sheet's full hundred; 0 for every other number.
    static double CSSFontWeightToCTFontWeight(NSInteger fontWeight);

    /// The components of a property's value; null where the property is absent or is no list of them.
    std::optional<std::vector<NSString>> componentsForProperty(const NSString &property) const;
    /// The first component without its quotes; null where there is none.
    NSString stringForProperty(const NSString &property) const;

    /// Null on a merged style.
    const std::shared_ptr<const QVSimpleSelector> &selector() const { return _selector; }
    void setSelector(std::shared_ptr<const QVSimpleSelector> selector) { _selector = std::move(selector); }
    /// Names and raw values as written. Setting them reads no attributes.
    const Properties &properties() const { return _properties; }
    void setProperties(Properties properties) { _properties = std::move(properties); }
    /// Everything that the style says, by key.
    const Attributes &attributes() const { return _attributes; }

    /// The theme's file and the place of the declaration in it, counted from 1; neither archived nor copied.
    const NSURL &fileURL() const { return _fileURL; }
    void setFileURL(NSURL fileURL) { _fileURL = std::move(fileURL); }
    const std::optional<NSUInteger> &lineNumber() const { return _lineNumber; }
    void setLineNumber(std::optional<NSUInteger> lineNumber) { _lineNumber = lineNumber; }
    const std::optional<NSUInteger> &columnNumber() const { return _columnNumber; }
    void setColumnNumber(std::optional<NSUInteger> columnNumber) { _columnNumber = columnNumber; }

    /// Orders by the specificity of the selectors alone, ascending; a style without a selector counts as 0.
    NSComparisonResult compare(const QVStyle &other) const;

    // Attributes by key. A null key is a programming error: the assertion reads "Invalid parameter not
    // satisfying: key != nil", after which getters answer nothing and setters do nothing.

    /// Whatever is stored, the null marker included, so callers ask `isNullForAttribute` first; null where
    /// nothing is said. Valid until the style changes.
    const QVStyleValue *numberForAttribute(const NSString &key) const;
    /// The stored number without its fraction; null for the marker and for whatever is no number.
    std::optional<NSInteger> integerForAttribute(const NSString &key) const;
    /// Setting no number removes the attribute.
    void setNumber(std::optional<NSInteger> number, const NSString &forAttribute);

    /// The getters of objects answer null for whatever is of another type, the null marker included. Setting
    /// null removes the attribute.
    std::shared_ptr<const QVColor> colorForAttribute(const NSString &key) const;
    void setColor(std::shared_ptr<const QVColor> color, const NSString &forAttribute);
    std::shared_ptr<const NSShadow> shadowForAttribute(const NSString &key) const;
    void setShadow(std::shared_ptr<const NSShadow> shadow, const NSString &forAttribute);
    std::shared_ptr<const QVGradient> gradientForAttribute(const NSString &key) const;
    void setGradient(std::shared_ptr<const QVGradient> gradient, const NSString &forAttribute);

    /// Whether the null marker is stored.
    bool isNullForAttribute(const NSString &key) const;
    /// Stores the marker, or removes the attribute.
    void setNull(bool null, const NSString &forAttribute);

    // The number attributes by name. The marker reads as no number.

    std::optional<NSInteger> fontWeight() const { return integerForAttribute(QVStyleAttributeFontWeight); }
    void setFontWeight(std::optional<NSInteger> fontWeight) {
        setNumber(fontWeight, QVStyleAttributeFontWeight);
    }
    std::optional<NSInteger> fontStyle() const { return integerForAttribute(QVStyleAttributeFontStyle); }
    void setFontStyle(std::optional<NSInteger> fontStyle) { setNumber(fontStyle, QVStyleAttributeFontStyle); }
    std::optional<NSInteger> textDecoration() const {
        return integerForAttribute(QVStyleAttributeTextDecoration);
    }
    void setTextDecoration(std::optional<NSInteger> textDecoration) {
        setNumber(textDecoration, QVStyleAttributeTextDecoration);
    }
    std::optional<NSInteger> textDecorationStyle() const {
        return integerForAttribute(QVStyleAttributeTextDecorationStyle);
    }
    void setTextDecorationStyle(std::optional<NSInteger> textDecorationStyle) {
        setNumber(textDecorationStyle, QVStyleAttributeTextDecorationStyle);
    }

    // The objects by name.

    std::shared_ptr<const QVColor> backgroundColor() const;
    void setBackgroundColor(std::shared_ptr<const QVColor> backgroundColor);
    std::shared_ptr<const QVGradient> backgroundGradient() const;
    void setBackgroundGradient(std::shared_ptr<const QVGradient> backgroundGradient);
    std::shared_ptr<const QVColor> textColor() const;
    void setTextColor(std::shared_ptr<const QVColor> textColor);
    std::shared_ptr<const NSShadow> textShadow() const;
    void setTextShadow(std::shared_ptr<const NSShadow> textShadow);
    std::shared_ptr<const QVColor> textDecorationColor() const;
    void setTextDecorationColor(std::shared_ptr<const QVColor> textDecorationColor);
    std::shared_ptr<const QVColor> borderColor() const;
    void setBorderColor(std::shared_ptr<const QVColor> borderColor);
    std::shared_ptr<const QVGradient> borderGradient() const;
    void setBorderGradient(std::shared_ptr<const QVGradient> borderGradient);
    std::shared_ptr<const NSShadow> boxShadow() const;
    void setBoxShadow(std::shared_ptr<const NSShadow> boxShadow);
    std::shared_ptr<const NSShadow> insetShadow() const;
    void setInsetShadow(std::shared_ptr<const NSShadow> insetShadow);

    /// A new style with the selector, the properties and the attributes; it belongs to no package.
    std::shared_ptr<QVStyle> copy() const;

    std::u16string_view className() const override { return u"QVStyle"; }
    /// "<%@: %p : selector=%@>"
    NSString description() const override;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    template <typename T> std::shared_ptr<const T> objectForAttribute(const NSString &key) const;
    /// The stored value after the check of the key, null where there is none.
    const QVStyleValue *valueForAttribute(const NSString &key) const;
    /// Stores the value after the check of the key, or removes the attribute where there is none.
    void setValue(std::optional<QVStyleValue> value, const NSString &forAttribute);

    std::shared_ptr<const QVSimpleSelector> _selector;
    Properties _properties;
    Attributes _attributes;
    NSURL _fileURL;
    std::optional<NSUInteger> _lineNumber;
    std::optional<NSUInteger> _columnNumber;
};

} // namespace quorvane
