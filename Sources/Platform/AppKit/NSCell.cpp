#include "Platform/AppKit/NSCell.h"

namespace quorvane {

NSCell::NSCell() = default;
NSCell::~NSCell() = default;

void NSCell::drawWithFrame(const CGRect & /*cellFrame*/, NSView * /*inView*/) const {}

void NSCell::highlight(bool /*flag*/, const CGRect & /*withFrame*/, NSView * /*inView*/) const {}

bool NSCell::trackMouse(NSEvent * /*event*/, const CGRect & /*inRect*/, NSView * /*ofView*/,
                        bool /*untilMouseUp*/) {
    return false;
}

} // namespace quorvane
