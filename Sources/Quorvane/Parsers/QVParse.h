#pragma once

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/NSIndexSet.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/QVBlock.h"
#include "Quorvane/Matches/QVScopeMatch.h"
#include "Quorvane/Parsers/QVSyntaxHighlighting.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <set>
#include <unordered_set>

namespace quorvane {

class NSCharacterSet;
class NSMutableAttributedString;
class NSAttributedString;
class NSProgress;
class QVAttributeCache;
class QVCapture;
class QVCollection;
class QVFormatter;
class QVGrammar;
class QVParseDelegate;
class QVParseScopeTrace;
class QVParseSymbol;
class QVParseText;
class QVReparse;
class QVRegularExpression;
class QVRegularExpressionMatchContext;
class QVRememberedSearch;
class QVScope;
class QVScopeSymbolOptions;
class QVSimpleSelector;
class QVSymbolReaches;
class QVSymbolRelations;
class QVSyntax;
struct QVGroupsOfHit;
struct QVMatchingOutcome;
struct QVAnchoredSequence;
struct QVParseLine;
struct QVParsePass;
struct QVSearchContext;
struct QVSymbolEdit;

enum QVParseConcurrencyType : std::uint64_t {
    /// A concurrent queue of its own.
    QVParsePrivateQueueConcurrencyType = 0,
    QVParseMainQueueConcurrencyType = 1,
};

/// The parse of one document: a private copy of its text and the tree of matches, with the discipline of who
/// may look at them when. Readers run side by side, a writer alone; the document's owner writes edits,
/// queries read on any thread.
///
/// Everything but construction, access, cancelling and the settings must be called with access held, inside
/// one of the callbacks below, and no match may be kept past it.
class QV_EXPORT QVParse final : public NSObject, private QVSymbolMaker {
public:
    /// Capacity in units, 0 for the usual. A null syntax is a programming error.
    static std::shared_ptr<QVParse> initWithSyntax(std::shared_ptr<QVSyntax> syntax, NSUInteger capacity,
                                                   QVParseConcurrencyType concurrencyType);
    /// Always throws `NSInvalidArgumentException`.
    [[noreturn]] static std::shared_ptr<QVParse> init();
    ~QVParse() override;

    // Access. A callback runs at once, on the calling thread, when the caller is inside another callback of
    // this parse, or on the main thread with the main queue. A null callback is a programming error.

    void performReadingBlock(std::function<void()> block);
    void performReadingBlockAndWait(QVBlock<void()> block);
    /// Skips the callback if its turn comes later than `timeout` seconds from now or the parse was cancelled;
    /// completion, which may be null, gets whether it ran.
    void performReadingWithTimeout(double timeout, std::function<void()> block,
                                   std::function<void(bool)> completion);
    /// Answers whether the callback ran in time. One that began in time and ran on keeps the caller waiting
    /// until it is through, and counts as late all the same. A cancelled parse makes the caller wait out the
    /// time.
    bool performReadingWithTimeoutAndWait(double timeout, QVBlock<void()> block);
    void performWritingBlock(std::function<void()> block);
    void performWritingBlockAndWait(QVBlock<void()> block);
    /// The callback always runs to its end; the handler is called on a background thread if that takes longer
    /// than `timeout` seconds, which must be above 0.
    void performWritingWithTimeout(double timeout, std::function<void()> block,
                                   std::function<void()> expirationHandler);
    void performWritingWithTimeoutAndWait(double timeout, QVBlock<void()> block,
                                          std::function<void()> expirationHandler);

    /// Makes a running parse stop at its next step and throws its tree away behind it. Any thread.
    void cancelParsing();
    bool isCancelled() const { return _cancelled.load(std::memory_order_relaxed); }
    bool isParsing() const { return _parsing.load(std::memory_order_relaxed); }

    // Settings. Any thread, also while a parse runs, which takes them up as it goes on.

    QVParseConcurrencyType concurrencyType() const { return _concurrencyType; }
    const std::shared_ptr<QVSyntax> &syntax() const { return _syntax; }
    /// Not owned; null where there is none.
    std::shared_ptr<QVParseDelegate> delegate() const;
    void setDelegate(const std::shared_ptr<QVParseDelegate> &delegate);
    /// In columns.
    NSUInteger tabWidth() const { return _tabWidth.load(std::memory_order_relaxed); }
    void setTabWidth(NSUInteger tabWidth) { _tabWidth.store(tabWidth, std::memory_order_relaxed); }
    /// In units; no pattern runs on a longer line. 0 means no limit.
    NSUInteger maximumLineLength() const { return _maximumLineLength.load(std::memory_order_relaxed); }
    void setMaximumLineLength(NSUInteger length) {
        _maximumLineLength.store(length, std::memory_order_relaxed);
    }
    bool isPerformanceCollectionEnabled() const {
        return _performanceCollectionEnabled.load(std::memory_order_relaxed);
    }
    void setPerformanceCollectionEnabled(bool enabled) {
        _performanceCollectionEnabled.store(enabled, std::memory_order_relaxed);
    }
    /// What new parses start with. Any thread.
    static bool isGlobalPerformanceCollectionEnabled();
    static void setGlobalPerformanceCollectionEnabled(bool enabled);
    /// Whether searches are remembered along a line. On by default; off, every search is made afresh, which
    /// gives the same tree and is kept to compare with.
    bool remembersSearches() const { return _remembersSearches.load(std::memory_order_relaxed); }
    void setRemembersSearches(bool remembers) {
        _remembersSearches.store(remembers, std::memory_order_relaxed);
    }

    // Contents

    /// Good until the next writer.
    std::u16string_view string() const;
    QVScopeMatch *rootMatch() const { return _rootMatch.get(); }
    /// What each scope cost while performance collection was on.
    std::vector<std::shared_ptr<QVParseScopeTrace>> scopeTraces() const;
    /// The memory that the tree takes, in bytes, the lists of children not counted.
    std::size_t treeBytes() const;
    /// The room of the text's buffer, in units.
    NSUInteger stringCapacity() const;

    // Parsing

    /// Applies an edit to the text and brings the tree up to date. Answers the range of the new text whose
    /// tree was rebuilt, or `{NSNotFound, 0}` when cancelled. Write access. The progress block is never
    /// called.
    NSRange replaceCharactersInRange(NSRange range, std::u16string_view withString,
                                     QVBlock<void(double)> progressBlock);
    void clearAllMatches();
    /// The parse of a whole text leaves what its colours don't need: symbols, and the order by which edits
    /// move what is behind them. Symbols are made when first asked for, all of it before the next edit; who
    /// has time now, as behind showing the colours, finishes it here. Write access.
    void finishDeferredWork();

    /// The first old match, from the given one on in document order, that holds the location in its range or
    /// its end range or begins there; a region also on leaving its last child. For trees that an edit is at
    /// work on: what is marked as inserted, and ends of what is marked to be skipped, stand at places of the
    /// new text and are passed over. Null where there is none.
    static QVScopeMatch *matchAtLocation(NSUInteger location, QVScopeMatch *withDirtyMatchesStartingAtMatch);
    /// Moves everything behind a match, and the ends of the regions around it, by a change of the text's
    /// length; what is marked to be skipped stands there already. Moving something before the text's start is
    /// a programming error.
    static void bumpRangesBy(NSInteger delta, QVScopeMatch *afterMatch);
    /// From a position in the new text to one in the old.
    static NSUInteger positionForPositionInOriginalRange(NSUInteger position, NSRange editedRange,
                                                         NSInteger changeInLength);

    // Bracket depths

    bool shouldCalculateBracketDepths() const { return _shouldCalculateBracketDepths; }
    /// Whether each edit is followed by a count of the brackets in the whole document. Off at first. A change
    /// makes or drops the table at once. Write access.
    void setShouldCalculateBracketDepths(bool calculate);
    /// For each depth of nesting, the outermost first, where its opening and closing brackets stand. Each
    /// kind of bracket has depths of its own: a parenthesis in square brackets is outermost too. Nothing
    /// while the feature is off.
    const std::optional<std::vector<NSIndexSet>> &bracketLocationsByDepth() const {
        return _bracketLocationsByDepth;
    }
    void setBracketLocationsByDepth(std::optional<std::vector<NSIndexSet>> locations);

    // Syntax highlighting, with read access but for the class-level forms

    /// Reports what the text in a range looks like, from the outside in, beginning with the regions around
    /// its start. Default attributes are those of the document's plain text: fonts are derived from theirs,
    /// and embedded languages start from them.
    void enumerateAttributesInRange(NSRange range, const NSAttributes &defaultAttributes,
                                    QVAttributesBlock usingBlock) const;
    /// The same from a given match on, which must stand in the tree; null reports nothing.
    void enumerateAttributesStartingWithMatch(const QVScopeMatch *match, NSRange range,
                                              const NSAttributes &defaultAttributes,
                                              QVAttributesBlock usingBlock) const;
    /// The text of a range with its attributes. Throws `NSRangeException` when the range leaves the text.
    std::shared_ptr<NSMutableAttributedString>
    attributedStringFromRange(NSRange range, const NSAttributes &defaultAttributes) const;
    /// A text with its attributes, by a parse that is made for it. Waits until that is through; a parse that
    /// takes longer than `timeout` seconds, which must be above 0, is called off, and the text comes with the
    /// default attributes. Any thread.
    static std::shared_ptr<NSAttributedString>
    attributedStringFromString(const NSString &string, std::shared_ptr<QVSyntax> syntax,
                               const NSAttributes &defaultAttributes, double timeout = 5.0);
    /// The same on a queue of its own, where the handler runs too. Cancelling the progress stops the parse
    /// and keeps the handler from being called. Any thread.
    static std::shared_ptr<NSProgress>
    attributedStringFromString(const NSString &string, std::shared_ptr<QVSyntax> syntax,
                               const NSAttributes &defaultAttributes,
                               std::function<void(std::shared_ptr<NSAttributedString>)> completionHandler);
    /// The attributes that a consumer clears before it applies defaults.
    static const std::set<NSAttributeKey> &attributesAffectedBySyntaxHighlighting();

    // Symbols: the document's named things, in the order of their matches. They are brought up to date behind
    // every edit; these are the steps of that, with write access.

    /// Read access. Those of a text that was parsed as a whole are made when first asked for.
    const std::vector<std::shared_ptr<QVParseSymbol>> &symbols() const;
    /// Makes the symbols of the matches in a range that was just parsed, walking on from a match before it,
    /// and brings all relations up to date. The symbols of the matches that went away are gone already.
    void symbolicateMatchesInRange(NSRange range, QVMatch *startingWithMatch);
    /// Finds anew, for the whole list, where symbols and their contexts begin and end, which context holds
    /// which symbol, and what they are called. Logs where a context begins behind what it holds.
    void updateSymbolRanges();
    /// Puts a symbol into a context, null for none, whose options may make a local symbol one of another
    /// type.
    static void updateSymbol(QVParseSymbol &symbol, QVParseSymbol *forParent);
    /// Finds a symbol's name, by its own options where none are given. Leaves the name as it is where the
    /// rules find none; logs where the match leaves the text.
    void associateNameForSymbol(QVParseSymbol &symbol, const QVScopeSymbolOptions *options) const;
    /// New symbols for the arguments of a function, which become those of their matches.
    std::vector<std::shared_ptr<QVParseSymbol>> argumentsForSymbol(const QVParseSymbol &symbol) const;
    /// Where a comment is a bookmark: one whose content begins, after blanks, with an exclamation mark.
    /// `{NSNotFound, 0}` for any other; the optional name range also where a bookmark has no name.
    NSRange bookmarkRangeForMatch(const QVScopeMatch *match, NSRange *nameRange) const;
    /// The part of a symbol, not of those inside it, that has a lexical class or fits a selector, both of
    /// which may be null; `{NSNotFound, 0}` where there is none.
    static NSRange rangeWithinSymbol(const QVParseSymbol &symbol, const NSString &lexicalClass,
                                     const QVSimpleSelector *selector);
    /// The words of a text with a blank between each two; null where it has none.
    static NSString trimAndCleanUpSymbolName(std::u16string_view name);
    /// What a formatter makes of a symbol.
    NSString stringForFormatter(const QVFormatter &formatter, const QVParseSymbol &withinSymbol) const;

    // Documentation comments, with read access

    /// The comments that belong to a symbol of this type with this match, in the order of the search: with
    /// the usual search the nearest comes first, whatever comes first in the text.
    std::vector<const QVScopeMatch *> documentationCommentMatchesForSymbolMatch(const QVScopeMatch *match,
                                                                                NSUInteger type) const;
    /// What a comment says, without the indentation that all its lines share.
    NSString documentationCommentFromMatch(const QVScopeMatch *match) const;
    /// What all comments of a symbol say; null where it has none.
    NSString documentationCommentForSymbolMatch(const QVScopeMatch *match, NSUInteger type) const;

    // Symbolic queries, with read access; what they answer is good until the next edit. An identifier is
    // known by its text.

    /// The innermost symbol that holds a location, none of those that begin there; null where there is none.
    std::shared_ptr<QVParseSymbol> deepestSymbolContextContainingLocation(NSUInteger location) const;
    /// The symbol that defines the identifier at a location, null where there is none. The optional range is
    /// that of the identifier, `{NSNotFound, 0}` where none stands; the optional context is the symbol inside
    /// which the definition is seen, null for the whole document.
    std::shared_ptr<QVParseSymbol>
    symbolDefiningIdentifierAtLocation(NSUInteger location, NSRange *identifierRange,
                                       std::shared_ptr<QVParseSymbol> *context) const;
    /// Where else the identifier at a location stands, as far as its definition is seen. The lowest bit of
    /// the options that is set says in what to look: 1 for the innermost type, 2 for the innermost type or
    /// function, 4 for the innermost symbol of any kind; the whole document without any.
    std::vector<NSRange> rangesForOccurrancesOfIdentifierAtLocation(NSUInteger location, NSUInteger options,
                                                                    NSRange *identifierRange) const;
    /// The symbol inside which another one is seen; null for the whole document.
    std::shared_ptr<QVParseSymbol> contextForSymbol(const QVParseSymbol &symbol) const;
    /// The identifier that begins with a match or is around its first part; null where there is none.
    static const QVMatch *identifierMatchAtMatch(const QVMatch *match);
    std::shared_ptr<QVParseSymbol>
    symbolDefiningIdentifierAtMatch(const QVMatch *match, std::shared_ptr<QVParseSymbol> *context) const;

    // Location queries, with read access

    /// The match at a location, or the root match. The optional syntax is the one in force there.
    QVMatch *matchAtLocation(NSUInteger location, bool includeCaptures,
                             std::shared_ptr<QVSyntax> *syntax) const;
    /// The match before a location, out of the blanks: the region that a new character would belong to.
    QVMatch *matchPrecedingLocation(NSUInteger location, bool includeCaptures,
                                    std::shared_ptr<QVSyntax> *syntax) const;
    /// The innermost syntax; a location of `NSNotFound` asks for the one around the match.
    std::shared_ptr<QVSyntax> syntaxForMatch(const QVMatch *match, NSUInteger location) const;
    /// The syntaxes in force, from the innermost to the document's; a region whose syntax was not found
    /// reports null.
    void enumerateEffectiveSyntaxesForMatch(
        const QVMatch *match, NSUInteger location,
        QVBlock<void(const std::shared_ptr<QVSyntax> &syntax, const QVMatch *match, bool &stop)> usingBlock)
        const;
    /// The range of the first unit that belongs to the set, `{NSNotFound, 0}` where there is none.
    NSRange rangeOfUTF16CharacterFromSet(const NSCharacterSet &set, NSRange range) const;
    /// Binary search down a list of children and theirs; null where nothing stands at the location.
    static QVScopeMatch *fastMatchAtLocation(NSUInteger location, QVSubmatches withMatches);

    /// For the tests of handing a parse a grammar by hand.
    const std::shared_ptr<QVScope> &rootScope() const { return _rootScope; }

    std::u16string_view className() const override { return u"QVParse"; }

private:
    friend struct QVParsePass;
    friend class QVReparse;
    friend class QVSymbolRelations;
    QVParse(std::shared_ptr<QVSyntax> syntax, NSUInteger capacity, QVParseConcurrencyType concurrencyType);
    std::shared_ptr<QVParse> self();

    // Access
    bool isOnQueue() const;
    /// As `performWritingBlock`, but never inside of a parse that is under way.
    void performWritingBlockBehindParse(std::function<void()> block);
    void runWriter(double timeout, QVBlock<void()> block, const std::function<void()> &expirationHandler);
    void packagesWillUnload();

    // Regions and lines
    struct Plan;
    NSRange parseWholeText();
    void deferWork();
    void forgetDeferredWork();
    void makeSymbols() override;
    void parseRecursivelyStartingWithinMatch(QVScopeMatch *match, QVScopeMatchArray &intoTree, NSRange range,
                                             NSUInteger insertionIndex);
    const std::vector<std::shared_ptr<QVScope>> &scopeListForMatch(QVScopeMatch *match);
    NSRange parseRecursivelyIntoStartMatch(QVScopeMatch *startMatch, NSRange parseRange);
    QVParseLine lineAtLocation(NSUInteger location, NSUInteger end);
    bool isTooLong(const QVParseLine &line) const;
    QVScopeMatchReference newMatch(const QVScope *scope, NSRange range) const;
    /// Of a scope without captures, children and symbol.
    inline QVScopeMatchReference newPlainMatch(const QVScope *scope, NSRange range) const;

    // Unanchored matching
    struct Step;
    struct Stream;
    using Scopes = std::vector<std::shared_ptr<QVScope>>;
    void parseUnanchoredStartingWithinMatch(QVScopeMatch *match, QVScopeMatchArray &intoTree,
                                            const Scopes &scopes, NSRange range);
    Step enterRegion(QVScopeMatchArray &intoTree, NSUInteger end);
    Step matchLinePlainly(QVScopeMatch *match, QVScopeMatchArray &intoTree, const Scopes &scopes,
                          const QVParseLine &line, NSUInteger end, NSUInteger cutoffStart);
    void matchUnanchoredAgainstCutoff(const QVScope &scope, QVScopeMatch *parentMatch,
                                      QVScopeMatchArray &intoArray, NSRange parseRange,
                                      NSUInteger cutoffStart);
    void matchUnanchoredAgainstScope(const std::shared_ptr<QVScope> &scope, const QVScope &parentScope,
                                     QVScopeMatchArray &intoArray, NSRange parseRange,
                                     std::unordered_set<const QVScope *> &includesAttempted);
    void matchUnanchoredAgainstResolvedScope(const QVScope &scope, const QVScope &parentScope,
                                             QVScopeMatchArray &intoArray, NSRange parseRange);
    static NSUInteger indexForAddingMatchToUnanchoredLineMatches(const QVScopeMatchArray &matches,
                                                                 const QVScope &withScope, NSRange range,
                                                                 bool isEnd, NSUInteger previousIndex);
    NSUInteger processUnanchoredLineMatches(QVScopeMatchArray &matches, NSRange withLineRange) const;
    NSUInteger processUnknownTextRange(NSRange range, QVScopeMatchArray &intoUnanchoredLineMatches,
                                       NSUInteger atIndex) const;

    struct Level;
    Level &beginLevel(QVScopeMatch *match, const Scopes &scopes, NSUInteger cutoffStart);
    void gatherEndings(Level &level);
    Step matchLineRemembering(Level &level, QVScopeMatchArray &intoTree, const QVParseLine &line,
                              NSUInteger end);
    void startPart(Level &level, bool tabled, const QVParseLine &line, const QVSearchContext &context);
    /// The first entry of a plan that may hit at the line's start, where those that can only hit there are
    /// asked together; what comes before it among them doesn't.
    static std::uint32_t firstLineStarter(Plan &plan, const QVParseLine &line,
                                          const QVSearchContext &context);
    static void verifyNoHit(const QVRegularExpression &expression, const QVParseLine &line,
                            const QVSearchContext &context);
    /// The best of what the level's streams find from `open` on; null where they have nothing left.
    const Stream *bestOfStreams(Level &level, NSUInteger open, const QVParseLine &line,
                                const QVSearchContext &context);
    Plan &planForScopes(const Scopes &scopes, const QVScope &parentScope);
    const void *planKeyForScopes(const Scopes &scopes, bool isRoot) const;
    void planLevel(Level &level);
    bool canWalkAlongLine(const Level &level, const QVParseLine &line) const;
    bool findCandidate(Stream &stream, NSUInteger from, const QVParseLine &line, const QVScope &parentScope,
                       const QVSearchContext &context);
    /// Reports all empty hits on the line at once, as the plain way does, which looks at all of them.
    void reportEmptyHits(Stream stream, const QVParseLine &line, const QVSearchContext &context);
    QVScopeMatchReference matchForStream(const Stream &stream, const QVParseLine &line);
    std::shared_ptr<QVRememberedSearch>
    rememberedSearch(const std::shared_ptr<const QVRegularExpression> &expression);

    // Accepting hits
    void logEmptyMatch(const QVScope &scope);
    /// Whether the scope has an open region that begins right here.
    bool isOpenAtPlace(const QVScope &scope, NSUInteger location) const;
    bool acceptsHit(const QVScope &scope, const QVScope &parentScope, NSRange hit, NSUInteger rangeStart);
    QVScopeMatchReference matchForHit(const QVScope &scope,
                                      const std::shared_ptr<const QVRegularExpression> &expression,
                                      const QVGroupsOfHit &groups, NSRange hit, bool anchored);
    QVScopeMatchReference matchForCutoffHit(const QVScope &scope, const QVRegularExpression &expression,
                                            const QVGroupsOfHit &groups, NSRange hit);
    void noteOutcome(const QVScope &scope, const QVMatchingOutcome &outcome);
    static bool keepsStartResult(const QVScope &scope);
    void setCapturesOfHit(QVScopeMatch &match, const std::vector<std::shared_ptr<QVCapture>> &captures,
                          const QVRegularExpression &expression, const QVGroupsOfHit &groups);

    // What is tried
    static bool canBeCandidate(const QVScope &scope, bool inRoot, bool isTemplate);
    const Scopes *templateScopesToTry() const;
    template <typename Body> void forEachCandidateScope(const Scopes &scopes, bool inRoot, Body body);
    template <typename Body> void forEachCutoff(Body body);
    template <typename Attempt> void traceAttempt(const QVScope &scope, Attempt attempt);

    // Anchored matching
    void parseAnchoredStartingWithinMatch(QVScopeMatch *match, QVScopeMatchArray &intoTree,
                                          const Scopes &scopes, NSRange range, NSUInteger insertionIndex);
    QVScopeMatchReference matchAnchoredAgainstCutoff(const QVScope &scope, QVScopeMatch *parentMatch,
                                                     NSRange parseRange);
    QVScopeMatchReference matchAnchoredAgainstScope(const std::shared_ptr<QVScope> &scope,
                                                    const QVScope &parentScope, NSRange parseRange,
                                                    std::unordered_set<const QVScope *> &includesAttempted);
    QVScopeMatchReference matchAnchoredAgainstResolvedScope(const QVScope &scope, const QVScope &parentScope,
                                                            NSRange parseRange);
    QVScopeMatchReference matchAnchoredStep(QVScopeMatch *match, QVAnchoredSequence &sequence, NSRange rest);
    QVScopeMatchReference matchAnchoredAgainstAncestors(NSRange rest);
    /// Whether this anchored region was tried at this place before and came to nothing; then the try is a
    /// miss.
    bool cameToNothing(const QVScope &scope, NSUInteger location);
    void noteRegionThatCameToNothing(const QVScope &scope, NSUInteger location);
    QVMatchingOutcome attemptAnchored(const std::shared_ptr<const QVRegularExpression> &expression,
                                      NSRange parseRange);

    // Ends and includes
    std::shared_ptr<const QVRegularExpression> regularExpressionForCutoff(const QVScope &scope,
                                                                          QVScopeMatch *parentMatch);
    std::shared_ptr<QVCollection> resolvedCollectionForIncludeScope(const std::shared_ptr<QVScope> &scope);
    const Scopes &resolvedScopesForIncludeScope(const std::shared_ptr<QVScope> &scope,
                                                const QVScope &parentScope);
    void pinGrammar(const std::shared_ptr<QVGrammar> &grammar);

    // Diagnostics
    void recordPerformanceOfScope(const QVScope &scope, double timeInterval, bool success);
    void logDiagnosticMessage(const NSString &message, NSUInteger level);

    // Syntax highlighting
    std::unique_ptr<QVAttributeCache> takeAttributeCache(const NSAttributes &defaultAttributes) const;
    void keepAttributeCache(std::unique_ptr<QVAttributeCache> cache) const;
    /// Puts the attributes of a range into a string that stands for just this range.
    void paintAttributes(NSMutableAttributedString &string, NSRange range,
                         const NSAttributes &defaultAttributes) const;

    // Symbols
    using Symbols = std::vector<std::shared_ptr<QVParseSymbol>>;
    std::shared_ptr<QVParseSymbol> symbolForMatch(QVScopeMatch *match);
    std::shared_ptr<QVParseSymbol> bookmarkForMatch(QVScopeMatch *match);
    bool passesFilters(const QVScopeMatch *match, const QVScopeSymbolOptions &options);
    void findSyntaxOfSymbol(QVParseSymbol &symbol) const;
    void captureArgumentsOfSymbol(QVParseSymbol &symbol) const;
    void captureArgumentsOfSymbol(QVParseSymbol &symbol, NSRange parsedRange,
                                  const QVMatch *startingWithMatch, const QVSymbolEdit &edit) const;
    static void verifyArgumentsOfSymbol(const QVParseSymbol &symbol);
    std::shared_ptr<QVParseSymbol> argumentForMatch(QVScopeMatch *match, const QVParseSymbol &owner) const;
    bool updateBookmark(QVParseSymbol &symbol) const;
    void symbolicateMatchesInRange(NSRange range, QVMatch *startingWithMatch, QVSymbolEdit *edit);
    void insertSymbols(Symbols made, NSUInteger location, QVSymbolEdit &edit);
    void updateSymbolsBehindEdit(NSRange parsedRange, QVSymbolEdit &edit);
    /// The first symbol that begins at a location or behind it, or the count.
    std::size_t indexOfSymbolsAt(NSUInteger location) const;
    std::size_t indexOfSymbol(const QVParseSymbol &symbol) const;
    void renewNameOfSymbol(QVParseSymbol &symbol) const;
    void verifyRelations();
    NSString textInRange(NSRange range) const;
    void forgetSymbols();
    void verifySymbols() const;

    void updateBracketDepths();

    const QVParseConcurrencyType _concurrencyType;
    dispatch_queue_t _updateQueue;
    std::shared_ptr<QVSyntax> _syntax;
    std::shared_ptr<QVGrammar> _grammar;
    mutable std::mutex _delegateMutex;
    std::weak_ptr<QVParseDelegate> _delegate;
    std::unique_ptr<QVParseText> _text;
    std::shared_ptr<QVScope> _rootScope;
    std::shared_ptr<QVScope> _unknownScope;
    std::shared_ptr<QVScope> _whitespaceScope;
    std::shared_ptr<QVScope> _newlineScope;
    std::unique_ptr<QVRegularExpressionMatchContext> _regexMatchContext;
    /// Declared before the tree, whose nodes live in it.
    QVMatchPool::Owner _matchPool;
    QVScopeMatchReference _rootMatch;
    /// How far outside of its match, in units, a capture stands at most.
    NSUInteger _captureReach = 0;
    Symbols _symbols;
    std::recursive_mutex _symbolsMutex;
    bool _isMakingSymbols = false;
    std::unique_ptr<QVSymbolReaches> _symbolReaches;
    /// The text's as of the last edit: where symbols end that are open.
    NSUInteger _symbolsTextLength = 0;
    /// What contexts of indented lines were measured with.
    NSUInteger _symbolsTabWidth = 0;
    bool _shouldCalculateBracketDepths = false;
    std::optional<std::vector<NSIndexSet>> _bracketLocationsByDepth;
    mutable std::mutex _attributeCacheMutex;
    /// What was resolved by the last walk that coloured text; null while one is under way.
    mutable std::unique_ptr<QVAttributeCache> _attributeCache;
    /// The stacks and caches of the parser proper.
    std::unique_ptr<QVParsePass> _pass;
    std::unordered_map<const QVScope *, std::shared_ptr<QVParseScopeTrace>> _scopesToTraces;
    NSNotificationToken _unloadToken;
    std::atomic<bool> _parsing = false;
    std::atomic<bool> _cancelled = false;
    std::atomic<bool> _performanceCollectionEnabled;
    std::atomic<bool> _remembersSearches = true;
    std::atomic<NSUInteger> _tabWidth = 4;
    std::atomic<NSUInteger> _maximumLineLength = 0;
};

} // namespace quorvane
