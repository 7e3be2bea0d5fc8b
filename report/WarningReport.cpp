#include <occommonui/WarningReport.h>

#include <windows.h>

#include <orvatool/SimpleReport.h>
#include <orvatool/SimpleReportOuputDlg.h>
#include <orvatool/String.h>
#include <shellapi.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <optional>
#include <unordered_map>
#include <vector>

#include "TrayNotification.h"

namespace {

constexpr wchar_t kReportName[] = L"Warnings";
constexpr unsigned __int64 kNoCategory = UINT64_MAX;

constexpr int kApplicationWidth = 200;
constexpr int kCategoryWidth = 200;
constexpr int kWarningWidth = 600;

struct Warning {
    Lng::AppID app;
    unsigned __int64 category;
    ustr_pre<256> text;
    ObjPosInDwg pos;
};

struct WarningList {
    std::vector<ustr> categories;
    std::vector<Warning> warnings;
    std::unordered_map<ustr, unsigned __int64> categoryByName;
};

// A report window behind a balloon, which is opened by a click on it. Its window's callback owns it.
class BalloonReport {
public:
    // Without a tray the window is opened at once: else the user would never see it.
    void Raise(HWND window, const ustr& title, const ustr& text) {
        window_ = window;
        if (!icon_.Show(window, title, text)) Open();
    }

    void OnTrayEvent(unsigned code) {
        if (code == NIN_BALLOONSHOW) return;
        icon_.Remove();
        if (code == NIN_BALLOONUSERCLICK) Open();
    }

    HWND Window() const { return window_; }
    // The icon has gone without a click on the balloon: nothing opens the window any more.
    bool IsOutOfReach() const { return window_ && !opened_ && !icon_.IsShown(); }

private:
    void Open() {
        opened_ = true;
        ShowWindow(window_, SW_SHOW);
        SetForegroundWindow(window_);
    }

    HWND window_ = nullptr;
    bool opened_ = false;
    TrayNotification icon_;
};

// What the module keeps until it is unloaded.
struct Store {
    Store() = default;
    // The windows' callbacks are code of this module: none may outlive it.
    ~Store() {
        DestroyWindows([](const BalloonReport&) { return true; });
    }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    template <class Condition>
    void DestroyWindows(Condition condition) {
        const auto all = balloons;  // a window may take others with it
        for (const auto& entry : all) {
            auto balloon = entry.lock();
            if (!balloon || !condition(*balloon)) continue;
            const HWND window = balloon->Window();
            balloon.reset();  // so that the icon goes before its owner has gone
            DestroyWindow(window);
        }
        std::erase_if(balloons, [](const auto& entry) { return entry.expired(); });
    }

    std::map<Lng::AppID, WarningList> lists;
    std::optional<SimpleReport> report;
    std::vector<std::weak_ptr<BalloonReport>> balloons;
};

Store& TheStore() {
    static Store store;
    return store;
}

// The warnings in the order of the rows: by category, and within each as they were added.
std::vector<const Warning*> Rows(const WarningList& list) {
    const std::size_t categories = list.categories.size();
    std::vector<std::size_t> rowOf(categories + 1);
    for (const Warning& warning : list.warnings) {
        if (warning.category < categories) ++rowOf[warning.category + 1];
    }
    std::partial_sum(rowOf.begin(), rowOf.end(), rowOf.begin());
    std::vector<const Warning*> rows(rowOf.back());
    for (const Warning& warning : list.warnings) {
        if (warning.category < categories) rows[rowOf[warning.category]++] = &warning;
    }
    return rows;
}

SimpleReport NewReport(Lng::AppID firstApp) {
    SimpleReport report(kReportName);
    report.SetTitle(Lng::text(kSharedTexts, 60258, L"Warnings"));
    if (firstApp == Lng::NoApp)
        report.AddColumn(Lng::text(kSharedTexts, 60176, L"Application name"), kApplicationWidth);
    report.AddColumn(Lng::text(kSharedTexts, 60259, L"Category"), kCategoryWidth);
    report.AddColumn(Lng::text(kSharedTexts, 42954, L"Warning"), kWarningWidth);
    return report;
}

void FillRows(SimpleReport& report, const WarningList& list, const std::vector<const Warning*>& rows) {
    const int columns = static_cast<int>(report.Columns().size());
    const bool namesApplication = columns > 2;
    report.ClearRows();
    report.ReserveRows(static_cast<int>(rows.size()));
    for (const Warning* warning : rows) {
        const int row = report.AddRow(warning->pos);
        if (namesApplication) report.SetText(row, 0, Lng::GetAppName(warning->app, false));
        report.SetText(row, columns - 2, list.categories[warning->category]);
        report.SetText(row, columns - 1, warning->text);
    }
}

// The report of the application's warnings; null when there are none to show.
const SimpleReport* BuildReport(Lng::AppID app) {
    Store& store = TheStore();
    const auto found = store.lists.find(app);
    if (found == store.lists.end()) return nullptr;
    const std::vector<const Warning*> rows = Rows(found->second);
    if (rows.empty()) return nullptr;
    if (!store.report) store.report = NewReport(app);
    store.report->SetAppID(app);
    FillRows(*store.report, found->second, rows);
    return &*store.report;
}

void RaiseBalloon(HWND parent, const SimpleReport& report, const std::vector<ustr>& categories) {
    const ustr title = Lng::text(kSharedTexts, 60257, L"OrvaCAD warning");
    const ustr text = String::ArrayToString(categories);
    const auto balloon = std::make_shared<BalloonReport>();
    TheStore().balloons.push_back(balloon);
    const auto callback = [balloon](OCDialog*, std::uint32_t message, std::uint64_t, std::int64_t lParam) {
        if (message == TrayNotification::kMessage) balloon->OnTrayEvent(LOWORD(lParam));
        return std::int64_t{0};
    };
    if (const HWND window = SimpleReportOuputDlg::Create(parent, report, callback)) balloon->Raise(window, title, text);
}

}  // namespace

unsigned __int64 WarningReport::AddCategory(Lng::AppID app, const ustr& name) {
    try {
        WarningList& list = TheStore().lists[app];
        const auto found = list.categoryByName.find(name);
        if (found != list.categoryByName.end()) return found->second;
        list.categories.push_back(name);
        return list.categoryByName.emplace(name, list.categories.size() - 1).first->second;
    } catch (...) {
        return kNoCategory;
    }
}

void WarningReport::Add(Lng::AppID app, unsigned __int64 category, const ustr& text, const ObjPosInDwg& pos) {
    try {
        TheStore().lists[app].warnings.push_back({app, category, text, pos});
    } catch (...) {
        // Memory has run out, and the warning is lost.
    }
}

void WarningReport::Clear(Lng::AppID app) {
    TheStore().lists.erase(app);
}

bool WarningReport::ShowReport(HWND parent, Lng::AppID app) {
    try {
        const SimpleReport* report = BuildReport(app);
        return report && SimpleReportOuputDlg::Run(parent, *report, {});
    } catch (...) {
        return false;
    }
}

void WarningReport::ShowNotification(HWND parent, Lng::AppID app) {
    try {
        // A hidden report whose icon has gone without a click cannot be reached any more: it lives until the next
        // notification or, as every report does, at the longest as long as its parent.
        TheStore().DestroyWindows(std::mem_fn(&BalloonReport::IsOutOfReach));
        if (const SimpleReport* report = BuildReport(app))
            RaiseBalloon(parent, *report, TheStore().lists.at(app).categories);
    } catch (...) {
        // Memory has run out, and the user is not told.
    }
}
