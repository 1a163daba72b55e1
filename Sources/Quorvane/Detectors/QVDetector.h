#pragma once

#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

class NSRegularExpression;
class QVXMLElement;

/// Says how well a file's name or content fits a syntax, as a number between 0 and 1. A syntax has a list of
/// detectors and takes the best answer, weighed by each one's priority. Immutable once read; any thread.
class QV_EXPORT QVDetector : public NSObject, public NSSecureCoding {
public:
    /// The detector for a "combo", "match-content", "extension" or "filename" element, null for any other.
    /// The "priority" attribute is held between 0 and 1; without it the priority is 0.1.
    static std::shared_ptr<QVDetector> detectorWithElement(const QVXMLElement &element);

    float priority() const { return _priority; }
    void setPriority(float priority) { _priority = priority; }

    /// How well the content and the file's name fit, without regard to the priority. Either may be null.
    virtual float confidenceForString(const NSString &string, const NSString &filename) const;

    /// A detector of the same class with equal values.
    virtual std::shared_ptr<QVDetector> copy() const;

    std::u16string_view className() const override { return u"QVDetector"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    float _priority = 0;
};

/// Several detectors that must all agree: one that answers 0 makes the whole answer 0, otherwise it is the
/// mean. The priorities of the children count for nothing.
class QV_EXPORT QVCompoundDetector final : public QVDetector {
public:
    /// Reads the children "combo", "match-content" and "extension". A "filename" is passed over: a name that
    /// fits says enough alone.
    static std::shared_ptr<QVCompoundDetector> initWithXMLElement(const QVXMLElement &element);

    const std::vector<std::shared_ptr<QVDetector>> &children() const { return _children; }
    void setChildren(std::vector<std::shared_ptr<QVDetector>> children) { _children = std::move(children); }

    float confidenceForString(const NSString &string, const NSString &filename) const override;
    /// The children are copied too.
    std::shared_ptr<QVDetector> copy() const override;

    std::u16string_view className() const override { return u"QVCompoundDetector"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    std::vector<std::shared_ptr<QVDetector>> _children;
};

/// Knows file name extensions. What stands behind a name's first dot counts fully, what stands behind its
/// last dot alone counts half.
class QV_EXPORT QVExtensionDetector final : public QVDetector {
public:
    /// Reads the element's text: extensions in lower case between commas.
    static std::shared_ptr<QVExtensionDetector> initWithXMLElement(const QVXMLElement &element);

    const std::set<NSString> &extensions() const { return _extensions; }
    void setExtensions(std::set<NSString> extensions) { _extensions = std::move(extensions); }

    float confidenceForString(const NSString &string, const NSString &filename) const override;
    std::shared_ptr<QVDetector> copy() const override;

    std::u16string_view className() const override { return u"QVExtensionDetector"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    std::set<NSString> _extensions;
};

/// Knows whole file names, without regard to case.
class QV_EXPORT QVFilenameDetector final : public QVDetector {
public:
    /// Reads the element's text: names in lower case between commas.
    static std::shared_ptr<QVFilenameDetector> initWithXMLElement(const QVXMLElement &element);

    const std::set<NSString> &filenames() const { return _filenames; }
    void setFilenames(std::set<NSString> filenames) { _filenames = std::move(filenames); }

    float confidenceForString(const NSString &string, const NSString &filename) const override;
    std::shared_ptr<QVDetector> copy() const override;

    std::u16string_view className() const override { return u"QVFilenameDetector"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    std::set<NSString> _filenames;
};

/// Looks for an expression in the first lines of the content.
class QV_EXPORT QVRegularExpressionDetector final : public QVDetector {
public:
    /// Reads the pattern from the element's text. A bad one leaves a detector that never fits: one broken
    /// rule must not keep a syntax from loading.
    static std::shared_ptr<QVRegularExpressionDetector> initWithXMLElement(const QVXMLElement &element);

    const std::shared_ptr<NSRegularExpression> &regularExpression() const { return _regularExpression; }
    void setRegularExpression(std::shared_ptr<NSRegularExpression> expression) {
        _regularExpression = std::move(expression);
    }
    /// How many lines are looked at; 0 stands for all.
    NSUInteger numberOfLines() const { return _numberOfLines; }
    void setNumberOfLines(NSUInteger numberOfLines) { _numberOfLines = numberOfLines; }

    float confidenceForString(const NSString &string, const NSString &filename) const override;
    std::shared_ptr<QVDetector> copy() const override;

    std::u16string_view className() const override { return u"QVRegularExpressionDetector"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    std::shared_ptr<NSRegularExpression> _regularExpression;
    NSUInteger _numberOfLines = 10;
};

} // namespace quorvane
