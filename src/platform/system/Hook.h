#pragma once

#include <functional>
#include <type_traits>
#include <utility>
#include <variant>

namespace qb {

/// A call that an object makes to whoever uses it, and that may be answered or not. As long as nobody has taken it,
/// it does nothing and gives the value that it was made with, by default `R()`.
template <class Signature>
class Hook;

template <class R, class... Args>
class Hook<R(Args...)> {
    using Value = std::conditional_t<std::is_void_v<R>, std::monostate, R>;

public:
    Hook() = default;
    /// Gives @p unanswered until somebody takes the call.
    explicit Hook(Value unanswered) : m_unanswered(std::move(unanswered)) {}

    /// @p answer takes the call.
    template <class Answer>
    requires(!std::is_same_v<std::remove_cvref_t<Answer>, Hook> && std::is_invocable_r_v<R, Answer&, Args...>)
        Hook(Answer&& answer)
        : m_answer(std::forward<Answer>(answer)) // NOLINT(google-explicit-constructor)
    {
    }
    template <class Answer>
    requires(!std::is_same_v<std::remove_cvref_t<Answer>, Hook> && std::is_invocable_r_v<R, Answer&, Args...>) Hook&
    operator=(Answer&& answer)
    {
        m_answer = std::forward<Answer>(answer);
        return *this;
    }

    R operator()(Args... args) const
    {
        if (m_answer)
            return m_answer(std::forward<Args>(args)...);
        if constexpr (!std::is_void_v<R>)
            return m_unanswered;
    }

private:
    std::function<R(Args...)> m_answer;
    [[no_unique_address]] Value m_unanswered{};
};

} // namespace qb
