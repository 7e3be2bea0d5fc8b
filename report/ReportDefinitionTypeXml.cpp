#include "ReportDefinitionTypeXml.h"

#include "XmlRows.h"

namespace {

constexpr int kLastTrueFormat = 20151101;  // reading answers true up to this one
constexpr int kOptionsFormat = 20151101;

constexpr XmlNeed kSince20210810{.since = 20210810};
constexpr XmlNeed kSince20211229{.since = 20211229};

// Only a 1 is a yes here, unlike in other flags.
constexpr XmlItem<oce_columntype> kShowUnits{
    kXmlAttribute<&oce_columntype::showUnits>.write,
    [](const ticpp::Element& element, const char* name, const XmlNeed& need, int /*format*/, oce_columntype& column) {
        column.showUnits = element.GetAttribute<int>(name, need.required) == 1;
    }};

constexpr XmlRow<oce_columntype> kColumnRows[] = {
    {"propId",    kXmlAttribute<&oce_columntype::propId>,  kRequired     },
    {"len",       kXmlAttribute<&oce_columntype::len>,     kRequired     },
    {"align",     kXmlAttribute<&oce_columntype::align>,   kRequired     },
    {"nSubRow",   kXmlAttribute<&oce_columntype::nSubRow>, kRequired     },
    {"hdr1",      kXmlAttribute<&oce_columntype::hdr1>,    kRequired     },
    {"hdr2",      kXmlAttribute<&oce_columntype::hdr2>,    kRequired     },
    {"showUnits", kShowUnits,                              kSince20211229},
};

constexpr XmlRow<std::int32_t> kGroupRows[] = {
    {"id", kXmlValue<std::int32_t>, kRequired},
};

using R = ReportDefinitionType;
constexpr XmlItem<R> kGroups = kXmlList<"Group", &R::groups, &R::groupCount, kGroupRows>;
constexpr XmlItem<R> kColumns = kXmlList<"Column", &R::columns, &R::columnCount, kColumnRows>;
constexpr XmlRow<R> kRows[] = {
    {"id",          kXmlAttribute<&R::id>,          kRequired     },
    {"wcSeparator", kXmlAttribute<&R::wcSeparator>, kRequired     },
    {"name",        kXmlAttribute<&R::name>,        kRequired     },
    {"description", kXmlAttribute<&R::description>, kSince20210810},
    {"Groups",      kGroups,                        kOptional     },
    {"Columns",     kColumns,                       kOptional     },
};

constexpr XmlRow<ReportOptions> kOptionsRows[] = {
    {"CheckDuplicates", kXmlAttribute<&ReportOptions::CheckDuplicates>, kRequired},
    {"dxMin",           kXmlAttribute<&ReportOptions::dxMin>,           kRequired},
    {"dyMin",           kXmlAttribute<&ReportOptions::dyMin>,           kRequired},
    {"dzMin",           kXmlAttribute<&ReportOptions::dzMin>,           kRequired},
};

}  // namespace

void WriteDefinitionContent(ticpp::Element& element, const ReportDefinitionType& definition) {
    WriteXml(element, kRows, definition);
}

void ReadDefinitionContent(const ticpp::Element& element, int format, ReportDefinitionType& definition) {
    ReadXml(element, kRows, format, definition);
}

bool ReportDefinitionType::ToXml(ticpp::Element& element) const {
    return TryWriteXml([&] {
        element.SetValue("ReportDefinitionType");
        WriteXmlStamp(element, kDefinitionFormat, kDefinitionFormat);
        WriteDefinitionContent(element, *this);
    });
}

bool ReportDefinitionType::ToXml(std::string& xml) const {
    return TryWriteXml([&] { xml = XmlTextOf(*this); });
}

bool ReportDefinitionType::ToXml(std::wstring& xml) const {
    return TryWriteXml([&] { xml = std::wstring_view(orvaspace::ToWide(XmlTextOf(*this))); });
}

bool ReportDefinitionType::FromXml(const ticpp::Element& element) {
    const auto reset = [this] { *this = ReportDefinitionType(); };
    reset();
    return TryReadXml(
        [&] {
            const int format = ReadXmlFormat(element);
            if (format > kDefinitionFormat) return false;
            ReadDefinitionContent(element, format, *this);
            return format <= kLastTrueFormat;
        },
        reset);
}

bool ReportDefinitionType::FromXml(const char* xml) {
    return TryReadXml([&] { return ReadXmlText(xml, *this); }, [this] { *this = ReportDefinitionType(); });
}

bool ReportDefinitionType::FromXml(const wchar_t* xml) {
    return TryReadXml([&] { return FromXml(orvaspace::ToUtf8(ustr(xml)).c_str()); },
                      [this] { *this = ReportDefinitionType(); });
}

bool ReportOptions::ToXml(ticpp::Element& element) const {
    return TryWriteXml([&] {
        element.SetValue("Options");
        WriteXmlStamp(element, kOptionsFormat, kOptionsFormat);
        WriteXml(element, kOptionsRows, *this);
    });
}

bool ReportOptions::FromXml(const ticpp::Element& element) {
    const auto reset = [this] { *this = ReportOptions(); };
    reset();
    return TryReadXml(
        [&] {
            const int format = ReadXmlFormat(element);
            if (format > kOptionsFormat) return false;
            ReadXml(element, kOptionsRows, format, *this);
            return true;
        },
        reset);
}
