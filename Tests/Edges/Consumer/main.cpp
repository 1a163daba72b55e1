// A host in small: it includes the umbrella, runs tasks, throws across the library's edge, makes objects of
// its own classes and owns some of the library's.
#include <Quorvane/Quorvane.h>

#include <iostream>
#include <memory>
#include <vector>

using namespace quorvane;

namespace {

class Note final : public NSObject {
public:
    explicit Note(NSString text) : _text(std::move(text)) {}
    NSString description() const override { return NSString::stringWithFormat(u"<%@>", _text); }

private:
    NSString _text;
};

} // namespace

int main() {
    std::vector<int> order;
    const dispatch_queue_t queue = dispatch_queue_create("consumer", DISPATCH_QUEUE_SERIAL);
    for (int i = 0; i < 3; ++i)
        dispatch_async(queue, [&order, i] { order.push_back(i); });
    dispatch_sync(queue, [] {});
    if (order != std::vector{0, 1, 2})
        return 1;

    try {
        NSString(u"abc").substringWithRange({2, 5});
        return 2;
    } catch (const NSException &exception) {
        if (exception.name() != NSRangeException)
            return 3;
    }

    // Matches and captures live in memory that the library keeps to itself.
    const QVScope scope;
    const QVScopeMatchReference match = QVScopeMatch::initWithScope(&scope);
    if (match->scope() != &scope || !std::make_unique<QVCaptureMatchArray>()->empty())
        return 4;
    // Attributes of fonts may be keys of a host's own tables.
    if (std::hash<CTFontAttributes>()({.kCTFontSizeAttribute = 12}) !=
        std::hash<CTFontAttributes>()({.kCTFontSizeAttribute = 12}))
        return 5;

    const std::shared_ptr<NSObject> note =
        std::make_shared<Note>(NSString::stringWithUTF8String(QVQuorvaneVersion()));
    std::cout << "Quorvane " << QUORVANE_VERSION << ": " << order.size() << " tasks ran in order, "
              << note->description().UTF8String() << " read back\n";
}
