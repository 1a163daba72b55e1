#pragma once

#include "Platform/Foundation/QVExport.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace quorvane {

class QVMatchPositions;
class QVRegularExpressionResult;
class QVScopeMatch;
class QVSyntax;

/// Makes the symbols of all matches of a tree, which nobody asked for until then. Called by readers side by
/// side; all return when the symbols are there.
class QVSymbolMaker {
public:
    virtual void makeSymbols() = 0;

protected:
    ~QVSymbolMaker() = default;
};

/// Where a parse's match nodes and their records live: slabs of memory that hand out small pieces and take
/// them back without asking the general allocator. A document holds millions of nodes, made and freed by the
/// one writer of its parse; so a parse's pool takes no lock. Nodes made without a parse share one pool, which
/// does.
///
/// A piece finds its pool through the head of its slab. A pool whose owner is gone lives on until its last
/// piece comes back.
class QVMatchPool {
public:
    /// What a few matches carry beside their fields.
    struct Association {
        std::shared_ptr<QVRegularExpressionResult> textCheckingResult;
        std::shared_ptr<QVSyntax> subsyntax;
    };

    struct Abandon {
        void operator()(QVMatchPool *pool) const;
    };
    using Owner = std::unique_ptr<QVMatchPool, Abandon>;

    /// A pool for one writer at a time.
    static Owner create();
    /// The pool of nodes that belong to no parse; any thread.
    QV_EXPORT static QVMatchPool &sharedPool();
    /// The pool that a piece of memory came from.
    static QVMatchPool &poolOf(const void *piece);

    /// The largest piece that can be asked for, in bytes.
    static constexpr std::size_t largestPiece = 168;

    /// Where the positions of the pool's one tree are kept, made when first asked for. They live as long as
    /// the pool, since matches point to them. Not for the shared pool, which has many trees.
    QVMatchPositions &positions();

    /// Whom the matches ask before they tell their symbols; null while these are as they should be. Set with
    /// write access, or by the maker when it is through.
    QVSymbolMaker *symbolMaker() const { return _symbolMaker.load(std::memory_order_acquire); }
    void setSymbolMaker(QVSymbolMaker *maker) { _symbolMaker.store(maker, std::memory_order_release); }

    void *allocate(std::size_t size) {
        const std::size_t sizeClass = (size + granule - 1) / granule;
        if (_takesCare) [[unlikely]]
            return allocateWithCare(sizeClass);
        void *piece;
        if (FreePiece *const free = _free[sizeClass]) {
            _free[sizeClass] = free->next;
            piece = free;
        } else {
            if (static_cast<std::size_t>(_end - _next) < sizeClass * granule) [[unlikely]]
                addSlab();
            piece = _next;
            _next += sizeClass * granule;
            // Each piece is filled as soon as it is made, faster than the cache would follow.
            __builtin_prefetch(_next + prefetchedBytes, 1);
        }
        ++_livePieces;
        return piece;
    }
    void deallocate(void *piece, std::size_t size);

    /// The record of a match, made when first asked for. The reference is good until another record is made.
    Association &associationForMatch(const QVScopeMatch *match);
    /// Null where there is none.
    const Association *existingAssociationForMatch(const QVScopeMatch *match) const;
    void removeAssociationForMatch(const QVScopeMatch *match);

    /// Pieces that are out, and bytes that the slabs take.
    std::size_t livePieces() const { return _livePieces; }
    std::size_t reservedBytes() const;

    QVMatchPool(const QVMatchPool &) = delete;
    QVMatchPool &operator=(const QVMatchPool &) = delete;

private:
    struct Slab;
    struct FreePiece {
        FreePiece *next;
    };
    static constexpr std::size_t slabBytes = 64 << 10;
    static constexpr std::size_t granule = 8;
    static constexpr std::size_t prefetchedBytes = 1024;

    explicit QVMatchPool(bool shared);
    ~QVMatchPool();
    void addSlab();
    void *allocateWithCare(std::size_t sizeClass);
    void *takePiece(std::size_t sizeClass);
    bool putPiece(void *piece, std::size_t sizeClass);
    std::unique_lock<std::mutex> guard() const {
        return _shared ? std::unique_lock(_mutex) : std::unique_lock<std::mutex>();
    }

    const bool _shared;
    /// Shared, or with each piece's use checked.
    const bool _takesCare;
    bool _abandoned = false;
    std::size_t _livePieces = 0;
    std::size_t _slabCount = 0;
    Slab *_slabs = nullptr;
    char *_next = nullptr;
    char *_end = nullptr;
    std::array<FreePiece *, largestPiece / granule + 1> _free{};
    std::unordered_map<const QVScopeMatch *, Association> _associations;
    std::unique_ptr<QVMatchPositions> _positions;
    std::atomic<QVSymbolMaker *> _symbolMaker = nullptr;
    mutable std::mutex _mutex;
};

} // namespace quorvane
