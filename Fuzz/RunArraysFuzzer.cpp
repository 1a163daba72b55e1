// Edits of run arrays out of bytes: the array has to answer what its obvious twin answers, whatever walks'
// callbacks do to it.
#include "Fuzz/FuzzTarget.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Tests/Support/RLEArrayLaw.h"

#include <algorithm>

using namespace quorvane;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    NSAssertionHandler::setHandler([](const NSString &, const NSString &) { std::abort(); });
    if (size == 0)
        return 0;
    std::size_t next = 1;
    const auto choose = [&](NSUInteger bound) -> NSUInteger {
        return next < size ? NSUInteger(data[next++]) % bound : 0;
    };
    test::RLEArrayLaw law(2 + data[0] % 14, choose);
    // The comparison takes time for all slots; a few hundred edits are enough to get everywhere.
    for (int steps = 0; next < size && steps < 400; ++steps)
        fuzz::require(law.step().empty());
    return 0;
}
