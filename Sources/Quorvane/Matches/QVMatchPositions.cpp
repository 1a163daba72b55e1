#include "Quorvane/Matches/QVMatchPositions.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Matches/QVScopeMatch.h"

#include <algorithm>

namespace quorvane {

namespace {

constinit QVPositionGroup absoluteGroup;

} // namespace

constinit QVPositionChunk QVPositionChunk::absolute{0, &absoluteGroup, 0, 0};

struct QVMatchPositions::Group : QVPositionGroup {
    std::vector<QVPositionChunk *> chunks;
    std::size_t index = 0;

    explicit Group(QVMatchPositions *owner) { positions = owner; }
    Group(const Group &) = delete;
    Group &operator=(const Group &) = delete;
    ~Group() {
        for (const QVPositionChunk *const chunk : chunks)
            delete chunk;
    }
};

/// One place of the order: a match's start or a region's end.
struct QVMatchPositions::Item {
    QVScopeMatch *match;
    bool isEnd;

    bool operator==(const Item &) const = default;
};

QVMatchPositions::QVMatchPositions(std::uint32_t chunkSize, std::uint32_t groupSize)
    : _chunkSize(chunkSize), _groupSize(groupSize), _edgeGroup{0, this}, _edge{0, &_edgeGroup, 0, 0} {}

QVMatchPositions::~QVMatchPositions() = default;

QVMatchPositions *QVMatchPositions::positionsOf(const QVMatch *match) {
    return match->positionChunk()->group->positions;
}

std::size_t QVMatchPositions::chunkCount() const {
    std::size_t count = 0;
    for (const auto &group : _groups)
        count += group->chunks.size();
    return count;
}

// The order

QVMatchPositions::Item QVMatchPositions::lastItem(QVScopeMatch *match) {
    return {match, static_cast<bool>(match->_hasSubmatches)};
}

QVMatchPositions::Item QVMatchPositions::nextItem(Item item) {
    QVScopeMatch *const match = item.match;
    if (!item.isEnd && match->_hasSubmatches) {
        QVScopeMatch *const child = match->regionStorage()->firstChild;
        return child != nullptr ? Item{child, false} : Item{match, true};
    }
    if (match->_nextSibling != nullptr)
        return {static_cast<QVScopeMatch *>(match->_nextSibling), false};
    return {match->_parentMatch, true};
}

QVMatchPositions::Item QVMatchPositions::previousItem(Item item) {
    QVScopeMatch *const match = item.match;
    if (item.isEnd) {
        QVScopeMatch *const child = match->regionStorage()->lastChild;
        return child != nullptr ? lastItem(child) : Item{match, false};
    }
    if (match->_previousSibling != nullptr)
        return lastItem(static_cast<QVScopeMatch *>(match->_previousSibling));
    return {match->_parentMatch, false};
}

QVPositionChunk *QVMatchPositions::chunkOf(Item item) {
    return item.isEnd ? item.match->regionStorage()->endChunk : item.match->positionChunk();
}

void QVMatchPositions::move(Item item, QVPositionChunk *chunk, NSUInteger difference) {
    const auto moveCaptures = [&](const QVCaptureMatchArray *captures) {
        if (captures == nullptr)
            return;
        for (const auto &capture : *captures)
            capture->moveStoredPlace(chunk, difference);
    };
    QVScopeMatch *const match = item.match;
    if (item.isEnd) {
        QVScopeMatchRegionStorage *const storage = match->regionStorage();
        if (storage->endRange.location != NSNotFound)
            storage->endRange.location += difference;
        storage->endChunk = chunk;
        moveCaptures(storage->endCaptureMatches.get());
    } else {
        match->moveStoredPlace(chunk, difference);
        if (match->hasStorage())
            moveCaptures(match->storage()->captureMatches.get());
    }
}

// Chunks and groups

QVMatchPositions::Group *QVMatchPositions::groupOf(const QVPositionChunk *chunk) const {
    return static_cast<Group *>(chunk->group);
}

void QVMatchPositions::numberChunks(Group *group, std::size_t from) {
    for (; from < group->chunks.size(); ++from)
        group->chunks[from]->index = static_cast<std::uint32_t>(from);
}

void QVMatchPositions::numberGroups(std::size_t from) {
    for (; from < _groups.size(); ++from)
        _groups[from]->index = from;
}

QVPositionChunk *QVMatchPositions::newFirstChunk() {
    QVAssert(_groups.empty(), u"A tree without places has chunks of them");
    _groups.push_back(std::make_unique<Group>(this));
    Group *const group = _groups.front().get();
    group->chunks.push_back(new QVPositionChunk{0, group, 0, 0});
    return group->chunks.front();
}

QVPositionChunk *QVMatchPositions::newChunkBehind(QVPositionChunk *chunk, NSUInteger offset) {
    Group *const group = groupOf(chunk);
    const std::size_t index = chunk->index + 1;
    auto *const made = new QVPositionChunk{offset, group, 0, 0};
    group->chunks.insert(group->chunks.begin() + static_cast<std::ptrdiff_t>(index), made);
    numberChunks(group, index);
    splitIfLarge(group);
    return made;
}

void QVMatchPositions::splitIfLarge(Group *group) {
    if (group->chunks.size() <= 2 * _groupSize)
        return;
    // Mostly a group grows at its end, as chunks are filled one after another: then the first part is left as
    // large as others are.
    auto made = std::make_unique<Group>(this);
    made->offset = group->offset;
    const auto kept = group->chunks.begin() + static_cast<std::ptrdiff_t>(_groupSize);
    made->chunks.assign(kept, group->chunks.end());
    group->chunks.erase(kept, group->chunks.end());
    for (QVPositionChunk *const chunk : made->chunks)
        chunk->group = made.get();
    numberChunks(made.get(), 0);
    const std::size_t index = group->index + 1;
    _groups.insert(_groups.begin() + static_cast<std::ptrdiff_t>(index), std::move(made));
    numberGroups(index);
}

void QVMatchPositions::joinGroups(std::size_t first) {
    if (first + 1 >= _groups.size() ||
        _groups[first]->chunks.size() + _groups[first + 1]->chunks.size() > _groupSize)
        return;
    Group *const group = _groups[first].get();
    Group *const next = _groups[first + 1].get();
    const std::size_t count = group->chunks.size();
    for (QVPositionChunk *const chunk : next->chunks) {
        chunk->offset += next->offset - group->offset;
        chunk->group = group;
        group->chunks.push_back(chunk);
    }
    numberChunks(group, count);
    next->chunks.clear();
    _groups.erase(_groups.begin() + static_cast<std::ptrdiff_t>(first) + 1);
    numberGroups(first + 1);
}

void QVMatchPositions::remove(QVPositionChunk *chunk) {
    Group *const group = groupOf(chunk);
    const std::size_t index = chunk->index;
    group->chunks.erase(group->chunks.begin() + static_cast<std::ptrdiff_t>(index));
    delete chunk;
    numberChunks(group, index);
    const std::size_t place = group->index;
    if (group->chunks.empty()) {
        _groups.erase(_groups.begin() + static_cast<std::ptrdiff_t>(place));
        numberGroups(place);
    } else if (group->chunks.size() * 2 <= _groupSize) {
        joinGroups(place);
        if (place > 0)
            joinGroups(place - 1);
    }
}

/// Gives an item's chunk from the item on to a new one.
void QVMatchPositions::cutBefore(Item item) {
    QVPositionChunk *const chunk = chunkOf(item);
    QVPositionChunk *const rest = newChunkBehind(chunk, chunk->offset);
    for (; chunkOf(item) == chunk; item = nextItem(item)) {
        move(item, rest, 0);
        ++rest->count;
        --chunk->count;
    }
}

void QVMatchPositions::joinIfSmall(Item before, Item behind) {
    QVPositionChunk *const first = chunkOf(before);
    QVPositionChunk *const second = chunkOf(behind);
    if (first == second || first == &_edge || second == &_edge || first->count + second->count > _chunkSize)
        return;
    const NSUInteger difference = second->shift() - first->shift();
    for (; chunkOf(behind) == second; behind = nextItem(behind))
        move(behind, first, difference);
    first->count += second->count;
    remove(second);
}

// The tree's upkeep

void QVMatchPositions::setRoot(QVScopeMatch *root) {
    _root = root;
    root->_positionChunk = &_edge;
    root->regionStorage()->endChunk = &_edge;
    if (QVScopeMatch *const first = QVScopeMatch::directFirstChild(root))
        attach(first, QVScopeMatch::directLastChild(root));
}

void QVMatchPositions::releaseRoot() {
    QVAssert(_groups.empty(), u"A tree with places is let go");
    _root->_positionChunk = &QVPositionChunk::absolute;
    _root->regionStorage()->endChunk = &QVPositionChunk::absolute;
    _root = nullptr;
}

void QVMatchPositions::attach(QVScopeMatch *first, QVScopeMatch *last) {
    const Item before = previousItem({first, false});
    const Item end = nextItem(lastItem(last));
    QVPositionChunk *chunk = chunkOf(before);
    if (chunk == &_edge)
        chunk = chunkOf(end);
    // What is there may take some more, what is made is left with room.
    std::uint32_t limit = 2 * _chunkSize;
    if (chunk == &_edge) {
        chunk = newFirstChunk();
        limit = _chunkSize;
    }
    NSUInteger shift = chunk->shift();
    for (Item item{first, false}; item != end; item = nextItem(item)) {
        if (chunk->count >= limit) {
            if (chunkOf(end) == chunk)
                cutBefore(end);
            limit = _chunkSize;
            if (chunk->count >= limit) {
                // Absolute as those that come in, so that these are only pointed at it.
                chunk = newChunkBehind(chunk, 0);
                chunk->offset = 0 - chunk->group->offset;
            }
            shift = chunk->shift();
        }
        move(item, chunk, 0 - shift);
        ++chunk->count;
        if (!item.isEnd && item.match->_skipForBumping)
            noteMark(item.match, true);
    }
    joinIfSmall(previousItem(end), end);
    joinIfSmall(before, nextItem(before));
}

void QVMatchPositions::detachItems(QVScopeMatch *first, QVScopeMatch *last) {
    const Item end = lastItem(last);
    for (Item item{first, false};; item = nextItem(item)) {
        if (!item.isEnd && item.match->_skipForBumping)
            noteMark(item.match, false);
        QVPositionChunk *const chunk = chunkOf(item);
        move(item, &QVPositionChunk::absolute, chunk->shift());
        forgetPlace(chunk);
        if (item == end)
            return;
    }
}

void QVMatchPositions::detach(QVScopeMatch *first, QVScopeMatch *last) {
    const Item before = previousItem({first, false});
    const Item behind = nextItem(lastItem(last));
    detachItems(first, last);
    joinIfSmall(before, behind);
}

void QVMatchPositions::detachSurvivor(QVScopeMatch *match) { positionsOf(match)->detachItems(match, match); }

void QVMatchPositions::forgetPlace(QVPositionChunk *chunk) {
    QVMatchPositions *const positions = chunk->group->positions;
    if (positions == nullptr)
        return;
    if (chunk == &positions->_edge)
        positions->_root = nullptr;
    else if (--chunk->count == 0)
        positions->remove(chunk);
}

void QVMatchPositions::noteMark(QVScopeMatch *match, bool skipForBumping) {
    if (skipForBumping)
        _marked.push_back(match);
    else
        std::erase(_marked, match);
}

// Moving

void QVMatchPositions::shiftBehindMatch(const QVScopeMatch *match, NSInteger delta) {
    if (delta == 0 || match == _root)
        return;
    const auto difference = static_cast<NSUInteger>(delta);
    // Few are marked, and where they stand does not matter: each is left where it was.
    struct Marked {
        QVScopeMatch *match;
        NSRange range;
        NSRange endRange;
        std::vector<NSRange> captures;
    };
    const auto eachCapture = [](QVScopeMatch *marked, const auto &visit) {
        for (const QVCaptureMatchArray *captures : {marked->captureMatches(), marked->endCaptureMatches()})
            if (captures != nullptr)
                for (const auto &capture : *captures)
                    visit(*capture);
    };
    std::vector<Marked> marks;
    for (QVScopeMatch *const marked : _marked) {
        marks.push_back({marked, marked->range(), marked->endRange(), {}});
        eachCapture(marked, [&](QVMatch &capture) { marks.back().captures.push_back(capture.range()); });
    }

    Item item = nextItem(lastItem(const_cast<QVScopeMatch *>(match)));
    QVPositionChunk *const chunk = chunkOf(item);
    if (chunk == &_edge)
        return;
    for (; chunkOf(item) == chunk; item = nextItem(item))
        move(item, chunk, difference);
    Group *const group = groupOf(chunk);
    for (std::size_t later = chunk->index + 1; later < group->chunks.size(); ++later)
        group->chunks[later]->offset += difference;
    for (std::size_t later = group->index + 1; later < _groups.size(); ++later)
        _groups[later]->offset += difference;

    for (const Marked &marked : marks) {
        marked.match->setRange(marked.range);
        if (marked.match->_hasSubmatches) {
            QVScopeMatchRegionStorage *const storage = marked.match->regionStorage();
            storage->endRange = storage->endChunk->storedOfPlace(marked.endRange);
        }
        std::size_t index = 0;
        eachCapture(marked.match, [&](QVMatch &capture) { capture.setRange(marked.captures[index++]); });
    }
    verify();
}

// Checking

/// Each edit comes by here once. The check walks the tree, so large ones are spared it.
void QVMatchPositions::verify() const {
#if defined(QUORVANE_VERIFY)
    if (chunkCount() > 150)
        return;
    const char *const found = problem();
    QVAssert(found == nullptr, u"The places of a tree are out of order: %@",
             NSString::stringWithUTF8String(found));
#endif
}

const char *QVMatchPositions::problem() const {
    if (_root == nullptr)
        return _groups.empty() ? nullptr : "there are chunks without a tree";
    std::size_t group = 0;
    std::size_t index = 0;
    std::uint32_t count = 0;
    const auto hasOtherCaptures = [](const QVCaptureMatchArray *captures, const QVPositionChunk *chunk) {
        return captures != nullptr &&
               std::any_of(captures->begin(), captures->end(),
                           [&](const auto &capture) { return capture->positionChunk() != chunk; });
    };
    for (Item item = nextItem({_root, false}); item.match != _root; item = nextItem(item)) {
        const QVPositionChunk *const chunk = chunkOf(item);
        if (hasOtherCaptures(item.isEnd ? item.match->endCaptureMatches() : item.match->captureMatches(),
                             chunk))
            return "a capture stands in another chunk than its match";
        if (group < _groups.size() && count == _groups[group]->chunks[index]->count) {
            count = 0;
            if (++index == _groups[group]->chunks.size()) {
                index = 0;
                ++group;
            }
        }
        if (group == _groups.size() || chunk != _groups[group]->chunks[index])
            return "a place stands in another chunk than its neighbours";
        ++count;
    }
    if (!_groups.empty() && (group + 1 != _groups.size() || index + 1 != _groups[group]->chunks.size() ||
                             count != _groups[group]->chunks[index]->count))
        return "there are more places than the tree has";
    for (std::size_t place = 0; place < _groups.size(); ++place) {
        const Group &one = *_groups[place];
        if (one.index != place || one.positions != this || one.chunks.empty() ||
            one.chunks.size() > 2 * _groupSize)
            return "a group is misplaced, empty or too large";
        for (std::size_t number = 0; number < one.chunks.size(); ++number)
            if (one.chunks[number]->index != number || one.chunks[number]->group != &one ||
                one.chunks[number]->count == 0 || one.chunks[number]->count > 2 * _chunkSize)
                return "a chunk is misplaced, empty or too large";
    }
    return nullptr;
}

} // namespace quorvane
