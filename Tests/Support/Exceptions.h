#pragma once

#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

namespace quorvane::test {

/// The reason of what an operation throws, null where it throws nothing. Fails where it has another name.
template <typename Operation> NSString reasonOf(const NSString &name, Operation operation) {
    try {
        operation();
    } catch (const NSException &exception) {
        EXPECT_EQ(exception.name(), name);
        return exception.reason();
    }
    return nullptr;
}

template <typename Operation> NSString reasonOf(Operation operation) {
    return reasonOf(NSInvalidArgumentException, operation);
}

} // namespace quorvane::test
