#include "Quorvane/Scopes/QVCapture.h"

#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Symbols/QVLexicalClass.h"

namespace quorvane {

QVCapture::QVCapture() { setName(u"unknown"); }
QVCapture::~QVCapture() = default;

void QVCapture::setName(NSString name) {
    _name = std::move(name);
    _selector = QVSimpleSelector::simpleSelectorWithString(_name);
    _lexicalClass = QVLexicalClassForClasses(_selector->classes());
    noteChange();
}

QVSelectable *QVCapture::parentSelectable() const { return parent().get(); }

QVSelectable *QVCapture::nextSelectable() const {
    const auto scope = parent();
    if (!scope)
        return nullptr;
    for (const auto *list : {&scope->captures(), &scope->endCaptures()})
        for (const auto &capture : *list)
            if (capture.get() == this)
                return capture.get();
    return nullptr;
}

std::shared_ptr<QVCapture> QVCapture::copy() const {
    auto capture = std::make_shared<QVCapture>();
    static_cast<QVStyleList &>(*capture) = *this;
    capture->_number = _number;
    capture->_name = _name;
    capture->_selector = _selector;
    capture->_lexicalClass = _lexicalClass;
    return capture;
}

} // namespace quorvane
