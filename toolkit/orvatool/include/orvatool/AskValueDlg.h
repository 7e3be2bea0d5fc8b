#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>
#include <orvatool/Lng.h>
#include <orvatool/TreeInsertList.h>
#include <orvatool/ValueList.h>
#include <orvatool/Win32Types.h>

#include <cstddef>
#include <cstdint>

/// Asks for one value. Every form returns 0 or more when the user confirmed, and -1 for Cancel or when the dialog
/// could not be shown; then the value given is left as it was.
///
/// `title` and `prompt` are texts in the user's language. The caption is the title followed by " - " and the name of
/// `app` when that application has a name. The prompt is the label of the control; it may hold a mnemonic ("&Text:").
class ORVATOOL_API AskValueDlg {
public:
    /// Asks for a text of at most `maxChars` characters; `value` is the proposal, cut to that. Returns 0.
    static int Run(HWND parent, Lng::AppID app, const ustr& title, const ustr& prompt, ustr& value,
                   std::size_t maxChars = 1023);

    /// Asks for one of `choices`; `value` is the proposal. Lists of more than 15 can be searched. Returns the index of
    /// the entry chosen.
    static int Run(HWND parent, Lng::AppID app, const ustr& title, const ustr& prompt, const ValueList& choices,
                   std::int64_t& value);

    /// Asks for one row of a tree, whatever its level; `value` is the proposal. Trees of more than 15 rows can be
    /// searched. Returns the index of the row chosen.
    static int Run(HWND parent, Lng::AppID app, const ustr& title, const ustr& prompt, const TREE_INSERTLIST& choices,
                   std::int64_t& value);
};
