#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"

#include "Quorvane/Scopes/QVScopeList.h"

namespace quorvane {

QVScopeSubsyntaxOptions::QVScopeSubsyntaxOptions() = default;
QVScopeSubsyntaxOptions::~QVScopeSubsyntaxOptions() = default;

void QVScopeSubsyntaxOptions::setCutoffScopes(std::vector<std::shared_ptr<QVScope>> cutoffScopes) {
    _cutoffScopes = std::move(cutoffScopes);
}

std::shared_ptr<QVScopeSubsyntaxOptions> QVScopeSubsyntaxOptions::copy() const {
    auto options = std::make_shared<QVScopeSubsyntaxOptions>();
    options->_noncontiguous = _noncontiguous;
    options->_exportsSymbols = _exportsSymbols;
    options->_name = _name;
    options->_collection = _collection;
    options->_captureNumber = _captureNumber;
    options->_aliases = _aliases;
    options->_cutoffScopes = scopeList::copies(_cutoffScopes);
    return options;
}

} // namespace quorvane
