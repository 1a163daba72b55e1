// Opens a file as a document, types a recording into it, and tells what a host sees of that: what a keystroke
// costs its main thread, how often the parse went to work, and which ranges it reported.
//   quorvane-type-along PACKAGES FILE RECORDING
// A line of the recording is one of "at PLACE", "type TEXT" ("\n" and "\t" stand for a line's end and a tab),
// "delete COUNT" (backwards) and "pause", which waits for the colours.
#include <Host/QVPackageFolder.h>
#include <Quorvane/Quorvane.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

using namespace quorvane;
using Clock = std::chrono::steady_clock;

namespace {

NSString fromUTF8(const std::string &text) { return NSString::stringWithUTF8String(text); }

/// Brings in languages and themes, and puts a theme in force.
void loadPackages(const std::string &folder) {
    const auto packages = QVPackageFolder::packagesInFolders({NSURL::fileURLWithPath(fromUTF8(folder))});
    QVLoadable::loadPackagesIntoSyntaxEngine({packages.begin(), packages.end()});
    QVThemeController::sharedController()->setCurrentTheme(QVTheme::themeWithName(u"Dusk"));
}

/// Makes a document of a text; the parse starts at once, on a queue of its own.
std::shared_ptr<QVConcreteTextStorage> openDocument(const NSString &text, const NSString &fileName) {
    const auto storage = QVConcreteTextStorage::initWithString(text);
    storage->setSyntax(QVSyntax::suggestedSyntaxForString(text, fileName));
    return storage;
}

/// Hears of edits as they happen, on the main thread: where a view would note what to draw anew.
class Listener : public QVTextStorageChangeObserver {
public:
    void textStorageDidProcessChanges(QVTextStorage &, NSTextStorageEditActions mask, NSRange,
                                      NSInteger) override {
        if (mask & NSTextStorageEditedCharacters)
            ++edits;
    }
    std::size_t edits = 0;
};

using HeardRanges = std::vector<std::vector<NSRange>>;
/// Keeps the ranges that one of the document's notifications lists.
NSNotificationToken listen(const QVConcreteTextStorage &storage, const char16_t *name, HeardRanges &heard) {
    return NSNotificationCenter::defaultCenter().addObserver(
        name, &storage, [&heard](const NSNotification &notification) {
            heard.push_back(std::any_cast<const std::vector<NSRange> &>(
                notification.userInfo.at(QVTextStorageUpdatedRangesKey)));
        });
}

/// Runs what comes to the main thread until the parse has caught up. A host's event loop does so all the
/// time, with `MainQueue::drain`.
void waitForColours(const QVConcreteTextStorage &storage) {
    MainQueue::runUntil([&] { return !storage.isParseUpdating(); }, Clock::now() + std::chrono::minutes(1));
}

/// Tells the colour and the kind of each piece of a range.
void printHighlighting(const QVTextStorage &storage, NSRange range) {
    storage.enumerateSyntaxHighlightingAttributesInRange(
        range, 0, [&](const NSAttributes &attributes, NSRange run, bool &) {
            const NSAttributeValue *kind = attributes.valueForKey(QVLexicalClassAttributeName);
            const NSAttributeValue *colour = attributes.valueForKey(NSForegroundColorAttributeName);
            std::cout << "  \"" << NSString(storage.string().substringWithRange(run)).UTF8String() << "\" "
                      << (kind ? kind->stringValue().UTF8String() : "plain") << (colour ? ", coloured" : "")
                      << '\n';
        });
}

std::string contentsOf(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return file ? std::string(std::istreambuf_iterator<char>(file), {})
                : throw std::runtime_error("can't read " + path);
}

void printRanges(const char *what, const HeardRanges &heard) {
    std::cout << what << heard.size() << " times:";
    for (const auto &ranges : heard)
        for (const NSRange &range : ranges)
            std::cout << ' ' << range.location << '+' << range.length;
    std::cout << '\n';
}

int run(char **arguments) {
    loadPackages(arguments[1]);
    const auto storage = openDocument(fromUTF8(contentsOf(arguments[2])), fromUTF8(arguments[2]));
    const auto listener = std::make_shared<Listener>();
    storage->addChangeObserver(listener);
    HeardRanges parsed, coloured;
    const auto parses = listen(*storage, QVTextStorageDidUpdateParseNotification, parsed);
    const auto colours = listen(*storage, QVTextStorageDidUpdateSyntaxHighlightingNotification, coloured);
    waitForColours(*storage);

    std::vector<double> microseconds;
    NSUInteger caret = 0;
    const auto replace = [&](NSRange range, std::u16string_view text) {
        const auto start = Clock::now();
        storage->replaceCharactersInRange(range, text);
        microseconds.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
        caret = range.location + text.size();
        MainQueue::drain();
    };
    std::istringstream recording(contentsOf(arguments[3]));
    for (std::string line; std::getline(recording, line);) {
        const std::string command = line.substr(0, line.find(' '));
        const std::string rest = line.size() > command.size() ? line.substr(command.size() + 1) : "";
        if (command == "at")
            caret = std::min<NSUInteger>(std::stoull(rest), storage->length());
        else if (command == "delete")
            for (auto count = std::stoull(rest); count > 0 && caret > 0; --count)
                replace({caret - 1, 1}, u"");
        else if (command == "type")
            for (std::size_t at = 0; at < rest.size(); ++at)
                if (rest[at] == '\\' && at + 1 < rest.size())
                    replace({caret, 0}, rest[++at] == 'n' ? u"\n" : u"\t");
                else
                    replace({caret, 0}, std::u16string(1, static_cast<unsigned char>(rest[at])));
        else if (command == "pause")
            waitForColours(*storage);
    }
    waitForColours(*storage);

    std::ranges::sort(microseconds);
    std::printf("%zu keystrokes on the main thread: median %.2f us, 99th percentile %.2f us\n",
                listener->edits, microseconds.empty() ? 0 : microseconds[microseconds.size() / 2],
                microseconds.empty() ? 0 : microseconds[microseconds.size() * 99 / 100]);
    printRanges("the parse caught up ", parsed);
    printRanges("colours came ", coloured);
    NSRange line;
    const NSUInteger number = storage->lineNumberForCharacterIndex(caret, &line);
    std::cout << "line " << number + 1 << " of " << storage->numberOfLines() << ":\n";
    printHighlighting(*storage, line);
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    try {
        return argc == 4 ? run(argv) : throw std::runtime_error("PACKAGES FILE RECORDING");
    } catch (const std::exception &exception) {
        std::cerr << "quorvane-type-along: " << exception.what() << '\n';
        return 1;
    }
}
