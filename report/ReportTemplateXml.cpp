#include <occommonui/ReportTemplate.h>

#include <windows.h>

#include <occommonui/ReportDefinitionType.h>
#include <orvatool/Gw.h>
#include <orvatool/MiscUtil.h>
#include <ticpp.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <vector>

#include "ReportDefinitionTypeXml.h"

namespace {

// The names in the file.
constexpr char kRoot[] = "SymbolLegendTemplates";
constexpr char kTemplate[] = "SymbolLegendTemplate";
constexpr char kApp[] = "appId";
constexpr char kType[] = "typeId";

using Path = ustr_pre<260>;

// Whose templates.
struct Owner {
    Lng::AppID app;
    ReportType type;
};

// The caller's records, which are bytes at any address.
class Records {
public:
    explicit Records(void* bytes) : bytes_(static_cast<std::byte*>(bytes)) {}

    ReportDefinitionType Get(std::size_t index) const {
        ReportDefinitionType record;
        std::memcpy(&record, At(index), sizeof record);
        return record;
    }
    void Set(std::size_t index, const ReportDefinitionType& record) const {
        std::memcpy(At(index), &record, sizeof record);
    }

private:
    std::byte* At(std::size_t index) const { return bytes_ + index * sizeof(ReportDefinitionType); }

    std::byte* bytes_;
};

bool IsUsable(const void* definitions, int count, int size) {
    return size == static_cast<int>(sizeof(ReportDefinitionType)) && (count == 0 || (count > 0 && definitions));
}

void Write(const Path& path, const Owner& owner, const Records& records, std::size_t count) {
    const gwWaitCursor waiting;
    ticpp::Document document;
    document.InsertEndChild(ticpp::Declaration("1.0", "", ""));
    ticpp::Element& root = *document.InsertEndChild(ticpp::Element(kRoot))->ToElement();
    for (std::size_t i = 0; i < count; ++i) {
        ticpp::Element& element = *root.InsertEndChild(ticpp::Element(kTemplate))->ToElement();
        element.SetAttribute(kApp, owner.app);
        element.SetAttribute(kType, owner.type);
        WriteDefinitionContent(element, records.Get(i));
    }
    document.SaveFile(orvaspace::ToUtf8(path));
}

bool IsOf(const ticpp::Element& element, const Owner& owner) {
    const auto app = element.GetAttribute<std::int32_t>(kApp);
    const auto type = element.GetAttribute<std::int32_t>(kType);
    return app == owner.app && type == owner.type;
}

// The owner's templates, in the order of the file; the first `limit` of them. Of all others only the owner is read.
std::vector<ReportDefinitionType> Read(const Path& path, const Owner& owner, std::size_t limit) {
    const gwWaitCursor waiting;
    ticpp::Document document;
    document.LoadFile(orvaspace::ToUtf8(path));
    const ticpp::Element& root = *document.FirstChildElement();
    if (root.Value() != kRoot) throw ticpp::Exception("no templates: " + root.Value());
    std::vector<ReportDefinitionType> records;
    ticpp::Iterator<ticpp::Element> element(kTemplate);
    for (element = element.begin(&root); element != element.end(); ++element) {
        if (IsOf(*element, owner) && records.size() < limit)
            ReadDefinitionContent(*element, kDefinitionFormat, records.emplace_back());
    }
    return records;
}

bool Refuse(HWND parent, const Owner& owner, const ustr& message) {
    gwerrmsg(parent, owner.app, message.c_str());
    return false;
}

bool AskAndWrite(HWND parent, const Owner& owner, const Records& records, std::size_t count) {
    Path path;
    if (!MiscUtil::SelectXmlFile(parent, owner.app, true, path)) return false;
    try {
        Write(path, owner, records, count);
        return true;
    } catch (const std::exception&) {
        return Refuse(parent, owner, Lng::text(kSharedTexts, 60054, L"Failed to write XML file."));
    }
}

bool AskAndRead(HWND parent, const Owner& owner, const Records& records, std::size_t count) {
    Path path;
    if (!MiscUtil::SelectXmlFile(parent, owner.app, false, path)) return false;
    std::vector<ReportDefinitionType> read;
    try {
        read = Read(path, owner, count);
    } catch (const std::exception&) {
        return Refuse(parent, owner, Lng::text(kSharedTexts, 60055, L"Failed to read XML file."));
    }
    if (read.empty())
        return Refuse(parent, owner, Lng::text(kLibraryTexts, 25940, L"The file has no templates of this kind."));
    for (std::size_t i = 0; i < read.size(); ++i)
        records.Set(i, read[i]);
    return true;
}

}  // namespace

bool ReportTemplate::ExportToXml(HWND parent, Lng::AppID app, ReportType type, void* definitions, int count, int size) {
    if (!IsUsable(definitions, count, size)) return false;
    try {
        return AskAndWrite(parent, {app, type}, Records(definitions), static_cast<std::size_t>(count));
    } catch (...) {
        return false;
    }
}

bool ReportTemplate::ImportFromXml(HWND parent, Lng::AppID app, ReportType type, void* definitions, int count,
                                   int size) {
    if (count == 0 || !IsUsable(definitions, count, size)) return false;
    try {
        return AskAndRead(parent, {app, type}, Records(definitions), static_cast<std::size_t>(count));
    } catch (...) {
        return false;
    }
}
