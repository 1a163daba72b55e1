#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

namespace quorvane {

template <typename Signature> class QVBlock;

/// A callback that is only called before the operation it was given to returns: a nullable, non-owning
/// reference to any callable, two pointers wide. Enumerations take it, so that passing a lambda allocates
/// nothing. What must be kept past the call is a `std::function`.
template <typename Result, typename... Arguments> class QVBlock<Result(Arguments...)> {
public:
    constexpr QVBlock() = default;
    constexpr QVBlock(std::nullptr_t) {}

    template <typename Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, QVBlock> &&
             std::is_invocable_r_v<Result, Callable &, Arguments...>) QVBlock(Callable &&callable)
        : _callable(const_cast<void *>(static_cast<const void *>(std::addressof(callable)))),
          _invoke([](void *stored, Arguments... arguments) -> Result {
              return (*static_cast<std::remove_reference_t<Callable> *>(stored))(
                  std::forward<Arguments>(arguments)...);
          }) {}

    Result operator()(Arguments... arguments) const {
        return _invoke(_callable, std::forward<Arguments>(arguments)...);
    }

    explicit constexpr operator bool() const { return _invoke != nullptr; }

private:
    void *_callable = nullptr;
    Result (*_invoke)(void *, Arguments...) = nullptr;
};

} // namespace quorvane
