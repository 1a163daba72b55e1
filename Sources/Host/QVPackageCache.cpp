#include "Host/QVPackageCache.h"

#include "Host/QVFileReading.h"
#include "Quorvane/Packages/QVLoadable.h"
#include "Quorvane/QuorvaneVersion.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {

namespace fs = std::filesystem;

namespace {

/// The layout of entries and of what the helpers here put into them; counts up when that changes.
constexpr std::uint64_t entryFormat = 1;
constexpr std::string_view entryMark = "QVARCHIV";
constexpr std::string_view entrySuffix = ".archive";
constexpr std::string_view unfinishedSuffix = ".unfinished";
/// Mark, format, key, length and check sum.
constexpr std::size_t headerBytes = 8 + 8 + 16 + 8 + 16;

void appendNumber(std::vector<std::uint8_t> &bytes, std::uint64_t number) {
    for (int shift = 0; shift < 64; shift += 8)
        bytes.push_back(static_cast<std::uint8_t>(number >> shift));
}

bool writeAll(int file, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0)
            bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

/// Whether a file of the cache's folder is one of ours; nothing else may ever be removed.
bool isEntryName(std::string_view name) {
    const auto isHexadecimal = [](std::string_view text) {
        return text.size() >= 32 &&
               text.substr(0, 32).find_first_not_of("0123456789abcdef") == std::string_view::npos;
    };
    return isHexadecimal(name) && (name.ends_with(entrySuffix) || name.ends_with(unfinishedSuffix));
}

} // namespace

QVPackageCache::QVPackageCache(NSURL folder, std::string engineIdentity, std::size_t maximumBytes)
    : _folder(std::move(folder)), _engineIdentity(std::move(engineIdentity)), _maximumBytes(maximumBytes) {}

NSURL QVPackageCache::defaultFolder() {
    // A path that is not absolute is to be ignored.
    const char *const caches = std::getenv("XDG_CACHE_HOME");
    if (caches != nullptr && caches[0] == '/')
        return NSURL::fileURLWithPath(QVStringForPath(fs::path(caches) / "quorvane"));
    const char *const home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/')
        return NSURL::fileURLWithPath(QVStringForPath(fs::path(home) / ".cache" / "quorvane"));
    return nullptr;
}

std::string QVPackageCache::currentEngineIdentity() {
    std::string identity = QUORVANE_VERSION;
    Dl_info info{};
    struct stat status {};
    // Any function of the engine's leads to the library or the program that it is linked into.
    if (dladdr(reinterpret_cast<const void *>(&QVLoadable::notificationObject), &info) != 0 &&
        info.dli_fname != nullptr && stat(info.dli_fname, &status) == 0)
        identity += " " + std::to_string(status.st_size) + " " + std::to_string(status.st_mtim.tv_sec) + "." +
                    std::to_string(status.st_mtim.tv_nsec);
    return identity;
}

QVPackageCache::Key QVPackageCache::keyForContents(const NSData &contents, Kind kind) const {
    // The lengths keep what follows one another apart.
    std::vector<std::uint8_t> prefix;
    appendNumber(prefix, entryFormat);
    appendNumber(prefix, kind);
    appendNumber(prefix, _engineIdentity.size());
    prefix.insert(prefix.end(), _engineIdentity.begin(), _engineIdentity.end());
    appendNumber(prefix, contents.length());
    XXH3_state_t state;
    XXH3_128bits_reset(&state);
    XXH3_128bits_update(&state, prefix.data(), prefix.size());
    XXH3_128bits_update(&state, contents.bytes().data(), contents.length());
    const XXH128_hash_t hash = XXH3_128bits_digest(&state);
    return {hash.low64, hash.high64};
}

std::string QVPackageCache::pathForKey(const Key &key) const {
    char name[33];
    std::snprintf(name, sizeof name, "%016llx%016llx", static_cast<unsigned long long>(key.high),
                  static_cast<unsigned long long>(key.low));
    return _folder.path().UTF8String() + "/" + name;
}

std::vector<std::uint8_t> QVPackageCache::headerForArchive(const NSData &archive, const Key &key) const {
    std::vector<std::uint8_t> header(entryMark.begin(), entryMark.end());
    header.reserve(headerBytes);
    appendNumber(header, entryFormat);
    appendNumber(header, key.low);
    appendNumber(header, key.high);
    appendNumber(header, archive.length());
    const XXH128_hash_t sum = XXH3_128bits(archive.bytes().data(), archive.length());
    appendNumber(header, sum.low64);
    appendNumber(header, sum.high64);
    return header;
}

NSData QVPackageCache::archiveForContents(const NSData &contents, Kind kind) const {
    if (!_folder)
        return {};
    const Key key = keyForContents(contents, kind);
    const std::string path = pathForKey(key) + std::string(entrySuffix);
    const NSData entry = QVContentsOfFile(path, limits::archiveBytes + headerBytes, nullptr);
    if (entry.length() < headerBytes)
        return {};
    const auto bytes = entry.bytes();
    const NSData archive(std::vector<std::uint8_t>(bytes.begin() + headerBytes, bytes.end()));
    // The archive's own reader would not see a bit that fell over in a pattern.
    const auto expected = headerForArchive(archive, key);
    if (!std::equal(expected.begin(), expected.end(), bytes.begin()))
        return {};
    // Says that it was used; once a day is enough to tell what nobody uses.
    struct stat status {};
    struct timespec now {};
    if (stat(path.c_str(), &status) == 0 && clock_gettime(CLOCK_REALTIME, &now) == 0 &&
        now.tv_sec - status.st_mtim.tv_sec > 24 * 60 * 60)
        utimensat(AT_FDCWD, path.c_str(), nullptr, 0);
    return archive;
}

bool QVPackageCache::setArchive(const NSData &archive, const NSData &forContents, Kind kind) const {
    if (!_folder || !archive)
        return false;
    std::error_code error;
    fs::create_directories(_folder.path().UTF8String(), error);
    const Key key = keyForContents(forContents, kind);
    const std::string path = pathForKey(key) + std::string(entrySuffix);
    std::string unfinished = pathForKey(key) + ".XXXXXX" + std::string(unfinishedSuffix);
    const int file = mkostemps(unfinished.data(), static_cast<int>(unfinishedSuffix.size()), O_CLOEXEC);
    if (file < 0)
        return false;
    bool isWritten = writeAll(file, headerForArchive(archive, key)) && writeAll(file, archive.bytes());
    isWritten = close(file) == 0 && isWritten;
    // Others see the old entry or the new one, and never a part of it.
    if (!isWritten || std::rename(unfinished.c_str(), path.c_str()) != 0) {
        std::remove(unfinished.c_str());
        return false;
    }
    dropOldEntries();
    return true;
}

void QVPackageCache::dropOldEntries() const {
    struct Entry {
        fs::path path;
        fs::file_time_type time;
        std::uintmax_t size;
    };
    std::vector<Entry> entries;
    std::uintmax_t total = 0;
    std::error_code error;
    for (fs::directory_iterator at(_folder.path().UTF8String(), error), end; !error && at != end;
         at.increment(error)) {
        std::error_code sizeError;
        std::error_code timeError;
        if (!isEntryName(at->path().filename().native()) || !at->is_regular_file(sizeError))
            continue;
        Entry entry{at->path(), at->last_write_time(timeError), at->file_size(sizeError)};
        // Gone by now: another process drops too.
        if (sizeError || timeError)
            continue;
        total += entry.size;
        entries.push_back(std::move(entry));
    }
    if (total <= _maximumBytes)
        return;
    std::sort(entries.begin(), entries.end(), [](const Entry &a, const Entry &b) { return a.time < b.time; });
    // A little more than needed, so that not each new entry looks for an old one.
    for (const Entry &entry : entries) {
        if (total <= _maximumBytes / 4 * 3)
            break;
        if (fs::remove(entry.path, error))
            total -= entry.size;
    }
}

} // namespace quorvane
