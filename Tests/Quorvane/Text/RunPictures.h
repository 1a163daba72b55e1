#pragma once

#include "Quorvane/Text/QVLineRunArray.h"
#include "Tests/Support/RLEArrayModel.h"

#include <sstream>
#include <string>

/// Runs as text: "a:3 b:5 -:2" for values and their slots, "-" for null.
namespace quorvane::test {

inline char letterOf(const std::shared_ptr<Tag> &value) {
    return value ? static_cast<char>(value->letter) : '-';
}

/// One value for each letter, so that equal letters are one object unless a test makes another.
inline std::shared_ptr<Tag> tag(char letter) {
    static std::shared_ptr<Tag> tags[128];
    if (letter == '-')
        return nullptr;
    auto &value = tags[static_cast<unsigned char>(letter) & 127];
    if (!value)
        value = std::make_shared<Tag>(static_cast<char16_t>(letter));
    return value;
}

inline std::string draw(const TagArray &array) {
    std::string picture;
    for (const auto &run : array.runs())
        picture += (picture.empty() ? "" : " ") + std::string(1, letterOf(run.value())) + ":" +
                   std::to_string(run.length());
    return picture;
}

/// An array out of its picture.
inline std::shared_ptr<TagArray> runs(const std::string &picture, std::size_t runsPerChunk = 4) {
    auto array = std::make_shared<TagArray>(runsPerChunk);
    std::istringstream stream(picture);
    char letter = 0;
    char colon = 0;
    NSUInteger length = 0;
    while (stream >> letter >> colon >> length)
        array->insertObject(tag(letter), {array->count(), length});
    return array;
}

/// A run as an enumeration hands it over: "a{0,3}".
inline std::string draw(const std::shared_ptr<Tag> &value, NSRange range) {
    return std::string(1, letterOf(value)) + "{" + std::to_string(range.location) + "," +
           std::to_string(range.length) + "}";
}

inline std::string walk(const TagArray &array, NSRange range, std::uint64_t options = 0) {
    std::string picture;
    array.enumerateObjectsInRange(range, options,
                                  [&](const std::shared_ptr<Tag> &value, NSRange part, bool &) {
                                      picture += (picture.empty() ? "" : " ") + draw(value, part);
                                  });
    return picture;
}

/// Lines: "2LF 4CRLF 0", each by its length and terminator.
inline std::string draw(const QVLineRunArray &array) {
    static constexpr const char *names[] = {"", "CR", "LF", "CRLF"};
    std::string picture;
    array.enumerateLinesForLineNumberRange(
        {0, array.numberOfLines()}, [&](const QVLineRun &run, NSUInteger, bool &) {
            picture += (picture.empty() ? "" : " ") + std::to_string(run.range().length) + names[run.flags()];
        });
    return picture;
}

} // namespace quorvane::test
