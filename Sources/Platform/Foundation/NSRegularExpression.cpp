#include "Platform/Foundation/NSRegularExpression.h"

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/QVLimits.h"

#include <unicode/uregex.h>

namespace quorvane {

namespace {

constexpr const char16_t *patternKey = u"pattern";
constexpr const char16_t *optionsKey = u"options";

struct CloseExpression {
    void operator()(URegularExpression *expression) const { uregex_close(expression); }
};
using Expression = std::unique_ptr<URegularExpression, CloseExpression>;

std::uint32_t libraryFlags(NSRegularExpressionOptions options) {
    std::uint32_t flags = 0;
    if (options & NSRegularExpressionCaseInsensitive)
        flags |= UREGEX_CASE_INSENSITIVE;
    if (options & NSRegularExpressionAllowCommentsAndWhitespace)
        flags |= UREGEX_COMMENTS;
    if (options & NSRegularExpressionIgnoreMetacharacters)
        flags |= UREGEX_LITERAL;
    if (options & NSRegularExpressionDotMatchesLineSeparators)
        flags |= UREGEX_DOTALL;
    if (options & NSRegularExpressionAnchorsMatchLines)
        flags |= UREGEX_MULTILINE;
    return flags;
}

/// One walk over the matches in a range. It works on a clone, since the state of a search stands in the
/// library's object and patterns are shared between threads; the clone shares the compiled pattern. The text
/// is not copied.
class Search {
public:
    Search(const URegularExpression *compiled, const NSString &pattern, std::u16string_view text,
           NSMatchingOptions options, NSRange range)
        : _pattern(pattern), _anchored((options & NSMatchingAnchored) != 0) {
        if (range.location > text.size() || range.length > text.size() - range.location)
            throw NSException(NSRangeException,
                              NSString::stringWithFormat(u"Range %@ is outside of a string of length %lu",
                                                         range, text.size()));
        if (text.size() > std::numeric_limits<std::int32_t>::max()) {
            _status = U_INDEX_OUTOFBOUNDS_ERROR;
            logFailure();
            return;
        }
        _expression.reset(uregex_clone(compiled, &_status));
        // The library wants a pointer even to an empty text.
        uregex_setText(_expression.get(), text.empty() ? u"" : text.data(),
                       static_cast<std::int32_t>(text.size()), &_status);
        uregex_useTransparentBounds(_expression.get(), (options & NSMatchingWithTransparentBounds) != 0,
                                    &_status);
        uregex_useAnchoringBounds(_expression.get(), (options & NSMatchingWithoutAnchoringBounds) == 0,
                                  &_status);
        uregex_setRegion(_expression.get(), static_cast<std::int32_t>(range.location),
                         static_cast<std::int32_t>(NSMaxRange(range)), &_status);
        uregex_setTimeLimit(_expression.get(), limits::platformExpressionTimeLimit, &_status);
        if (U_FAILURE(_status))
            logFailure();
    }

    bool findNext() {
        if (U_FAILURE(_status) || (_anchored && _attempted))
            return false;
        _attempted = true;
        const bool found = _anchored ? uregex_lookingAt(_expression.get(), -1, &_status)
                                     : uregex_findNext(_expression.get(), &_status);
        if (U_FAILURE(_status)) {
            logFailure();
            return false;
        }
        return found;
    }

    NSRange rangeOfGroup(std::int32_t group) {
        const std::int32_t start = uregex_start(_expression.get(), group, &_status);
        const std::int32_t end = uregex_end(_expression.get(), group, &_status);
        if (U_FAILURE(_status) || start < 0)
            return NSNotFoundRange;
        return {static_cast<NSUInteger>(start), static_cast<NSUInteger>(end - start)};
    }

    void fill(NSRegularExpression::Match &match) {
        for (std::size_t group = 0; group < match.size(); ++group)
            match[group] = rangeOfGroup(static_cast<std::int32_t>(group));
    }

private:
    void logFailure() const {
        const bool tooLong = _status == U_REGEX_TIME_OUT;
        NSLog(u"The search for the pattern \"%@\" was given up: %@.", _pattern,
              tooLong ? NSString(u"it took too long") : NSString::stringWithUTF8String(u_errorName(_status)));
    }

    NSString _pattern;
    bool _anchored;
    bool _attempted = false;
    UErrorCode _status = U_ZERO_ERROR;
    Expression _expression;
};

void appendTemplate(std::u16string &result, std::u16string_view replacement, std::u16string_view text,
                    const NSRegularExpression::Match &match) {
    const auto isDigit = [](char16_t unit) { return unit >= u'0' && unit <= u'9'; };
    for (std::size_t index = 0; index < replacement.size(); ++index) {
        const char16_t unit = replacement[index];
        if (unit == u'\\' && index + 1 < replacement.size()) {
            result.push_back(replacement[++index]);
        } else if (unit == u'$' && index + 1 < replacement.size() && isDigit(replacement[index + 1])) {
            std::size_t group = replacement[++index] - u'0';
            // As many digits as still name a group, so that "$10" is group 1 and a "0" where there are nine.
            while (index + 1 < replacement.size() && isDigit(replacement[index + 1]) &&
                   group * 10 + (replacement[index + 1] - u'0') < match.size())
                group = group * 10 + (replacement[++index] - u'0');
            if (group < match.size() && match[group].location != NSNotFound)
                result += text.substr(match[group].location, match[group].length);
        } else {
            result.push_back(unit);
        }
    }
}

} // namespace

struct NSRegularExpression::Compiled {
    Expression expression;
    NSUInteger groups = 0;
};

NSRegularExpression::NSRegularExpression() = default;
NSRegularExpression::~NSRegularExpression() = default;

bool NSRegularExpression::compile(const NSString &pattern, NSRegularExpressionOptions options,
                                  std::shared_ptr<NSError> *error) {
    const std::u16string_view text = pattern.view();
    UErrorCode status =
        text.size() > std::numeric_limits<std::int32_t>::max() ? U_REGEX_PATTERN_TOO_BIG : U_ZERO_ERROR;
    auto compiled = std::make_unique<Compiled>();
    // The library refuses an empty pattern itself, but wants a pointer for it.
    compiled->expression.reset(uregex_open(text.empty() ? u"" : text.data(),
                                           static_cast<std::int32_t>(text.size()), libraryFlags(options),
                                           nullptr, &status));
    const std::int32_t groups = uregex_groupCount(compiled->expression.get(), &status);
    if (U_FAILURE(status)) {
        NSErrorUserInfo userInfo{
            {NSLocalizedDescriptionKey, NSString::stringWithFormat(u"The value “%@” is invalid.", pattern)}};
        if (pattern)
            userInfo.emplace(u"NSInvalidValue", pattern);
        QVSetError(error,
                   NSError::errorWithDomain(NSCocoaErrorDomain, NSFormattingError, std::move(userInfo)));
        return false;
    }
    compiled->groups = static_cast<NSUInteger>(groups);
    _pattern = pattern;
    _options = options;
    _compiled = std::move(compiled);
    return true;
}

std::shared_ptr<NSRegularExpression>
NSRegularExpression::regularExpressionWithPattern(const NSString &pattern, NSRegularExpressionOptions options,
                                                  std::shared_ptr<NSError> *error) {
    std::shared_ptr<NSRegularExpression> expression(new NSRegularExpression);
    return expression->compile(pattern, options, error) ? expression : nullptr;
}

NSString NSRegularExpression::escapedPatternForString(std::u16string_view string) {
    std::u16string escaped;
    escaped.reserve(string.size());
    for (const char16_t unit : string) {
        if (std::u16string_view(u"\\*?+[](){}^$|.").find(unit) != std::u16string_view::npos)
            escaped.push_back(u'\\');
        escaped.push_back(unit);
    }
    return escaped;
}

NSUInteger NSRegularExpression::numberOfCaptureGroups() const { return _compiled ? _compiled->groups : 0; }

void NSRegularExpression::enumerateMatchesInString(std::u16string_view string, NSMatchingOptions options,
                                                   NSRange range,
                                                   QVBlock<void(const Match &, bool &)> block) const {
    if (!_compiled || !block)
        return;
    Search search(_compiled->expression.get(), _pattern, string, options, range);
    Match match(_compiled->groups + 1);
    bool stop = false;
    while (!stop && search.findNext()) {
        search.fill(match);
        block(match, stop);
    }
}

std::optional<NSRegularExpression::Match> NSRegularExpression::firstMatchInString(std::u16string_view string,
                                                                                  NSMatchingOptions options,
                                                                                  NSRange range) const {
    std::optional<Match> first;
    enumerateMatchesInString(string, options, range, [&](const Match &match, bool &stop) {
        first = match;
        stop = true;
    });
    return first;
}

NSRange NSRegularExpression::rangeOfFirstMatchInString(std::u16string_view string, NSMatchingOptions options,
                                                       NSRange range) const {
    if (!_compiled)
        return NSNotFoundRange;
    Search search(_compiled->expression.get(), _pattern, string, options, range);
    return search.findNext() ? search.rangeOfGroup(0) : NSNotFoundRange;
}

NSUInteger NSRegularExpression::numberOfMatchesInString(std::u16string_view string, NSMatchingOptions options,
                                                        NSRange range) const {
    if (!_compiled)
        return 0;
    Search search(_compiled->expression.get(), _pattern, string, options, range);
    NSUInteger count = 0;
    while (search.findNext())
        ++count;
    return count;
}

NSString NSRegularExpression::stringByReplacingMatchesInString(std::u16string_view string,
                                                               NSMatchingOptions options, NSRange range,
                                                               std::u16string_view withTemplate) const {
    std::u16string result;
    NSUInteger copied = 0;
    enumerateMatchesInString(string, options, range, [&](const Match &match, bool &) {
        result += string.substr(copied, match[0].location - copied);
        appendTemplate(result, withTemplate, string, match);
        copied = NSMaxRange(match[0]);
    });
    result += string.substr(copied);
    return result;
}

bool NSRegularExpression::isEqual(const NSObject *other) const {
    const auto *expression = dynamic_cast<const NSRegularExpression *>(other);
    return expression != nullptr && _options == expression->_options && _pattern == expression->_pattern;
}

std::size_t NSRegularExpression::hash() const { return _pattern.hash() ^ _options; }

const NSCodingClass &NSRegularExpression::codingClass() {
    static const NSCodingClass codingClass{
        u"NSRegularExpression", nullptr, []() -> std::shared_ptr<NSSecureCoding> {
            return std::shared_ptr<NSRegularExpression>(new NSRegularExpression);
        }};
    return codingClass;
}

void NSRegularExpression::encodeWithCoder(NSCoder &coder) const {
    coder.encodeString(_pattern, patternKey);
    coder.encodeInteger(static_cast<NSInteger>(_options), optionsKey);
}

std::shared_ptr<NSSecureCoding> NSRegularExpression::initWithCoder(NSCoder &coder,
                                                                   std::shared_ptr<NSSecureCoding> self) {
    std::shared_ptr<NSError> error;
    const auto options = static_cast<NSRegularExpressionOptions>(coder.decodeInteger(optionsKey));
    if (compile(coder.decodeString(patternKey), options, &error))
        return self;
    coder.failWithError(std::move(error));
    return nullptr;
}

} // namespace quorvane
