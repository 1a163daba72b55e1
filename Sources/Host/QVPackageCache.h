#pragma once

#include "Platform/Foundation/NSData.h"
#include "Platform/Foundation/NSURL.h"
#include "Platform/Foundation/QVLimits.h"

namespace quorvane {

/// What package files were read into, kept in a folder, so that a second start reads archives instead of XML
/// and compiles no pattern before it is used. An entry is known by the bytes of its file and by the engine
/// that wrote it; so an edited file or another engine never finds an old one, and files may be moved and
/// copied.
///
/// A cache never fails: an entry that is damaged, cut off or of another engine is none, and a folder that
/// can't be written keeps nothing. Entries are put in place whole, by renaming, so that processes and threads
/// can share a folder. Beyond its size the cache drops what was not used for longest.
class QVPackageCache {
public:
    /// What an entry was made of; one file's bytes can have one of each.
    enum Kind : std::uint32_t { Syntax = 1, Completions = 2 };

    /// Keeps entries in this folder, which is made when the first one is stored. The identity is that of the
    /// engine whose archives these are.
    explicit QVPackageCache(NSURL folder, std::string engineIdentity = currentEngineIdentity(),
                            std::size_t maximumBytes = limits::packageCacheBytes);

    /// `$XDG_CACHE_HOME/quorvane`, else `~/.cache/quorvane`; null where neither is known.
    static NSURL defaultFolder();
    /// The version, with size and time of the file that the engine's code is in, so that a rebuilt engine
    /// starts afresh.
    static std::string currentEngineIdentity();

    const NSURL &folder() const { return _folder; }

    /// The archive that was stored for these bytes; null where there is no good one. Any thread.
    NSData archiveForContents(const NSData &contents, Kind kind) const;
    /// Stores an archive; whether it could. Any thread.
    bool setArchive(const NSData &archive, const NSData &forContents, Kind kind) const;

private:
    struct Key {
        std::uint64_t low, high;
    };
    Key keyForContents(const NSData &contents, Kind kind) const;
    std::string pathForKey(const Key &key) const;
    std::vector<std::uint8_t> headerForArchive(const NSData &archive, const Key &key) const;
    void dropOldEntries() const;

    NSURL _folder;
    std::string _engineIdentity;
    std::size_t _maximumBytes;
};

} // namespace quorvane
