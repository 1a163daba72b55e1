#pragma once

#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Completions/QVCompletionSet.h"

namespace quorvane {

/// All that one completions file defines, as one object for an archive.
class QVCompletionsArchive final : public NSSecureCoding {
public:
    QVCompletionSet::Sets sets;
    std::vector<std::shared_ptr<QVCompletionProvider>> providers;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    /// Null where either list is missing.
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;
};

} // namespace quorvane
