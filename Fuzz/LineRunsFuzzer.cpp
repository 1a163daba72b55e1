// Edits of line arrays out of bytes: the array has to answer what its obvious twin answers, with its wrong
// links and leftovers.
#include "Fuzz/FuzzTarget.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Tests/Support/LineRunLaw.h"

using namespace quorvane;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    NSAssertionHandler::setHandler([](const NSString &, const NSString &) { std::abort(); });
    if (size == 0)
        return 0;
    std::size_t next = 1;
    const auto choose = [&](NSUInteger bound) -> NSUInteger {
        return next < size ? NSUInteger(data[next++]) % bound : 0;
    };
    test::LineRunLaw law(data[0] & 1, 2 + (data[0] >> 2) % 14, choose);
    if (data[0] & 2)
        law.avoidTerminators();
    for (int steps = 0; next < size && steps < 400; ++steps)
        fuzz::require(law.step().empty());
    return 0;
}
