#include "Quorvane/Text/QVLayoutManager.h"

namespace quorvane {

QVLayoutManager::QVLayoutManager() = default;
QVLayoutManager::~QVLayoutManager() = default;

} // namespace quorvane
