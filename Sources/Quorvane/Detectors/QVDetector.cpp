#include "Quorvane/Detectors/QVDetector.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Categories/QVTreeDecoding.h"
#include "Quorvane/XML/QVXMLElement.h"

namespace quorvane {

namespace {

constexpr float defaultPriority = 0.1f;
// A name's last extension alone says less than all of them together.
constexpr float partialExtensionConfidence = 0.5f;

/// The items of a comma-separated list in lower case. An empty item stays: it stands for "no extension".
std::set<NSString> itemsOfElement(const QVXMLElement &element) {
    std::set<NSString> items;
    for (const NSString &item : element.text().lowercaseString().componentsSeparatedByString(u","))
        items.insert(item.stringByTrimmingCharactersInSet(*NSCharacterSet::whitespaceCharacterSet()));
    return items;
}

/// The extension of a file's name. A hidden file without a further dot is an extension as a whole, kept as it
/// is written.
NSString extensionOfFilename(const NSString &filename) {
    const std::u16string_view name = filename;
    const std::size_t dot = name.find(u'.', 1);
    if (name.starts_with(u'.') && dot == std::u16string_view::npos)
        return filename.substringFromIndex(1);
    if (dot == std::u16string_view::npos)
        return filename.pathExtension().lowercaseString();
    return filename.substringFromIndex(dot + 1).lowercaseString();
}

/// Where the first lines of a text end, behind their terminators of whatever kind.
std::size_t endOfLines(std::u16string_view text, NSUInteger count) {
    std::size_t position = 0;
    for (; count != 0; --count) {
        position = text.find_first_of(u"\n\r\x0085\u2028\u2029", position);
        if (position == std::u16string_view::npos)
            return text.size();
        position += text.substr(position, 2) == u"\r\n" ? 2 : 1;
    }
    return position;
}

} // namespace

std::shared_ptr<QVDetector> QVDetector::detectorWithElement(const QVXMLElement &element) {
    std::shared_ptr<QVDetector> detector;
    if (element.name() == u"combo")
        detector = QVCompoundDetector::initWithXMLElement(element);
    else if (element.name() == u"match-content")
        detector = QVRegularExpressionDetector::initWithXMLElement(element);
    else if (element.name() == u"extension")
        detector = QVExtensionDetector::initWithXMLElement(element);
    else if (element.name() == u"filename")
        detector = QVFilenameDetector::initWithXMLElement(element);
    if (!detector)
        return nullptr;

    const NSString priority = element.valueForAttribute(u"priority");
    detector->setPriority(priority ? std::clamp(priority.floatValue(), 0.0f, 1.0f) : defaultPriority);
    return detector;
}

float QVDetector::confidenceForString(const NSString &, const NSString &) const { return 0; }

std::shared_ptr<QVDetector> QVDetector::copy() const { return std::make_shared<QVDetector>(*this); }

std::shared_ptr<QVCompoundDetector> QVCompoundDetector::initWithXMLElement(const QVXMLElement &element) {
    auto detector = std::make_shared<QVCompoundDetector>();
    for (const auto &child : element.elementsForNames({u"combo", u"match-content", u"extension"}))
        if (auto childDetector = detectorWithElement(*child))
            detector->_children.push_back(std::move(childDetector));
    return detector;
}

float QVCompoundDetector::confidenceForString(const NSString &string, const NSString &filename) const {
    if (_children.empty())
        return 0;
    float sum = 0;
    for (const auto &child : _children) {
        const float confidence = child->confidenceForString(string, filename);
        if (confidence == 0.0f)
            return 0;
        sum += confidence;
    }
    return sum / static_cast<float>(_children.size());
}

std::shared_ptr<QVDetector> QVCompoundDetector::copy() const {
    auto copy = std::make_shared<QVCompoundDetector>(*this);
    for (auto &child : copy->_children)
        child = child->copy();
    return copy;
}

std::shared_ptr<QVExtensionDetector> QVExtensionDetector::initWithXMLElement(const QVXMLElement &element) {
    auto detector = std::make_shared<QVExtensionDetector>();
    detector->_extensions = itemsOfElement(element);
    return detector;
}

float QVExtensionDetector::confidenceForString(const NSString &, const NSString &filename) const {
    if (!filename)
        return 0;
    const NSString extension = extensionOfFilename(filename);
    if (_extensions.contains(extension))
        return 1;
    const std::size_t lastDot = extension.view().rfind(u'.');
    if (lastDot != std::u16string_view::npos &&
        _extensions.contains(extension.substringFromIndex(lastDot + 1)))
        return partialExtensionConfidence;
    return 0;
}

std::shared_ptr<QVDetector> QVExtensionDetector::copy() const {
    return std::make_shared<QVExtensionDetector>(*this);
}

std::shared_ptr<QVFilenameDetector> QVFilenameDetector::initWithXMLElement(const QVXMLElement &element) {
    auto detector = std::make_shared<QVFilenameDetector>();
    detector->_filenames = itemsOfElement(element);
    return detector;
}

float QVFilenameDetector::confidenceForString(const NSString &, const NSString &filename) const {
    return filename && _filenames.contains(filename.lowercaseString()) ? 1.0f : 0.0f;
}

std::shared_ptr<QVDetector> QVFilenameDetector::copy() const {
    return std::make_shared<QVFilenameDetector>(*this);
}

std::shared_ptr<QVRegularExpressionDetector>
QVRegularExpressionDetector::initWithXMLElement(const QVXMLElement &element) {
    auto detector = std::make_shared<QVRegularExpressionDetector>();
    detector->_regularExpression = NSRegularExpression::regularExpressionWithPattern(
        element.text(), NSRegularExpressionAnchorsMatchLines);
    if (const NSString lines = element.valueForAttribute(u"lines"))
        detector->_numberOfLines = static_cast<NSUInteger>(lines.integerValue());
    return detector;
}

float QVRegularExpressionDetector::confidenceForString(const NSString &string, const NSString &) const {
    if (!string || !_regularExpression)
        return 0;
    const NSUInteger end = _numberOfLines == 0 ? string.length() : endOfLines(string, _numberOfLines);
    const NSRange found = _regularExpression->rangeOfFirstMatchInString(string, 0, {0, end});
    return found.location == NSNotFound ? 0.0f : 1.0f;
}

std::shared_ptr<QVDetector> QVRegularExpressionDetector::copy() const {
    return std::make_shared<QVRegularExpressionDetector>(*this);
}

} // namespace quorvane
