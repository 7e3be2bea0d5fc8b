#pragma once

#include <occommonui/Export.h>
#include <orvaspace/ustr.h>
#include <orvatool/LabelManager.h>
#include <orvatool/Lng.h>
#include <orvatool/ObjectSelection.h>
#include <orvatool/TreeInsertList.h>
#include <orvatool/Win32Types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class OCDialog;

/// The dialogs and the embeddable control with which users choose objects, and what a host answers to them. The records
/// they edit are in <orvatool/ObjectSelection.h>.
///
/// All that the library cannot know of the project it asks the host for, through one callback. A host can be written
/// from this header alone.
namespace ObjectSelection::Dlg {

/// The messages to the host: (message, wParam, lParam) with a 64-bit answer. Where a parameter is a pointer, what it
/// points to is given; it is the host's to use during the call only. Parameters not named are 0, and so are the answers
/// that nothing is said about. A callback that throws counts as one that answers 0 and fills nothing, except where an
/// answer of 0 would mean success: there it counts as refused.
enum CbMsgId : std::int32_t {
    /// A configuration was chosen. wParam: RecordData* whose key is set. Load its name and criteria into it.
    LoadConfiguration = 0,
    /// wParam: HWND of the owner. Lock the project for editing. 0: locked; else refused, and the host has said why.
    LockProject = 1,
    /// Release the lock.
    UnlockProject = 2,
    /// wParam: HWND of the dialog. Run the host's own drawing manager.
    ManageDrawings = 3,
    /// wParam: LabelManager::Labels* to fill with the labels in use.
    GetLabels = 4,
    /// lParam: std::vector<DrawingEntry>* to fill with the project's drawings. wParam 1: for the choice of model
    /// drawings; 0: for the names in them.
    GetDrawings = 5,
    /// wParam: RecordData*. Store it. An empty key means a new one: write its key into the record.
    SaveConfiguration = 6,
    /// wParam: const char* key. Delete it. 0: deleted.
    DeleteConfiguration = 7,
    /// wParam: const char* key; lParam: const wchar_t* new name. Rename it.
    RenameConfiguration = 8,
    /// lParam: ustr_pre<260>* for the path of the current drawing.
    GetCurrentDrawing = 9,
    /// Answer non-zero when the project has such areas or pages.
    HasSelectionAreas = 10,
    HasPages = 11,
    HasSwitchboardAreas = 12,
    HasHostAreas = 13,
    /// wParam: std::vector<PresetEntry>* to fill with the stored configurations.
    GetConfigurations = 14,
    /// Answer non-zero when rooms and functional zones can be had.
    HasRooms = 15,
    /// wParam: 1 when only the current drawing counts, else 0; lParam: TREE_INSERTLIST* to fill. A row's value is its
    /// id, 1 or more; any other value makes it a heading.
    GetRooms = 16,
    GetFunctionalZones = 17,
    /// The rule editor's property was chosen. wParam: its index in the list of GetProperties. Answer its PropertyKind.
    GetPropertyKind = 18,
    /// lParam: std::vector<PropertyEntry>* to fill with the properties that rules can be about.
    GetProperties = 19,
    /// wParam: property id; lParam: ustr* for its name.
    GetPropertyName = 20,
    /// wParam: property id; lParam: ValueText*. Write the value as users read it.
    GetValueText = 21,
    /// lParam: TREE_INSERTLIST* to fill; rows as in GetRooms.
    GetSystems = 22,
    GetFittingSeries = 23,
    /// wParam: the flag mask; lParam: TREE_INSERTLIST* to fill. Asked when FillPartTypes was declined.
    GetPartTypes = 24,
    /// wParam: property id; lParam: std::vector<ValueEntry>* to fill with the values that the property can have.
    GetPropertyValues = 25,
    /// wParam: HWND of the tree; lParam: PartTypeFill*. Fill the tree, with checks, and answer non-zero; 0: the library
    /// asks GetPartTypes.
    FillPartTypes = 26,
    /// wParam: HWND of the tree; lParam: Data*. Put the checked part types into it and answer non-zero; 0: the library
    /// collects the checked ids. Answer 0 where FillPartTypes was declined: a tree that the library has filled may have
    /// the rows that a search shows only.
    ReadPartTypes = 27,
    /// wParam: EditorSetup*; lParam: the Property that is edited (const Property*). Change what the editor offers.
    SetUpEditor = 28,
    /// The user wants to choose a value. wParam: ValueChoice*; lParam: HWND of the dialog. Answer non-zero when the
    /// host has dealt with it; 0: the editor offers the values of GetPropertyValues.
    ChooseValue = 29,
};

using Callback = std::function<std::int64_t(CbMsgId, std::uint64_t, std::int64_t)>;

/// A drawing of the project, with the names that it has in it.
struct DrawingEntry {
    DrawingRef drawing;
    ustr_pre<260> title;  ///< what users know it by; may be empty
    std::vector<ustr> layouts;
    std::vector<ustr> selectionAreas;
    std::vector<ustr> pages;
    std::vector<ustr> switchboardAreas;
    std::vector<ustr> hostAreas;
};

/// What the values of a property are.
enum PropertyKind : std::int64_t {
    TextValue = 0,
    NumberValue = 1,
    ChoiceValue = 2,  ///< one of GetPropertyValues
};

struct PropertyEntry {
    std::int32_t id = 0;
    ustr_pre<32> name;
    ustr_pre<32> group;  ///< heading in the list; may be empty
};

/// A value of a property and how users read it.
struct ValueText {
    const wchar_t* value = nullptr;  ///< as in Property::Criterion
    ustr text;                       ///< starts as the value itself; such as "1.2 kW"
};

struct ValueEntry {
    ustr_pre<32> value;  ///< as in Property::Criterion
    ustr_pre<32> text;   ///< as users read it; empty: as the value
    int level = 0;       ///< in the tree of values
};

/// The part types to be filled in, see FillPartTypes.
struct PartTypeFill {
    const Data* data = nullptr;
    int flagMask = 0;
};

/// What the rule editor offers for the property at hand.
struct EditorSetup {
    HWND dialog = nullptr;
    PropertyKind kind = TextValue;
    bool offerTolerance = false;      ///< as the kind has it
    bool offerCaseSensitive = false;  ///< as the kind has it
};

/// A value that the user is choosing, see ChooseValue.
struct ValueChoice {
    std::int32_t propId = 0;
    ustr value;  ///< as in Property::Criterion; the host replaces it
};

/// The project's lock, held while the object lives. Copies carry the callback and the flag, and release the lock too.
class OCCOMMONUI_API PrjLock {
public:
    PrjLock();
    /// Locks at once; see IsLocked.
    PrjLock(HWND owner, Callback callback);
    PrjLock(const PrjLock&);
    PrjLock& operator=(const PrjLock&);
    ~PrjLock();

    /// Whether the lock is held afterwards. One that is held already stays, and the callback given is dropped.
    bool Lock(HWND owner, Callback callback);
    void Unlock();
    bool IsLocked() const { return locked_; }

private:
    Callback callback_;
    bool locked_ = false;
};

/// Bits of the flag mask: what a selection does not offer, or offers in another way. The value is stored by callers.
enum Flag : int {
    kLockForDrawings = 0x1,     ///< managing drawings takes the project's lock first
    kCurrentDrawingOnly = 0x2,  ///< no "Selected drawings"
    kConfigurations = 0x4,      ///< of Edit only: stored configurations are offered
    kAcceptEmpty = 0x8,         ///< selected drawings without any drawing, room or zone are accepted
    kNoFittingSeries = 0x400,
    kNoSystems = 0x800,
    kNoPartTypes = 0x1000,
    kNoRooms = 0x4000,
    kNoFunctionalZones = 0x8000,
    kNoLayouts = 0x10000,
    kNoSelectionAreas = 0x20000,
    kNoPages = 0x40000,
    kNoManualSelection = 0x80000,
    kNoModelDrawings = 0x100000,
    kNoSwitchboardAreas = 0x200000,
    kNoHostAreas = 0x400000,
};

/// The selection as a part of another dialog. The dialog owns it, attaches it before it is initialised and hands its
/// OnInitDialog, OnCommand and OnNotify on. Controls whose id is 0 or less are absent and never touched.
///
/// The dialog leaves to it the ids after the largest one of its controls, for the trees that it adds, and the menu
/// commands 400 to 412. A control 1000, if there is one, shows the labels of GetLabels. The items tree is one without
/// TVS_CHECKBOXES; its place is shared with the search field, and the filter list and the label may lie there too. A
/// dialog whose items tree has TVS_NOTOOLTIPS opens faster: each tree gets its tips when it is shown.
///
/// What a category shows is asked for when it is first selected. Items of the record that the host does not list are
/// shown at the end and stay until the user unchecks them. Names in drawings and filter rules have no flag in the
/// record: they are in force while there are any, and Ctrls2Data empties them when they are not.
class OCCOMMONUI_API Ctrl {
public:
    enum Mode : int {
        NoName = 0,
        NameEdit = 1,        ///< the selection is named in the name edit control
        Configurations = 2,  ///< named selections are chosen, saved, deleted and renamed
    };
    enum EnableMode : int {
        EnableAll = 0,  ///< as far as the source of drawings, the flag mask and the project allow
        DisableAll = 1,
        PartTypesOnly = 2,  ///< shows the part types; they and the source of drawings can be chosen
    };

    Ctrl();
    ~Ctrl();
    Ctrl(const Ctrl&) = delete;
    /// Takes over what the other was attached with and its record, but no windows; the two share nothing.
    Ctrl& operator=(const Ctrl& other);

    /// Call before the dialog is initialised; `dlg` must outlive the control's use. Adds to the bits of `flagMask`
    /// those of the application, and asks the host which areas and pages the project has.
    void Attach(OCDialog* dlg, Lng::AppID app, Mode mode, int flagMask, Callback callback, int manualId, int currentId,
                int selectedId, int groupId, int categoriesId, int itemsId, int filterId, int noDataId,
                int configurationLabelId, int configurationId, int saveId, int saveAsId, int deleteId, int renameId,
                int nameLabelId, int nameId);
    /// Without a name and configurations.
    void Attach(OCDialog* dlg, Lng::AppID app, int flagMask, Callback callback, int manualId, int currentId,
                int selectedId, int groupId, int categoriesId, int itemsId, int filterId, int noDataId);

    /// Adds the trees, shows the record and sets the texts. Always true. The dialog's own anchors of these controls go:
    /// its SetAnchoring calls that of the control.
    bool OnInitDialog();
    /// True when the message is dealt with; an answer, if there is one, is set with the dialog's SetResult.
    bool OnCommand(unsigned __int64 wParam, __int64 lParam);
    bool OnNotify(unsigned __int64 wParam, __int64 lParam);

    /// Shows the record. False before OnInitDialog.
    bool Data2Ctrls();
    /// Reads the record back: 0, or the id of the control to focus because the selection is not valid.
    int Ctrls2Data();
    void EnableDisableCtrls(EnableMode mode);

    void SetData(const RecordData& record);
    /// Replaces the parts whose argument is not null.
    void SetData(const char* key, const wchar_t* name, const Data* data);
    /// Replaces the criteria and the key; null: no key.
    void SetData(const Data& data, const char* key);
    void GetData(Data& data) const;
    void GetData(RecordData& record) const;
    int GetFlagMask() const;
    /// Categories come and go with the next Data2Ctrls.
    void SetFlagMask(int flagMask);
    /// In paper space there is no manual selection.
    void SetPaperSpace(bool paperSpace);

    /// The fraction of the dialog's growth by which each edge of the whole moves.
    void SetAnchoring(double left, double top, double right, double bottom);
    /// Whether the left and the top edge stay, and whether the right and the bottom one follow the dialog's.
    void SetAnchoring(bool left, bool top, bool right, bool bottom);
    /// Sets the texts in the present language.
    void SetLanguage();

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

/// Lets the user edit criteria. `flags` is a mask of Flag; with kConfigurations stored configurations are offered, and
/// the project is locked meanwhile. 0 when the user confirmed; -1, with `data` untouched, for Cancel, a refused lock
/// and any failure.
OCCOMMONUI_API int Edit(Lng::AppID app, HWND parent, Callback callback, Data& data, int flags);
/// The same for a named selection.
OCCOMMONUI_API int Edit(Lng::AppID app, HWND parent, Callback callback, RecordData& record, int flags);
/// The same for one filter rule.
OCCOMMONUI_API int Edit(Lng::AppID app, HWND parent, Callback callback, Property& rule);

}  // namespace ObjectSelection::Dlg
