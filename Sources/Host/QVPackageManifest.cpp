#include "Host/QVPackageManifest.h"

#include "Host/QVPackageError.h"

#include <nlohmann/json.hpp>

namespace quorvane {

namespace {

using nlohmann::json;

/// The place of a byte, its column counted in characters.
QVPackageErrorPlace placeOfOffset(std::string_view text, std::size_t offset) {
    QVPackageErrorPlace place{1, 1};
    for (const char byte : text.substr(0, offset)) {
        if (byte == '\n')
            place = {place.line + 1, 1};
        else if ((byte & 0xC0) != 0x80)
            ++place.column;
    }
    return place;
}

/// Where the value of a key of the outermost object begins, the last one where the key comes twice. The text
/// is known to be JSON; a key that is written with escapes is not found.
std::size_t offsetOfValue(std::string_view text, std::string_view key) {
    const auto isSpace = [](char byte) {
        return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
    };
    std::size_t found = 0;
    std::size_t depth = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '{' || text[at] == '[') {
            ++depth;
        } else if (text[at] == '}' || text[at] == ']') {
            --depth;
        } else if (text[at] == '"') {
            const std::size_t start = at + 1;
            for (++at; text[at] != '"'; ++at)
                if (text[at] == '\\')
                    ++at;
            std::size_t behind = at + 1;
            while (behind < text.size() && isSpace(text[behind]))
                ++behind;
            if (depth != 1 || behind == text.size() || text[behind] != ':' ||
                text.substr(start, at - start) != key)
                continue;
            for (++behind; isSpace(text[behind]); ++behind)
                ;
            found = behind;
        }
    }
    return found;
}

class ManifestReader {
public:
    ManifestReader(std::string_view text, const NSString &path) : _text(text), _path(path) {}

    std::optional<QVPackageManifest> read() {
        json document;
        try {
            document = json::parse(_text);
        } catch (const json::parse_error &failure) {
            // "[…] parse error at line 1, column 2: what is wrong", or without a place.
            std::string message = failure.what();
            if (const auto column = message.find("column "); column != std::string::npos)
                message.erase(0, message.find(": ", column) + 2);
            else if (const auto mark = message.find("] "); mark != std::string::npos)
                message.erase(0, mark + 2);
            fail(failure.byte > 0 ? failure.byte - 1 : 0, "Is no JSON: " + message);
            return std::nullopt;
        } catch (const json::exception &failure) {
            // A number beyond all bounds; the library names no place.
            fail(0, std::string("Is no JSON: ") + failure.what());
            return std::nullopt;
        }
        // The library takes a null character for the text's end and would pass over whatever follows.
        if (const std::size_t null = _text.find('\0'); null != std::string_view::npos) {
            fail(null, "Is no JSON: there is a null character");
            return std::nullopt;
        }
        if (!document.is_object()) {
            fail(_text.find_first_not_of(" \t\r\n"), "Is no JSON object");
            return std::nullopt;
        }
        QVPackageManifest manifest;
        if (!readText(document, "identifier", manifest.identifier) ||
            !readText(document, "name", manifest.name) || !readText(document, "version", manifest.version))
            return std::nullopt;
        if (manifest.identifier.length() == 0) {
            const bool isThere = manifest.identifier.isNull() == false;
            fail(isThere ? offsetOfValue(_text, "identifier") : _text.find('{'),
                 isThere ? "\"identifier\" is empty" : "\"identifier\" is missing");
            return std::nullopt;
        }
        if (manifest.name.length() == 0)
            manifest.name = manifest.identifier;
        return manifest;
    }

    const std::shared_ptr<NSError> &error() const { return _error; }

private:
    bool readText(const json &document, const char *key, NSString &text) {
        const auto found = document.find(key);
        if (found == document.end())
            return true;
        if (!found->is_string()) {
            fail(offsetOfValue(_text, key), "\"" + std::string(key) + "\" must be a string, not " +
                                                (found->is_null() ? "null" : aOrAn(found->type_name())));
            return false;
        }
        text = NSString::stringWithUTF8String(found->get_ref<const std::string &>());
        return true;
    }

    static std::string aOrAn(std::string_view noun) {
        return (noun.starts_with('a') || noun.starts_with('o') ? "an " : "a ") + std::string(noun);
    }

    void fail(std::size_t offset, const std::string &message) {
        _error = QVPackageError(QVPackageErrorInvalidManifest, _path, placeOfOffset(_text, offset),
                                NSString::stringWithUTF8String(message));
    }

    std::string_view _text;
    const NSString &_path;
    std::shared_ptr<NSError> _error;
};

} // namespace

std::optional<QVPackageManifest> QVPackageManifest::manifestWithData(const NSData &data, const NSString &path,
                                                                     std::shared_ptr<NSError> *error) {
    ManifestReader reader(data.view(), path);
    auto manifest = reader.read();
    if (!manifest)
        QVSetError(error, reader.error());
    return manifest;
}

} // namespace quorvane
