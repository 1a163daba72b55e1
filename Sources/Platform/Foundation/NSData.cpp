#include "Platform/Foundation/NSData.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSURL.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sys/stat.h>

namespace quorvane {

namespace {

NSData fail(const NSURL &url, int code, std::shared_ptr<NSError> *error) {
    QVSetError(error,
               NSError::errorWithDomain(
                   NSPOSIXErrorDomain, code,
                   {{NSLocalizedDescriptionKey,
                     NSString::stringWithFormat(u"The file “%@” couldn’t be read: %@", url.path(),
                                                NSString::stringWithUTF8String(std::strerror(code)))}}));
    return {};
}

} // namespace

NSData NSData::dataWithContentsOfURL(const NSURL &url, std::shared_ptr<NSError> *error) {
    const std::string path = url.path().UTF8String();
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        return fail(url, errno, error);
    if (S_ISDIR(status.st_mode))
        return fail(url, EISDIR, error);
    errno = 0;
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        return fail(url, errno != 0 ? errno : EIO, error);
    std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(stream)),
                                    std::istreambuf_iterator<char>());
    if (stream.bad())
        return fail(url, EIO, error);
    return bytes;
}

} // namespace quorvane
