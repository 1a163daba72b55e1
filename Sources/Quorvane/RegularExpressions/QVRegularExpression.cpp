#include "Quorvane/RegularExpressions/QVRegularExpression.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSException.h"
#include "Quorvane/QuorvaneErrors.h"
#include "Quorvane/RegularExpressions/PCRE2.h"
#include "Quorvane/RegularExpressions/QVPatternOutline.h"
#include "Quorvane/RegularExpressions/QVWordList.h"

namespace quorvane {

namespace {

std::uint32_t compileOptions(QVRegularExpressionOptions options) {
    std::uint32_t result = PCRE2_UTF | PCRE2_NO_UTF_CHECK | PCRE2_USE_OFFSET_LIMIT;
    if (options & QVRegularExpressionCaseInsensitive)
        result |= PCRE2_CASELESS;
    if (options & QVRegularExpressionExtended)
        result |= PCRE2_EXTENDED_MORE;
    if (options & QVRegularExpressionLiteral)
        result |= PCRE2_LITERAL;
    if (options & QVRegularExpressionDotAll)
        result |= PCRE2_DOTALL;
    if (options & QVRegularExpressionMultiline)
        result |= PCRE2_MULTILINE;
    return result;
}

/// "\G", "\K" and verbs make a match depend on where its search began, or begin before where it was found.
/// Looking for their spelling finds a few harmless patterns too, which are then searched for in the plain
/// way.
bool dependsOnTheSearchsStart(std::u16string_view pattern) {
    return pattern.find(u"\\G") != pattern.npos || pattern.find(u"\\K") != pattern.npos ||
           pattern.find(u"(*") != pattern.npos;
}

/// Where a look-ahead says what a match begins with, the library knows that unit and may know another one
/// that must come. It looks for the second behind the first, though in `(?=1)a?1` both are the same.
bool mayAskForAUnitTwice(const pcre2_code_16 *code) {
    std::uint32_t firstType = 0;
    std::uint32_t lastType = 0;
    pcre2_pattern_info_16(code, PCRE2_INFO_FIRSTCODETYPE, &firstType);
    pcre2_pattern_info_16(code, PCRE2_INFO_LASTCODETYPE, &lastType);
    if (firstType != 1 || lastType != 1)
        return false;
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    pcre2_pattern_info_16(code, PCRE2_INFO_FIRSTCODEUNIT, &first);
    pcre2_pattern_info_16(code, PCRE2_INFO_LASTCODEUNIT, &last);
    // In either case; beyond ASCII that takes tables to know.
    return (first | 0x20) == (last | 0x20) || first >= 128 || last >= 128;
}

} // namespace

bool pcre2JITAvailable() {
    static const bool available = [] {
        std::uint32_t value = 0;
        return pcre2_config_16(PCRE2_CONFIG_JIT, &value) >= 0 && value == 1;
    }();
    return available;
}

NSRange QVPCRE2MatchDataRangeAtIndex(QVPCRE2MatchData *matchData, NSUInteger index, NSUInteger offset) {
    const PCRE2_SIZE *vector = pcre2_get_ovector_pointer_16(matchData);
    const PCRE2_SIZE start = vector[2 * index];
    if (start == PCRE2_UNSET)
        return NSNotFoundRange;
    // A pattern that moves its match's start inside an assertion can end before it starts.
    const PCRE2_SIZE end = vector[2 * index + 1];
    return {start + offset, end > start ? end - start : 0};
}

std::shared_ptr<QVRegularExpression>
QVRegularExpression::regularExpressionWithPattern(const NSString &pattern, QVRegularExpressionOptions options,
                                                  std::shared_ptr<NSError> *error) {
    return initWithPattern(pattern, options, error);
}

std::shared_ptr<QVRegularExpression> QVRegularExpression::initWithPattern(const NSString &pattern,
                                                                          QVRegularExpressionOptions options,
                                                                          std::shared_ptr<NSError> *error) {
    QVParameterAssert(pattern, "pattern != nil");
    std::shared_ptr<QVRegularExpression> expression(new QVRegularExpression);
    expression->_pattern = pattern;
    expression->_options = options;
    return expression->compile(error) ? expression : nullptr;
}

std::shared_ptr<QVRegularExpression> QVRegularExpression::init() {
    throw NSException(NSInvalidArgumentException, u"QVRegularExpression cannot be initialized with -init");
}

QVRegularExpression::~QVRegularExpression() {
    pcre2_code_free_16(_code);
    pcre2_code_free_16(_anchoredCode);
}

pcre2_code_16 *QVRegularExpression::compileCode(std::u16string_view pattern, std::uint32_t additionalOptions,
                                                int &errorCode) const {
    pcre2_compile_context_16 *context = pcre2_compile_context_create_16(nullptr);
    if (context == nullptr)
        throw std::bad_alloc();
    pcre2_set_newline_16(context,
                         _options & QVRegularExpressionNewlineLF ? PCRE2_NEWLINE_LF : PCRE2_NEWLINE_ANY);
    PCRE2_SIZE errorOffset = 0;
    pcre2_code_16 *code =
        pcre2_compile_16(pcre2Characters(pattern.data()), pattern.size(),
                         compileOptions(_options) | additionalOptions, &errorCode, &errorOffset, context);
    pcre2_compile_context_free_16(context);
    return code;
}

bool QVRegularExpression::compile(std::shared_ptr<NSError> *error) {
    int errorCode = 0;
    _code = compileCode(_pattern.view(), 0, errorCode);
    if (_code == nullptr) {
        QVSetError(error, NSError::errorWithDomain(
                              QVQuorvaneErrorDomain, QVQuorvaneErrorInvalidRegularExpression,
                              {{NSLocalizedDescriptionKey, NSString(u"Error compiling regular expression")},
                               {NSLocalizedRecoverySuggestionErrorKey, stringForPCRE2ErrorCode(errorCode)}}));
        return false;
    }
    std::uint32_t captureCount = 0;
    pcre2_pattern_info_16(_code, PCRE2_INFO_CAPTURECOUNT, &captureCount);
    _captureCount = captureCount;
    std::uint32_t highestReference = 0;
    std::uint32_t nameCount = 0;
    pcre2_pattern_info_16(_code, PCRE2_INFO_BACKREFMAX, &highestReference);
    pcre2_pattern_info_16(_code, PCRE2_INFO_NAMECOUNT, &nameCount);
    _hasReferences = highestReference != 0 || nameCount != 0;
    QVPatternOutline outline;
    if ((_options & QVRegularExpressionLiteral) == 0)
        outline = QVPatternOutline::outlineOfPattern(_pattern.view(),
                                                     (_options & QVRegularExpressionExtended) != 0);
    if (outline.mayLookAheadFirst && QVPatternOutline::mayLookAhead(_pattern.view()) &&
        mayAskForAUnitTwice(_code)) {
        pcre2_code_free_16(_code);
        _code = compileCode(_pattern.view(), PCRE2_NO_START_OPTIMIZE, errorCode);
        if (_code == nullptr)
            throw std::bad_alloc();
    }
    if ((_options & QVRegularExpressionUseJIT) && pcre2JITAvailable())
        _JITEnabled = pcre2_jit_compile_16(_code, PCRE2_JIT_COMPLETE) == 0;
    readOutline(outline);
    readStartingConditions();
    return true;
}

void QVRegularExpression::readOutline(const QVPatternOutline &outline) {
    _matchesEmptyTextAlone = outline.matchesEmptyTextAlone;
    _startsAtLineStartsAlone = outline.startsAtLineStartsAlone;
    // Where a pattern begins with any text, the library looks at the place where the search began, and then
    // at line starts alone.
    std::uint32_t type = 0;
    pcre2_pattern_info_16(_code, PCRE2_INFO_FIRSTCODETYPE, &type);
    const bool passesPlaces = type == 2 && !_startsAtLineStartsAlone;
    _canBeRemembered = !passesPlaces && !dependsOnTheSearchsStart(_pattern.view());
    // The library does not know where a match starts that a pattern moves, nor what verbs rule out.
    if (!_canBeRemembered && outline.tails)
        _canMatchEmptyText = std::any_of(outline.tails->begin(), outline.tails->end(),
                                         [this](std::u16string_view tail) { return canBeEmpty(tail); });
}

bool QVRegularExpression::canBeEmpty(std::u16string_view pattern) const {
    int errorCode = 0;
    pcre2_code_16 *const code = compileCode(pattern, 0, errorCode);
    if (code == nullptr)
        return true;
    std::uint32_t result = 1;
    pcre2_pattern_info_16(code, PCRE2_INFO_MATCHEMPTY, &result);
    pcre2_code_free_16(code);
    return result != 0;
}

const pcre2_code_16 *QVRegularExpression::anchoredCode() const {
    std::call_once(_anchoredOnce, [this] {
        int errorCode = 0;
        // What makes searches quick is of no use at one place, and may rule out a match there.
        _anchoredCode = compileCode(_pattern.view(), PCRE2_ANCHORED | PCRE2_NO_START_OPTIMIZE, errorCode);
        if (_anchoredCode != nullptr && pcre2_jit_compile_16(_anchoredCode, PCRE2_JIT_COMPLETE) != 0) {
            pcre2_code_free_16(_anchoredCode);
            _anchoredCode = nullptr;
        }
    });
    return _anchoredCode;
}

void QVRegularExpression::readStartingConditions() {
    if (!_canBeRemembered)
        return;
    std::uint32_t canMatchEmptyText = 1;
    pcre2_pattern_info_16(_code, PCRE2_INFO_MATCHEMPTY, &canMatchEmptyText);
    _canMatchEmptyText = canMatchEmptyText != 0;
    // In characters, of which each takes a unit at least. The library counts what must be there, so what a
    // look ahead asks for counts too, but is no part of a match and may lie behind the range's end.
    if (!QVPatternOutline::mayLookAhead(_pattern.view())) {
        std::uint32_t minimumLength = 0;
        pcre2_pattern_info_16(_code, PCRE2_INFO_MINLENGTH, &minimumLength);
        _minimumLength = minimumLength;
    }
    const auto allow = [this](std::uint32_t unit) {
        const std::uint32_t bit = std::min<std::uint32_t>(unit, 255);
        _firstUnits[bit >> 6] |= std::uint64_t(1) << (bit & 63);
    };
    std::uint32_t type = 0;
    pcre2_pattern_info_16(_code, PCRE2_INFO_FIRSTCODETYPE, &type);
    if (type == 1) {
        std::uint32_t unit = 0;
        pcre2_pattern_info_16(_code, PCRE2_INFO_FIRSTCODEUNIT, &unit);
        allow(unit);
        // The library does not say whether the unit stands for both cases; allowing both rules out less,
        // never wrongly. Only two ASCII letters have partners beyond ASCII; what else there is beyond has
        // partners that only tables know.
        if ((unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z')) {
            allow(unit ^ 0x20);
            if ((unit | 0x20) == 'k' || (unit | 0x20) == 's')
                allow(255);
        } else if (unit >= 128) {
            for (std::uint32_t other = 128; other <= 255; ++other)
                allow(other);
            for (const char16_t other : {u'S', u's', u'K', u'k'})
                allow(other);
        }
        _hasFirstUnits = true;
        return;
    }
    const std::uint8_t *bitmap = nullptr;
    pcre2_pattern_info_16(_code, PCRE2_INFO_FIRSTBITMAP, &bitmap);
    if (bitmap == nullptr)
        return;
    for (std::uint32_t unit = 0; unit < 256; ++unit)
        if (bitmap[unit >> 3] & (1u << (unit & 7)))
            allow(unit);
    _hasFirstUnits = true;
}

NSString QVRegularExpression::stringForPCRE2ErrorCode(std::int32_t code) {
    PCRE2_UCHAR16 buffer[120];
    if (const int length = pcre2_get_error_message_16(code, buffer, std::size(buffer)); length >= 0)
        return NSString(std::u16string_view(reinterpret_cast<const char16_t *>(buffer),
                                            static_cast<std::size_t>(length)));
    return u"An unknown error occurred.";
}

NSUInteger QVRegularExpression::captureNumberForName(const NSString &name) const {
    const std::lock_guard guard(_namesMutex);
    if (!_namedCaptureGroups) {
        auto names = std::make_unique<std::unordered_map<NSString, NSUInteger>>();
        std::uint32_t count = 0;
        std::uint32_t entrySize = 0;
        PCRE2_SPTR16 table = nullptr;
        pcre2_pattern_info_16(_code, PCRE2_INFO_NAMECOUNT, &count);
        pcre2_pattern_info_16(_code, PCRE2_INFO_NAMEENTRYSIZE, &entrySize);
        pcre2_pattern_info_16(_code, PCRE2_INFO_NAMETABLE, &table);
        for (std::uint32_t index = 0; index < count; ++index) {
            const PCRE2_SPTR16 entry = table + index * entrySize;
            std::size_t length = 0;
            while (length + 1 < entrySize && entry[1 + length] != 0)
                ++length;
            names->emplace(
                NSString(std::u16string_view(reinterpret_cast<const char16_t *>(entry + 1), length)),
                entry[0]);
        }
        _namedCaptureGroups = std::move(names);
    }
    const auto found = _namedCaptureGroups->find(name);
    return found == _namedCaptureGroups->end() ? NSNotFound : found->second;
}

std::shared_ptr<QVRegularExpression> QVRegularExpression::copy() const {
    return std::const_pointer_cast<QVRegularExpression>(
        std::static_pointer_cast<const QVRegularExpression>(shared_from_this()));
}

NSString QVRegularExpression::description() const {
    return NSString::stringWithFormat(u"%@ { pattern=%@, options=%ld }", NSObject::description(), _pattern,
                                      _options);
}

const NSCodingClass &QVRegularExpression::codingClass() {
    static constexpr NSCodingClass codingClass{
        u"QVRegularExpression", nullptr, [] {
            return std::shared_ptr<NSSecureCoding>(
                std::shared_ptr<QVRegularExpression>(new QVRegularExpression));
        }};
    return codingClass;
}

void QVRegularExpression::encodeWithCoder(NSCoder &coder) const {
    coder.encodeString(_pattern, u"pattern");
    coder.encodeInteger(static_cast<NSInteger>(_options), u"options");
    if (_wordList)
        coder.encodeStrings(_wordList->words(), u"wordList");
}

std::shared_ptr<NSSecureCoding> QVRegularExpression::initWithCoder(NSCoder &coder,
                                                                   std::shared_ptr<NSSecureCoding> self) {
    _pattern = coder.decodeString(u"pattern");
    _options = static_cast<QVRegularExpressionOptions>(coder.decodeInteger(u"options"));
    if (const auto words = coder.decodeStrings(u"wordList"))
        _wordList =
            QVWordList::wordListWithWords(*words, (_options & QVRegularExpressionCaseInsensitive) != 0);
    std::shared_ptr<NSError> error;
    if (_pattern && compile(&error))
        return self;
    if (error)
        coder.failWithError(std::move(error));
    return nullptr;
}

} // namespace quorvane
