#include "Output.h"

#include "Platform/AppKit/NSColor.h"

#include <map>

using namespace quorvane;

namespace highlight {

namespace {

/// Appends the text with the signs of markup escaped.
void appendEscaped(std::string &output, std::string_view text) {
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find_first_of("&<>\"", start), text.size());
        output += text.substr(start, end - start);
        if (end == text.size())
            return;
        output += text[end] == '&'   ? "&amp;"
                  : text[end] == '<' ? "&lt;"
                  : text[end] == '>' ? "&gt;"
                                     : "&quot;";
        start = end + 1;
    }
}

std::string declarations(const Look &look) {
    std::string text;
    if (look.foreground)
        text += "color:" + hexadecimal(*look.foreground) + ";";
    if (look.background)
        text += "background:" + hexadecimal(*look.background) + ";";
    if (look.bold)
        text += "font-weight:bold;";
    if (look.italic)
        text += "font-style:italic;";
    if (look.underlined && look.struckThrough)
        text += "text-decoration:underline line-through;";
    else if (look.underlined || look.struckThrough)
        text += look.underlined ? "text-decoration:underline;" : "text-decoration:line-through;";
    return text;
}

std::string rulesOfTheme(const PageTheme &page, const std::vector<std::pair<std::string, Look>> &classes) {
    const auto hex = [](const std::shared_ptr<const NSColor> &color, const char *otherwise) {
        const auto colour = colourOf(color.get());
        return colour ? hexadecimal(*colour) : std::string(otherwise);
    };
    std::string rules = "body{background:" + hex(page.theme->contentBackgroundColor(), "#ffffff") +
                        ";color:" + hex(page.theme->textColor(), "#000000") + "}\n";
    for (const auto &[name, look] : classes)
        if (const std::string text = declarations(look); !text.empty())
            rules += "." + name + "{" + text + "}\n";
    return rules;
}

/// The text cut where any of the themes changes the look, with one name for each combination of looks.
class Classes {
public:
    explicit Classes(const std::vector<PageTheme> &themes) : _themes(themes), _next(themes.size(), 0) {
        for (const PageTheme &theme : themes)
            _looks.emplace_back(theme.defaults);
    }

    /// The class of the stretch that begins here, empty for plain text, and its end. Places come in order.
    std::pair<const std::string &, NSUInteger> stretchAt(NSUInteger place) {
        if (place >= _end) {
            _numbers.clear();
            _end = NSNotFound;
            bool isPlain = true;
            for (std::size_t index = 0; index < _themes.size(); ++index) {
                const Runs &runs = _themes[index].runs;
                while (NSMaxRange(runs[_next[index]].range) <= place)
                    ++_next[index];
                const Run run = runs[_next[index]];
                _numbers.push_back(_looks[index].numberOf(run.attributes));
                isPlain = isPlain && _looks[index].isPlain(_numbers.back());
                _end = std::min(_end, NSMaxRange(run.range));
            }
            _name = &_plain;
            if (!isPlain)
                _name = &_names.try_emplace(_numbers, "c" + std::to_string(_names.size())).first->second;
        }
        return {*_name, _end};
    }

    std::vector<std::pair<std::string, Look>> ofTheme(std::size_t index) const {
        std::vector<std::pair<std::string, Look>> result;
        for (const auto &[numbers, name] : _names)
            result.emplace_back(name, _looks[index][numbers[index]]);
        return result;
    }

private:
    const std::vector<PageTheme> &_themes;
    std::vector<std::size_t> _next;
    std::vector<Looks> _looks;
    std::map<std::vector<std::uint32_t>, std::string> _names;
    const std::string _plain;
    /// The stretch at hand.
    std::vector<std::uint32_t> _numbers;
    const std::string *_name = nullptr;
    NSUInteger _end = 0;
};

} // namespace

std::string pageText(std::u16string_view text, const std::string &title,
                     const std::vector<PageTheme> &themes) {
    Classes classes(themes);
    std::string body = "<span class=\"line\">";
    for (std::size_t place = 0; place < text.size();) {
        const char16_t unit = text[place];
        if (unit == u'\n' || unit == u'\r') {
            place += unit == u'\r' && place + 1 < text.size() && text[place + 1] == u'\n' ? 2 : 1;
            // Within its line, where a line's end shows as none but is copied with the text.
            body += place < text.size() ? "\n</span><span class=\"line\">" : "";
            continue;
        }
        const auto [name, stretchEnd] = classes.stretchAt(place);
        std::size_t end = place;
        while (end < stretchEnd && text[end] != u'\n' && text[end] != u'\r')
            ++end;
        const std::string piece = NSString(text.substr(place, end - place)).UTF8String();
        if (!name.empty())
            body.append("<span class=\"").append(name).append("\">");
        appendEscaped(body, piece);
        if (!name.empty())
            body += "</span>";
        place = end;
    }
    body += "\n</span>";

    const std::string light = rulesOfTheme(themes.front(), classes.ofTheme(0));
    std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>";
    appendEscaped(page, title);
    page += "</title>\n<style>\n";
    if (themes.size() > 1)
        page += ":root{color-scheme:light dark}\n";
    page +=
        "body{margin:0}\n"
        "pre{margin:0;padding:1em 0;font:13px/1.5 ui-monospace,\"DejaVu Sans Mono\",Menlo,Consolas,monospace;"
        "tab-size:4;counter-reset:line;min-width:max-content}\n"
        ".line{display:block;min-height:1.5em;padding:0 1.5em 0 5em;text-indent:-5em;white-space:pre}\n"
        ".line::before{counter-increment:line;content:counter(line);display:inline-block;width:3.5em;"
        "margin-right:1.5em;text-align:right;text-indent:0;opacity:.6;-webkit-user-select:none;user-select:"
        "none}\n";
    page += light;
    if (themes.size() > 1)
        page += "@media screen and (prefers-color-scheme:dark){\n" +
                rulesOfTheme(themes[1], classes.ofTheme(1)) + "}\n";
    // Paper is white, and long lines have to go on below.
    page += "@media print{\nbody{background:none}\npre{min-width:0;font-size:9pt}\n"
            ".line{white-space:pre-wrap;overflow-wrap:anywhere;break-inside:avoid}\n}\n"
            "</style>\n</head>\n<body>\n<pre>" +
            body + "</pre>\n</body>\n</html>\n";
    return page;
}

} // namespace highlight
