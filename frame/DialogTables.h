#pragma once

#include <windows.h>

#include <occommonui/FixedText.h>
#include <orvaspace/ustr.h>
#include <orvatool/Gw.h>
#include <orvatool/Lng.h>
#include <orvatool/OCDialog.h>
#include <orvatool/OcListView2.h>

#include <cstddef>
#include <span>
#include <stdexcept>
#include <type_traits>

// A dialog is a handful of tables and the handlers that are its own. The walkers here apply the tables. Each checks
// that the template has the controls that its table names and throws MissingControl otherwise, so that the dialog does
// not open at all with a template that does not fit.

/// The template lacks a control that a table names.
class MissingControl : public std::logic_error {
public:
    explicit MissingControl(int ctrlId);
};

/// The control, or MissingControl.
HWND RequireControl(const OCDialog& dlg, int ctrlId);

/// The "control id" of a dialog's caption.
inline constexpr int kCaption = 0;

/// The text of a control, or of the caption.
struct TextRow {
    int ctrlId;
    Lng::AppID app;
    int textId;
    const wchar_t* text;
};

/// Sets the texts; the caption is decorated with the name of `titleApp`.
void ApplyTexts(OCDialog& dlg, std::span<const TextRow> rows, Lng::AppID titleApp);

/// The edges of a control that follow the dialog's growth, as fractions of it.
struct AnchorRow {
    int ctrlId;
    double left;
    double top;
    double right;
    double bottom;
};

void ApplyAnchors(OCDialog& dlg, std::span<const AnchorRow> rows);

/// What a field accepts.
struct Rule {
    int maxChars = 0;       ///< 0: no limit
    bool required = false;  ///< an empty text is refused
};
inline constexpr Rule kAny{};

/// Moves one member of a record to its control and back. `take` answers whether the content is accepted.
template <class Record>
struct Field {
    void (*show)(HWND dlg, int ctrlId, const Rule& rule, const Record& record);
    bool (*take)(HWND dlg, int ctrlId, const Rule& rule, Record& record);
};

void ShowField(HWND dlg, int ctrlId, const Rule& rule, const ustr& value);
bool TakeField(HWND dlg, int ctrlId, const Rule& rule, ustr& value);
void ShowField(HWND dlg, int ctrlId, const Rule& rule, bool value);
bool TakeField(HWND dlg, int ctrlId, const Rule& rule, bool& value);

template <auto member>
struct FieldOf;

template <class Record, class Value, Value Record::*member>
requires(!std::is_array_v<Value>) struct FieldOf<member> {
    static constexpr Field<Record> kValue{[](HWND dlg, int ctrlId, const Rule& rule, const Record& record) {
                                              ShowField(dlg, ctrlId, rule, record.*member);
                                          },
                                          [](HWND dlg, int ctrlId, const Rule& rule, Record& record) {
                                              return TakeField(dlg, ctrlId, rule, record.*member);
                                          }};
};

// A text of fixed length: its limit holds where the rule states none. One that stays is not written again, with what a
// record of unknown origin may have behind its NUL.
template <class Record, std::size_t n, wchar_t (Record::*member)[n]>
struct FieldOf<member> {
    static constexpr Rule Limited(Rule rule) {
        if (rule.maxChars == 0) rule.maxChars = static_cast<int>(kFixedTextLimit<member>);
        return rule;
    }
    static constexpr Field<Record> kValue{[](HWND dlg, int ctrlId, const Rule& rule, const Record& record) {
                                              ShowField(dlg, ctrlId, Limited(rule), FixedText<member>(record));
                                          },
                                          [](HWND dlg, int ctrlId, const Rule& rule, Record& record) {
                                              ustr text;
                                              if (!TakeField(dlg, ctrlId, Limited(rule), text)) return false;
                                              if (text != FixedText<member>(record)) SetFixedText<member>(record, text);
                                              return true;
                                          }};
};

/// The field of a member: kField<&Record::name>.
template <auto member>
inline constexpr auto kField = FieldOf<member>::kValue;

template <class Record>
struct FieldRow {
    int ctrlId;
    Field<Record> field;
    Rule rule;
};

template <class Record, std::size_t n>
void Show(const OCDialog& dlg, const FieldRow<Record> (&rows)[n], const Record& record) {
    for (const auto& row : rows) {
        RequireControl(dlg, row.ctrlId);
        row.field.show(dlg.hWnd(), row.ctrlId, row.rule, record);
    }
}

/// Reads every control; 0, or the id of the first whose content is refused (those before it have been read).
template <class Record, std::size_t n>
int Take(const OCDialog& dlg, const FieldRow<Record> (&rows)[n], Record& record) {
    for (const auto& row : rows) {
        if (!row.field.take(dlg.hWnd(), row.ctrlId, row.rule, record)) return row.ctrlId;
    }
    return 0;
}

/// What a button (or a menu item of the same id) does, and when it can be used.
template <class Dlg>
struct CommandRow {
    int ctrlId;
    void (Dlg::*run)();
    bool (Dlg::*canRun)() const;
};

/// Runs the row of a WM_COMMAND's control, if it can run; false when the command is in no row.
template <class Dlg, std::size_t n>
bool RunCommand(Dlg& dlg, const CommandRow<Dlg> (&rows)[n], WPARAM wParam) {
    if (HIWORD(wParam) != BN_CLICKED && HIWORD(wParam) != 1) return false;
    for (const auto& row : rows) {
        if (row.ctrlId != LOWORD(wParam)) continue;
        if ((dlg.*row.canRun)()) (dlg.*row.run)();
        return true;
    }
    return false;
}

/// Enables each row's button as its command can run.
template <class Dlg, std::size_t n>
void EnableCommands(Dlg& dlg, const CommandRow<Dlg> (&rows)[n]) {
    for (const auto& row : rows) {
        RequireControl(dlg, row.ctrlId);
        dlg.EnableCtrl(row.ctrlId, (dlg.*row.canRun)());
    }
}

/// A command in a menu, with the key that runs it as the menu shows it.
struct MenuRow {
    int ctrlId;
    const wchar_t* key = L"";
};

/// Offers the buttons' commands as a menu at a place on the screen, named and enabled as the buttons are. (-1, -1), as
/// the keyboard gives, opens it at `list`.
void ShowCommandMenu(const OCDialog& dlg, std::span<const MenuRow> rows, HWND list, POINT screenPoint);

/// Whether no modifier is held with the key that was pressed.
bool KeyIsAlone();

/// A column of a list; width in pixels at 96 DPI.
struct ColumnRow {
    Lng::AppID app;
    int textId;
    const wchar_t* text;
    int width;
    int format;
};

void AddColumns(OcListView2& list, std::span<const ColumnRow> rows);
void ApplyColumnTexts(OcListView2& list, std::span<const ColumnRow> rows);

/// True when no two rows name the same control.
template <class Row, std::size_t n>
constexpr bool Distinct(const Row (&rows)[n]) {
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = i + 1; j < n; ++j) {
            if (rows[i].ctrlId == rows[j].ctrlId) return false;
        }
    }
    return true;
}
