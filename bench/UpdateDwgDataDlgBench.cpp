#include <benchmark/benchmark.h>
#include <occommonui/UpdateDwgData.h>
#include <orvasql/Sqlite.h>
#include <orvatool/InterApp.h>
#include <orvatool/OCDialog.h>
#include <sqlite3.h>
#include <windows.h>

#include <commctrl.h>

#include <chrono>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "BareTree.h"
#include "DataItems.h"
#include "PaintAndClose.h"
#include "Paired.h"
#include "TempFolder.h"
#include "host/ProjectTrees.h"
#include "host/selection/SampleProject.h"
#include "host/selection/SelectionCallback.h"
#include "project_ids.h"

// Opening, painting and closing the update dialog on the sample project as its host does, against the same template run
// by DialogBoxParam and filled by bare messages with the same rows; the stored sets are read by a bare statement.

namespace {

using ObjectSelection::Dlg::CbMsgId;

class NoReport : public ochost::Reporter {
public:
    void Before(const std::wstring& /*record*/) override {}
    void After(const std::wstring& /*record*/) override {}
    void Log(const std::wstring& /*line*/) override {}
};

// What the dialog shows of the categories for the application at hand.
TREE_INSERTLIST Categories() {
    const struct {
        int level;
        const wchar_t* text;
    } rows[] = {
        {0, L"Model drawings"      },
        {0, L"Rooms"               },
        {0, L"Functional zones"    },
        {0, L"Layouts"             },
        {0, L"Selection areas"     },
        {0, L"Systems and products"},
        {1, L"Systems"             },
        {1, L"Fitting series"      },
        {1, L"Part types"          },
        {0, L"Properties"          },
        {1, L"Data filter"         },
    };
    TREE_INSERTLIST list;
    for (const auto& row : rows)
        list.push_back(row.level, std::ssize(list) + 1, Lng::Hpv, -1, ustr(row.text));
    list.finalize();
    return list;
}

// The sample project as the host has it open, and what the bare dialog is filled with.
struct Project {
    Project() {
        bareDatabase.Execute("CREATE TABLE bare_set(id INTEGER PRIMARY KEY, name TEXT NOT NULL)");
        std::vector<UpdateDwgData::PrjDb::OptionsRec> sets;
        UpdateDwgData::PrjDb::Read(database, sets);
        orvasql::Statement insert(bareDatabase, "INSERT INTO bare_set(id, name) VALUES(?, ?)");
        for (const auto& set : sets) {
            insert.Bind(1, std::int64_t{set.id});
            insert.Bind(2, std::wstring_view(set.name));
            insert.Run();
        }
        options.selection = callback.Store().Last();
        callback.Get()(CbMsgId::GetRooms, 1, reinterpret_cast<std::int64_t>(&rooms));
    }

    NoReport report;
    TempFolder folder{L"UpdateDwgDataDlgBench"};
    ochost::ProjectStore store = *ochost::OpenSampleProject(folder.File(L"office.ocproject"), 1);
    ochost::SelectionCallback callback{store, Lng::Hpv, report};
    const QBaseDb database{store.Path().c_str()};
    const TREE_INSERTLIST properties = *ochost::PropertyTree(store);
    const TREE_INSERTLIST2 items = DataItems(properties);
    UpdateDwgData::Options options;

    orvasql::Database bareDatabase{store.Path(), orvasql::OpenMode::ReadWrite, std::chrono::milliseconds(0)};
    const TREE_INSERTLIST categories = Categories();
    TREE_INSERTLIST rooms;
};

// ---- the bare dialog ----

void FillSetsBare(HWND sets, const orvasql::Database& database) {
    sqlite3_stmt* select = nullptr;
    sqlite3_prepare_v2(database.Handle(), "SELECT id, name FROM bare_set ORDER BY id", -1, &select, nullptr);
    while (sqlite3_step(select) == SQLITE_ROW) {
        const LRESULT at =
            SendMessageW(sets, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(sqlite3_column_text16(select, 1)));
        SendMessageW(sets, CB_SETITEMDATA, static_cast<WPARAM>(at), sqlite3_column_int(select, 0));
    }
    sqlite3_finalize(select);
}

UINT UncheckedBox(const TREE_INSERTITEM& /*row*/) {
    return 1;
}

UINT BoxOfCategory(const TREE_INSERTITEM& row) {
    const bool isGroup = row.text == L"Systems and products" || row.text == L"Properties";
    return isGroup ? 0 : 1;
}

// The check images go with the dialog.
HIMAGELIST checkImages = nullptr;

void FillBare(HWND tree, const TREE_INSERTLIST& rows, UINT (*stateOf)(const TREE_INSERTITEM&), bool open) {
    TreeView_SetImageList(tree, checkImages, TVSIL_STATE);
    FillTreeBareWithStates(tree, rows, stateOf);
    for (HTREEITEM item = TreeView_GetRoot(tree); open && item; item = TreeView_GetNextSibling(tree, item))
        TreeView_Expand(tree, item, TVE_EXPAND);
}

// In the upper end of the tree's place.
void AddSearchBare(HWND dlg, HWND tree) {
    RECT place{};
    GetWindowRect(tree, &place);
    MapWindowPoints(nullptr, dlg, reinterpret_cast<POINT*>(&place), 2);
    const int width = static_cast<int>(place.right - place.left);
    constexpr int kHeight = 23;
    constexpr int kStep = 29;
    const HWND edit = CreateWindowExW(WS_EX_CLIENTEDGE, WC_EDITW, L"",
                                      WS_CHILD | WS_VISIBLE | WS_DISABLED | WS_TABSTOP | ES_AUTOHSCROLL, place.left,
                                      place.top, width, kHeight, dlg, nullptr, nullptr, nullptr);
    SendMessageW(edit, WM_SETFONT, static_cast<WPARAM>(SendMessageW(tree, WM_GETFONT, 0, 0)), FALSE);
    SendMessageW(edit, EM_SETCUEBANNER, TRUE, reinterpret_cast<LPARAM>(L"Search"));
    MoveWindow(tree, place.left, place.top + kStep, width, place.bottom - place.top - kStep, FALSE);
}

// The trees of the categories that are not shown: they are controls of the dialog, too.
void AddHiddenTreesBare(HWND dlg, HWND pattern) {
    constexpr int kOthers = 10;
    RECT place{};
    GetWindowRect(pattern, &place);
    MapWindowPoints(nullptr, dlg, reinterpret_cast<POINT*>(&place), 2);
    const auto style = static_cast<DWORD>(GetWindowLongPtrW(pattern, GWL_STYLE)) & ~DWORD{WS_VISIBLE};
    const auto exStyle = static_cast<DWORD>(GetWindowLongPtrW(pattern, GWL_EXSTYLE));
    for (int i = 0; i < kOthers; ++i) {
        const HWND tree = CreateWindowExW(exStyle, WC_TREEVIEWW, L"", style, static_cast<int>(place.left),
                                          static_cast<int>(place.top), static_cast<int>(place.right - place.left),
                                          static_cast<int>(place.bottom - place.top), dlg, nullptr, nullptr, nullptr);
        SendMessageW(tree, WM_SETFONT, static_cast<WPARAM>(SendMessageW(pattern, WM_GETFONT, 0, 0)), FALSE);
        TreeView_SetImageList(tree, checkImages, TVSIL_STATE);
    }
}

void SetTextsBare(HWND dlg) {
    const struct {
        int ctrlId;
        const wchar_t* text;
    } rows[] = {
        {IDC_UPDATEDWGDATA_SET_LBL,         L"Selection &set"      },
        {IDC_UPDATEDWGDATA_SAVE,            L"Sa&ve"               },
        {IDC_UPDATEDWGDATA_SAVE_AS,         L"Save &as..."         },
        {IDC_UPDATEDWGDATA_DELETE,          L"&Delete"             },
        {IDC_UPDATEDWGDATA_RENAME,          L"&Rename..."          },
        {IDC_UPDATEDWGDATA_RANGE_GROUP,     L"Range"               },
        {IDC_UPDATEDWGDATA_SEARCH_LBL,      L"S&earch"             },
        {IDC_UPDATEDWGDATA_MANUAL,          L"&Manual selection"   },
        {IDC_UPDATEDWGDATA_CURRENT,         L"&Current drawing"    },
        {IDC_UPDATEDWGDATA_SELECTED,        L"Se&lected drawings"  },
        {IDC_UPDATEDWGDATA_SELECTION_GROUP, L"Object selection set"},
        {IDOK,                              L"OK"                  },
        {IDCANCEL,                          L"Cancel"              },
    };
    SetWindowTextW(dlg, L"Update Drawing Data - OrvaCAD HPV");
    for (const auto& row : rows)
        SetDlgItemTextW(dlg, row.ctrlId, row.text);
}

void FillDialogBare(HWND dlg, const Project& project) {
    checkImages = CreateCheckImagesBare();
    SetTextsBare(dlg);
    FillSetsBare(GetDlgItem(dlg, IDC_UPDATEDWGDATA_SET), project.bareDatabase);
    SendDlgItemMessageW(dlg, IDC_UPDATEDWGDATA_SEARCH, EM_SETCUEBANNER, TRUE,
                        reinterpret_cast<LPARAM>(L"Search data items"));
    const HWND items = GetDlgItem(dlg, IDC_UPDATEDWGDATA_ITEMS);
    TreeView_SetImageList(items, ImageLib::GetImageList(), TVSIL_NORMAL);
    FillBare(items, project.properties, UncheckedBox, false);
    FillBare(GetDlgItem(dlg, IDC_UPDATEDWGDATA_CATEGORIES), project.categories, BoxOfCategory, true);
    CheckDlgButton(dlg, IDC_UPDATEDWGDATA_CURRENT, BST_CHECKED);
    const HWND objects = GetDlgItem(dlg, IDC_UPDATEDWGDATA_OBJECTS);
    AddSearchBare(dlg, objects);
    FillBare(objects, project.rooms, UncheckedBox, true);
    AddHiddenTreesBare(dlg, objects);
    EnableWindow(objects, FALSE);
    for (const int id : {IDC_UPDATEDWGDATA_FILTER, IDC_UPDATEDWGDATA_NO_DATA})
        ShowWindow(GetDlgItem(dlg, id), SW_HIDE);
}

INT_PTR CALLBACK BareProcedure(HWND dlg, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            FillDialogBare(dlg, *reinterpret_cast<const Project*>(lParam));
            return TRUE;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDCANCEL) EndDialog(dlg, 0);
            return FALSE;
        case WM_DESTROY:
            ImageList_Destroy(checkImages);
            return FALSE;
        default:
            return FALSE;
    }
}

// ---- both ----

void OpenOurs(Project& project) {
    UpdateDwgData::OptionsDlg(nullptr, Lng::Hpv, project.options, &project.items, project.database,
                              project.callback.Get(),
                              [](UpdateDwgData::Dlg::MsgId, std::uint64_t, std::int64_t) { return 0; });
}

void OpenBare(const Project& project) {
    const CommonControlsScope commonControls;
    DialogBoxParamW(GetModuleHandleW(L"occommonui.dll"), L"UPDATEDWGDATADLG", nullptr, BareProcedure,
                    reinterpret_cast<LPARAM>(&project));
}

void Open(benchmark::State& state) {
    SetProductKey(L"Software\\OrvaCADBench");
    PaintAndCloseDialogs();
    Project project;
    RunPaired(
        state, [&] { OpenOurs(project); }, [&] { OpenBare(project); });
}

BENCHMARK(Open)->Name("OpenUpdateDwgData")->Unit(benchmark::kMillisecond)->Iterations(100)->Repetitions(1);

}  // namespace
