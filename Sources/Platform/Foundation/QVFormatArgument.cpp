#include "Platform/Foundation/QVFormatArgument.h"

#include <cstdio>
#include <string>

namespace quorvane {

namespace {

template <typename... Ts> struct Overloaded : Ts... { using Ts::operator()...; };

NSString textOfArgument(const QVFormatArgument &argument) {
    return std::visit(
        Overloaded{
            [](const NSString &string) { return string ? string : NSString(u"(null)"); },
            [](std::int64_t number) { return NSString::stringWithUTF8String(std::to_string(number)); },
            [](std::uint64_t number) { return NSString::stringWithUTF8String(std::to_string(number)); },
            [](double number) {
                char buffer[64];
                std::snprintf(buffer, sizeof buffer, "%g", number);
                return NSString::stringWithUTF8String(buffer);
            },
            [](const void *pointer) {
                char buffer[32];
                std::snprintf(buffer, sizeof buffer, "%p", pointer);
                return NSString::stringWithUTF8String(pointer ? buffer : "0x0");
            },
            [](const QVFormatArgument::Object &object) {
                return object.description ? object.description : NSString(u"(null)");
            },
        },
        argument.value());
}

/// A number through the C library, with the flags, width and precision of the format.
template <typename Number> NSString formatted(const std::string &specification, Number number) {
    char buffer[512];
    std::snprintf(buffer, sizeof buffer, specification.c_str(), number);
    return NSString::stringWithUTF8String(buffer);
}

std::int64_t integerOfArgument(const QVFormatArgument &argument) {
    return std::visit(Overloaded{
                          [](std::int64_t number) { return number; },
                          [](std::uint64_t number) { return static_cast<std::int64_t>(number); },
                          [](double number) { return static_cast<std::int64_t>(number); },
                          [](const void *pointer) {
                              return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(pointer));
                          },
                          [](const auto &) { return std::int64_t(0); },
                      },
                      argument.value());
}

double doubleOfArgument(const QVFormatArgument &argument) {
    return std::visit(Overloaded{
                          [](double number) { return number; },
                          [](std::int64_t number) { return static_cast<double>(number); },
                          [](std::uint64_t number) { return static_cast<double>(number); },
                          [](const auto &) { return 0.0; },
                      },
                      argument.value());
}

NSString pointerOfArgument(const QVFormatArgument &argument) {
    if (const auto *object = std::get_if<QVFormatArgument::Object>(&argument.value()))
        return textOfArgument(QVFormatArgument(object->address));
    return textOfArgument(argument);
}

NSString convert(const std::string &flags, char16_t conversion, const QVFormatArgument &argument) {
    switch (conversion) {
    case u'@':
        return textOfArgument(argument);
    case u'p':
        return pointerOfArgument(argument);
    case u'd':
    case u'i':
        return formatted(flags + "lld", static_cast<long long>(integerOfArgument(argument)));
    case u'u':
    case u'x':
    case u'X':
    case u'o':
        return formatted(flags + "ll" + static_cast<char>(conversion),
                         static_cast<unsigned long long>(integerOfArgument(argument)));
    default:
        return formatted(flags + static_cast<char>(conversion), doubleOfArgument(argument));
    }
}

bool isConversion(char16_t unit) {
    return std::u16string_view(u"@pdiuxXofFgGeE").find(unit) != std::u16string_view::npos;
}

} // namespace

NSString QVStringWithFormatArguments(std::u16string_view format, const QVFormatArgument *arguments,
                                     std::size_t count) {
    std::u16string text;
    std::size_t used = 0;
    for (std::size_t index = 0; index < format.size(); ++index) {
        if (format[index] != u'%') {
            text.push_back(format[index]);
            continue;
        }
        if (index + 1 < format.size() && format[index + 1] == u'%') {
            text.push_back(u'%');
            ++index;
            continue;
        }
        std::string flags = "%";
        std::size_t end = index + 1;
        for (; end < format.size() &&
               std::u16string_view(u"0123456789.+- #lhqzt").find(format[end]) != std::u16string_view::npos;
             ++end) {
            // Length modifiers are dropped: an argument knows its own type.
            if (std::u16string_view(u"lhqzt").find(format[end]) == std::u16string_view::npos)
                flags.push_back(static_cast<char>(format[end]));
        }
        if (end >= format.size() || !isConversion(format[end]) || used >= count) {
            text.push_back(u'%');
            continue;
        }
        text += convert(flags, format[end], arguments[used++]).view();
        index = end;
    }
    return text;
}

NSString NSStringFromRange(NSRange range) {
    return NSString::stringWithFormat(u"{%lu, %lu}", range.location, range.length);
}

NSString QVDescriptionOfStrings(const std::vector<NSString> &items) {
    std::u16string text = u"(";
    for (std::size_t index = 0; index < items.size(); ++index) {
        text += index == 0 ? u"\n    " : u",\n    ";
        text += items[index] ? items[index].view() : std::u16string_view(u"(null)");
    }
    text += u"\n)";
    return text;
}

} // namespace quorvane
