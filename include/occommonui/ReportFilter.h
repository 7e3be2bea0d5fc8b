#pragma once

#include <occommonui/Export.h>
#include <occommonui/ReportDefinitionType.h>
#include <orvaspace/ustr.h>
#include <orvatool/Lng.h>
#include <orvatool/ValueList.h>

#include <cstdint>
#include <string>

/// One report run: what is reported, in which columns, and where the report goes.
struct OCCOMMONUI_API ReportFilter {
    /// Where a report goes. The value is stored.
    enum OutputType : std::int32_t {
        Dialog = 0,
        Block = 1,  ///< a block in the drawing
        ExcelFile = 2,
        OtherText = 3,  ///< a text output without a name, not on offer to users
        Clipboard = 4,
        TextFile = 5,  ///< tab delimited
    };

    std::int32_t RecordVersion = 20160401;  ///< of the record in memory; has nothing to do with the XML's format
    std::int32_t RecordStamp = 28068;       ///< not stored
    Lng::AppID AppID = Lng::NoApp;          ///< the application that owns the report
    ::ReportType ReportType = Legend;
    OutputType ReportOutputType = Dialog;
    std::uint32_t Reserved = 0;            ///< not stored
    float Scale = 1.0F;                    ///< of a block
    double SymbolScale = 1.0;              ///< of the symbols in a block
    std::int32_t Alignment = 0;            ///< of a block at its insertion point: vertical x 3 + horizontal
    wchar_t Textstyle[256] = L"STANDARD";  ///< of a block, at most 255 characters; see SetFixedText
    float TextHeight = 3.5F;               ///< of a block
    wchar_t Blocklayername[256] = L"0";    ///< layer of a block, at most 255 characters; see SetFixedText
    bool OnlyProductsFromProject = false;  ///< leave out products that are not the project's own
    bool SecondFlag = false;               ///< not stored
    ReportOptions Options;
    std::int64_t First = 0;   ///< not stored; reset leaves it
    std::int64_t Second = 0;  ///< not stored; reset(true) makes it equal to First
    ::ReportDefinitionType ReportDefinitionType;
    ustr ReportOutputFile;  ///< path of the output file, for the outputs that have one

    ReportFilter();
    ReportFilter(const ReportFilter&);
    ReportFilter(ReportFilter&&) noexcept;
    ReportFilter& operator=(const ReportFilter&);
    ReportFilter& operator=(ReportFilter&&) noexcept;
    ~ReportFilter();

    /// Sets every default above, except First and Second; with `copyFirst`, Second becomes First.
    void reset(bool copyFirst);

    /// Gives `element` the name "ReportFilterType" and the filter as attributes and child elements, in place of those
    /// it has under the same names. False when memory runs out or a number is none (the element may then hold a part),
    /// and the text of the string forms is as it was.
    bool ToXml(ticpp::Element& element) const;
    bool ToXml(std::string& xml) const;
    bool ToXml(std::wstring& xml) const;

    /// Reads a filter. False, and nothing changes, for a newer format. False after reset(false) when an attribute is
    /// missing or its field cannot hold it, or the text is no XML document. Options and definition that are absent stay
    /// as they were; ones that cannot be read become the defaults, which is no failure of the filter.
    bool FromXml(const ticpp::Element& element);
    bool FromXml(const char* xml);
    bool FromXml(const wchar_t* xml);

    /// The output's name in the user's language, empty for one without a name.
    static ustr ReportOutputTypeName(OutputType type);
    /// ".xml", ".txt", or null for an output that is no file.
    static const wchar_t* ReportOutputTypeFileExtension(OutputType type);
    static bool IsTextReportOutputType(OutputType type);
    /// What the names of the configuration files of a kind of report begin with; null for an unknown kind.
    static const char* GetReportConfBaseName(::ReportType type);
    /// The outputs that users choose from, by name, in display order.
    static ValueList GetOutputTypeValues();
    /// The vertical or the horizontal part of `Alignment` in the user's language; empty when it has no name.
    ustr AlignmentName(bool vertical) const;
};
