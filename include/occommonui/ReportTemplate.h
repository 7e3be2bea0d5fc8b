#pragma once

#include <occommonui/Export.h>
#include <occommonui/ReportDefinitionType.h>
#include <orvaspace/ustr.h>
#include <orvatool/Lng.h>
#include <orvatool/TreeInsertList.h>
#include <orvatool/ValueList.h>
#include <orvatool/Win32Types.h>

#include <map>

/// Editing, exporting and importing the templates of reports and legends, which are ReportDefinitionType records. They
/// are passed as bytes with the size of one record; any other size is refused.
namespace ReportTemplate {

/// What the template dialog offers, filled by the caller: the `context` of Edit points to one.
struct OCCOMMONUI_API Context {
    /// The parts or objects that a report can cover. A row with a value of 1 or more, as far as it fits into
    /// `ReportDefinitionType::groups`, is a group of that id; any other row is a heading. A group's id in a template
    /// includes the group with everything below it: the dialog stores the id of a group that is checked as a whole,
    /// and goes down to the rows below only where some of them are left out.
    TREE_INSERTLIST objects;

    /// The attributes that a column can show: name and property id, in the order in which they are offered. Those that
    /// no report can show (InterApp::HPV::IsAvailableReportAttribute), or whose id does not fit into
    /// `oce_columntype::propId`, are left out.
    ValueList properties;

    Context();
    Context(const Context&);
    Context(Context&&) noexcept;
    Context& operator=(const Context&);
    Context& operator=(Context&&) noexcept;
    ~Context();
};

/// Lets the user edit one template. `definition` points to `size` bytes, a ReportDefinitionType; `context` to a Context
/// or is null, which offers nothing. `names`, which may be null, gives names by property id that take the place of
/// those in the context, and that name the columns of properties which are not on offer. Groups and properties of the
/// template that the context does not have are kept. True when the user confirmed; else the record is untouched.
OCCOMMONUI_API bool Edit(HWND parent, Lng::AppID app, ReportType type, void* definition, int size, void* context,
                         std::map<int, ustr_pre<32>>* names);

/// Lets the user edit one column; `column` points to an oce_columntype. `propertyName` is shown and may be null. The
/// width becomes a whole number. True when the user confirmed; else, and for a null column, the record is untouched.
OCCOMMONUI_API bool EditColumn(HWND parent, void* column, const wchar_t* propertyName, ReportType type);

/// Asks for a file and writes `count` templates, each of `size` bytes, to it as those of `app` and `type`. False when
/// the user cancels, an argument is unusable (then nothing is asked), or the file could not be written, which the user
/// is told; an existing file is then as it was.
OCCOMMONUI_API bool ExportToXml(HWND parent, Lng::AppID app, ReportType type, void* definitions, int count, int size);

/// Asks for a file and reads the templates of `app` and `type` from it, in the order of the file, into the first of the
/// `count` records; no more than `count` are taken, and the records beyond those taken stay as they are. All or
/// nothing: false, with every record as it was, when the user cancels, an argument is unusable (then nothing is asked),
/// the file cannot be read, one of these templates is malformed, or there is none; the user is told why.
OCCOMMONUI_API bool ImportFromXml(HWND parent, Lng::AppID app, ReportType type, void* definitions, int count, int size);

/// Whether a property belongs to the object in the drawing itself (ids 8000 to 8999), as its place or its own symbol
/// does, rather than to the product that it is an instance of.
OCCOMMONUI_API bool IsInstanceAttr(int propId);

}  // namespace ReportTemplate
