#pragma once

#include <string>
#include <utility>
#include <variant>

namespace ochost {

enum class FailureKind {
    NotFound,
    AlreadyExists,
    NotAProject,
    Damaged,
    Newer,
    Locked,
    ReadOnly,
    BadInput,
    System,
};

/// Why an operation did not happen. `message` is complete and meant for the user: what failed and what to do about it.
struct Failure {
    FailureKind kind = FailureKind::System;
    std::wstring message;
};

/// A value, or the failure that kept it from being made. Reading the side that is not there is a programming error
/// (std::bad_variant_access).
template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) : state_(std::move(value)) {}
    Result(Failure failure) : state_(std::move(failure)) {}

    explicit operator bool() const { return std::holds_alternative<T>(state_); }

    T& operator*() & { return std::get<T>(state_); }
    const T& operator*() const& { return std::get<T>(state_); }
    T&& operator*() && { return std::get<T>(std::move(state_)); }
    T* operator->() { return &std::get<T>(state_); }
    const T* operator->() const { return &std::get<T>(state_); }

    const Failure& Error() const { return std::get<Failure>(state_); }

private:
    std::variant<T, Failure> state_;
};

/// The result of an operation that gives nothing back: `return Done{};` when it happened.
using Done = std::monostate;
using Status = Result<Done>;

/// What a Result holds; throws its Failure.
template <class T>
T ValueOf(Result<T> result) {
    if (!result) throw result.Error();
    return *std::move(result);
}

/// Throws the Failure of what did not happen.
inline void Check(const Status& status) {
    if (!status) throw status.Error();
}

}  // namespace ochost
