#pragma once

#include <windows.h>

#include <orvatool/Export.h>

#include <map>
#include <vector>

/// Fractions of the dialog's growth by which the edges of a control move: 0 stays, 1 follows the far border.
struct CtrlAnchor {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
};

/// Lays out the controls of a resizable dialog. Every layout is computed from the rectangles at the start, so that no
/// number of resizes makes a control drift, and is carried out in one deferred pass.
class ORVATOOL_API DlgControlAnchorer {
public:
    /// Takes the dialog's present size as the start, laid out for `dpi`, and forgets all anchors. Where the client area
    /// is smaller than `leastClient`, the controls are taken to be laid out for that.
    void Attach(HWND dlg, unsigned dpi, SIZE leastClient = {});

    /// Adds a control or replaces its anchor. The control's present rectangle is taken as its place at the size for
    /// which the dialog was last laid out (at first its start size). False when the dialog has no such control.
    bool Add(int ctrlId, const CtrlAnchor& anchor);

    void Remove(int ctrlId);
    void Clear() { anchored_.clear(); }
    bool IsEmpty() const { return anchored_.empty(); }

    /// Moves every anchored control to its place for the present client size, when that is another than before.
    void Layout();

    /// Moves every control of the dialog, anchored or not, to its place at `dpi`. Going back to an earlier resolution
    /// gives exactly the places of then.
    void SetDpi(unsigned dpi);

    /// The smallest window size (pixels, with frame): that of the dialog at its start.
    SIZE MinimumWindowSize() const;

private:
    struct Anchored {
        HWND control;
        RECT start;    ///< its place at the dialog's start size
        unsigned dpi;  ///< the resolution that `start` is for
        CtrlAnchor anchor;
    };
    struct Loose {
        RECT start;
        unsigned dpi;
        RECT placed;  ///< where it was put last; elsewhere it has been moved by its owner since
    };

    void Arrange(SIZE client);
    SIZE Growth(SIZE client) const;
    RECT Place(const Anchored& item, SIZE growth) const;
    bool IsAnchored(HWND control) const;

    HWND dlg_ = nullptr;
    SIZE startClient_{};
    SIZE startWindow_{};
    SIZE laidOut_{};
    unsigned startDpi_ = USER_DEFAULT_SCREEN_DPI;
    unsigned dpi_ = USER_DEFAULT_SCREEN_DPI;
    std::vector<Anchored> anchored_;
    std::map<HWND, Loose> loose_;
};
