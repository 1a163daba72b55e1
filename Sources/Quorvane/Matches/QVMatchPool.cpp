#include "Quorvane/Matches/QVMatchPool.h"

#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Matches/QVMatchPositions.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"

#include <cstdint>
#include <new>

// Under address checks a piece that came back is poisoned, so that its use is found as with the general
// allocator.
#if defined(__SANITIZE_ADDRESS__)
#define QUORVANE_CHECKS_ADDRESSES 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUORVANE_CHECKS_ADDRESSES 1
#endif
#endif
#if defined(QUORVANE_CHECKS_ADDRESSES)
#include <sanitizer/asan_interface.h>
#define QUORVANE_POISON(piece, size) ASAN_POISON_MEMORY_REGION(piece, size)
#define QUORVANE_UNPOISON(piece, size) ASAN_UNPOISON_MEMORY_REGION(piece, size)
#else
#define QUORVANE_POISON(piece, size) static_cast<void>(0)
#define QUORVANE_UNPOISON(piece, size) static_cast<void>(0)
#endif

namespace quorvane {

#if defined(QUORVANE_CHECKS_ADDRESSES)
static constexpr bool checksAddresses = true;
#else
static constexpr bool checksAddresses = false;
#endif

struct QVMatchPool::Slab {
    QVMatchPool *pool;
    Slab *next;

    static void *take();
    static void give(void *memory);
};

namespace {

/// Slabs that documents have left, for the next ones: memory that is new costs the system more than the
/// parser spends on filling it.
struct SpareSlabs {
    std::mutex mutex;
    std::vector<void *> memory;

    static SpareSlabs &shared() {
        // Never destroyed: pools may outlive every static object.
        static auto *const instance = new SpareSlabs;
        return *instance;
    }
};

} // namespace

void *QVMatchPool::Slab::take() {
    SpareSlabs &spare = SpareSlabs::shared();
    {
        const std::lock_guard lock(spare.mutex);
        if (!spare.memory.empty()) {
            void *const memory = spare.memory.back();
            spare.memory.pop_back();
            return memory;
        }
    }
    void *const memory = std::aligned_alloc(slabBytes, slabBytes);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void QVMatchPool::Slab::give(void *memory) {
    SpareSlabs &spare = SpareSlabs::shared();
    {
        const std::lock_guard lock(spare.mutex);
        if (spare.memory.size() < limits::spareMatchSlabs) {
            spare.memory.push_back(memory);
            return;
        }
    }
    std::free(memory);
}

QVMatchPool::QVMatchPool(bool shared) : _shared(shared), _takesCare(shared || checksAddresses) {}

QVMatchPositions &QVMatchPool::positions() {
    if (!_positions)
        _positions = std::make_unique<QVMatchPositions>();
    return *_positions;
}

void QVMatchPool::Abandon::operator()(QVMatchPool *pool) const {
    pool->_abandoned = true;
    if (pool->_livePieces == 0)
        delete pool;
}

QVMatchPool::Owner QVMatchPool::create() { return Owner(new QVMatchPool(false)); }

QVMatchPool &QVMatchPool::sharedPool() {
    // Never destroyed: nodes may outlive every static object.
    static QVMatchPool *const pool = new QVMatchPool(true);
    return *pool;
}

QVMatchPool &QVMatchPool::poolOf(const void *piece) {
    const auto address = reinterpret_cast<std::uintptr_t>(piece) & ~(std::uintptr_t(slabBytes) - 1);
    return *reinterpret_cast<const Slab *>(address)->pool;
}

QVMatchPool::~QVMatchPool() {
    while (_slabs != nullptr) {
        Slab *const slab = std::exchange(_slabs, _slabs->next);
        QUORVANE_UNPOISON(slab, slabBytes);
        Slab::give(slab);
    }
}

std::size_t QVMatchPool::reservedBytes() const {
    const auto lock = guard();
    return _slabCount * slabBytes;
}

void QVMatchPool::addSlab() {
    void *const memory = Slab::take();
    _slabs = new (memory) Slab{this, _slabs};
    ++_slabCount;
    _next = static_cast<char *>(memory) + sizeof(Slab);
    _end = static_cast<char *>(memory) + slabBytes;
    QUORVANE_POISON(_next, static_cast<std::size_t>(_end - _next));
}

inline void *QVMatchPool::takePiece(std::size_t sizeClass) {
    void *piece;
    if (FreePiece *const free = _free[sizeClass]) {
        QUORVANE_UNPOISON(free, sizeClass * granule);
        _free[sizeClass] = free->next;
        piece = free;
    } else {
        if (static_cast<std::size_t>(_end - _next) < sizeClass * granule)
            addSlab();
        piece = _next;
        _next += sizeClass * granule;
        QUORVANE_UNPOISON(piece, sizeClass * granule);
    }
    ++_livePieces;
    return piece;
}

/// Whether that was the last piece of a pool that nobody owns.
inline bool QVMatchPool::putPiece(void *piece, std::size_t sizeClass) {
    _free[sizeClass] = new (piece) FreePiece{_free[sizeClass]};
    QUORVANE_POISON(piece, sizeClass * granule);
    return --_livePieces == 0 && _abandoned;
}

void *QVMatchPool::allocateWithCare(std::size_t sizeClass) {
    const auto lock = guard();
    return takePiece(sizeClass);
}

void QVMatchPool::deallocate(void *piece, std::size_t size) {
    const std::size_t sizeClass = (size + granule - 1) / granule;
    if (_shared) [[unlikely]] {
        // Nobody owns the shared pool, and nobody abandons it.
        const std::lock_guard lock(_mutex);
        putPiece(piece, sizeClass);
    } else if (putPiece(piece, sizeClass)) {
        delete this;
    }
}

QVMatchPool::Association &QVMatchPool::associationForMatch(const QVScopeMatch *match) {
    const auto lock = guard();
    return _associations[match];
}

const QVMatchPool::Association *QVMatchPool::existingAssociationForMatch(const QVScopeMatch *match) const {
    const auto lock = guard();
    const auto found = _associations.find(match);
    return found == _associations.end() ? nullptr : &found->second;
}

void QVMatchPool::removeAssociationForMatch(const QVScopeMatch *match) {
    Association removed;
    const auto lock = guard();
    if (const auto found = _associations.find(match); found != _associations.end()) {
        removed = std::move(found->second);
        _associations.erase(found);
    }
}

} // namespace quorvane
