#include "Peer.h"

#include <KSyntaxHighlighting/AbstractHighlighter>
#include <KSyntaxHighlighting/Definition>
#include <KSyntaxHighlighting/Format>
#include <QString>
#include <KSyntaxHighlighting/Repository>
#include <KSyntaxHighlighting/State>

#include <vector>

namespace {

class KSyntaxHighlightingPeer final : public Peer, private KSyntaxHighlighting::AbstractHighlighter {
public:
    KSyntaxHighlightingPeer() {
        setTheme(_repository.defaultTheme(KSyntaxHighlighting::Repository::LightTheme));
    }

    std::string name() const override { return "KSyntaxHighlighting"; }

    bool open(const std::string &path, std::u16string_view text) override {
        const auto definition = _repository.definitionForFileName(QString::fromStdString(path));
        if (!definition.isValid())
            return false;
        setDefinition(definition);
        _lines.clear();
        while (!text.empty()) {
            const std::size_t end = std::min(text.find(u'\n'), text.size());
            _lines.push_back(QString(reinterpret_cast<const QChar *>(text.data()), static_cast<int>(end)));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        return true;
    }

    std::size_t highlight() override {
        _count = 0;
        KSyntaxHighlighting::State state;
        for (const QString &line : _lines)
            state = highlightLine(line, state);
        return _count;
    }

private:
    void applyFormat(int, int length, const KSyntaxHighlighting::Format &) override { _count += length > 0; }

    KSyntaxHighlighting::Repository _repository;
    std::vector<QString> _lines;
    std::size_t _count = 0;
};

} // namespace

std::unique_ptr<Peer> makeKSyntaxHighlightingPeer() { return std::make_unique<KSyntaxHighlightingPeer>(); }
