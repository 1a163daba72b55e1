#include "Quorvane/Styles/QVThemeBuilder.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSStringEncoding.h"
#include "Platform/Foundation/QVLimits.h"

namespace quorvane {

namespace {

std::shared_ptr<NSError> parseError(NSString reason) {
    return NSError::errorWithDomain(QVThemeParserErrorDomain, QVThemeParserParseError,
                                    {{NSLocalizedDescriptionKey, NSString(u"Parse error")},
                                     {NSLocalizedFailureReasonErrorKey, std::move(reason)}});
}

} // namespace

std::shared_ptr<QVThemeBuilder> QVThemeBuilder::init() {
    return std::shared_ptr<QVThemeBuilder>(new QVThemeBuilder);
}

std::shared_ptr<QVTheme> QVThemeBuilder::parseFileURL(const NSURL &url, std::shared_ptr<NSError> *error) {
    const NSString string = QVStringWithContentsOfURL(url, limits::themeBytes, nullptr, error);
    if (!string)
        return nullptr;
    _fileURL = url;
    auto theme = parseString(string, error);
    _fileURL = nullptr;
    if (!theme)
        return nullptr;
    theme->setURL(url);
    theme->setName(url.lastPathComponent().stringByDeletingPathExtension());
    return theme;
}

std::shared_ptr<QVTheme> QVThemeBuilder::parseString(const NSString &string,
                                                     std::shared_ptr<NSError> *error) {
    _styles.clear();
    _metaStyle = nullptr;
    _propertyCount = 0;
    _error = nullptr;
    const auto parser = QVThemeParser::initWithString(string);
    parser->setDelegate(std::static_pointer_cast<QVThemeBuilder>(shared_from_this()));
    parser->parse();
    if (!_error)
        _error = parser->parserError();
    if (_error) {
        QVSetError(error, _error);
        return nullptr;
    }

    auto theme = std::make_shared<QVTheme>();
    theme->setStyles(std::move(_styles));
    _styles.clear();
    if (const auto meta = std::move(_metaStyle)) {
        theme->setDisplayName(meta->stringForProperty(u"-theme-display-name"));
        if (meta->stringForProperty(u"-theme-interface-style") == u"dark")
            theme->setInterfaceStyle(QVThemeInterfaceStyleDark);
        theme->setAllowsVibrancy(meta->stringForProperty(u"-theme-vibrancy") == u"vibrant");
        theme->setUsesSystemAccentColor(meta->stringForProperty(u"-theme-accent-color") == u"auto");
    }
    return theme;
}

void QVThemeBuilder::themeParserDidStartDeclaration(QVThemeParser &parser, const NSString &) {
    _properties.clear();
    _lineNumber = static_cast<NSUInteger>(parser.lineNumber());
    _columnNumber = static_cast<NSUInteger>(parser.columnNumber());
}

void QVThemeBuilder::themeParserFoundProperty(QVThemeParser &, const NSString &name, const NSString &value) {
    if (value)
        _properties.insert_or_assign(name, value);
    else
        _properties.erase(name);
}

void QVThemeBuilder::themeParserDidEndDeclaration(QVThemeParser &parser, const NSString &selector) {
    std::shared_ptr<QVStyle> first;
    for (const NSString &part : selector.componentsSeparatedByString(u",")) {
        _propertyCount += 1 + _properties.size();
        if (_propertyCount > limits::themeStylesAndProperties) {
            _error = parseError(NSString::stringWithFormat(
                u"Too many styles and properties at line %ld, column %ld", _lineNumber, _columnNumber));
            parser.abortParsing();
            return;
        }
        auto name = QVSimpleSelector::simpleSelectorWithString(
            part.stringByTrimmingCharactersInSet(*NSCharacterSet::whitespaceCharacterSet()));
        // Values are read once, for all selectors: a value of a megabyte can stand behind thousands of them.
        auto style = first ? first->copy() : QVStyle::styleWithSelector(name, _properties);
        style->setSelector(std::move(name));
        if (!first)
            first = style;
        style->setFileURL(_fileURL);
        style->setLineNumber(_lineNumber);
        style->setColumnNumber(_columnNumber);
        if (!_metaStyle && selector == u"meta")
            _metaStyle = style;
        _styles.push_back(std::move(style));
    }
}

} // namespace quorvane
