#pragma once

#include "Quorvane/Matches/QVMatch.h"
#include "Quorvane/Matches/QVMatchPool.h"

#include <boost/container/small_vector.hpp>

namespace quorvane {

/// The capture matches of one match, in the order of its scope's captures. Every other match has some, mostly
/// one or two, so they stand in the array itself, which comes from the pool of its match; so it may be let go
/// where its matches may be, and by nobody beside the tree's writer.
class QVCaptureMatchArray final
    : public boost::container::small_vector<boost::intrusive_ptr<QVCaptureMatch>, 3> {
public:
    using small_vector::small_vector;

    // Hosts own arrays too, and know nothing of pools.
    QV_EXPORT static void *operator new(std::size_t size);
    static void *operator new(std::size_t size, QVMatchPool &pool);
    QV_EXPORT static void operator delete(void *array, std::size_t size);
    static void operator delete(void *array, QVMatchPool &pool);
};

} // namespace quorvane
