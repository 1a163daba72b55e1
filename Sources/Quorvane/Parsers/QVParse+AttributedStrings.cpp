// Highlighted text as attributed strings, of a parse's own text and of texts that are parsed for it.

#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSAttributedString.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSProgress.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVParseText.h"

#include <unordered_map>

namespace quorvane {

namespace {

/// Puts reports into an attributed string. A text has few different sums of attributes, so that each is made
/// once.
class AttributePainter {
public:
    AttributePainter(NSMutableAttributedString &string, const NSAttributes &defaultAttributes)
        : _string(string), _defaultAttributes(defaultAttributes),
          _affected(QVParse::attributesAffectedBySyntaxHighlighting().begin(),
                    QVParse::attributesAffectedBySyntaxHighlighting().end()) {}

    void paint(const NSAttributes &attributes, NSRange range, std::uint64_t flags) {
        const bool clears = (flags & (QVAttributeFlagsRegionDefault | QVAttributeFlagsReset)) != 0;
        _string.changeAttributesInRange(range, [&](const NSAttributes &present) {
            const auto [sum, isNew] = _sums.try_emplace(Sum{present, attributes, clears});
            if (isNew)
                sum->second =
                    (clears ? present.attributesByRemovingKeys(_affected).attributesByAddingAttributes(
                                  _defaultAttributes)
                            : present)
                        .attributesByAddingAttributes(attributes);
            return sum->second;
        });
    }

private:
    struct Sum {
        NSAttributes present;
        NSAttributes added;
        bool clears;

        friend bool operator==(const Sum &, const Sum &) = default;
    };
    struct SumHash {
        std::size_t operator()(const Sum &sum) const {
            return sum.present.hash() * 31 + sum.added.hash() * 2 + sum.clears;
        }
    };

    NSMutableAttributedString &_string;
    const NSAttributes &_defaultAttributes;
    const std::vector<NSAttributeKey> _affected;
    std::unordered_map<Sum, NSAttributes, SumHash> _sums;
};

} // namespace

void QVParse::paintAttributes(NSMutableAttributedString &string, NSRange range,
                              const NSAttributes &defaultAttributes) const {
    AttributePainter painter(string, defaultAttributes);
    enumerateAttributesInRange(
        range, defaultAttributes,
        [&](const NSAttributes &attributes, NSRange piece, const std::shared_ptr<QVSyntax> &,
            std::uint64_t flags, bool &) {
            painter.paint(attributes, {piece.location - range.location, piece.length}, flags);
        });
}

std::shared_ptr<NSMutableAttributedString>
QVParse::attributedStringFromRange(NSRange range, const NSAttributes &defaultAttributes) const {
    if (range.location > _text->length() || range.length > _text->length() - range.location)
        throw NSException(NSRangeException,
                          NSString::stringWithFormat(u"Range %@ is outside of a text of length %lu", range,
                                                     _text->length()));
    auto string = NSMutableAttributedString::initWithString(
        _text->view().substr(range.location, range.length), defaultAttributes);
    paintAttributes(*string, range, defaultAttributes);
    return string;
}

std::shared_ptr<NSAttributedString> QVParse::attributedStringFromString(const NSString &string,
                                                                        std::shared_ptr<QVSyntax> syntax,
                                                                        const NSAttributes &defaultAttributes,
                                                                        double timeout) {
    auto attributed = NSMutableAttributedString::initWithString(string, defaultAttributes);
    const auto parse = initWithSyntax(std::move(syntax), string.length(),
                                      MainQueue::isMainThread() ? QVParseMainQueueConcurrencyType
                                                                : QVParsePrivateQueueConcurrencyType);
    if (!parse)
        return attributed;
    parse->performWritingWithTimeoutAndWait(
        timeout,
        [&] {
            if (parse->replaceCharactersInRange({0, 0}, string, nullptr).location != NSNotFound)
                parse->paintAttributes(*attributed, {0, string.length()}, defaultAttributes);
        },
        [parse] { parse->cancelParsing(); });
    return attributed;
}

std::shared_ptr<NSProgress> QVParse::attributedStringFromString(
    const NSString &string, std::shared_ptr<QVSyntax> syntax, const NSAttributes &defaultAttributes,
    std::function<void(std::shared_ptr<NSAttributedString>)> completionHandler) {
    QVParameterAssert(completionHandler != nullptr, "completionHandler != nil");
    const auto progress = NSProgress::discreteProgressWithTotalUnitCount(-1);
    const auto parse = initWithSyntax(std::move(syntax), string.length(), QVParsePrivateQueueConcurrencyType);
    if (!parse || !completionHandler)
        return progress;
    // The task holds the parse; a host may keep the progress for long after.
    progress->setCancellationHandler([weakParse = std::weak_ptr(parse)] {
        if (const auto running = weakParse.lock())
            running->cancelParsing();
    });
    parse->performWritingBlock(
        [parse, progress, string, defaultAttributes, completionHandler = std::move(completionHandler)] {
            const auto attributed = NSMutableAttributedString::initWithString(string, defaultAttributes);
            parse->replaceCharactersInRange({0, 0}, string, nullptr);
            if (progress->isCancelled())
                return;
            parse->paintAttributes(*attributed, {0, string.length()}, defaultAttributes);
            if (!progress->isCancelled())
                completionHandler(attributed);
        });
    return progress;
}

} // namespace quorvane
