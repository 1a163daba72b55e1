#pragma once

#include "Platform/Foundation/NSCoder.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Packages/QVLoadable.h"

#include <mutex>

namespace quorvane {

class NSError;
class QVCompletion;
class QVCompletionProvider;
class QVXMLDocument;

/// A named list of ready-made completions, as packages bring them; providers offer sets by name. A set out of
/// an archive stays a blob until somebody first asks for its completions, so that loading a package costs
/// nothing for languages that nobody edits. Any thread.
class QV_EXPORT QVCompletionSet final : public QVLoadable, public NSSecureCoding {
public:
    using Completions = std::vector<std::shared_ptr<QVCompletion>>;
    using Sets = std::map<NSString, std::shared_ptr<QVCompletionSet>>;

    /// The sets of a completions file by name, none for a file of another kind; of two sets of one name the
    /// later counts. Empty, with an error, when the file can't be read or is no XML (the error has its line
    /// and column), when its behaviours come to more than `QVLimits.h` allows, and, if providers are asked
    /// for, when one of them is no good. Providers that nobody asks for are not read.
    static std::optional<Sets> completionSetsWithContentsOfURL(
        const NSURL &url, std::vector<std::shared_ptr<QVCompletionProvider>> *completionProviders = nullptr,
        std::shared_ptr<NSError> *error = nullptr);
    /// The same for a document at hand.
    static std::optional<Sets> completionSetsWithDocument(
        const QVXMLDocument &document,
        std::vector<std::shared_ptr<QVCompletionProvider>> *completionProviders = nullptr,
        std::shared_ptr<NSError> *error = nullptr);

    /// The sets that are loaded, as they stand now.
    static Sets allCompletionSets();
    /// Null for an unknown name; a null name is asserted.
    static std::shared_ptr<QVCompletionSet> completionSetForName(const NSString &name);
    /// Null removes the entry; a null name is asserted.
    static void setCompletionSet(const std::shared_ptr<QVCompletionSet> &completionSet,
                                 const NSString &forName);

    /// The completions as they stand now, never null. The first call unpacks what came from an archive; data
    /// that can't be unpacked is logged and dropped, and tried no second time.
    std::shared_ptr<const Completions> completions() const;
    /// An empty optional is as good as an empty list.
    void setCompletions(std::optional<Completions> completions);

    std::u16string_view className() const override { return u"QVCompletionSet"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    /// Completions that are still packed are written as they are.
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    mutable std::mutex _completionsLock;
    /// Null until asked for.
    mutable std::shared_ptr<const Completions> _completions;
    mutable NSData _completionsData;
};

} // namespace quorvane
