#include "Quorvane/EditorConfig/QVEditorConfig.h"

#include "Platform/Foundation/NSAssertionHandler.h"

#include <editorconfig/editorconfig.h>

namespace quorvane {

namespace {

struct HandleDeleter {
    void operator()(void *handle) const { editorconfig_handle_destroy(handle); }
};

} // namespace

std::shared_ptr<QVEditorConfig> QVEditorConfig::configForFileAtURL(const NSURL &url) {
    std::map<NSString, NSString> values;
    const std::unique_ptr<void, HandleDeleter> handle(editorconfig_handle_init());
    const std::string path = url.path().UTF8String();
    // What was read before a broken place is not to be trusted either.
    if (handle && editorconfig_parse(path.c_str(), handle.get()) == 0) {
        const int count = editorconfig_handle_get_name_value_count(handle.get());
        for (int index = 0; index < count; ++index) {
            const char *name = nullptr, *value = nullptr;
            editorconfig_handle_get_name_value(handle.get(), index, &name, &value);
            if (name && value)
                values.insert_or_assign(NSString::stringWithUTF8String(name),
                                        NSString::stringWithUTF8String(value));
        }
    }
    return initWithDictionary(std::move(values));
}

std::shared_ptr<QVEditorConfig> QVEditorConfig::initWithDictionary(std::map<NSString, NSString> dictionary) {
    return std::shared_ptr<QVEditorConfig>(new QVEditorConfig(std::move(dictionary)));
}

std::shared_ptr<QVEditorConfig> QVEditorConfig::init() { return initWithDictionary({}); }

NSString QVEditorConfig::objectForKey(const NSString &key) const {
    QVParameterAssert(!key.isNull(), "key != nil");
    const auto found = _values.find(key);
    return found == _values.end() ? NSString() : found->second;
}

NSString QVEditorConfig::charset() const { return objectForKey(u"charset"); }

NSString QVEditorConfig::indentationStyle() const { return objectForKey(u"indent_style"); }

std::optional<NSUInteger> QVEditorConfig::indentationSize() const {
    const NSString value = objectForKey(u"indent_size");
    if (value.length() == 0)
        return std::nullopt;
    if (value == u"tab")
        return tabWidth();
    return static_cast<NSUInteger>(value.integerValue());
}

std::optional<NSUInteger> QVEditorConfig::tabWidth() const {
    const NSString value = objectForKey(u"tab_width");
    if (!value)
        return std::nullopt;
    return static_cast<NSUInteger>(value.integerValue());
}

NSString QVEditorConfig::lineEndings() const { return objectForKey(u"end_of_line"); }

std::optional<bool> QVEditorConfig::booleanForKey(const NSString &key) const {
    const NSString value = objectForKey(key);
    if (!value)
        return std::nullopt;
    return value.lowercaseString() == u"true";
}

std::optional<bool> QVEditorConfig::trimTrailingWhitespace() const {
    return booleanForKey(u"trim_trailing_whitespace");
}

std::optional<bool> QVEditorConfig::insertFinalNewline() const {
    return booleanForKey(u"insert_final_newline");
}

} // namespace quorvane
