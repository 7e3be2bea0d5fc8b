#pragma once

#include "DialogFonts.h"
#include "DialogHooks.h"

#include <orvatool/DlgControlAnchorer.h>
#include <orvatool/OCDialog.h>

#include <memory>
#include <optional>
#include <set>

/// The window of an OCDialog. It lives as long as the window does, which may be longer than the OCDialog: an override
/// may delete its object while one of its messages is being handled.
class OCDialog::Impl final : public DialogKeys, public std::enable_shared_from_this<Impl> {
public:
    Impl(OCDialog& owner, HINSTANCE instance, HWND parent) : instance_(instance), parent_(parent), owner_(&owner) {}

    int RunModal(const wchar_t* resource);
    HWND CreateModeless(const wchar_t* resource, HWND parent);
    void End(int result);
    /// The OCDialog is about to go: no more virtual calls; a window that is still open is destroyed.
    void Detach() noexcept;

    HWND Window() const { return window_; }
    HWND Control(int ctrlId) const { return window_ ? ::GetDlgItem(window_, ctrlId) : nullptr; }
    HWND Parent() const { return parent_; }
    HINSTANCE Instance() const { return instance_; }
    bool IsModal() const { return run_.modal; }
    unsigned Dpi() const;
    DlgControlAnchorer& Anchorer() { return anchorer_; }

    void SetKeys(const std::set<int>& keys) { keys_ = keys; }
    void SetResize(bool horizontal, bool vertical);
    void SetAnswer(LRESULT answer) { answer_ = answer; }
    void LimitSize(MINMAXINFO& info) const;
    void CreateMenuBar();
    /// Moves the focus on when `control` has it.
    void LeaveControl(HWND control);

    bool OnKey(int virtualKey, bool alt) noexcept override;

private:
    class Creation;

    /// What is true of one run of the dialog, from its creation to its end.
    struct Run {
        bool modal = false;
        SIZE templateSize{};  ///< in dialog units
        int result = kFailed;
        bool creating = false;      ///< the system's creating call has not returned
        bool initializing = false;  ///< OnInitDialog has been called, so OnDestroy will be
        bool ready = false;         ///< SetPosition has been called, so SavePosition will be
        bool painted = false;
        bool ended = false;
        bool failed = false;
        bool destroying = false;
    };

    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    static Impl* Of(HWND window);

    bool Begin(const wchar_t* resource, bool modal);
    INT_PTR Dispatch(UINT message, WPARAM wParam, LPARAM lParam);
    INT_PTR Deliver(UINT message, WPARAM wParam, LPARAM lParam);
    bool DeliverByRange(UINT message, WPARAM wParam, LPARAM lParam);
    bool Alive() const { return owner_ && window_ && !run_.ended && !run_.failed; }
    bool Accepts(UINT message) const;
    INT_PTR Initialize();
    void Prepare();
    void AttachAnchorer();
    void FitMonitor();
    void Destroying();
    void Fail() noexcept;
    void ChangeDpi(unsigned dpi, const RECT* suggested);

    bool IsResizable() const;
    RECT GripRect() const;
    void RefreshGrip();
    void PaintGrip();
    void Painted();
    INT_PTR HitTest(LPARAM screenPoint);

    HINSTANCE instance_;
    HWND parent_;
    OCDialog* owner_;
    HWND window_ = nullptr;
    std::shared_ptr<Impl> self_;  // while there is a window: the dialog may delete itself before the last message
    Run run_;
    LRESULT answer_ = 0;
    unsigned dpi_ = USER_DEFAULT_SCREEN_DPI;
    bool horizontal_ = true;
    bool vertical_ = true;
    RECT grip_{};
    std::set<int> keys_;
    DlgControlAnchorer anchorer_;
    DialogFonts fonts_;
    std::optional<DialogHook> hook_;
};
