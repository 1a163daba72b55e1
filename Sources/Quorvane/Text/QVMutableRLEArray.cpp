#include "Quorvane/Text/QVMutableRLEArray.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSException.h"

namespace quorvane {

namespace {

const char16_t *reasonFor(QVRLEArrayBounds bounds) {
    switch (bounds) {
    case QVRLEArrayBounds::Index:
        return u"Index is beyond of the bounds of the RLE array";
    case QVRLEArrayBounds::Insertion:
        return u"Attempt to insert object beyond of the bounds of the RLE array";
    case QVRLEArrayBounds::Insertions:
        return u"Attempt to insert objects beyond of the bounds of the RLE array";
    case QVRLEArrayBounds::Deletion:
        return u"Attempt to delete objects beyond the bounds of the RLE array";
    case QVRLEArrayBounds::Replacement:
        return u"Attempt to replace objects beyond the bounds of the RLE array";
    case QVRLEArrayBounds::Subarray:
        break;
    }
    return u"Range exceeds the bounds of the RLE array";
}

} // namespace

void QVThrowRLEArrayBounds(QVRLEArrayBounds bounds) {
    throw NSException(NSInvalidArgumentException, reasonFor(bounds));
}

void QVFailRLEArrayAssertion(const char16_t *message) {
    NSAssertionHandler::handleFailure(u"QVMutableRLEArray", message);
}

} // namespace quorvane
