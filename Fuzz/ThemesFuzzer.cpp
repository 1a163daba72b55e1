// Themes: any text, as UTF-8 or as UTF-16 with halves of characters, is read as a theme file and, by itself,
// as the value of a property. Either there is a theme, whose styles know their places, or an error that names
// one; what the values fall into lies within the value.
#include "Fuzz/FuzzTarget.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Styles/QVGradient.h"
#include "Quorvane/Styles/QVStyle+TextAttributes.h"
#include "Quorvane/Styles/QVThemeBuilder.h"

using namespace quorvane;

namespace {

/// Events come in their order: declarations are closed, unless an error is told, and nothing follows an end.
struct Events final : QVThemeParserDelegate {
    bool isOver = false;
    bool isOpen = false;
    bool hasFailed = false;

    void themeParserDidStartDeclaration(QVThemeParser &parser, const NSString &selector) override {
        fuzz::require(!isOver && !isOpen && selector.length() > 0);
        fuzz::require(parser.lineNumber() >= 1 && parser.columnNumber() >= 1);
        isOpen = true;
    }
    void themeParserFoundProperty(QVThemeParser &, const NSString &name, const NSString &value) override {
        fuzz::require(!isOver && isOpen && name.length() > 0 && (!value || value.length() > 0));
    }
    void themeParserDidEndDeclaration(QVThemeParser &, const NSString &) override {
        fuzz::require(!isOver && isOpen);
        isOpen = false;
    }
    void themeParserFoundComment(QVThemeParser &, const NSString &comment) override {
        fuzz::require(!isOver && comment.length() > 0);
    }
    void themeParserParseErrorOccurred(QVThemeParser &, const std::shared_ptr<NSError> &error) override {
        fuzz::require(!isOver && error->localizedFailureReason().length() > 0);
        isOver = hasFailed = true;
    }
    void themeParserDidEndDocument(QVThemeParser &) override {
        fuzz::require(!isOver && !isOpen);
        isOver = true;
    }
};

void readValue(const NSString &value) {
    if (const auto components = QVStyle::componentsForCSSValue(value))
        for (const NSString &component : *components)
            // What stands behind a backslash can come twice.
            fuzz::require(component.length() <= 2 * value.length());
    for (const NSString &argument : QVStyle::argumentsForCSSFunction(value))
        fuzz::require(argument.length() > 0 && argument.length() <= value.length() + 2);
    fuzz::require(QVStyle::stringWithCSSValue(value).length() <= value.length());
    if (const auto gradient = QVStyle::gradientWithCSSValue(value))
        fuzz::require(gradient->numberOfColorStops() >= 2);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::silenceLog();
    if (size == 0)
        return 0;
    // New selectors are interned for good; the bound keeps a long search within memory.
    const NSString text(fuzz::textOfBytes(data + 1, std::min<std::size_t>(size - 1, 4096), data[0] & 1));
    readValue(text);

    const auto parser = QVThemeParser::initWithString(text);
    const auto events = std::make_shared<Events>();
    parser->setDelegate(events);
    parser->parse();
    fuzz::require(events->isOver && events->hasFailed == (parser->parserError() != nullptr));

    std::shared_ptr<NSError> error;
    const auto theme = QVThemeBuilder::init()->parseString(text, &error);
    fuzz::require((theme == nullptr) == (error != nullptr));
    if (!theme)
        return 0;
    fuzz::require(!events->hasFailed && theme->styles()->size() <= limits::themeStylesAndProperties);
    NSUInteger line = 1;
    NSMutableAttributes attributes;
    for (const auto &style : *theme->styles()) {
        fuzz::require(style->lineNumber() >= line && style->columnNumber() >= 1u);
        line = *style->lineNumber();
        QVStyleApplyTextAttributes(*style, attributes, {});
        fuzz::require(theme->resolvedStyleForSelectors({style->selector()}) != nullptr);
    }
    return 0;
}
