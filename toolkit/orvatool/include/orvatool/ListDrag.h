#pragma once

#include <windows.h>

#include <orvatool/Export.h>

/// Drags rows of one or more report lists to a place in a report list, with the mouse. A line shows the place, and the
/// list scrolls while the mouse is at its upper or lower edge. Esc and the right button break off. The object must
/// live as long as the lists or be destroyed before them.
class ORVATOOL_API ListDrag {
public:
    ListDrag() = default;
    ~ListDrag();
    ListDrag(const ListDrag&) = delete;
    ListDrag& operator=(const ListDrag&) = delete;

    /// Rows are dropped into `target`. Its dialog is then sent `message`: wParam is the control id of the list that
    /// they come from, lParam the row before which they were dropped, or the number of rows for the end.
    void Attach(HWND target, UINT message);

    /// For LVN_BEGINDRAG of a list whose rows may be dropped: `source`, which may be the target itself.
    void Begin(HWND source);

private:
    static constexpr int kNowhere = -1;

    static LRESULT CALLBACK ListProc(HWND list, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                     DWORD_PTR self);
    LRESULT OnSourceMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void Track();
    void Scroll();
    LRESULT Drop(WPARAM wParam, LPARAM lParam);
    void End();
    RECT Rows() const;
    int RowHeight() const;
    int PlaceAt(POINT point) const;
    void ShowMark(int place);
    RECT MarkRect() const;
    void DrawMark() const;

    HWND target_ = nullptr;
    HWND source_ = nullptr;  // null while nothing is dragged
    UINT message_ = 0;
    POINT mouse_{};  // on the screen
    int place_ = kNowhere;
};
