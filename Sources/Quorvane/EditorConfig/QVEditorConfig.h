#pragma once

#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/NSURL.h"

#include <map>
#include <optional>

namespace quorvane {

/// The settings that the `.editorconfig` files of a project assign to one file, as they stood when they were
/// read: names with their texts, and typed answers for the well-known ones. What is done with them is the
/// host's own affair. Immutable, for any thread.
class QV_EXPORT QVEditorConfig final : public NSObject {
public:
    /// Reads the `.editorconfig` files in the file's folder and in those above it; the file itself need not
    /// exist. Names and the values of the well-known ones come in lower case. Without settings, with a broken
    /// `.editorconfig`, and for a URL that is null or no full path, there are no values. Any thread, but
    /// hosts ask off the main one: it takes the time of the disk and of the files' patterns, which whoever
    /// wrote the project chose, and one hostile line can take more than a tenth of a second.
    static std::shared_ptr<QVEditorConfig> configForFileAtURL(const NSURL &url);
    static std::shared_ptr<QVEditorConfig> initWithDictionary(std::map<NSString, NSString> dictionary);
    /// Without values.
    static std::shared_ptr<QVEditorConfig> init();

    const std::map<NSString, NSString> &values() const { return _values; }
    /// Null where there is no such value. It is asserted that the key is not null.
    NSString objectForKey(const NSString &key) const;
    NSString objectForKeyedSubscript(const NSString &key) const { return objectForKey(key); }

    // Null, or an empty optional, is a value that is not set.

    /// "utf-8", "latin1" and the like.
    NSString charset() const;
    /// "space" or "tab".
    NSString indentationStyle() const;
    /// Columns of one level: for "tab" as many as a tab is wide. Nothing for an empty value, 0 for a word
    /// that is no number; a negative number wraps around.
    std::optional<NSUInteger> indentationSize() const;
    /// Columns of a tab; a word that is no number is 0, and a negative number wraps around.
    std::optional<NSUInteger> tabWidth() const;
    /// "lf", "cr" or "crlf".
    NSString lineEndings() const;
    /// "true" in any mix of cases is yes, every other word is no.
    std::optional<bool> trimTrailingWhitespace() const;
    std::optional<bool> insertFinalNewline() const;

    std::u16string_view className() const override { return u"QVEditorConfig"; }

private:
    explicit QVEditorConfig(std::map<NSString, NSString> values) : _values(std::move(values)) {}
    std::optional<bool> booleanForKey(const NSString &key) const;

    std::map<NSString, NSString> _values;
};

} // namespace quorvane
