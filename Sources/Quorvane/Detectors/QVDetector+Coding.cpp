#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Categories/QVTreeDecoding.h"
#include "Quorvane/Detectors/QVDetector.h"

namespace quorvane {

namespace {

template <typename Detector> std::shared_ptr<NSSecureCoding> allocate() {
    return std::make_shared<Detector>();
}

std::span<const NSCodingClass *const> subclassesOfDetector() {
    static const NSCodingClass *const classes[] = {
        &QVCompoundDetector::codingClass(), &QVExtensionDetector::codingClass(),
        &QVFilenameDetector::codingClass(), &QVRegularExpressionDetector::codingClass()};
    return classes;
}

} // namespace

const NSCodingClass &QVDetector::codingClass() {
    static const NSCodingClass coding{u"QVDetector", nullptr, allocate<QVDetector>, subclassesOfDetector};
    return coding;
}

void QVDetector::encodeWithCoder(NSCoder &coder) const { coder.encodeFloat(_priority, u"priority"); }

std::shared_ptr<NSSecureCoding> QVDetector::initWithCoder(NSCoder &coder,
                                                          std::shared_ptr<NSSecureCoding> self) {
    _priority = coder.decodeFloat(u"priority");
    return self;
}

const NSCodingClass &QVCompoundDetector::codingClass() {
    static const NSCodingClass coding{u"QVCompoundDetector", &QVDetector::codingClass(),
                                      allocate<QVCompoundDetector>};
    return coding;
}

void QVCompoundDetector::encodeWithCoder(NSCoder &coder) const {
    QVDetector::encodeWithCoder(coder);
    coder.encodeArray(_children, u"children");
}

std::shared_ptr<NSSecureCoding> QVCompoundDetector::initWithCoder(NSCoder &coder,
                                                                  std::shared_ptr<NSSecureCoding> self) {
    QVTreeDecoding tree(this);
    QVDetector::initWithCoder(coder, self);
    auto children = coder.decodeArrayOfClass<QVDetector>(u"children");
    if (children && !tree.adoptAll(*children)) {
        QVFailTreeDecoding(coder);
        return nullptr;
    }
    if (children)
        _children = std::move(*children);
    return self;
}

const NSCodingClass &QVExtensionDetector::codingClass() {
    static const NSCodingClass coding{u"QVExtensionDetector", &QVDetector::codingClass(),
                                      allocate<QVExtensionDetector>};
    return coding;
}

void QVExtensionDetector::encodeWithCoder(NSCoder &coder) const {
    QVDetector::encodeWithCoder(coder);
    coder.encodeStringSet(_extensions, u"extensions");
}

std::shared_ptr<NSSecureCoding> QVExtensionDetector::initWithCoder(NSCoder &coder,
                                                                   std::shared_ptr<NSSecureCoding> self) {
    QVDetector::initWithCoder(coder, self);
    _extensions = coder.decodeStringSet(u"extensions").value_or(std::set<NSString>());
    return self;
}

const NSCodingClass &QVFilenameDetector::codingClass() {
    static const NSCodingClass coding{u"QVFilenameDetector", &QVDetector::codingClass(),
                                      allocate<QVFilenameDetector>};
    return coding;
}

void QVFilenameDetector::encodeWithCoder(NSCoder &coder) const {
    QVDetector::encodeWithCoder(coder);
    coder.encodeStringSet(_filenames, u"filenames");
}

std::shared_ptr<NSSecureCoding> QVFilenameDetector::initWithCoder(NSCoder &coder,
                                                                  std::shared_ptr<NSSecureCoding> self) {
    QVDetector::initWithCoder(coder, self);
    _filenames = coder.decodeStringSet(u"filenames").value_or(std::set<NSString>());
    return self;
}

const NSCodingClass &QVRegularExpressionDetector::codingClass() {
    static const NSCodingClass coding{u"QVRegularExpressionDetector", &QVDetector::codingClass(),
                                      allocate<QVRegularExpressionDetector>};
    return coding;
}

void QVRegularExpressionDetector::encodeWithCoder(NSCoder &coder) const {
    QVDetector::encodeWithCoder(coder);
    coder.encodeObject(_regularExpression, u"regularExpression");
    coder.encodeInteger(static_cast<NSInteger>(_numberOfLines), u"numberOfLines");
}

std::shared_ptr<NSSecureCoding>
QVRegularExpressionDetector::initWithCoder(NSCoder &coder, std::shared_ptr<NSSecureCoding> self) {
    QVDetector::initWithCoder(coder, self);
    _regularExpression = coder.decodeObjectOfClass<NSRegularExpression>(u"regularExpression");
    _numberOfLines = static_cast<NSUInteger>(coder.decodeInteger(u"numberOfLines"));
    return self;
}

} // namespace quorvane
