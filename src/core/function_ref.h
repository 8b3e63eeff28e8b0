// A non-owning reference to a callable: lets engines in .cpp files take
// lambdas without std::function's allocation.
#pragma once
#include <memory>
#include <type_traits>
#include <utility>

namespace zan {

template <class Sig>
class FunctionRef;

template <class R, class... A>
class FunctionRef<R(A...)> {
public:
    // Plain functions are held by pointer.
    FunctionRef(R (*fn)(A...)) : call_(&callFunction) { target_.fn = fn; }  // NOLINT: implicit by design

    template <class F, class = std::enable_if_t<!std::is_same_v<std::decay_t<F>, FunctionRef> &&
                                                !std::is_function_v<std::remove_reference_t<F>>>>
    FunctionRef(F&& f)  // NOLINT: implicit by design
        : call_(&callObject<std::remove_reference_t<F>>) {
        target_.obj = const_cast<void*>(static_cast<const void*>(std::addressof(f)));
    }

    R operator()(A... a) const { return call_(target_, std::forward<A>(a)...); }

private:
    union Target {
        void* obj;
        R (*fn)(A...);
    };
    static R callFunction(Target t, A... a) { return t.fn(std::forward<A>(a)...); }
    template <class F>
    static R callObject(Target t, A... a) {
        return (*static_cast<F*>(t.obj))(std::forward<A>(a)...);
    }

    Target target_;
    R (*call_)(Target, A...);
};

}  // namespace zan
