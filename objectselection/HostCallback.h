#pragma once

#include <occommonui/ObjectSelection.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

/// The one way in which the library asks its host: the only place that knows what a host that throws counts as.
///
/// An empty callback is the caller's fault and throws std::bad_function_call.
class HostCallback {
public:
    using Message = ObjectSelection::Dlg::CbMsgId;

    HostCallback() = default;
    explicit HostCallback(ObjectSelection::Dlg::Callback callback) : callback_(std::move(callback)) {}

    const ObjectSelection::Dlg::Callback& Get() const { return callback_; }

    /// The answer; none when the host throws.
    std::optional<std::int64_t> TryAsk(Message message, std::uint64_t wParam = 0, std::int64_t lParam = 0) const {
        if (!callback_) throw std::bad_function_call();
        try {
            return callback_(message, wParam, lParam);
        } catch (...) {
            return std::nullopt;
        }
    }

    /// A host that throws answers 0.
    std::int64_t Ask(Message message, std::uint64_t wParam = 0, std::int64_t lParam = 0) const {
        return TryAsk(message, wParam, lParam).value_or(0);
    }

    /// For messages to which 0 means success: a host that throws has refused.
    std::int64_t AskRefusing(Message message, std::uint64_t wParam = 0, std::int64_t lParam = 0) const {
        return TryAsk(message, wParam, lParam).value_or(kRefused);
    }

    /// Asks for `target`, which one of the parameters points to: a host that throws answers 0 and fills nothing.
    template <class Target>
    std::int64_t AskFor(Target& target, Message message, std::uint64_t wParam, std::int64_t lParam) const {
        Target before = target;
        const std::optional<std::int64_t> answer = TryAsk(message, wParam, lParam);
        if (!answer) target = std::move(before);
        return answer.value_or(0);
    }

    static std::uint64_t WParam(const void* pointer) { return reinterpret_cast<std::uintptr_t>(pointer); }
    static std::int64_t LParam(const void* pointer) {
        return static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(pointer));
    }

private:
    static constexpr std::int64_t kRefused = 1;

    ObjectSelection::Dlg::Callback callback_;
};
