#pragma once

#include <occommonui/Export.h>
#include <orvaspace/ustr.h>
#include <orvatool/Lng.h>
#include <orvatool/TreeInsertList.h>
#include <orvatool/Win32Types.h>

#include <cstdint>
#include <utility>
#include <vector>

/// Custom properties: properties of the user's own whose value is composed of constant texts and of other properties.
namespace CustomProperty {

/// The format string of a custom property: literal text and references, such as "Length: {12|mm}". There is no escape
/// character, so braces are never part of a literal text.
namespace Format {

struct OCCOMMONUI_API Item {
    long id = 0;        ///< 1 or more: refers to the property with this id; else literal text
    ustr_pre<32> text;  ///< the literal text; of a reference, what follows its id, with the leading "|"

    Item();
    Item(long itemId, const ustr& itemText);
    Item(const Item&);
    Item(Item&&) noexcept;
    Item& operator=(const Item&);
    Item& operator=(Item&&) noexcept;
    ~Item();

    bool IsText() const;
};

/// The items of a format string. Malformed pieces are dropped: a "}" without its "{" ends the reading at once, with the
/// literal before it lost; a reference without a number stays open and swallows what follows up to the next "{"; a
/// reference that is still open at the end is dropped. A number beyond the range of `long` counts as the nearest
/// that is in range. Empty when memory runs out.
OCCOMMONUI_API std::vector<Item> Parse(const ustr& format);

/// The format string of the items: literals as they stand, references as "{id" + text + "}".
OCCOMMONUI_API ustr Build(const std::vector<Item>& items);

}  // namespace Format

/// One custom property.
struct OCCOMMONUI_API Data {
    long id = 0;  ///< record id, 0 or more
    ustr_pre<32> name;
    ustr_pre<256> format;  ///< see Format

    Data();
    Data(const Data&);
    Data(Data&&) noexcept;
    Data& operator=(const Data&);
    Data& operator=(Data&&) noexcept;
    ~Data();

    /// The id under which the custom property appears among other properties: -100 minus the record id.
    long PropId() const;
};

/// True for the property ids of custom properties: -100 and below.
OCCOMMONUI_API bool IsMyProperty(long propId);

/// The records whose name is `name`, in their order; case and accents do not count. Without a name, every record that
/// can be used: one with a name. The pointers are into `records`.
OCCOMMONUI_API std::vector<const Data*> Find(const std::vector<Data>& records, const ustr& name = ustr());

/// How well two records match; more is better.
enum Match : int {
    kNoMatch = 0,
    kSameNameFolded = 1,  ///< names differ in case or accents only, formats differ
    kSameName = 2,        ///< same name, formats differ
    kSameFormat = 3,      ///< composed alike under another name
    kSame = 4,            ///< same name, same format
};

/// The record that stands for `data` in another project's list, by content, as ids differ between projects: its id and
/// the Match. Among equal matches a record with the id of `data` comes first, then the first in order. {0, kNoMatch}
/// when nothing matches. An empty name or format matches nothing.
OCCOMMONUI_API std::pair<std::int32_t, int> FindBestMatch(const Data& data, const std::vector<Data>& records);

namespace Dlg {

/// Lets the user edit the name and the format of `data`. `properties` are the properties on offer; a row with a value
/// of 1 or more is a property of that id, any other row a heading; null offers none. The texts of the rows stand for
/// the properties' values in the preview. References to properties that are not in the list are kept. `app` names the
/// caller in the title. True when the user confirmed; else `data` is untouched.
OCCOMMONUI_API bool Options(HWND parent, Lng::AppID app, const TREE_INSERTLIST* properties, Data& data);

}  // namespace Dlg
}  // namespace CustomProperty
