// Text from outside: any bytes become a string, and a string that came from bytes survives the way out and
// in.
#include "Fuzz/FuzzTarget.h"

#include "Platform/Foundation/NSString.h"

using namespace quorvane;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    const NSString string = NSString::stringWithUTF8String(bytes);
    fuzz::require(string.length() <= size);
    const std::string written = string.UTF8String();
    fuzz::require(NSString::stringWithUTF8String(written) == string);

    for (NSUInteger i = 0; i < string.length();) {
        const NSRange cluster = string.rangeOfComposedCharacterSequenceAtIndex(i);
        fuzz::require(cluster.location == i && cluster.length > 0);
        i += cluster.length;
    }
    string.integerValue();
    string.doubleValue();
    string.lowercaseString();
    string.stringByDeletingPathExtension();
    return 0;
}
