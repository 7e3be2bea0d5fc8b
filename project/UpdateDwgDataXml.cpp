#include "UpdateDwgDataXml.h"

#include <ticpp.h>

#include <utility>

#include "XmlRows.h"

namespace UpdateDwgData {
namespace {

// the file's names and numbers: never change
constexpr char kRoot[] = "UpdateDwgDataType";
constexpr char kProperties[] = "Properties";
constexpr char kProperty[] = "Property";
constexpr char kId[] = "id";
constexpr char kSelection[] = "ObjectSelection";
constexpr int kFormat = 20161101;

void WriteProperties(ticpp::Element& element, const std::set<long>& properties) {
    ticpp::Element property(kProperty);
    for (const long id : properties) {
        property.SetAttribute(kId, id);
        element.InsertEndChild(property);
    }
}

void ReadProperties(const ticpp::Element& element, std::set<long>& properties) {
    const ticpp::Element* property = element.FirstChildElement(kProperty, false);
    for (; property; property = property->NextSiblingElement(kProperty, false))
        properties.insert(properties.end(), property->GetAttribute<long>(kId));
}

bool ReadOptions(const QBaseDb& db, const ticpp::Element& element, Options& options) {
    if (ReadXmlFormat(element) > kFormat) return false;
    const ticpp::Element* properties = element.FirstChildElement(kProperties, false);
    if (properties) ReadProperties(*properties, options.properties);
    const ticpp::Element* selection = element.FirstChildElement(kSelection, false);
    if (selection && !options.selection.FromXml(db, *selection)) throw ticpp::Exception(kSelection);
    return true;
}

}  // namespace

ustr ToXml(const Options& options) {
    ticpp::Element element(kRoot);
    WriteXmlStamp(element, kFormat, kFormat);
    WriteProperties(PutXmlChild(element, kProperties), options.properties);
    if (!options.selection.ToXml(PutXmlChild(element, kSelection))) throw ticpp::Exception(kSelection);
    return orvaspace::ToWide(element.AsXml({}, {}));
}

bool FromXml(const QBaseDb& db, const ustr& xml, Options& options) {
    const auto reset = [&] { options = Options(); };
    reset();
    return TryReadXml(
        [&] {
            ticpp::Document document;
            document.Parse(orvaspace::ToUtf8(xml));
            return ReadOptions(db, *document.FirstChildElement(), options);
        },
        reset);
}

}  // namespace UpdateDwgData
