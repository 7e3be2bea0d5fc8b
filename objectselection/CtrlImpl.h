#pragma once

#include <windows.h>

#include <occommonui/ObjectSelection.h>
#include <orvatool/OCDialog.h>

#include <array>
#include <memory>
#include <vector>

#include "Categories.h"
#include "CategoryItems.h"
#include "CategoryTree.h"
#include "FilterRules.h"
#include "HostCallback.h"
#include "ItemArea.h"
#include "LabelCtrl.h"
#include "ParentHook.h"

namespace ObjectSelection::Dlg {

/// The places of the control ids in Attach.
enum Slot : std::size_t {
    kManual,
    kCurrent,
    kSelected,
    kGroup,
    kCategories,
    kItems,
    kFilter,
    kNoData,
    kConfigurationLabel,
    kConfiguration,
    kSave,
    kSaveAs,
    kDelete,
    kRename,
    kNameLabel,
    kName,
    kSlotCount,
};

/// A selection in a dialog. What Attach and SetData give can be copied; the windows are there from OnInitDialog on.
///
/// A tree is filled when its category is first shown: until then the record is what the tree would show. The flag that
/// puts a category in force is kept apart from the record, so that taking one out of force for a moment loses nothing.
class Ctrl::Impl {
public:
    /// All that a copy takes over.
    struct State {
        OCDialog* dlg = nullptr;
        Lng::AppID app = Lng::NoApp;
        Mode mode = NoName;
        int flagMask = 0;
        HostCallback host;
        std::array<int, kSlotCount> ids{};
        std::array<std::int64_t, kCategoryCount> available{};
        RecordData record;
        std::vector<PresetEntry> presets;
        bool paperSpace = false;
    };

    Impl() = default;
    explicit Impl(const State& state) : state_(state) {}
    const State& GetState() const { return state_; }
    State& GetState() { return state_; }

    void Attach(State state);
    bool OnInitDialog();
    bool OnCommand(WPARAM wParam, LPARAM lParam);
    bool OnNotify(WPARAM wParam, LPARAM lParam);
    bool Data2Ctrls();
    int Ctrls2Data();
    void EnableDisableCtrls(EnableMode mode);
    void SetAnchoring(double left, double top, double right, double bottom);
    void SetLanguage();

private:
    enum class Source { Manual, Current, Selected };

    struct Node {
        const CategoryRow* row = nullptr;
        int id = 0;
        HWND tree = nullptr;
        std::unique_ptr<CategoryItems> items;
        bool filled = false;   // the tree shows the items
        bool touched = false;  // the user has changed the tree since
        ustr search;
    };

    struct CommandRow {
        Slot slot;
        int code;
        void (Impl::*run)();
    };
    struct MenuRow {
        int id;
        void (Impl::*run)();
    };
    static const CommandRow kCommands[];
    static const MenuRow kMenuCommands[];

    HWND Window() const { return state_.dlg ? state_.dlg->hWnd() : nullptr; }
    /// Null for a control that the dialog does not have.
    HWND Control(Slot slot) const { return controls_[slot]; }
    void FindControls();
    bool Has(Flag flag) const { return (state_.flagMask & flag) != 0; }

    // Windows and texts (CtrlImpl.cpp)
    void CreateNodes();
    void RemoveOwnAnchors();
    void ShowLabels();
    void NameWindows();
    void FillCategoryTree();
    /// As the category tree was filled last.
    bool IsOffered(const Node& node) const { return categories_.Has(node.id); }
    void ShowCount(const Node& node);
    void ShowFilterCount();

    // The source, and what it makes available
    Source GetSource() const;
    Source SourceOfRecord() const;
    bool IsChecked(Slot slot) const;
    void CheckSource(Source source);
    void ForceSource();
    void LeaveForbiddenSource();
    bool IsAvailable(const Node& node) const;
    ustr WhyNotAvailable(const Node& node) const;
    ustr CaptionOf(Slot slot) const;

    // The nodes
    Node* Find(int id);
    Node* Selected() { return Find(categories_.Selected()); }
    Node* NodeOf(HWND tree);
    ItemSource SourceOfItems() const;
    void Fill(Node& node);
    void Invalidate(Node& node);
    void InvalidateOfDrawings();
    void SelectFirst();
    void ShowSelected();
    void ShowNoData(const Node* node);
    void EnableSelected();
    void ItemsTouched(Node& node);

    // Between the record and the controls
    void ReadCriteria();
    void ReadNodes();
    void DropUnused();
    void ShowName();
    bool ReadName();
    int Validate() const;

    // Enabling
    void EnableEverything();
    void EnableAllowed();
    void EnablePartTypes();
    void EnableControls(bool enable);
    void EnableControl(Slot slot, bool enable);

    // Commands and notifications (CtrlCommands.cpp)
    void ClickManual() { ClickSource(Source::Manual); }
    void ClickCurrent() { ClickSource(Source::Current); }
    void ClickSelected() { ClickSource(Source::Selected); }
    void ClickSource(Source source);
    bool IsOnlyFocused(Slot slot) const;
    void SearchChanged();
    void ToggleCurrentFolder();
    void ToggleFolders();
    bool HasDrawingManager() const;
    void ManageDrawings();
    void AddRule();
    void EditRule();
    void DeleteRules();
    void CheckAll();
    void CheckNone();
    void InvertChecks();
    void TurnChecks(int (*turn)(int state));
    void CheckEvery(Node& node);
    void RefillSelected();
    bool OnCategoryNotify(const NMHDR* header, LPARAM lParam);
    bool OnItemsNotify(Node& node, const NMHDR* header);
    bool IsOfNoInterest(const NMHDR& header);
    bool OnParentMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);
    bool OnContextMenu(HWND from, POINT screenPoint);
    void ShowItemsMenu(HWND from, POINT screenPoint) const;
    void ShowFilterMenu(POINT screenPoint) const;

    // Configurations (CtrlConfigurations.cpp)
    void RefillConfigurations();
    void ShowConfigurations();
    void AddConfiguration(std::size_t index, bool select);
    void SelectRemembered();
    void RememberSelected() const;
    int SelectedConfiguration() const;
    void ChooseConfiguration();
    void Save();
    void SaveAs();
    void RemoveConfiguration();
    void Rename();
    bool AskName(ustr& name) const;

    State state_;
    // Found before trees are made: those may get ids that the dialog has named, but not used.
    std::array<HWND, kSlotCount> controls_{};
    std::array<Node, kCategoryCount> nodes_;
    int largestId_ = 0;
    CategoryTree categories_;
    ItemArea area_;
    FilterRules filter_;
    LabelCtrl labels_;
    bool initialized_ = false;
    bool showing_ = false;  // what the controls report is the control's own doing
    EnableMode enabled_ = EnableAll;
    ParentHook hook_;
};

}  // namespace ObjectSelection::Dlg
