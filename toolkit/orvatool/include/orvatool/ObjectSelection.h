#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>

#include <cstdint>
#include <string_view>
#include <vector>

class QBaseDb;
namespace ticpp {
class Element;
}

/// Which objects of the drawings a command works on: the records. User-interface thread only. Only memory that runs
/// out throws, and not from ToXml and FromXml.
namespace ObjectSelection {

/// A drawing of the project, as a stored selection refers to it.
struct DrawingRef {
    std::int32_t id = 0;  ///< the drawing's id in the project; 0 when only the path is known
    ustr_pre<260> path;   ///< full path, or as the project has it

    /// Drawings are the same by id when both have one, else by path (in any case). A path that is empty is that of a
    /// drawing without an id only.
    ORVATOOL_API bool IsSame(const DrawingRef& other) const;
    bool operator==(const DrawingRef&) const = default;
};

/// Names (of layouts, areas, pages) in drawings.
class ORVATOOL_API NameListInDwg {
public:
    struct Entry {
        DrawingRef drawing;
        ustr_pre<32> name;
        bool operator==(const Entry&) const = default;
    };
    /// Reads the checked names of a tree; see NameListTree.h.
    class Tree;

    bool all = false;  ///< every name in every drawing, whatever the entries say
    std::vector<Entry> entries;

    bool IsEmpty() const { return !all && entries.empty(); }
    bool operator==(const NameListInDwg&) const = default;
};

/// One filter rule: what the value of a property must be. It has one or more criteria, of which any or all must hold.
struct ORVATOOL_API Property {
    // stored: never renumber
    enum Operation : short {
        Equal = 0,
        NotEqual = 1,
        Less = 2,
        LessOrEqual = 3,
        Greater = 4,
        GreaterOrEqual = 5,
        Contains = 6,
        NotContains = 7,
        BeginsWith = 8,
        EndsWith = 9,
        IsEmpty = 10,
        IsNotEmpty = 11,
    };
    struct Criterion {
        short operation = Equal;
        ustr_pre<32> value;  ///< numbers with a point, in the unit in which the host gives the property's values
        bool operator==(const Criterion&) const = default;
    };

    std::int32_t propId = 0;
    bool matchAll = false;       ///< all criteria must hold; else one is enough
    bool caseSensitive = false;  ///< for texts
    double tolerance = 0;        ///< for numbers: those that are no further apart are equal; below 0 counts as 0
    std::vector<Criterion> criteria;

    Property();
    Property(const Property&);
    Property(Property&&) noexcept;
    Property& operator=(const Property&);
    Property& operator=(Property&&) noexcept;
    ~Property();

    /// The operation's name in the user's language, empty for an unknown code.
    static ustr GetOperationTypeName(short operation);

    /// Whether an object whose property has this value is selected. No criteria: selected. An unknown operation never
    /// holds.
    ///
    /// Equality and order are by number when the value and the criterion's are both numbers: with a point in every
    /// locale, blanks around them or not. Numbers within the tolerance are equal, neither less nor greater; so are
    /// those that differ in the last of their 16 digits only, which comes of computing them.
    ///
    /// Otherwise they are by text, as Contains and its like always are: in any case unless caseSensitive; accents
    /// count. Less and Greater are by the order in which lists are sorted ("DN9" < "DN10"), and do not hold for a value
    /// that is empty. A value of blanks alone is empty.
    bool Matches(std::wstring_view value) const;

    bool operator==(const Property&) const;
};

/// The criteria of a selection. A new one is an empty manual selection.
// The fields stand as hosts know them: NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
struct ORVATOOL_API Data {
    bool bySelectionSet = false;  ///< objects come from the criteria; else the user picks them in the drawing
    bool currentDrawing = false;  ///< with bySelectionSet: in the current drawing only; else in the model drawings
    bool useModelDrawings = false;
    std::vector<DrawingRef> modelDrawings;
    bool useRooms = false;
    std::vector<std::int32_t> rooms;
    bool useFunctionalZones = false;
    std::vector<std::int32_t> functionalZones;
    bool useSystems = false;
    std::vector<std::int32_t> systems;
    bool useFittingSeries = false;
    std::vector<std::int32_t> fittingSeries;
    bool usePartTypes = false;
    std::vector<std::int32_t> partTypes;
    std::vector<Property> filterRules;
    NameListInDwg layouts;
    NameListInDwg selectionAreas;
    std::vector<astr> partTypesAlt;  ///< the part types of application 6, by name
    NameListInDwg pages;
    NameListInDwg switchboardAreas;
    NameListInDwg hostAreas;

    Data();
    Data(const Data&);
    Data(Data&&) noexcept;
    Data& operator=(const Data&);
    Data& operator=(Data&&) noexcept;
    ~Data();

    /// Gives `element` the selection as attributes and child elements, in place of what it has. The element keeps its
    /// name. False when memory runs out or a tolerance is no number; what the element then has is not to be kept.
    bool ToXml(ticpp::Element& element) const;

    /// Reads a selection, whatever the element is called. A drawing whose id the database knows gets the path that it
    /// has there (records "DW", see kDrawingRecord); one that the database does not know, and every id of another kind
    /// that no longer exists, is kept as it is. A category that is not there is read as empty. False, and the selection
    /// is a new one, for a newer format, or when an attribute is missing or is no value of its kind.
    bool FromXml(const QBaseDb& db, const ticpp::Element& element);

    bool operator==(const Data&) const;
};

/// Drawings in the project database: records of this type, whose object id is the drawing's id in decimal digits, at
/// least six, and whose field kDrawingPath is its path.
inline constexpr char kDrawingRecord[] = "DW";
inline constexpr int kDrawingPath = 1501;

/// A selection with a name, as a project stores it.
struct ORVATOOL_API RecordData {
    astr key;   ///< the configuration's key in the project; empty while it has never been saved
    ustr name;  ///< at most 1023 characters
    Data data;

    RecordData();
    RecordData(const RecordData&);
    RecordData(RecordData&&) noexcept;
    RecordData& operator=(const RecordData&);
    RecordData& operator=(RecordData&&) noexcept;
    ~RecordData();

    bool operator==(const RecordData&) const;
};

/// A stored selection in the list that a host gives.
struct PresetEntry {
    astr key;
    ustr name;
};

}  // namespace ObjectSelection
