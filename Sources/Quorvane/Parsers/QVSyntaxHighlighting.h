#pragma once

#include "Platform/Foundation/NSAttributes.h"
#include "Platform/Foundation/QVBlock.h"

#include <memory>

namespace quorvane {

class QVAttributeCache;
class QVMatch;
class QVParse;
class QVScope;
class QVScopeMatch;
class QVSyntax;

// How a stretch of the match tree becomes text attributes. Styles were attached to scopes and captures
// before, so nothing looks for selectors here. The walk paints from the outside in: a region comes first,
// over all of its extent, then what it holds, which overrides it.
//
// Everything here needs read access to the parse.

/// What is to be done with reported attributes.
enum QVAttributeFlags : std::uint64_t {
    /// They are added over the range.
    QVAttributeFlagsAdd = 0,
    /// They are the defaults over the content of an embedded language, and all that highlighting has set
    /// before goes.
    QVAttributeFlagsRegionDefault = 1,
    /// All that highlighting has set before goes, the defaults come back, and these are added.
    QVAttributeFlagsReset = 2,
};

/// Gets a report. The attributes are shared values, so keeping them is copying a pointer. Setting the flag
/// ends the walk.
using QVAttributesBlock =
    QVBlock<void(const NSAttributes &attributes, NSRange range, const std::shared_ptr<QVSyntax> &syntax,
                 std::uint64_t flags, bool &stop)>;

/// Reports one match of a scope, cut down to the range: itself, then, where captures are wanted, each of its
/// styled captures, then the defaults over its content if it embeds a language. `syntax` is the one in force
/// around the match. The scope, which need not be the match's own, tells the lexical class, whether what was
/// set before goes, and whether a language is embedded; the style is that of the match. The scratch resolves
/// styles over the default attributes that it was made with. Answers false when the block has set the flag.
QV_EXPORT bool QVParseEnumerateAttributesForMatchUsingBlock(
    const QVParse &parse, const std::shared_ptr<QVSyntax> &syntax, NSRange range, const QVScopeMatch *match,
    const QVScope *scope, bool captures, QVAttributeCache &scratch, QVAttributesBlock block);

/// Reports a match and all below it, unless it is text that nothing matched, blanks or a line's end. Answers
/// false when the block has set the flag.
QV_EXPORT bool QVParseEnumerateAttributesForMatchTreeUsingBlock(const QVParse &parse,
                                                                const std::shared_ptr<QVSyntax> &syntax,
                                                                NSRange range, const QVScopeMatch *match,
                                                                bool captures, QVAttributeCache &scratch,
                                                                QVAttributesBlock block);

/// Adds what the resolved style of a match's scope or capture says; nothing where there is none.
QV_EXPORT void QVParseResolveStyleAttributesForMatch(const QVMatch *match, NSMutableAttributes &attributes,
                                                     const NSAttributes &defaultAttributes);

} // namespace quorvane
