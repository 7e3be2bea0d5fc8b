#pragma once

#include <occommonui/Export.h>
#include <occommonui/FixedText.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

namespace ticpp {
class Element;
}

/// The kinds of reports. The value is an interface: it is stored and passed between modules.
enum ReportType : std::int32_t {
    Legend = 0,           ///< symbols of a drawing and what they mean, widths in millimetres
    BillOfMaterials = 1,  ///< parts and their amounts, widths in millimetres
    ExportReport = 2,     ///< data for other programs, widths in millimetres
    TextBlock = 3,        ///< a table of plain text, widths in characters
};

/// Whether the widths in a report of this kind are characters; else they are millimetres.
constexpr bool HasWidthsInCharacters(ReportType type) {
    return type == TextBlock;
}

// The records below are interface formats: they are passed as bytes with their size, copied with memcpy and kept in the
// callers' own files. All numbers are little-endian; nothing is between the fields.
#pragma pack(push, 1)

/// One column of a report. A new one is all zero.
struct oce_columntype {
    std::int16_t propId = 0;   ///< the property that the column shows
    float len = 0;             ///< width: millimetres, or characters in a TextBlock
    std::uint8_t align = 0;    ///< how the report engine aligns the text
    std::uint8_t nSubRow = 0;  ///< sub-row in which the report engine prints the column
    wchar_t hdr1[29] = {};     ///< first line of the header, at most 28 characters
    wchar_t hdr2[29] = {};     ///< second line of the header, at most 28 characters
    bool showUnits = false;    ///< print the unit after the value
};

/// What a report shows: its columns, from left to right, and the parts or objects that it covers. A new one is all
/// zero. The functions look at no more than the first kMaxGroups groups and kMaxColumns columns, and at none where a
/// count is negative, whatever the record says.
struct OCCOMMONUI_API ReportDefinitionType {
    static constexpr int kMaxGroups = 200;
    static constexpr int kMaxColumns = 200;

    std::int32_t id = 0;                       ///< the template's id
    std::int32_t groups[kMaxGroups] = {};      ///< ids of the groups of parts or objects that are included
    std::int16_t groupCount = 0;               ///< how many of `groups` are used
    wchar_t name[41] = {};                     ///< at most 40 characters
    wchar_t description[257] = {};             ///< at most 256 characters
    std::int16_t columnCount = 0;              ///< how many of `columns` are used
    wchar_t wcSeparator = 0;                   ///< a separator character that is kept for the report engine
    oce_columntype columns[kMaxColumns] = {};  ///< in display order

    /// Whether one of the columns in use shows this property.
    bool hasPropId(short propId) const;

    /// Gives `element` the name "ReportDefinitionType" and the definition as attributes and child elements, in place of
    /// those it has under the same names. Texts are written up to their fields' limits. False when memory runs out or a
    /// width is no number (the element may then hold a part), and the text of the string forms is as it was.
    bool ToXml(ticpp::Element& element) const;
    bool ToXml(std::string& xml) const;
    bool ToXml(std::wstring& xml) const;

    /// Reads a definition, of any format up to today's. Surplus groups and columns are passed over; longer texts are
    /// cut. CAUTION: the result is true only for formats up to 20151101. A definition of a later format, today's
    /// included, is read as a whole although the result is false, so the result tells nothing about success.
    /// A newer format, an attribute that is missing or that its field cannot hold, or a text that is no XML document
    /// leave the record all zero.
    bool FromXml(const ticpp::Element& element);
    bool FromXml(const char* xml);
    bool FromXml(const wchar_t* xml);
};

#pragma pack(pop)

static_assert(sizeof(wchar_t) == 2 && sizeof(bool) == 1 && sizeof(float) == 4);

static_assert(offsetof(oce_columntype, propId) == 0);
static_assert(offsetof(oce_columntype, len) == 2);
static_assert(offsetof(oce_columntype, align) == 6);
static_assert(offsetof(oce_columntype, nSubRow) == 7);
static_assert(offsetof(oce_columntype, hdr1) == 8);
static_assert(offsetof(oce_columntype, hdr2) == 66);
static_assert(offsetof(oce_columntype, showUnits) == 124);
static_assert(sizeof(oce_columntype) == 125 && std::is_trivially_copyable_v<oce_columntype>);

static_assert(offsetof(ReportDefinitionType, id) == 0);
static_assert(offsetof(ReportDefinitionType, groups) == 4);
static_assert(offsetof(ReportDefinitionType, groupCount) == 804);
static_assert(offsetof(ReportDefinitionType, name) == 806);
static_assert(offsetof(ReportDefinitionType, description) == 888);
static_assert(offsetof(ReportDefinitionType, columnCount) == 1402);
static_assert(offsetof(ReportDefinitionType, wcSeparator) == 1404);
static_assert(offsetof(ReportDefinitionType, columns) == 1406);
static_assert(sizeof(ReportDefinitionType) == 26406 && std::is_trivially_copyable_v<ReportDefinitionType>);

/// How a report finds the same object reported twice.
struct OCCOMMONUI_API ReportOptions {
    bool CheckDuplicates = false;
    float dxMin = 5.0F;  ///< two objects that are nearer to each other than this, in all three directions, are one
    float dyMin = 5.0F;
    float dzMin = 5.0F;

    /// As for ReportDefinitionType, with the name "Options".
    bool ToXml(ticpp::Element& element) const;
    /// False, and the defaults, for a newer format or when an attribute is missing or unreadable.
    bool FromXml(const ticpp::Element& element);
};
