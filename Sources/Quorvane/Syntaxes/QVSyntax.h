#pragma once

#include "Platform/Foundation/NSCoder.h"
#include "Quorvane/Packages/QVLoadable.h"
#include "Quorvane/Scopes/QVScope.h"

#include <mutex>
#include <thread>

namespace quorvane {

class NSCharacterSet;
class NSError;
class NSRegularExpression;
class NSURL;
class QVCompletionProvider;
class QVDetector;
class QVGrammar;
class QVSymbolDocumentationBehavior;
class QVSyntaxSurroundingPair;
class QVXMLDocument;

/// The name of the syntax for text that no other fits.
inline constexpr const char16_t *QVSyntaxIdentifierPlainText = u"plain-text";

enum QVSyntaxType : std::uint64_t {
    QVSyntaxTypeUnknown = 0,
    QVSyntaxTypeMarkup = 1,
    QVSyntaxTypeStylesheet = 2,
    QVSyntaxTypeScript = 3,
    QVSyntaxTypeCompiled = 4,
    QVSyntaxTypeStructured = 5,
};
/// The number of a word, compared exactly; 0 for any other text.
QV_EXPORT QVSyntaxType QVSyntaxTypeFromString(const NSString &string);
/// The word of a number, "unknown" for a strange one.
QV_EXPORT NSString QVSyntaxTypeToString(NSUInteger syntaxType);

enum QVSymbolLocalScopeBehavior : std::uint64_t {
    QVSymbolLocalScopeBehaviorNone = 0,
    /// Local symbols are seen in the construct that holds them.
    QVSymbolLocalScopeBehaviorWithinConstruct = 1,
};

/// When a second symbol of a name counts as the first one again.
enum QVSymbolRedefinitionBehavior : std::uint64_t {
    QVSymbolRedefinitionBehaviorDistinct = 0,
    QVSymbolRedefinitionBehaviorWithinConstruct = 1,
    QVSymbolRedefinitionBehaviorNonDistinct = 2,
};

/// What the engine knows about one language: how its files are told, which characters and brackets it uses,
/// how it indents, comments and documents, and a grammar. A package brings syntaxes; a process-wide registry
/// has them by name.
///
/// A syntax is filled once, when it is read from a file or an archive, and not changed afterwards, but for
/// its completion providers, which packages add and take away. The grammar of an archived syntax stays a
/// block of bytes until somebody asks for it; then it is unpacked and connected, once, by whichever thread
/// comes first.
class QV_EXPORT QVSyntax final : public QVLoadable, public NSSecureCoding {
public:
    // The registry; any thread

    static std::map<NSString, std::shared_ptr<QVSyntax>> allSyntaxes();
    /// Those that are not for embedding alone.
    static std::map<NSString, std::shared_ptr<QVSyntax>> topLevelSyntaxes();
    /// Null where there is none of this name. A null name is a programming error.
    static std::shared_ptr<QVSyntax> syntaxForName(const NSString &name);
    /// A null syntax removes the entry. A null name is a programming error.
    static void setSyntax(const std::shared_ptr<QVSyntax> &syntax, const NSString &forName);
    /// The top-level syntax that a file's content and name fit best; null where none fits at all. Either may
    /// be null. Of several that fit equally well any one.
    static std::shared_ptr<QVSyntax> suggestedSyntaxForString(const NSString &string,
                                                              const NSString &filename);

    // Making

    QVSyntax();
    ~QVSyntax() override;

    /// Reads a syntax file. Null with an error where the file is no XML or one of its definitions fails; null
    /// with no error where it has no "syntax" element with a name. A scope whose pattern does not compile
    /// need not fail the file: then there are a syntax and an error. Of several errors the first one met is
    /// told.
    static std::shared_ptr<QVSyntax> initWithContentsOfURL(const NSURL &url,
                                                           std::shared_ptr<NSError> *error = nullptr);
    /// The same for a document that is already read.
    static std::shared_ptr<QVSyntax> initWithDocument(const QVXMLDocument &document,
                                                      std::shared_ptr<NSError> *error = nullptr);

    // The grammar

    /// The connected grammar; null where there is none. Unpacks and connects it at first use. Any thread.
    std::shared_ptr<QVGrammar> grammar() const { return grammarResolvingIfNecessary(true); }
    /// With false an unconnected grammar is not shown, and no lock is waited for.
    std::shared_ptr<QVGrammar> grammarResolvingIfNecessary(bool resolve) const;
    /// Only while the syntax is built; the grammar counts as unconnected.
    void setGrammar(std::shared_ptr<QVGrammar> grammar);
    /// The archived grammar that is not unpacked yet; null otherwise.
    NSData grammarData() const;
    bool grammarResolved() const;
    /// From here on the grammar counts as unconnected, so that a syntax that is used again connects it anew.
    void didUnloadFromPackage() override;

    // Questions

    /// The best answer of the detectors, each weighed by its priority; 0 without any.
    float confidenceForString(const NSString &string, const NSString &filename) const;
    /// Whether the syntax has this name or descends from one that has, through registered parents.
    bool isDescendantOfSyntaxName(const NSString &name) const;

    // Completion providers, own ones and those that packages added, in order; any thread

    std::vector<std::shared_ptr<QVCompletionProvider>> completionProviders() const;
    void setCompletionProviders(std::vector<std::shared_ptr<QVCompletionProvider>> providers);
    void addCompletionProvider(std::shared_ptr<QVCompletionProvider> provider);

    // Values

    /// The identifier, under which the registry has it.
    const NSString &name() const { return _name; }
    void setName(NSString name) { _name = std::move(name); }
    /// The name for people.
    const NSString &displayName() const { return _displayName; }
    void setDisplayName(NSString name) { _displayName = std::move(name); }
    QVSyntaxType syntaxType() const { return _syntaxType; }
    void setSyntaxType(QVSyntaxType type) { _syntaxType = type; }
    /// The syntax that this one descends from.
    const NSString &parentSyntaxName() const { return _parentSyntaxName; }
    void setParentSyntaxName(NSString name) { _parentSyntaxName = std::move(name); }
    /// Only for embedding: not offered, not detected.
    bool isSubsyntaxOnly() const { return _subsyntaxOnly; }
    void setSubsyntaxOnly(bool subsyntaxOnly) { _subsyntaxOnly = subsyntaxOnly; }
    /// Files can be run.
    bool isScriptable() const { return _scriptable; }
    void setScriptable(bool scriptable) { _scriptable = scriptable; }
    /// The interpreter line for such files.
    const NSString &scriptingShebang() const { return _scriptingShebang; }
    void setScriptingShebang(NSString shebang) { _scriptingShebang = std::move(shebang); }
    /// The extension offered for new files, without a dot.
    const NSString &preferredFileExtension() const { return _preferredFileExtension; }
    void setPreferredFileExtension(NSString extension) { _preferredFileExtension = std::move(extension); }
    const std::vector<std::shared_ptr<QVDetector>> &detectors() const { return _detectors; }
    void setDetectors(std::vector<std::shared_ptr<QVDetector>> detectors) {
        _detectors = std::move(detectors);
    }

    QVSymbolLocalScopeBehavior symbolLocalScopeBehavior() const { return _symbolLocalScopeBehavior; }
    void setSymbolLocalScopeBehavior(QVSymbolLocalScopeBehavior behavior) {
        _symbolLocalScopeBehavior = behavior;
    }
    QVSymbolRedefinitionBehavior symbolRedefinitionBehavior() const { return _symbolRedefinitionBehavior; }
    void setSymbolRedefinitionBehavior(QVSymbolRedefinitionBehavior behavior) {
        _symbolRedefinitionBehavior = behavior;
    }
    /// A number of the symbol vocabulary.
    NSUInteger symbolLookupBehavior() const { return _symbolLookupBehavior; }
    void setSymbolLookupBehavior(NSUInteger behavior) { _symbolLookupBehavior = behavior; }
    /// Absent where the file says nothing about symbols.
    using DocumentationBehaviors = std::vector<std::shared_ptr<QVSymbolDocumentationBehavior>>;
    const std::optional<DocumentationBehaviors> &symbolDocumentationBehaviors() const {
        return _symbolDocumentationBehaviors;
    }
    void setSymbolDocumentationBehaviors(std::optional<DocumentationBehaviors> behaviors) {
        _symbolDocumentationBehaviors = std::move(behaviors);
    }
    QVSpellCheckingType spellCheckingType() const { return _spellCheckingType; }
    void setSpellCheckingType(QVSpellCheckingType type) { _spellCheckingType = type; }

    /// The characters of an identifier; null stands for the default ones.
    const std::shared_ptr<const NSCharacterSet> &identifierCharacterSet() const {
        return _identifierCharacterSet;
    }
    void setIdentifierCharacterSet(std::shared_ptr<const NSCharacterSet> set) {
        _identifierCharacterSet = std::move(set);
    }
    /// Characters that belong to an identifier right behind them; null for none.
    const std::shared_ptr<const NSCharacterSet> &identifierPrefixCharacterSet() const {
        return _identifierPrefixCharacterSet;
    }
    void setIdentifierPrefixCharacterSet(std::shared_ptr<const NSCharacterSet> set) {
        _identifierPrefixCharacterSet = std::move(set);
    }
    /// From opening to closing text.
    const std::map<NSString, NSString> &bracketPairs() const { return _bracketPairs; }
    void setBracketPairs(std::map<NSString, NSString> pairs) { _bracketPairs = std::move(pairs); }
    /// By opening text.
    using SurroundingPairs = std::map<NSString, std::shared_ptr<QVSyntaxSurroundingPair>>;
    const SurroundingPairs &surroundingPairs() const { return _surroundingPairs; }
    void setSurroundingPairs(SurroundingPairs pairs) { _surroundingPairs = std::move(pairs); }

    /// Lines that these fit indent the next ones more, stand less far in, indent the next line alone, or say
    /// nothing about indentation; null for none.
    const std::shared_ptr<NSRegularExpression> &indentationIncrease() const { return _indentationIncrease; }
    void setIndentationIncrease(std::shared_ptr<NSRegularExpression> expression) {
        _indentationIncrease = std::move(expression);
    }
    const std::shared_ptr<NSRegularExpression> &indentationDecrease() const { return _indentationDecrease; }
    void setIndentationDecrease(std::shared_ptr<NSRegularExpression> expression) {
        _indentationDecrease = std::move(expression);
    }
    const std::shared_ptr<NSRegularExpression> &indentationNextLine() const { return _indentationNextLine; }
    void setIndentationNextLine(std::shared_ptr<NSRegularExpression> expression) {
        _indentationNextLine = std::move(expression);
    }
    const std::shared_ptr<NSRegularExpression> &indentationIgnore() const { return _indentationIgnore; }
    void setIndentationIgnore(std::shared_ptr<NSRegularExpression> expression) {
        _indentationIgnore = std::move(expression);
    }

    const NSString &singleLineCommentPrefix() const { return _singleLineCommentPrefix; }
    void setSingleLineCommentPrefix(NSString prefix) { _singleLineCommentPrefix = std::move(prefix); }
    const NSString &multilineCommentPrefix() const { return _multilineCommentPrefix; }
    void setMultilineCommentPrefix(NSString prefix) { _multilineCommentPrefix = std::move(prefix); }
    const NSString &multilineCommentSuffix() const { return _multilineCommentSuffix; }
    void setMultilineCommentSuffix(NSString suffix) { _multilineCommentSuffix = std::move(suffix); }

    /// A new syntax with copies of the detectors, documentation behaviours, providers, surrounding pairs and
    /// of the grammar, unconnected; all else is shared. A grammar that is not unpacked yet is not copied.
    std::shared_ptr<QVSyntax> copy() const;
    std::u16string_view className() const override { return u"QVSyntax"; }
    /// "<%@: %p : name=%@>".
    NSString description() const override;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    /// Connects the grammar first and archives it apart, as one block of bytes.
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    std::shared_ptr<QVGrammar> visibleGrammar() const;
    /// Turns the archived grammar, if there is one, into the grammar; answers why it could not.
    std::shared_ptr<NSError> unpackGrammar() const;
    void connectGrammar() const;

    /// Held while the grammar is unpacked, for which no other lock is taken. It is connected under the
    /// package lock alone.
    mutable std::recursive_mutex _monitor;
    /// Guards the next four for a moment each; nothing is called under it.
    mutable std::mutex _stateLock;
    mutable std::shared_ptr<QVGrammar> _grammar;
    mutable NSData _grammarData;
    mutable bool _grammarResolved = false;
    /// The thread that connects the grammar, which is the only one to see it until it is done.
    mutable std::thread::id _connectingThread;

    mutable std::mutex _completionProvidersLock;
    std::vector<std::shared_ptr<QVCompletionProvider>> _completionProviders;

    bool _subsyntaxOnly = false;
    bool _scriptable = false;
    NSString _name;
    NSString _displayName;
    QVSyntaxType _syntaxType = QVSyntaxTypeUnknown;
    NSString _parentSyntaxName;
    std::vector<std::shared_ptr<QVDetector>> _detectors;
    QVSymbolLocalScopeBehavior _symbolLocalScopeBehavior = QVSymbolLocalScopeBehaviorNone;
    QVSymbolRedefinitionBehavior _symbolRedefinitionBehavior = QVSymbolRedefinitionBehaviorDistinct;
    NSUInteger _symbolLookupBehavior;
    std::optional<DocumentationBehaviors> _symbolDocumentationBehaviors;
    QVSpellCheckingType _spellCheckingType = QVSpellCheckingDisabled;
    std::shared_ptr<const NSCharacterSet> _identifierCharacterSet;
    std::shared_ptr<const NSCharacterSet> _identifierPrefixCharacterSet;
    std::map<NSString, NSString> _bracketPairs;
    SurroundingPairs _surroundingPairs;
    std::shared_ptr<NSRegularExpression> _indentationIncrease;
    std::shared_ptr<NSRegularExpression> _indentationDecrease;
    std::shared_ptr<NSRegularExpression> _indentationNextLine;
    std::shared_ptr<NSRegularExpression> _indentationIgnore;
    NSString _singleLineCommentPrefix;
    NSString _multilineCommentPrefix;
    NSString _multilineCommentSuffix;
    NSString _preferredFileExtension;
    NSString _scriptingShebang;
};

} // namespace quorvane
