/// A callable that lives elsewhere: as std::function, without a block of memory of its own.
#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace quorvex {

template <class Signature>
class FunctionRef;

/// Refers to a callable, which must outlive it; refers to none at first, and is not called then.
template <class Result, class... Arguments>
class FunctionRef<Result(Arguments...)> {
public:
    FunctionRef() = default;
    /// A lambda is handed over as it stands.
    template <class Callable, class = std::enable_if_t<
                                  !std::is_same_v<std::remove_cvref_t<Callable>, FunctionRef> &&
                                  std::is_invocable_r_v<Result, Callable&, Arguments...>>>
    FunctionRef(Callable&& callable) noexcept
        : callable_(const_cast<void*>(static_cast<const void*>(std::addressof(callable)))),
          call_([](void* object, Arguments... arguments) -> Result {
              using Object = std::remove_reference_t<Callable>;
              return (*static_cast<Object*>(object))(std::forward<Arguments>(arguments)...);
          }) {}

    Result operator()(Arguments... arguments) const {
        return call_(callable_, std::forward<Arguments>(arguments)...);
    }
    [[nodiscard]] explicit operator bool() const noexcept { return call_ != nullptr; }

private:
    void* callable_ = nullptr;
    Result (*call_)(void*, Arguments...) = nullptr;
};

}  // namespace quorvex
