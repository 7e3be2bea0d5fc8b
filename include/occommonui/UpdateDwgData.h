#pragma once

#include <occommonui/Export.h>
#include <occommonui/ObjectSelection.h>
#include <orvaspace/ustr.h>
#include <orvatool/Lng.h>
#include <orvatool/ObjectSelection.h>
#include <orvatool/QBaseDb.h>
#include <orvatool/TreeInsertList.h>
#include <orvatool/Win32Types.h>

#include <cstdint>
#include <functional>
#include <set>
#include <vector>

/// Updating objects of drawings from the project's data: what is updated in which objects.
namespace UpdateDwgData {

struct OCCOMMONUI_API Options {
    std::set<long> properties;        ///< ids of the data items to update
    ObjectSelection::Data selection;  ///< in which objects
    std::uint32_t flagMask = 0;       ///< of the object selection control when the user confirmed; not stored

    Options();
    Options(const Options&);
    Options(Options&&) noexcept;
    Options& operator=(const Options&);
    Options& operator=(Options&&) noexcept;
    ~Options();
};

/// Options that are stored under a name in the project database, in records of type "UP".
namespace PrjDb {

struct OCCOMMONUI_API OptionsRec {
    long id = 0;  ///< 1 to 32766; less than 1: not stored yet
    ustr_pre<32> name;
    Options options;

    OptionsRec();
    OptionsRec(const OptionsRec&);
    OptionsRec(OptionsRec&&) noexcept;
    OptionsRec& operator=(const OptionsRec&);
    OptionsRec& operator=(OptionsRec&&) noexcept;
    ~OptionsRec();
};

/// The record's object id: the number in decimal digits, at least six.
OCCOMMONUI_API astr BuildObjId(long id);

/// The lowest id that is free; 0 when all are taken or the database cannot be read.
OCCOMMONUI_API long FindNextFreeId(QBaseDb& db);

/// Reads the record of `rec.id`; without an id the first, in the database's order, whose name is exactly `rec.name`
/// (`rec.id` stays as it is then). False, without touching the database, when there is neither. False, with `rec` as it
/// was, when there is no such record; false, with its options at their defaults, when they are of a newer format or
/// cannot be read.
OCCOMMONUI_API bool Read(const QBaseDb& db, OptionsRec& rec);

/// Appends every record whose options can be read, in the database's order. Always true.
OCCOMMONUI_API bool Read(const QBaseDb& db, std::vector<OptionsRec>& recs);

/// Stores the record in place of the one with its id; one without an id gets the lowest that is free. False when
/// nothing was stored: no id is free, or the database cannot be written.
OCCOMMONUI_API bool Write(QBaseDb& db, OptionsRec& rec);

/// Whether there is no such record; false also when the database cannot be read.
OCCOMMONUI_API bool IsGone(const QBaseDb& db, long id);

/// Whether the record was deleted.
OCCOMMONUI_API bool Delete(QBaseDb& db, long id);

/// Deletes in the order given and stops at the first that cannot be deleted, which leaves that one and the later ones.
OCCOMMONUI_API bool Delete(QBaseDb& db, std::vector<long> ids);

}  // namespace PrjDb

namespace Dlg {

/// What the dialog asks its caller: (message, wParam, lParam) with a 64-bit answer. A callback that is empty or throws
/// counts as one that answers 0.
enum MsgId : std::int32_t {
    /// wParam: the id of a data item. Answer non-zero when its objects cannot be picked by hand: while such an item is
    /// checked, there is no manual selection.
    NeedsSelectionSet = 0,
};

using Callback = std::function<std::int64_t(MsgId, std::uint64_t, std::int64_t)>;

}  // namespace Dlg

/// Lets the user edit the options, and manage those that are stored in the database. The id of a data item is the
/// `data` of its row in `items` (may be null); a row whose data is 0, or no id at all, is a heading. `database` is
/// written to by what the user does to the stored options, whether the dialog is confirmed in the end or not. True when
/// the user confirmed; else, and for any failure, `options` is untouched.
OCCOMMONUI_API bool OptionsDlg(HWND parent, Lng::AppID app, Options& options, const TREE_INSERTLIST2* items,
                               const QBaseDb& database, ObjectSelection::Dlg::Callback selectionCallback,
                               Dlg::Callback itemCallback);

}  // namespace UpdateDwgData
