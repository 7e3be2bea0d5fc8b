#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>
#include <orvatool/Win32Types.h>

#include <utility>
#include <vector>

namespace FileDlgUtil {

/// The file types that a file dialog offers: pairs of label and pattern ("XML file (*.xml)", "*.xml"), in order.
class ORVATOOL_API CFilterSpecList {
public:
    using Entry = std::pair<ustr, ustr>;

    void Add(const ustr& label, const ustr& pattern);

    /// Closes the list; with `allFiles` the entry "All files (*.*)" is added at the end, unless the list has it.
    void Finalize(bool allFiles);

    /// The extension that is added to a name typed without one. Given as a pattern ("*.xml") or bare ("xml"); kept as
    /// given.
    void SetDefaultExt(const wchar_t* extension);
    const ustr& GetDefaultExt() const { return defaultExt_; }

    bool IsEmpty() const { return entries_.empty(); }
    std::vector<Entry>::const_iterator begin() const { return entries_.begin(); }
    std::vector<Entry>::const_iterator end() const { return entries_.end(); }

private:
    std::vector<Entry> entries_;
    ustr defaultExt_;
};

enum class Mode { Open, Save };

/// Runs the system's file dialog: opens an existing file, or asks before a file is replaced. `path` proposes a file
/// (its folder, with or without a name) and receives the full path chosen, which may be longer than 260 characters;
/// false (Cancel, or the dialog could not be shown) leaves it as it was. A null title is the system's.
ORVATOOL_API bool SelectFile(HWND parent, Mode mode, const wchar_t* title, const CFilterSpecList& types,
                             ustr_pre<260>& path);

}  // namespace FileDlgUtil
