#include "host/Zoom.h"

#include <orvatool/SimpleReportOuputDlg.h>

namespace ochost {
namespace {

std::wstring ToText(const ObjPosInDwg& pos) {
    ustr text(L"zoom to ");
    text += pos.drawing.empty() ? L"the current drawing" : pos.drawing.c_str();
    if (pos.handle != 0) text.formatCat(L", object %I64X", pos.handle);
    if (pos.hasPoint) text.formatCat(L", point %.1f %.1f %.1f", pos.x, pos.y, pos.z);
    return text.c_str();
}

}  // namespace

void LogZooms(Reporter* reporter) {
    if (!reporter) return SimpleReportOuputDlg::SetZoomTo({});
    SimpleReportOuputDlg::SetZoomTo([reporter](HWND, const ObjPosInDwg& pos) {
        reporter->Log(ToText(pos));
        return true;
    });
}

}  // namespace ochost
