#include "Host/QVFileReading.h"

#include "Host/QVPackageError.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {

namespace {

struct Descriptor {
    int number;
    ~Descriptor() {
        if (number >= 0)
            close(number);
    }
};

NSData fail(const std::filesystem::path &path, const NSString &reason, std::shared_ptr<NSError> *error) {
    QVSetError(error, QVPackageError(QVPackageErrorUnreadable, QVStringForPath(path), {}, reason));
    return {};
}

NSString textOfErrorNumber(int number) { return NSString::stringWithUTF8String(std::strerror(number)); }

} // namespace

NSString QVStringForPath(const std::filesystem::path &path) {
    return NSString::stringWithUTF8String(path.native());
}

NSData QVContentsOfFile(const std::filesystem::path &path, std::size_t limit,
                        std::shared_ptr<NSError> *error) {
    // Without waiting: to open a pipe would wait for somebody who writes into it.
    const Descriptor file{open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
    struct stat status {};
    if (file.number < 0 || fstat(file.number, &status) != 0)
        return fail(path, textOfErrorNumber(errno), error);
    if (!S_ISREG(status.st_mode))
        return fail(path, u"Is no file", error);
    const NSString tooLarge = NSString::stringWithFormat(u"Has more than %lu bytes", limit);
    if (static_cast<std::uint64_t>(status.st_size) > limit)
        return fail(path, tooLarge, error);
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(status.st_size));
    std::size_t filled = 0;
    for (;;) {
        // A file can grow while it is read; one more unit tells.
        if (filled == bytes.size())
            bytes.resize(filled + 1);
        const ssize_t count = read(file.number, bytes.data() + filled, bytes.size() - filled);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return fail(path, textOfErrorNumber(errno), error);
        if (count == 0)
            break;
        filled += static_cast<std::size_t>(count);
        if (filled > limit)
            return fail(path, tooLarge, error);
    }
    bytes.resize(filled);
    return bytes;
}

} // namespace quorvane
