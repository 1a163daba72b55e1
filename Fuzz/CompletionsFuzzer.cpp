// Completions files: what is XML gives sets and providers, or an error at a provider. What is read can be
// matched, turned into text and archived, and comes back from the archive with the same items.
#include "Fuzz/FuzzTarget.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Quorvane/Categories/QVGramPattern.h"
#include "Quorvane/Completions/QVCompletion.h"
#include "Quorvane/Completions/QVCompletionBehavior.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Completions/QVCompletionSet.h"
#include "Quorvane/XML/QVXMLDocument.h"

using namespace quorvane;

namespace {

void checkItem(const QVCompletion &item, const QVCompletion &copy) {
    fuzz::require(copy.string() == item.string() && copy.stringGrams() == item.stringGrams() &&
                  copy.priority() == item.priority() && copy.symbolType() == item.symbolType() &&
                  copy.behaviors().size() == item.behaviors().size());
    fuzz::require(item.stringGrams().isNull() == item.string().isNull());
    const NSString pattern(item.stringGrams().text());
    for (QVGramMatchingOptions options = 0; options < 16; ++options) {
        float score = -1;
        NSIndexSet indexes;
        const bool isMatch = QVGramPattern(pattern, options).matches(item.stringGrams(), &score, &indexes);
        fuzz::require(isMatch == (score > 0) && isMatch != indexes.isEmpty());
        // A text is found in its own words.
        fuzz::require(options != 0 || isMatch == (pattern.length() != 0));
    }
    for (const auto &behavior : item.behaviors())
        fuzz::require(behavior->completionStringWithText(item.string(), nullptr).length() >=
                      item.string().length());
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::silenceLog();
    const auto document = QVXMLDocument::initWithData(NSData(std::vector<std::uint8_t>(data, data + size)));
    if (!document)
        return 0;
    std::shared_ptr<NSError> error;
    std::vector<std::shared_ptr<QVCompletionProvider>> providers;
    const auto sets = QVCompletionSet::completionSetsWithDocument(*document, &providers, &error);
    fuzz::require(sets.has_value() == (error == nullptr));
    for (const auto &provider : providers)
        fuzz::require(NSKeyedUnarchiver::unarchivedObjectOfClass<QVCompletionProvider>(
                          NSKeyedArchiver::archivedDataWithRootObject(provider)) != nullptr);
    // Without its providers any file is good.
    const auto alone = QVCompletionSet::completionSetsWithDocument(*document);
    fuzz::require(alone.has_value() && (!sets || sets->size() == alone->size()));
    for (const auto &[name, set] : *alone) {
        fuzz::require(name.length() != 0);
        const auto copy = NSKeyedUnarchiver::unarchivedObjectOfClass<QVCompletionSet>(
            NSKeyedArchiver::archivedDataWithRootObject(set));
        fuzz::require(copy != nullptr);
        const auto items = set->completions();
        const auto copies = copy->completions();
        fuzz::require(copies->size() == items->size());
        for (std::size_t index = 0; index < items->size(); ++index)
            checkItem(*(*items)[index], *(*copies)[index]);
    }
    return 0;
}
