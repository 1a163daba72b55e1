#include "Quorvane/Parsers/QVParse.h"

#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSLog.h"
#include "Quorvane/Matches/QVMatchPositions.h"
#include "Quorvane/Packages/QVLoadable.h"
#include "Quorvane/Parsers/QVAttributeCache.h"
#include "Quorvane/Parsers/QVParseDelegate.h"
#include "Quorvane/Parsers/QVParsePass.h"
#include "Quorvane/Parsers/QVParseScopeTrace.h"
#include "Quorvane/Parsers/QVParseSymbol.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/Parsers/QVSymbolReaches.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

namespace quorvane {

namespace {

std::atomic<bool> globalPerformanceCollectionEnabled = false;

} // namespace

bool QVParse::isGlobalPerformanceCollectionEnabled() {
    return globalPerformanceCollectionEnabled.load(std::memory_order_relaxed);
}

void QVParse::setGlobalPerformanceCollectionEnabled(bool enabled) {
    globalPerformanceCollectionEnabled.store(enabled, std::memory_order_relaxed);
}

std::shared_ptr<QVParse> QVParse::initWithSyntax(std::shared_ptr<QVSyntax> syntax, NSUInteger capacity,
                                                 QVParseConcurrencyType concurrencyType) {
    QVParameterAssert(syntax != nullptr, "syntax != nil");
    if (!syntax)
        return nullptr;
    const std::shared_ptr<QVParse> parse(new QVParse(std::move(syntax), capacity, concurrencyType));
    // Weak: observing must not keep the parse alive, nor call one that is going.
    parse->_unloadToken = NSNotificationCenter::defaultCenter().addObserver(
        QVLoadableWillUnloadPackagesNotification, nullptr,
        [weak = std::weak_ptr(parse)](const NSNotification &) {
            if (const auto observer = weak.lock())
                observer->packagesWillUnload();
        });
    return parse;
}

std::shared_ptr<QVParse> QVParse::init() {
    throw NSException(NSInvalidArgumentException,
                      u"Must be initialized using initWithSyntax:capacity:concurrencyType:");
}

QVParse::QVParse(std::shared_ptr<QVSyntax> syntax, NSUInteger capacity,
                 QVParseConcurrencyType concurrencyType)
    : _concurrencyType(concurrencyType), _syntax(std::move(syntax)), _grammar(_syntax->grammar()),
      _text(std::make_unique<QVParseText>(capacity)),
      _regexMatchContext(std::make_unique<QVRegularExpressionMatchContext>()),
      _matchPool(QVMatchPool::create()), _symbolReaches(std::make_unique<QVSymbolReaches>()),
      _pass(std::make_unique<QVParsePass>()),
      _performanceCollectionEnabled(isGlobalPerformanceCollectionEnabled()) {
    if (concurrencyType == QVParseMainQueueConcurrencyType) {
        _updateQueue = dispatch_get_main_queue();
    } else {
        _updateQueue =
            dispatch_queue_create("com.tarnwell.quorvane.parse.private", DISPATCH_QUEUE_CONCURRENT);
        dispatch_queue_set_specific(_updateQueue, this, this);
    }
    const auto synthetic = [this](QVScopeType type, std::u16string_view format) {
        return QVScope::scopeWithType(type, _syntax, NSString::stringWithFormat(format, _syntax->name()),
                                      nullptr, nullptr);
    };
    _rootScope = synthetic(QVScopeTypeRoot, u"%@.root");
    if (_grammar)
        _rootScope->setSharedSubscopes(_grammar->scopes());
    _unknownScope = synthetic(QVScopeTypeUnknown, u"%@.unknown");
    _whitespaceScope = synthetic(QVScopeTypeWhitespace, u"%@.whitespace");
    _newlineScope = synthetic(QVScopeTypeNewline, u"%@.newline");
    _rootMatch = QVScopeMatch::initWithScope(_rootScope.get(), *_matchPool);
}

QVParse::~QVParse() {
    // Matches that somebody holds ask nobody any more.
    _matchPool->setSymbolMaker(nullptr);
    forgetSymbols();
}

std::shared_ptr<QVParse> QVParse::self() { return std::static_pointer_cast<QVParse>(shared_from_this()); }

std::u16string_view QVParse::string() const { return _text->view(); }
NSUInteger QVParse::stringCapacity() const { return _text->capacity(); }
std::size_t QVParse::treeBytes() const { return _matchPool->reservedBytes(); }

std::shared_ptr<QVParseDelegate> QVParse::delegate() const {
    const std::lock_guard guard(_delegateMutex);
    return _delegate.lock();
}

void QVParse::setDelegate(const std::shared_ptr<QVParseDelegate> &delegate) {
    const std::lock_guard guard(_delegateMutex);
    _delegate = delegate;
}

void QVParse::clearAllMatches() {
    forgetSymbols();
    _rootMatch->setSubmatches(nullptr);
    forgetDeferredWork();
    _captureReach = 0;
    setBracketLocationsByDepth(std::vector<NSIndexSet>());
    // Nothing of other syntaxes' grammars is left in the tree; what comes next resolves them as a first parse
    // would.
    _pass->forgetResolvedScopes();
    _pass->pinnedGrammars.clear();
}

void QVParse::packagesWillUnload() {
    performWritingBlockBehindParse([parse = self()] {
        parse->_pass->forgetResolvedScopes();
        // Known by their addresses, which scopes of other packages may get next.
        parse->_pass->scopesWithLoggedErrors.clear();
        parse->_pass->includesWithLoggedCycles.clear();
    });
}

void QVParse::pinGrammar(const std::shared_ptr<QVGrammar> &grammar) {
    auto &pinned = _pass->pinnedGrammars;
    if (grammar && grammar != _grammar && std::find(pinned.begin(), pinned.end(), grammar) == pinned.end())
        pinned.push_back(grammar);
}

std::vector<std::shared_ptr<QVParseScopeTrace>> QVParse::scopeTraces() const {
    std::vector<std::shared_ptr<QVParseScopeTrace>> traces;
    traces.reserve(_scopesToTraces.size());
    for (const auto &[scope, trace] : _scopesToTraces)
        traces.push_back(trace);
    return traces;
}

void QVParse::recordPerformanceOfScope(const QVScope &scope, double timeInterval, bool success) {
    std::shared_ptr<QVParseScopeTrace> &trace = _scopesToTraces[&scope];
    if (!trace) {
        trace = std::make_shared<QVParseScopeTrace>();
        trace->setScope(std::static_pointer_cast<const QVScope>(scope.shared_from_this()));
    }
    trace->setTotalTimeInterval(trace->totalTimeInterval() + timeInterval);
    if (success)
        trace->setSuccessCount(trace->successCount() + 1);
    else
        trace->setFailureCount(trace->failureCount() + 1);
}

void QVParse::logDiagnosticMessage(const NSString &message, NSUInteger level) {
    const auto delegate = this->delegate();
    if (!delegate || !delegate->parseLogDiagnosticMessage(*this, message, level))
        NSLog(u"%@", message);
}

void QVParse::noteOutcome(const QVScope &scope, const QVMatchingOutcome &outcome) {
    if (outcome.kind != QVMatchingOutcome::Error || !_pass->scopesWithLoggedErrors.insert(&scope).second)
        return;
    logDiagnosticMessage(
        NSString::stringWithFormat(u"Error matching scope: %@, %@", scope.name(),
                                   QVRegularExpression::stringForPCRE2ErrorCode(outcome.errorCode)),
        9);
}

} // namespace quorvane
