#include "Inspection.h"
#include "Languages.h"
#include "Output.h"

#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Styles/QVStyle+TextAttributes.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

#include <algorithm>

using namespace quorvane;

namespace highlight {

namespace {

/// What paints over the text at the location, in the order of painting.
struct Layer {
    /// The scope or capture.
    std::string node;
    /// Not empty where what was painted before is gone: why.
    std::string fresh;
    std::shared_ptr<const QVStyleList::Styles> styles;
    /// What the styles come to; null without any.
    std::shared_ptr<const QVStyle> resolved;
};

bool isPainted(QVScopeType type) {
    return type != QVScopeTypeUnknown && type != QVScopeTypeWhitespace && type != QVScopeTypeNewline;
}

/// The whole walk that colours a text, held down to one unit of it. All matches are looked at, for captures
/// can lie outside of the match they belong to.
class LayerCollector {
public:
    LayerCollector(NSUInteger location, NSUInteger length) : _location(location), _length(length) {}

    void visit(const QVScopeMatch &match) {
        const QVScope &scope = *match.scope();
        if (!isPainted(scope.type()))
            return;
        if (NSLocationInRange(_location, match.fullRange()))
            layers.push_back({utf8(scope.name()),
                              scope.shouldResetStyleAttributes() ? "forgets what is around it" : "",
                              scope.styles(), scope.resolvedStyle()});
        visitCaptures(match.captureMatches());
        visitCaptures(match.endCaptureMatches());
        if (scope.definesSubsyntax()) {
            const NSUInteger start = NSMaxRange(match.range());
            const NSUInteger end = match.endRange().location;
            const auto syntax = match.subsyntax();
            if (_location >= start && _location < (end == NSNotFound ? _length : end))
                layers.push_back({syntax ? utf8(syntax->name()) : utf8(scope.name()),
                                  "starts from plain text, for it is embedded", nullptr, nullptr});
        }
        for (const QVScopeMatch *const submatch : match.submatches())
            visit(*submatch);
    }

    std::vector<Layer> layers;

private:
    void visitCaptures(const QVCaptureMatchArray *captures) {
        if (captures == nullptr)
            return;
        for (const auto &match : *captures)
            if (NSLocationInRange(_location, match->fullRange()))
                layers.push_back({utf8(match->capture()->name()), "", match->capture()->styles(),
                                  match->capture()->resolvedStyle()});
    }

    NSUInteger _location;
    NSUInteger _length;
};

/// The text attributes that an attribute of styles ends up in; none for those of surroundings.
std::vector<NSAttributeKey> textAttributesOfKey(const NSString &key) {
    if (key == QVStyleAttributeTextColor.string())
        return {NSForegroundColorAttributeName};
    if (key == QVStyleAttributeBackgroundColor.string())
        return {NSBackgroundColorAttributeName};
    if (key == QVStyleAttributeFontWeight.string() || key == QVStyleAttributeFontStyle.string())
        return {NSFontAttributeName};
    if (key == QVStyleAttributeTextShadow.string())
        return {NSShadowAttributeName};
    if (key == QVStyleAttributeTextDecoration.string() ||
        key == QVStyleAttributeTextDecorationStyle.string() ||
        key == QVStyleAttributeTextDecorationColor.string())
        return {NSUnderlineStyleAttributeName, NSUnderlineColorAttributeName,
                NSStrikethroughStyleAttributeName, NSStrikethroughColorAttributeName};
    return {};
}

/// A property of a style that paints, and the number of its layer.
struct Source {
    std::size_t layer;
    const QVStyle *style;
    NSString property;

    friend bool operator==(const Source &, const Source &) = default;
};

std::string placeOfStyle(const QVStyle &style) {
    if (style.fileURL().isNull())
        return "";
    return utf8(style.fileURL().path()) +
           (style.lineNumber() ? ":" + std::to_string(*style.lineNumber()) : std::string());
}

/// Which property of which style each attribute of the text comes from.
class Cascade {
public:
    Cascade(const std::vector<Layer> &layers, const NSAttributes &defaults) : _layers(layers) {
        for (std::size_t index = 0; index < layers.size(); ++index) {
            if (!layers[index].fresh.empty())
                _winningLayers.clear();
            _setters.emplace_back();
            _painted.emplace_back();
            if (!layers[index].resolved)
                continue;
            for (const auto &style : *layers[index].styles)
                for (const auto &[property, value] : style->properties())
                    for (const NSString &key : keysOfProperty(*style, property))
                        _setters[index].insert_or_assign(key, Source{index, style.get(), property});
            NSMutableAttributes painted;
            QVStyleApplyTextAttributes(*layers[index].resolved, painted, defaults);
            _painted[index] = painted.attributes();
            for (const NSAttribute &attribute : _painted[index])
                _winningLayers[attribute.key] = index;
        }
    }

    /// What becomes of a property.
    std::string fateOfProperty(const Source &source) const {
        const auto keys = keysOfProperty(*source.style, source.property);
        if (keys.empty())
            return "is no property, or its value can't be read";
        std::string fate = "isn't about text";
        for (const NSString &key : keys) {
            const auto attributes = textAttributesOfKey(key);
            if (attributes.empty())
                continue;
            const Source &setter = _setters[source.layer].at(key);
            if (!(setter == source)) {
                fate = "loses to " + textOfSource(setter);
                continue;
            }
            if (source.style->isNullForAttribute(key)) {
                fate = "takes back what weaker styles say here";
                continue;
            }
            fate = "changes nothing";
            for (const NSAttributeKey attribute : attributes) {
                if (_painted[source.layer].valueForKey(attribute) == nullptr)
                    continue;
                const auto winner = _winningLayers.find(attribute);
                if (winner == _winningLayers.end())
                    return "is forgotten further in";
                if (winner->second == source.layer)
                    return "wins";
                fate = "loses to " + textOfSource(sourceOfAttribute(winner->second, attribute));
            }
        }
        return fate;
    }

private:
    /// The attributes that one property of a style sets.
    static std::vector<NSString> keysOfProperty(const QVStyle &style, const NSString &property) {
        const auto alone =
            QVStyle::styleWithSelector(style.selector(), {{property, style.properties().at(property)}});
        std::vector<NSString> keys;
        for (const auto &[key, value] : alone->attributes())
            keys.push_back(key);
        return keys;
    }

    /// A property that the layer has the attribute from.
    Source sourceOfAttribute(std::size_t layer, NSAttributeKey attribute) const {
        for (const auto &[key, setter] : _setters[layer]) {
            const auto attributes = textAttributesOfKey(key);
            if (!setter.style->isNullForAttribute(key) &&
                std::find(attributes.begin(), attributes.end(), attribute) != attributes.end())
                return setter;
        }
        return {layer, nullptr, {}};
    }

    std::string textOfSource(const Source &source) const {
        if (source.style == nullptr)
            return _layers[source.layer].node;
        const std::string place = placeOfStyle(*source.style);
        return utf8(source.style->selector()->string()) + " on " + _layers[source.layer].node +
               (place.empty() ? "" : ", " + place);
    }

    const std::vector<Layer> &_layers;
    /// For each layer the property that each attribute of its styles comes from.
    std::vector<std::map<NSString, Source>> _setters;
    std::vector<NSAttributes> _painted;
    std::map<NSAttributeKey, std::size_t> _winningLayers;
};

/// A pattern with its own lines below each other; those of long word lists are cut.
std::string textOfPattern(const NSString &pattern, const std::string &indentation) {
    constexpr std::size_t longest = 2000;
    std::string text = utf8(pattern);
    const auto isBlank = [](const std::string &line) { return line.find_first_not_of(" \t\r") == line.npos; };
    std::vector<std::string> lines;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    while (!lines.empty() && isBlank(lines.back()))
        lines.pop_back();
    while (!lines.empty() && isBlank(lines.front()))
        lines.erase(lines.begin());
    std::size_t common = std::string::npos;
    for (const std::string &line : lines)
        if (!isBlank(line))
            common = std::min(common, line.find_first_not_of(" \t"));
    std::string result;
    for (const std::string &line : lines)
        result += (result.empty() ? "" : "\n" + indentation) + line.substr(std::min(common, line.size()));
    if (result.size() > longest) {
        // Not within a character.
        std::size_t end = longest;
        while ((static_cast<unsigned char>(result[end]) & 0xC0) == 0x80)
            --end;
        result = result.substr(0, end) + "…";
    }
    return result;
}

class Explanation {
public:
    Explanation(const QVParse &parse, NSUInteger location, ScopePlaces &places)
        : _text(parse.string()), _lines(_text), _location(location), _places(places) {
        printScopes(*parse.rootMatch());
    }

    std::string takeText() { return std::move(_output); }

private:
    std::string range(NSRange range) const {
        return textOfPlace(_lines.placeOfLocation(range.location)) + " to " +
               textOfPlace(_lines.placeOfLocation(NSMaxRange(range)));
    }

    void printPattern(const char *label, const NSString &pattern, NSRange place) {
        std::string text = std::string("    ") + label + " ";
        const std::string indentation(text.size(), ' ');
        _output += text + textOfPattern(pattern, indentation) + "\n";
        if (place.location != NSNotFound)
            _output += indentation + "at " + range(place) + "\n";
    }

    void printScopes(const QVScopeMatch &match) {
        const QVScope &scope = *match.scope();
        _output += "  " + utf8(scope.name());
        if (match.range().location != NSNotFound)
            _output += "  " + range(match.fullRange());
        if (const std::string place = _places.placeOfScope(scope); !place.empty())
            _output += "  " + place;
        _output += "\n";
        const bool isRegion = scope.type() == QVScopeTypeStartEnd;
        if (scope.regularExpression())
            printPattern(isRegion ? "begins with" : "matches", scope.regularExpression()->pattern(),
                         isRegion ? match.range() : NSNotFoundRange);
        if (scope.endRegularExpression())
            printPattern("ends with", scope.endRegularExpression()->pattern(), match.endRange());
        else if (scope.endRegularExpressionTemplate())
            printPattern("ends with the groups of its beginning in", scope.endRegularExpressionTemplate(),
                         match.endRange());
        else if (scope.type() == QVScopeTypeUnknown)
            _output += "    no pattern matched\n";
        printCaptures(match.captureMatches());
        printCaptures(match.endCaptureMatches());
        for (const QVScopeMatch *const submatch : match.submatches())
            if (NSLocationInRange(_location, submatch->fullRange()))
                printScopes(*submatch);
    }

    void printCaptures(const QVCaptureMatchArray *captures) {
        if (captures == nullptr)
            return;
        for (const auto &match : *captures)
            if (NSLocationInRange(_location, match->range()))
                _output += "    group " + std::to_string(match->capture()->number()) + ": " +
                           utf8(match->capture()->name()) + "  " + range(match->range()) + "\n";
    }

    std::u16string_view _text;
    TextPlaces _lines;
    NSUInteger _location;
    ScopePlaces &_places;
    std::string _output;
};

std::string textOfLayers(const std::vector<Layer> &layers, const NSAttributes &defaults) {
    const Cascade cascade(layers, defaults);
    std::string text;
    for (std::size_t index = 0; index < layers.size(); ++index) {
        const Layer &layer = layers[index];
        if (!layer.fresh.empty())
            text += "  " + layer.node + " " + layer.fresh + "\n";
        if (!layer.styles)
            continue;
        for (const auto &style : *layer.styles) {
            const std::string place = placeOfStyle(*style);
            text += "  " + utf8(style->selector()->string()) + " on " + layer.node +
                    (place.empty() ? "" : "  " + place) + "\n";
            for (const auto &[property, value] : style->properties())
                text += "    " + utf8(property) + ": " + utf8(value) + "  " +
                        cascade.fateOfProperty({index, style.get(), property}) + "\n";
        }
    }
    return text.empty() ? "  none: this is plain text\n" : text;
}

} // namespace

std::string explanationText(const QVParse &parse, NSUInteger location, const std::string &file,
                            const Runs &runs, const NSAttributes &defaults, ScopePlaces &places) {
    const std::u16string_view text = parse.string();
    std::shared_ptr<QVSyntax> syntax;
    parse.matchAtLocation(location, false, &syntax);
    LayerCollector collector(location, text.size());
    collector.visit(*parse.rootMatch());
    std::size_t run = 0;
    while (!NSLocationInRange(location, runs[run].range))
        ++run;
    const std::string look = textOfLook(lookOfAttributes(runs[run].attributes, defaults));

    return file + ":" + textOfPlace(TextPlaces(text).placeOfLocation(location)) + ": " +
           utf8(syntax->name()) + "\nscopes, from the outside in:\n" +
           Explanation(parse, location, places).takeText() + "styles, the last one that speaks wins:\n" +
           textOfLayers(collector.layers, defaults) + "look:\n  " + (look.empty() ? "plain text" : look) +
           "\n";
}

} // namespace highlight
