#include "Quorvane/Text/QVTextFoldAttachment.h"

#include "Platform/AppKit/NSBezierPath.h"
#include "Platform/AppKit/NSGraphicsContext.h"
#include "Quorvane/Categories/QVTreeDecoding.h"
#include "Quorvane/Styles/QVColor.h"
#include "Quorvane/Styles/QVGraphics.h"
#include "Quorvane/Text/QVFoldMap.h"

namespace quorvane {

namespace {

constexpr CGFloat markWidth = 26;
constexpr CGFloat markHeight = 14;
constexpr CGFloat dotSize = 4;

std::shared_ptr<const QVColor> markColor(double alpha) {
    return QVColor::colorWithHueSaturationBrightness(208.0 / 360, 0.08, 0.7, alpha);
}

} // namespace

QVTextFoldAttachment::QVTextFoldAttachment() = default;

/// Folds stand in one another as deep as a host folds, so they go one after the other, not from within each
/// other. The same holds for all that walks them.
QVTextFoldAttachment::~QVTextFoldAttachment() {
    Subfolds pending = std::move(_subfolds);
    while (!pending.empty()) {
        const std::shared_ptr<QVTextFoldAttachment> fold = std::move(pending.back());
        pending.pop_back();
        if (fold.use_count() == 1)
            std::move(fold->_subfolds.begin(), fold->_subfolds.end(), std::back_inserter(pending));
    }
}

std::shared_ptr<QVTextFoldAttachment> QVTextFoldAttachment::initWithRange(NSRange range, Subfolds subfolds) {
    const std::shared_ptr<QVTextFoldAttachment> fold(new QVTextFoldAttachment);
    fold->initializeWithData(nullptr, nullptr);
    fold->_range = range;
    fold->_subfolds = std::move(subfolds);
    fold->setCursor(NSCursor::pointingHandCursor());
    return fold;
}

NSRange QVTextFoldAttachment::range() const {
    if (_keeper && _keeper->map != nullptr)
        _keeper->map->settle();
    return _range;
}

bool QVTextFoldAttachment::textChangedInRange(NSRange range, NSInteger changeInLength) {
    const Effect effect = follow(range, changeInLength);
    if (effect == Effect::Ended)
        return false;
    if (effect == Effect::None || _subfolds.empty())
        return true;
    // Those whose subfolds have yet to hear of it, held because lists lose folds meanwhile.
    std::vector<std::pair<std::shared_ptr<QVTextFoldAttachment>, Effect>> pending;
    const auto tell = [&](const std::shared_ptr<QVTextFoldAttachment> &fold) {
        const Effect inFold = fold->follow(range, changeInLength);
        if ((inFold == Effect::Inside || inFold == Effect::Moved) && !fold->_subfolds.empty())
            pending.emplace_back(fold, inFold);
        return inFold != Effect::Ended;
    };
    const auto tellSubfolds = [&](QVTextFoldAttachment &fold, bool isInside) {
        if (!isInside) {
            for (const auto &subfold : fold._subfolds)
                tell(subfold);
            return;
        }
        // Read from the old list while the new one shrinks: the same fold stands at the index again. Those
        // who hold folds have opened what an edit takes away before they get here.
        Subfolds left = fold._subfolds;
        for (std::size_t index = 0; index < left.size();) {
            if (tell(fold._subfolds[index]))
                ++index;
            else
                left.erase(left.begin() + static_cast<std::ptrdiff_t>(index));
        }
        fold._subfolds = std::move(left);
    };
    tellSubfolds(*this, effect == Effect::Inside);
    while (!pending.empty()) {
        const auto [fold, inFold] = std::move(pending.back());
        pending.pop_back();
        tellSubfolds(*fold, inFold == Effect::Inside);
    }
    return true;
}

QVTextFoldAttachment::Effect QVTextFoldAttachment::follow(NSRange range, NSInteger changeInLength) {
    const bool isInside =
        range.length != 0 ? NSUnionRange(range, _range) == _range
                          : range.location != _range.location && NSLocationInRange(range.location, _range);
    const auto change = static_cast<NSUInteger>(changeInLength);
    if (isInside) {
        _range.length += change;
        return _range.length == 0 ? Effect::Ended : Effect::Inside;
    }
    if (NSMaxRange(_range) <= range.location)
        return Effect::None;
    if (NSMaxRange(range) <= _range.location) {
        _range.location += change;
        return Effect::Moved;
    }
    return Effect::Ended;
}

CGRect QVTextFoldAttachment::attachmentBoundsForLayoutManager(QVLayoutManager *layoutManager,
                                                              const CGRect &proposedLineFragment,
                                                              CGPoint /*glyphPosition*/,
                                                              NSUInteger characterIndex) const {
    const auto font = textFont(layoutManager, characterIndex);
    return CGRectMake(0, font ? -CTFontGetDescent(font) : 0, markWidth,
                      std::min(CGRectGetHeight(proposedLineFragment), markHeight));
}

void QVTextFoldAttachment::drawWithFrame(const CGRect &frame, NSUInteger /*characterIndex*/,
                                         QVLayoutManager * /*layoutManager*/) const {
    const CGRect mark = QVRectIntegral(CGRectInset(frame, 1, 1));

    NSGraphicsContext::saveGraphicsState();
    markColor(0.5)->setStroke();
    const CGRect outline = CGRectInset(mark, 0.5, 0.5);
    const CGFloat radius = CGRectGetHeight(outline) / 2;
    NSBezierPath::bezierPathWithRoundedRect(outline, radius, radius)->stroke();
    NSGraphicsContext::restoreGraphicsState();

    NSGraphicsContext::saveGraphicsState();
    markColor(0.8)->setFill();
    const CGFloat y = CGRectGetMinY(mark) + std::round((CGRectGetHeight(mark) - dotSize) / 2);
    for (const CGFloat place : {0.25, 0.5, 0.75}) {
        const CGFloat x = CGRectGetMinX(mark) + std::round(CGRectGetWidth(mark) * place - dotSize / 2);
        NSBezierPath::bezierPathWithOvalInRect(CGRectMake(x, y, dotSize, dotSize))->fill();
    }
    NSGraphicsContext::restoreGraphicsState();
}

NSString QVTextFoldAttachment::description() const {
    return NSString::stringWithFormat(u"<%@: %p : range=%@, subfolds=%lu>", className(),
                                      static_cast<const void *>(this), _range, _subfolds.size());
}

const NSCodingClass &QVTextFoldAttachment::codingClass() {
    static const NSCodingClass codingClass{
        u"QVTextFoldAttachment", &QVTextAttachment::codingClass(), +[]() -> std::shared_ptr<NSSecureCoding> {
            return std::shared_ptr<QVTextFoldAttachment>(new QVTextFoldAttachment);
        }};
    return codingClass;
}

void QVTextFoldAttachment::encodeWithCoder(NSCoder &coder) const {
    QVTextAttachment::encodeWithCoder(coder);
    coder.encodeRange(_range, u"range");
    coder.encodeArray(_subfolds, u"range");
}

std::shared_ptr<NSSecureCoding> QVTextFoldAttachment::initWithCoder(NSCoder &coder,
                                                                    std::shared_ptr<NSSecureCoding> self) {
    QVTreeDecoding tree(this);
    self = QVTextAttachment::initWithCoder(coder, std::move(self));
    _range = coder.decodeRange(u"range").value_or(NSRange{});
    auto subfolds = coder.decodeArrayOfClass<QVTextFoldAttachment>(u"subfolds");
    if (subfolds && !tree.adoptAll(*subfolds)) {
        QVFailTreeDecoding(coder);
        return nullptr;
    }
    _subfolds = std::move(subfolds).value_or(Subfolds());
    return self;
}

} // namespace quorvane
