#include "DialogTables.h"

#include <memory>
#include <string>

MissingControl::MissingControl(int ctrlId) : std::logic_error("the template has no control " + std::to_string(ctrlId)) {
}

HWND RequireControl(const OCDialog& dlg, int ctrlId) {
    const HWND control = ::GetDlgItem(dlg.hWnd(), ctrlId);
    if (!control) throw MissingControl(ctrlId);
    return control;
}

void ApplyTexts(OCDialog& dlg, std::span<const TextRow> rows, Lng::AppID titleApp) {
    for (const TextRow& row : rows) {
        if (row.ctrlId == kCaption) {
            dlg.setHeader(row.app, row.textId, row.text, titleApp);
        } else {
            RequireControl(dlg, row.ctrlId);
            dlg.setItemText(row.app, row.ctrlId, row.textId, row.text);
        }
    }
}

void ApplyAnchors(OCDialog& dlg, std::span<const AnchorRow> rows) {
    for (const AnchorRow& row : rows) {
        RequireControl(dlg, row.ctrlId);
        dlg.addCtrlAnchor(row.ctrlId, row.left, row.top, row.right, row.bottom);
    }
}

void ShowField(HWND dlg, int ctrlId, const Rule& rule, const ustr& value) {
    gwmemotodlg(dlg, ctrlId, value.c_str(), rule.maxChars, 0);
}

bool TakeField(HWND dlg, int ctrlId, const Rule& rule, ustr& value) {
    ustr text = gwdlgtomemo(dlg, ctrlId, rule.maxChars);
    if (rule.required && text.empty()) return false;
    value = std::move(text);
    return true;
}

void ShowField(HWND dlg, int ctrlId, const Rule& /*rule*/, bool value) {
    gwsetcheck(dlg, ctrlId, value);
}

bool TakeField(HWND dlg, int ctrlId, const Rule& /*rule*/, bool& value) {
    value = gwgetcheck(dlg, ctrlId);
    return true;
}

void ShowCommandMenu(const OCDialog& dlg, std::span<const MenuRow> rows, HWND list, POINT screenPoint) {
    struct DestroyMenuFn {
        void operator()(HMENU menu) const { DestroyMenu(menu); }
    };
    const std::unique_ptr<HMENU__, DestroyMenuFn> menu(CreatePopupMenu());
    for (const MenuRow& row : rows) {
        const HWND button = RequireControl(dlg, row.ctrlId);
        const UINT flags = MF_STRING | (IsWindowEnabled(button) ? MF_ENABLED : MF_GRAYED);
        const ustr text = gwdlgtomemo(dlg.hWnd(), row.ctrlId) + row.key;
        AppendMenuW(menu.get(), flags, static_cast<UINT_PTR>(row.ctrlId), text.c_str());
    }
    if (screenPoint.x == -1 && screenPoint.y == -1) {
        screenPoint = {0, 0};
        ClientToScreen(list, &screenPoint);
    }
    TrackPopupMenu(menu.get(), TPM_LEFTALIGN | TPM_RIGHTBUTTON, screenPoint.x, screenPoint.y, 0, dlg.hWnd(), nullptr);
}

bool KeyIsAlone() {
    return GetKeyState(VK_CONTROL) >= 0 && GetKeyState(VK_SHIFT) >= 0 && GetKeyState(VK_MENU) >= 0;
}

void AddColumns(OcListView2& list, std::span<const ColumnRow> rows) {
    for (const ColumnRow& row : rows)
        list.addColumn(Lng::text(row.app, row.textId, row.text), row.width, row.format);
}

void ApplyColumnTexts(OcListView2& list, std::span<const ColumnRow> rows) {
    int column = 0;
    for (const ColumnRow& row : rows)
        list.setColumnText(column++, Lng::text(row.app, row.textId, row.text));
}
