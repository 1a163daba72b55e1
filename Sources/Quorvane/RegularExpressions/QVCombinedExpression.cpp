#include "Quorvane/RegularExpressions/QVCombinedExpression.h"

#include "Quorvane/RegularExpressions/PCRE2.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"

namespace quorvane {

namespace {

/// Marks name the expression that matched: one unit each, from here on. Any unit would do that is neither a
/// surrogate nor a parenthesis.
constexpr char16_t firstMark = 0x4E00;
constexpr std::size_t maximumExpressions = 0x4000;

/// What can differ between patterns that are compiled together; all else must be the same for all.
constexpr QVRegularExpressionOptions separateOptions =
    QVRegularExpressionCaseInsensitive | QVRegularExpressionExtended | QVRegularExpressionDotAll;
constexpr QVRegularExpressionOptions commonOptions = QVRegularExpressionMultiline | QVRegularExpressionUseJIT;

/// Spellings by which a pattern may refer to its groups, call parts of itself, quote up to its end, or change
/// what a blank means. Looking for the spelling finds a few harmless patterns too, which are then asked one
/// by one.
bool mayDependOnItsSurroundings(std::u16string_view pattern) {
    for (const std::u16string_view spelling :
         {u"\\g", u"\\k", u"\\Q", u"\\E", u"(*", u"(?R", u"(?&", u"(?P", u"(?(", u"(?C", u"(?+", u"(?#"})
        if (pattern.find(spelling) != pattern.npos)
            return true;
    for (std::size_t at = pattern.find(u"(?"); at != pattern.npos; at = pattern.find(u"(?", at + 2)) {
        // Options, and "(?-1)" and "(?1)", come before the first letter that is none of theirs.
        for (std::size_t index = at + 2; index < pattern.size(); ++index) {
            const char16_t unit = pattern[index];
            if ((unit >= u'0' && unit <= u'9') || unit == u'x' || unit == u'J' || unit == u'n')
                return true;
            if (unit != u'-' && unit != u'^' && !(unit >= u'a' && unit <= u'z'))
                break;
        }
    }
    return false;
}

/// Guards what all expressions keep.
std::mutex &keptLock() {
    static auto *const instance = new std::mutex;
    return *instance;
}

} // namespace

bool QVCombinedExpression::canCombine(const QVRegularExpression &expression) {
    return expression.canBeRemembered() && canCombineByIndex(expression);
}

bool QVCombinedExpression::canCombineByIndex(const QVRegularExpression &expression) {
    using Combines = QVRegularExpression::Combines;
    Combines known = expression._combines.load(std::memory_order_relaxed);
    if (known == Combines::Unknown) {
        const bool combines =
            expression.isJITEnabled() && (expression.options() & ~separateOptions) == commonOptions &&
            !expression.hasReferences() && !mayDependOnItsSurroundings(expression.pattern());
        known = combines ? Combines::Yes : Combines::No;
        expression._combines.store(known, std::memory_order_relaxed);
    }
    return known == Combines::Yes;
}

std::shared_ptr<const QVCombinedExpression>
QVCombinedExpression::combinedExpressionForExpressions(Expressions expressions) {
    if (expressions.empty() || expressions.size() > maximumExpressions)
        return nullptr;
    auto &kept = expressions.front()->_combinedExpressions;
    {
        const std::lock_guard guard(keptLock());
        const auto known = std::find_if(kept.begin(), kept.end(),
                                        [&](const auto &combined) { return combined->isOf(expressions); });
        if (known != kept.end())
            return *known;
    }
    // Outside of the lock, so that one thread's first use of a language never holds up another's.
    ::pcre2_real_code_16 *const code = compile(expressions);
    if (code == nullptr)
        return nullptr;
    std::shared_ptr<const QVCombinedExpression> combined(new QVCombinedExpression(code, expressions));
    const std::lock_guard guard(keptLock());
    // Lists with patterns of languages that went are asked for by nobody any more.
    std::erase_if(kept, [](const auto &other) { return other->isForsaken(); });
    kept.push_back(combined);
    return combined;
}

bool QVCombinedExpression::isOf(Expressions others) const {
    return std::equal(_expressions.begin(), _expressions.end(), others.begin(), others.end(),
                      [](const auto &weak, const auto &shared) {
                          return !weak.owner_before(shared) && !shared.owner_before(weak);
                      });
}

bool QVCombinedExpression::isForsaken() const {
    return std::any_of(_expressions.begin(), _expressions.end(),
                       [](const auto &expression) { return expression.expired(); });
}

QVCombinedExpression::QVCombinedExpression(::pcre2_real_code_16 *code, Expressions expressions)
    : _code(code), _expressions(expressions.begin(), expressions.end()) {
    for (const auto &expression : expressions) {
        _groupsBefore.push_back(_groupCount);
        _groupCount += expression->numberOfCaptureGroups();
    }
}

QVCombinedExpression::~QVCombinedExpression() { pcre2_code_free_16(_code); }

::pcre2_real_code_16 *QVCombinedExpression::compile(Expressions expressions) {
    std::u16string pattern;
    for (std::size_t index = 0; index < expressions.size(); ++index) {
        const QVRegularExpressionOptions options = expressions[index]->options();
        pattern += index == 0 ? u"(?" : u"|(?";
        if (options & QVRegularExpressionCaseInsensitive)
            pattern += u'i';
        if (options & QVRegularExpressionDotAll)
            pattern += u's';
        if (options & QVRegularExpressionExtended)
            pattern += u"xx";
        pattern += u':';
        pattern += expressions[index]->pattern().view();
        // An extended pattern may end in a comment, which the line's end ends.
        if (options & QVRegularExpressionExtended)
            pattern += u'\n';
        pattern += u")(*MARK:";
        pattern += static_cast<char16_t>(firstMark + index);
        pattern += u')';
    }
    pcre2_compile_context_16 *const context = pcre2_compile_context_create_16(nullptr);
    if (context == nullptr)
        throw std::bad_alloc();
    pcre2_set_newline_16(context, PCRE2_NEWLINE_ANY);
    int errorCode = 0;
    PCRE2_SIZE errorOffset = 0;
    // What makes searches quick is of no use at one place, and may rule out a match there.
    pcre2_code_16 *const code = pcre2_compile_16(pcre2Characters(pattern.data()), pattern.size(),
                                                 PCRE2_UTF | PCRE2_NO_UTF_CHECK | PCRE2_MULTILINE |
                                                     PCRE2_ANCHORED | PCRE2_NO_START_OPTIMIZE,
                                                 &errorCode, &errorOffset, context);
    pcre2_compile_context_free_16(context);
    if (code == nullptr || pcre2_jit_compile_16(code, PCRE2_JIT_COMPLETE) == 0)
        return code;
    pcre2_code_free_16(code);
    return nullptr;
}

std::int32_t QVCombinedExpression::firstAtLocation(NSUInteger location, std::u16string_view text,
                                                   QVRegularExpressionMatchContext &context) const {
    context.prepareForGroups(_groupCount);
    pcre2_match_data_16 *const data = context.matchData();
    // The context's own limits are for searches: no offset limit holds here.
    const int result = pcre2_jit_match_16(_code, pcre2Characters(text.data()), text.size(), location,
                                          PCRE2_NO_UTF_CHECK, data, nullptr);
    if (result < 0)
        return result == PCRE2_ERROR_NOMATCH ? noExpression : unknownExpression;
    const PCRE2_SPTR16 mark = pcre2_get_mark_16(data);
    return mark == nullptr ? unknownExpression : static_cast<std::int32_t>(*mark - firstMark);
}

QVCombinedExpression::Answer
QVCombinedExpression::matchAtLocation(NSUInteger location, std::u16string_view text,
                                      QVRegularExpressionMatchContext &context) const {
    const std::int32_t index = firstAtLocation(location, text, context);
    if (index < 0)
        return {index, 0};
    const PCRE2_SIZE *const vector = pcre2_get_ovector_pointer_16(context.matchData());
    if (vector[0] != location || vector[1] < location)
        return {unknownExpression, 0};
    return {index, vector[1], _groupsBefore[static_cast<std::size_t>(index)]};
}

} // namespace quorvane
