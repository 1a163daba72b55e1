#include "Quorvane/Completions/QVCompletionSet.h"

#include "Platform/Dispatch/ReadWriteLock.h"
#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Completions/QVCompletion.h"
#include "Quorvane/Completions/QVCompletionBehavior.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/QuorvaneErrors.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Quorvane/XML/QVXMLDocument.h"

namespace quorvane {

namespace {

struct Registry {
    ReadWriteLock lock;
    QVCompletionSet::Sets sets;
};

Registry &registry() {
    // Never destroyed: background work may look a set up while the process ends.
    static auto *const instance = new Registry;
    return *instance;
}

/// Nothing when the file's behaviours come to more than is allowed.
std::optional<QVCompletionSet::Completions> completionsOfElement(const QVXMLElement &element,
                                                                 std::size_t &behaviorCount) {
    const NSUInteger symbolType = QVSymbolTypeFromString(element.valueForAttribute(u"symbol"));
    std::vector<std::shared_ptr<QVCompletionBehavior>> behaviors;
    for (const auto &child : element.elementsForName(u"behavior")) {
        auto behavior = QVCompletionBehavior::behaviorWithXMLElement(*child);
        if (behavior->symbolType() == 0)
            behavior->setSymbolType(symbolType);
        behaviors.push_back(std::move(behavior));
    }
    QVCompletionSet::Completions completions;
    for (const auto &child : element.elementsForName(u"completion")) {
        completions.push_back(QVCompletion::completionWithXMLElement(*child, symbolType, behaviors));
        behaviorCount += completions.back()->behaviors().size();
        if (behaviorCount > limits::completionBehaviors)
            return std::nullopt;
    }
    return completions;
}

} // namespace

std::optional<QVCompletionSet::Sets> QVCompletionSet::completionSetsWithContentsOfURL(
    const NSURL &url, std::vector<std::shared_ptr<QVCompletionProvider>> *completionProviders,
    std::shared_ptr<NSError> *error) {
    const auto document = QVXMLDocument::initWithContentsOfURL(url, error);
    return document ? completionSetsWithDocument(*document, completionProviders, error) : std::nullopt;
}

std::optional<QVCompletionSet::Sets> QVCompletionSet::completionSetsWithDocument(
    const QVXMLDocument &document, std::vector<std::shared_ptr<QVCompletionProvider>> *completionProviders,
    std::shared_ptr<NSError> *error) {
    Sets sets;
    std::vector<std::shared_ptr<QVCompletionProvider>> providers;
    std::size_t behaviorCount = 0;
    if (const auto root = document.rootElement()->lastElementForName(u"completions")) {
        for (const auto &element : root->elementsForName(u"set")) {
            const NSString name = element->valueForAttribute(u"name");
            if (name.length() == 0)
                continue;
            auto completions = completionsOfElement(*element, behaviorCount);
            if (!completions) {
                QVSetError(error, QVDefinitionError(NSString::stringWithFormat(
                                      u"Too many behaviors in completion set %@, {%ld, %ld}", name,
                                      element->lineNumber(), element->columnNumber())));
                return std::nullopt;
            }
            auto set = std::make_shared<QVCompletionSet>();
            set->setCompletions(std::move(completions));
            sets.insert_or_assign(name, std::move(set));
        }
        if (completionProviders)
            for (const auto &element : root->elementsForName(u"provider")) {
                auto provider = QVCompletionProvider::providerWithXMLElement(*element, error);
                if (!provider)
                    return std::nullopt;
                providers.push_back(std::move(provider));
            }
    }
    if (completionProviders)
        *completionProviders = std::move(providers);
    return sets;
}

QVCompletionSet::Sets QVCompletionSet::allCompletionSets() {
    const ReadGuard guard(registry().lock);
    return registry().sets;
}

std::shared_ptr<QVCompletionSet> QVCompletionSet::completionSetForName(const NSString &name) {
    QVParameterAssert(!name.isNull(), "name != nil");
    const ReadGuard guard(registry().lock);
    const auto found = registry().sets.find(name);
    return found != registry().sets.end() ? found->second : nullptr;
}

void QVCompletionSet::setCompletionSet(const std::shared_ptr<QVCompletionSet> &completionSet,
                                       const NSString &forName) {
    QVParameterAssert(!forName.isNull(), "name != nil");
    // What is replaced may be the last of its kind, and large: it goes when the lock is free again.
    std::shared_ptr<QVCompletionSet> replaced;
    const WriteGuard guard(registry().lock);
    auto &sets = registry().sets;
    if (const auto found = sets.find(forName); found != sets.end()) {
        replaced = std::move(found->second);
        sets.erase(found);
    }
    if (completionSet)
        sets.emplace(forName, completionSet);
}

std::shared_ptr<const QVCompletionSet::Completions> QVCompletionSet::completions() const {
    std::shared_ptr<const Completions> completions;
    std::shared_ptr<NSError> error;
    {
        const std::lock_guard guard(_completionsLock);
        if (!_completions && _completionsData) {
            if (const auto objects = NSKeyedUnarchiver::unarchivedArray(QVCompletion::codingClass(),
                                                                        _completionsData, &error)) {
                Completions unpacked;
                unpacked.reserve(objects->size());
                for (const auto &object : *objects)
                    if (auto completion = std::dynamic_pointer_cast<QVCompletion>(object))
                        unpacked.push_back(std::move(completion));
                _completions = std::make_shared<const Completions>(std::move(unpacked));
            }
            _completionsData = nullptr;
        }
        completions = _completions;
    }
    // A sink of the log may look at this set.
    if (error)
        NSLog(u"Error unarchiving completion set: %@, %@", *this, error);
    return completions ? completions : std::make_shared<const Completions>();
}

void QVCompletionSet::setCompletions(std::optional<Completions> completions) {
    auto copy = std::make_shared<const Completions>(std::move(completions).value_or(Completions()));
    const std::lock_guard guard(_completionsLock);
    _completions.swap(copy);
    _completionsData = nullptr;
}

const NSCodingClass &QVCompletionSet::codingClass() {
    static const NSCodingClass coding{u"QVCompletionSet", nullptr, []() -> std::shared_ptr<NSSecureCoding> {
                                          return std::make_shared<QVCompletionSet>();
                                      }};
    return coding;
}

void QVCompletionSet::encodeWithCoder(NSCoder &coder) const {
    std::shared_ptr<const Completions> completions;
    NSData data;
    {
        const std::lock_guard guard(_completionsLock);
        completions = _completions;
        data = _completionsData;
    }
    if (completions && !completions->empty())
        data = NSKeyedArchiver::archivedDataWithRootArray(
            std::vector<std::shared_ptr<const NSSecureCoding>>(completions->begin(), completions->end()));
    coder.encodeData(data, u"completionsData");
}

std::shared_ptr<NSSecureCoding> QVCompletionSet::initWithCoder(NSCoder &coder,
                                                               std::shared_ptr<NSSecureCoding> self) {
    const std::lock_guard guard(_completionsLock);
    _completionsData = coder.decodeData(u"completionsData");
    return self;
}

} // namespace quorvane
