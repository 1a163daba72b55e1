#pragma once

#include "Quorvane/Styles/QVTheme.h"
#include "Quorvane/Styles/QVThemeParser.h"

namespace quorvane {

/// Makes a `QVTheme` of the events of a theme parser: a style for each selector of each declaration, and the
/// settings of the theme from its `meta` declaration. One thread at a time.
class QV_EXPORT QVThemeBuilder final : public NSObject, public QVThemeParserDelegate {
public:
    static std::shared_ptr<QVThemeBuilder> init();

    /// The theme of a file with its name and URL, and with a display name only if the file gives one. Null
    /// with an error where the file can't be read or is too large, or where it holds a mistake.
    std::shared_ptr<QVTheme> parseFileURL(const NSURL &url, std::shared_ptr<NSError> *error = nullptr);
    /// The theme of a text, without a name. Null with an error of `QVThemeParserErrorDomain` for a mistake,
    /// or for more styles and properties than `QVLimits.h` allows.
    std::shared_ptr<QVTheme> parseString(const NSString &string, std::shared_ptr<NSError> *error = nullptr);

    void themeParserDidStartDeclaration(QVThemeParser &parser, const NSString &selector) override;
    /// A later property of a declaration replaces an earlier one; without a value it removes it.
    void themeParserFoundProperty(QVThemeParser &parser, const NSString &name,
                                  const NSString &value) override;
    void themeParserDidEndDeclaration(QVThemeParser &parser, const NSString &selector) override;

    std::u16string_view className() const override { return u"QVThemeBuilder"; }

private:
    QVThemeBuilder() = default;

    /// The file, while it is read.
    NSURL _fileURL;
    QVTheme::Styles _styles;
    std::shared_ptr<QVStyle> _metaStyle;
    QVStyle::Properties _properties;
    NSUInteger _lineNumber = 0;
    NSUInteger _columnNumber = 0;
    /// Of all styles so far, the styles themselves included.
    std::size_t _propertyCount = 0;
    std::shared_ptr<NSError> _error;
};

} // namespace quorvane
