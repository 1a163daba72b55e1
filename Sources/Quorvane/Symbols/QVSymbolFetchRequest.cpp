#include "Quorvane/Symbols/QVSymbolFetchRequest.h"

namespace quorvane {

std::shared_ptr<QVSymbolFetchRequest> QVSymbolFetchRequest::copy() const {
    auto request = std::make_shared<QVSymbolFetchRequest>();
    request->_pattern = _pattern;
    request->_matchingOptions = _matchingOptions;
    for (const auto &descriptor : _symbolDescriptors)
        request->_symbolDescriptors.push_back(descriptor ? descriptor->copy() : nullptr);
    request->_userInfo = _userInfo;
    return request;
}

} // namespace quorvane
