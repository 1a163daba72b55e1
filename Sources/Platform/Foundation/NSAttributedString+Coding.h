#pragma once

#include "Platform/Foundation/NSAttributedString.h"
#include "Platform/Foundation/NSCoder.h"

/// Attributes and attributed strings in keyed archives. Attributes are a dictionary of values; a string is
/// the text, each attribute dictionary once, and how far each run of one goes. They are no coded objects of
/// their own, since who reads one says which classes its attributes may hold.
namespace quorvane {

/// An attribute's value as archives hold it; nothing for an object without a coder, since there is nothing to
/// restore it from. An archive's values can be changed by whoever reads them, but this one is only to be
/// written.
QV_EXPORT std::optional<NSCodingValue> qv_codingValue(const NSAttributeValue &value);
/// The value that an archive holds so; nothing for what can't be one.
QV_EXPORT std::optional<NSAttributeValue> qv_attributeValue(const NSCodingValue &value);

/// Writes the attributes under the key. Values that can't be archived, which are objects without a coder, are
/// left out.
QV_EXPORT void qv_encodeAttributes(NSCoder &coder, const NSAttributes &attributes, const NSString &key);

/// Nothing where there are none under the key, or where one is an object of another class.
QV_EXPORT std::optional<NSAttributes> qv_decodeAttributes(NSCoder &coder, const NSString &key,
                                                          std::span<const NSCodingClass *const> accepted);

/// Writes the text with its attributes under the key, as `qv_encodeAttributes` writes them.
QV_EXPORT void qv_encodeAttributedString(NSCoder &coder, const NSAttributedString &attributedString,
                                         const NSString &key);

/// Null where there is none under the key. A dictionary that holds an object of another class reads as empty;
/// runs beyond the text are cut, and text beyond the runs has no attributes.
QV_EXPORT std::shared_ptr<NSMutableAttributedString>
qv_decodeAttributedString(NSCoder &coder, const NSString &key,
                          std::span<const NSCodingClass *const> acceptedValues);

} // namespace quorvane
