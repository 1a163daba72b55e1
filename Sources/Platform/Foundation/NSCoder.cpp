#include "Platform/Foundation/NSCoder.h"

#include "Platform/Foundation/NSException.h"

namespace quorvane {

NSSecureCoding::~NSSecureCoding() = default;

NSCoder::~NSCoder() = default;

namespace {

[[noreturn]] void refuse(std::u16string_view operation) {
    throw NSException(NSInvalidArgumentException,
                      NSString::stringWithFormat(u"%@ is not for this side of an archive", operation));
}

} // namespace

// A writer has no answers and a reader takes nothing: each overrides its own half.

void NSCoder::encodeBool(bool, const NSString &) { refuse(u"encodeBool"); }
void NSCoder::encodeInteger(NSInteger, const NSString &) { refuse(u"encodeInteger"); }
void NSCoder::encodeFloat(float, const NSString &) { refuse(u"encodeFloat"); }
void NSCoder::encodeDouble(double, const NSString &) { refuse(u"encodeDouble"); }
void NSCoder::encodeString(const NSString &, const NSString &) { refuse(u"encodeString"); }
void NSCoder::encodeData(const NSData &, const NSString &) { refuse(u"encodeData"); }
void NSCoder::encodeObject(const std::shared_ptr<const NSSecureCoding> &, const NSString &) {
    refuse(u"encodeObject");
}
void NSCoder::encodeNumber(const std::optional<NSInteger> &, const NSString &) { refuse(u"encodeNumber"); }
void NSCoder::encodeStrings(const std::optional<std::vector<NSString>> &, const NSString &) {
    refuse(u"encodeStrings");
}
void NSCoder::encodeStringSet(const std::optional<std::set<NSString>> &, const NSString &) {
    refuse(u"encodeStringSet");
}
void NSCoder::encodeNumberSet(const std::optional<std::set<NSUInteger>> &, const NSString &) {
    refuse(u"encodeNumberSet");
}
void NSCoder::encodeStringDictionary(const std::optional<std::map<NSString, NSString>> &, const NSString &) {
    refuse(u"encodeStringDictionary");
}
void NSCoder::encodeDoubles(const std::optional<std::vector<double>> &, const NSString &) {
    refuse(u"encodeDoubles");
}
void NSCoder::encodeRange(const std::optional<NSRange> &, const NSString &) { refuse(u"encodeRange"); }
void NSCoder::encodeValueDictionary(const std::optional<std::map<NSString, NSCodingValue>> &,
                                    const NSString &) {
    refuse(u"encodeValueDictionary");
}
void NSCoder::encodeObjectArray(const std::optional<std::vector<std::shared_ptr<const NSSecureCoding>>> &,
                                const NSString &) {
    refuse(u"encodeObjectArray");
}
void NSCoder::encodeObjectDictionary(
    const std::optional<std::map<NSString, std::shared_ptr<const NSSecureCoding>>> &, const NSString &) {
    refuse(u"encodeObjectDictionary");
}

bool NSCoder::containsValueForKey(const NSString &) const { refuse(u"containsValueForKey"); }
bool NSCoder::decodeBool(const NSString &) { refuse(u"decodeBool"); }
NSInteger NSCoder::decodeInteger(const NSString &) { refuse(u"decodeInteger"); }
float NSCoder::decodeFloat(const NSString &) { refuse(u"decodeFloat"); }
double NSCoder::decodeDouble(const NSString &) { refuse(u"decodeDouble"); }
NSString NSCoder::decodeString(const NSString &) { refuse(u"decodeString"); }
NSData NSCoder::decodeData(const NSString &) { refuse(u"decodeData"); }
std::optional<NSInteger> NSCoder::decodeNumber(const NSString &) { refuse(u"decodeNumber"); }
std::optional<std::vector<NSString>> NSCoder::decodeStrings(const NSString &) { refuse(u"decodeStrings"); }
std::optional<std::set<NSString>> NSCoder::decodeStringSet(const NSString &) { refuse(u"decodeStringSet"); }
std::optional<std::set<NSUInteger>> NSCoder::decodeNumberSet(const NSString &) { refuse(u"decodeNumberSet"); }
std::optional<std::map<NSString, NSString>> NSCoder::decodeStringDictionary(const NSString &) {
    refuse(u"decodeStringDictionary");
}
std::optional<std::vector<double>> NSCoder::decodeDoubles(const NSString &) { refuse(u"decodeDoubles"); }
std::optional<NSRange> NSCoder::decodeRange(const NSString &) { refuse(u"decodeRange"); }
std::optional<std::map<NSString, NSCodingValue>>
NSCoder::decodeValueDictionary(const NSString &, std::span<const NSCodingClass *const>) {
    refuse(u"decodeValueDictionary");
}
std::shared_ptr<NSSecureCoding> NSCoder::decodeObject(const NSString &, const NSCodingClass &) {
    refuse(u"decodeObject");
}
std::optional<std::vector<std::shared_ptr<NSSecureCoding>>>
NSCoder::decodeObjectArray(const NSString &, const NSCodingClass &) {
    refuse(u"decodeObjectArray");
}
std::optional<std::map<NSString, std::shared_ptr<NSSecureCoding>>>
NSCoder::decodeObjectDictionary(const NSString &, const NSCodingClass &) {
    refuse(u"decodeObjectDictionary");
}

} // namespace quorvane
