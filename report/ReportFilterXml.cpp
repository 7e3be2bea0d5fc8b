#include <occommonui/ReportFilter.h>

#include "XmlRows.h"

namespace {

constexpr int kFormat = 20160101;

using F = ReportFilter;
constexpr XmlRow<F> kRows[] = {
    {"AppID",                   kXmlAttribute<&F::AppID>,                   kRequired},
    {"ReportType",              kXmlAttribute<&F::ReportType>,              kRequired},
    {"ReportOutputType",        kXmlAttribute<&F::ReportOutputType>,        kRequired},
    {"ReportOutputFile",        kXmlAttribute<&F::ReportOutputFile>,        kOptional},
    {"ReportDefinitionType",    kXmlChild<&F::ReportDefinitionType>,        kOptional},
    {"Scale",                   kXmlAttribute<&F::Scale>,                   kRequired},
    {"SymbolScale",             kXmlAttribute<&F::SymbolScale>,             kRequired},
    {"Alignment",               kXmlAttribute<&F::Alignment>,               kRequired},
    {"Textstyle",               kXmlAttribute<&F::Textstyle>,               kRequired},
    {"TextHeight",              kXmlAttribute<&F::TextHeight>,              kRequired},
    {"Blocklayername",          kXmlAttribute<&F::Blocklayername>,          kRequired},
    {"OnlyProductsFromProject", kXmlAttribute<&F::OnlyProductsFromProject>, kRequired},
    {"Options",                 kXmlChild<&F::Options>,                     kOptional},
};

}  // namespace

bool ReportFilter::ToXml(ticpp::Element& element) const {
    return TryWriteXml([&] {
        element.SetValue("ReportFilterType");
        WriteXmlStamp(element, kFormat, kFormat);
        WriteXml(element, kRows, *this);
    });
}

bool ReportFilter::ToXml(std::string& xml) const {
    return TryWriteXml([&] { xml = XmlTextOf(*this); });
}

bool ReportFilter::ToXml(std::wstring& xml) const {
    return TryWriteXml([&] { xml = std::wstring_view(orvaspace::ToWide(XmlTextOf(*this))); });
}

bool ReportFilter::FromXml(const ticpp::Element& element) {
    return TryReadXml(
        [&] {
            const int format = ReadXmlFormat(element);
            if (format > kFormat) return false;
            ReadXml(element, kRows, format, *this);
            return true;
        },
        [this] { reset(false); });
}

bool ReportFilter::FromXml(const char* xml) {
    return TryReadXml([&] { return ReadXmlText(xml, *this); }, [this] { reset(false); });
}

bool ReportFilter::FromXml(const wchar_t* xml) {
    return TryReadXml([&] { return FromXml(orvaspace::ToUtf8(ustr(xml)).c_str()); }, [this] { reset(false); });
}
