#include <benchmark/benchmark.h>
#include <occommonui/ReportDefinitionType.h>
#include <orvaspace/ustr.h>
#include <tinyxml.h>

#include <cstdio>
#include <cstdlib>
#include <string>

// Reading a report definition from its XML and writing it again, against bare TinyXML doing the same: parsing the same
// text, asking each element for its attributes, filling the same record; building the elements and printing them.

namespace {

ReportDefinitionType Definition(std::int64_t size) {
    const auto columns = static_cast<std::int16_t>(size);
    ReportDefinitionType definition;
    definition.id = 1234;
    SetFixedText<&ReportDefinitionType::name>(definition, L"Pumput ja venttiilit");
    SetFixedText<&ReportDefinitionType::description>(definition, L"K\u00e4ytet\u00e4\u00e4n pohjapiirustuksissa");
    definition.wcSeparator = L';';
    for (std::int16_t i = 0; i < columns; ++i) {
        oce_columntype& column = definition.columns[i];
        column.propId = static_cast<std::int16_t>(8000 + i);
        column.len = 12.5F + static_cast<float>(i) / 4;
        column.align = static_cast<std::uint8_t>(i % 3);
        column.nSubRow = static_cast<std::uint8_t>(i % 2);
        SetFixedText<&oce_columntype::hdr1>(column, L"Nimellistehontarve");
        SetFixedText<&oce_columntype::hdr2>(column, L"l\u00e4mp\u00f6tila");
        column.showUnits = i % 4 == 0;
        definition.groups[i] = 100 + i;
    }
    definition.columnCount = columns;
    definition.groupCount = columns;
    return definition;
}

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
}

std::string XmlOf(const ReportDefinitionType& definition) {
    std::string xml;
    if (!definition.ToXml(xml)) Fail("cannot write");
    return xml;
}

// The bare reader. A file that lacks something or holds a number that does not fit is refused, as by the library.

template <class Number>
Number BareInt(const TiXmlElement& element, const char* name) {
    int value = 0;
    if (element.QueryIntAttribute(name, &value) != TIXML_SUCCESS || static_cast<Number>(value) != value)
        Fail("a number is unreadable");
    return static_cast<Number>(value);
}

float BareFloat(const TiXmlElement& element, const char* name) {
    float value = 0;
    if (element.QueryFloatAttribute(name, &value) != TIXML_SUCCESS) Fail("a number is unreadable");
    return value;
}

template <auto field, class Record>
void BareText(const TiXmlElement& element, const char* name, Record& record) {
    const char* text = element.Attribute(name);
    if (!text) Fail("a text is missing");
    SetFixedText<field>(record, orvaspace::ToWide(text));
}

void BareColumn(const TiXmlElement& element, oce_columntype& column) {
    column.propId = BareInt<std::int16_t>(element, "propId");
    column.len = BareFloat(element, "len");
    column.align = BareInt<std::uint8_t>(element, "align");
    column.nSubRow = BareInt<std::uint8_t>(element, "nSubRow");
    BareText<&oce_columntype::hdr1>(element, "hdr1", column);
    BareText<&oce_columntype::hdr2>(element, "hdr2", column);
    column.showUnits = BareInt<int>(element, "showUnits") == 1;
}

void BareRead(const char* xml, ReportDefinitionType& definition) {
    definition = ReportDefinitionType();
    TiXmlDocument document;
    document.Parse(xml, nullptr, TIXML_ENCODING_UTF8);
    if (document.Error() || !document.RootElement()) Fail("cannot parse");
    const TiXmlElement& root = *document.RootElement();
    BareInt<int>(root, "Version");
    BareInt<int>(root, "Format");
    definition.id = BareInt<int>(root, "id");
    definition.wcSeparator = BareInt<wchar_t>(root, "wcSeparator");
    BareText<&ReportDefinitionType::name>(root, "name", definition);
    BareText<&ReportDefinitionType::description>(root, "description", definition);
    const TiXmlElement* group = root.FirstChildElement("Groups")->FirstChildElement("Group");
    for (; group && definition.groupCount < ReportDefinitionType::kMaxGroups;
         group = group->NextSiblingElement("Group"))
        definition.groups[definition.groupCount++] = BareInt<int>(*group, "id");
    const TiXmlElement* column = root.FirstChildElement("Columns")->FirstChildElement("Column");
    for (; column && definition.columnCount < ReportDefinitionType::kMaxColumns;
         column = column->NextSiblingElement("Column"))
        BareColumn(*column, definition.columns[definition.columnCount++]);
}

// The bare writer.

TiXmlElement& BareChild(TiXmlNode& parent, const char* name) {
    return *parent.LinkEndChild(new TiXmlElement(name))->ToElement();
}

template <auto field, class Record>
void BarePutText(TiXmlElement& element, const char* name, const Record& record) {
    element.SetAttribute(name, orvaspace::ToUtf8(FixedText<field>(record)).c_str());
}

void BarePutColumn(TiXmlElement& element, const oce_columntype& column) {
    element.SetAttribute("propId", column.propId);
    element.SetDoubleAttribute("len", column.len);
    element.SetAttribute("align", column.align);
    element.SetAttribute("nSubRow", column.nSubRow);
    BarePutText<&oce_columntype::hdr1>(element, "hdr1", column);
    BarePutText<&oce_columntype::hdr2>(element, "hdr2", column);
    element.SetAttribute("showUnits", column.showUnits ? 1 : 0);
}

std::string BareWrite(const ReportDefinitionType& definition) {
    TiXmlDocument document;
    TiXmlElement& root = BareChild(document, "ReportDefinitionType");
    root.SetAttribute("Version", 20211229);
    root.SetAttribute("Format", 20211229);
    root.SetAttribute("id", definition.id);
    root.SetAttribute("wcSeparator", definition.wcSeparator);
    BarePutText<&ReportDefinitionType::name>(root, "name", definition);
    BarePutText<&ReportDefinitionType::description>(root, "description", definition);
    TiXmlElement& groups = BareChild(root, "Groups");
    for (int i = 0; i < definition.groupCount; ++i)
        BareChild(groups, "Group").SetAttribute("id", definition.groups[i]);
    TiXmlElement& columns = BareChild(root, "Columns");
    for (int i = 0; i < definition.columnCount; ++i)
        BarePutColumn(BareChild(columns, "Column"), definition.columns[i]);
    TiXmlPrinter printer;
    document.Accept(&printer);
    return printer.Str();
}

// Both must do the work before it is worth comparing.
void Check(const ReportDefinitionType& definition) {
    ReportDefinitionType read;
    BareRead(XmlOf(definition).c_str(), read);
    if (XmlOf(read) != XmlOf(definition)) Fail("bare reading is wrong");
    if (BareWrite(definition) != XmlOf(definition)) Fail("bare writing is wrong");
}

void ReadOurs(benchmark::State& state) {
    const std::string xml = XmlOf(Definition(state.range(0)));
    ReportDefinitionType definition;
    for (auto _ : state)
        definition.FromXml(xml.c_str());
}

void ReadBare(benchmark::State& state) {
    Check(Definition(state.range(0)));
    const std::string xml = XmlOf(Definition(state.range(0)));
    ReportDefinitionType definition;
    for (auto _ : state)
        BareRead(xml.c_str(), definition);
}

void WriteOurs(benchmark::State& state) {
    const ReportDefinitionType definition = Definition(state.range(0));
    std::string xml;
    for (auto _ : state)
        definition.ToXml(xml);
}

void WriteBare(benchmark::State& state) {
    const ReportDefinitionType definition = Definition(state.range(0));
    std::string xml;
    for (auto _ : state)
        xml = BareWrite(definition);
}

void BothOurs(benchmark::State& state) {
    const std::string xml = XmlOf(Definition(state.range(0)));
    ReportDefinitionType definition;
    std::string written;
    for (auto _ : state) {
        definition.FromXml(xml.c_str());
        definition.ToXml(written);
    }
}

void BothBare(benchmark::State& state) {
    const std::string xml = XmlOf(Definition(state.range(0)));
    ReportDefinitionType definition;
    std::string written;
    for (auto _ : state) {
        BareRead(xml.c_str(), definition);
        written = BareWrite(definition);
    }
}

void Sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(50)->Arg(100)->Arg(200)->Unit(benchmark::kMillisecond)->MinTime(0.1);
}

BENCHMARK(ReadOurs)->Name("ReadDefinition/ours")->Apply(Sizes);
BENCHMARK(ReadBare)->Name("ReadDefinition/bare")->Apply(Sizes);
BENCHMARK(WriteOurs)->Name("WriteDefinition/ours")->Apply(Sizes);
BENCHMARK(WriteBare)->Name("WriteDefinition/bare")->Apply(Sizes);
BENCHMARK(BothOurs)->Name("ReadAndWriteDefinition/ours")->Apply(Sizes);
BENCHMARK(BothBare)->Name("ReadAndWriteDefinition/bare")->Apply(Sizes);

}  // namespace
