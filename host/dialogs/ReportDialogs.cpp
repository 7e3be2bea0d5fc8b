#include <windows.h>

#include <commctrl.h>
#include <occommonui/ReportTemplate.h>
#include <occommonui/WarningReport.h>
#include <shellapi.h>

#include <algorithm>
#include <iterator>
#include <optional>

#include "host/ProjectTrees.h"
#include "host/ProjectWarnings.h"
#include "host/RecordText.h"
#include "host/ReportDefinitions.h"
#include "host/TourSteps.h"
#include "host/dialogs/Choose.h"
#include "host/dialogs/Families.h"

namespace ochost {
namespace {

/// Whose templates, and of which reports.
struct Kind {
    Lng::AppID app;
    ReportType type;
};

constexpr Lng::AppID kApps[] = {Lng::Hpv, Lng::Electrical, Lng::Schematics, Lng::Automation};

struct TypeName {
    ReportType type;
    const wchar_t* name;
};

constexpr TypeName kTypes[] = {
    {BillOfMaterials, L"bill of materials"},
    {Legend,          L"legend"           },
    {ExportReport,    L"export"           },
    {TextBlock,       L"text list"        },
};

Kind KindOf(const ReportTemplate& record) {
    return {static_cast<Lng::AppID>(record.app), static_cast<ReportType>(record.type)};
}

bool IsOf(const ReportTemplate& record, const Kind& kind) {
    return record.app == kind.app && record.type == kind.type;
}

// ---- texts ----

std::wstring ToText(const oce_columntype& column) {
    ustr text;
    text.format(L"property %d, width %g, align %d, sub-row %d, \"%s\" / \"%s\"%s", int{column.propId},
                double{column.len}, int{column.align}, int{column.nSubRow},
                FixedText<&oce_columntype::hdr1>(column).c_str(), FixedText<&oce_columntype::hdr2>(column).c_str(),
                column.showUnits ? L", units" : L"");
    return text.c_str();
}

std::wstring ToText(const ReportDefinitionType& definition) {
    RecordText text;
    text.Line(L"id", definition.id)
        .Line(L"name", FixedText<&ReportDefinitionType::name>(definition))
        .Line(L"description", FixedText<&ReportDefinitionType::description>(definition))
        .Line(L"wcSeparator", std::int64_t{definition.wcSeparator});
    for (std::int16_t i = 0; i < definition.groupCount; ++i)
        text.Line(L"    group", std::int64_t{definition.groups[i]});
    for (std::int16_t i = 0; i < definition.columnCount; ++i)
        text.Line(L"    column", ToText(definition.columns[i]));
    return text.Text();
}

std::wstring NamesOf(const std::vector<ReportTemplate>& records) {
    RecordText text;
    for (const ReportTemplate& record : records)
        text.Line(L"name", record.name);
    return text.Text();
}

// ---- questions ----

const ReportTemplate* ChooseTemplate(DialogContext& context, const wchar_t* title,
                                     const std::vector<ReportTemplate>& records) {
    return ChooseRecord(context, title, L"Report template:", records);
}

std::optional<Kind> ChooseKind(DialogContext& context, const wchar_t* title,
                               const std::vector<ReportTemplate>& records) {
    std::vector<Kind> kinds;
    std::vector<ustr> names;
    for (const Lng::AppID app : kApps) {
        for (const TypeName& type : kTypes) {
            const Kind& kind = kinds.emplace_back(Kind{app, type.type});
            const auto count = std::count_if(records.begin(), records.end(),
                                             [&](const ReportTemplate& record) { return IsOf(record, kind); });
            names.emplace_back(Lng::GetAppName(app, false) + L", " + type.name + L" (" +
                               std::to_wstring(count).c_str() + L")");
        }
    }
    const auto chosen = Choose(context, title, L"Templates of:", names);
    if (!chosen) return std::nullopt;
    return kinds[*chosen];
}

// ---- templates ----

::ReportTemplate::Context WhatIsOnOffer(const ProjectStore& project) {
    ::ReportTemplate::Context offer;
    offer.objects = ValueOf(ReportObjectTree(project));
    offer.properties = ValueOf(ReportProperties(project));
    return offer;
}

/// Edits the template and gives it to `store`, which returns the record as the project now has it or throws the
/// Failure.
template <class Store>
Outcome Edit(DialogContext& context, const ReportTemplate& record, Store store) {
    ::ReportTemplate::Context offer = WhatIsOnOffer(context.project);
    const Kind kind = KindOf(record);
    ReportDefinitionType definition = ToDefinition(record);
    context.reporter.Before(ToText(definition));
    if (!::ReportTemplate::Edit(context.parent, kind.app, kind.type, &definition, sizeof definition, &offer, nullptr)) {
        return Outcome::Cancelled;
    }
    return StoreEntered(context, [&] {
        const ReportTemplate stored = store(ToRecord(definition, kind.app, kind.type));
        context.reporter.After(ToText(ToDefinition(stored)));
        context.reporter.Log(L"stored report template " + std::to_wstring(stored.id) + L" \"" + stored.name + L"\"");
    });
}

Outcome EditTemplate(DialogContext& context) {
    const auto records = ValueOf(context.project.ReportTemplates());
    const ReportTemplate* chosen = ChooseTemplate(context, L"Edit report template", records);
    if (!chosen) return Outcome::Cancelled;
    return Edit(context, *chosen, [&](const ReportTemplate& record) {
        Check(context.project.UpdateReportTemplate(record));
        return record;
    });
}

Outcome NewTemplate(DialogContext& context) {
    const auto kind = ChooseKind(context, L"New report template", ValueOf(context.project.ReportTemplates()));
    if (!kind) return Outcome::Cancelled;
    ReportTemplate empty;
    empty.app = kind->app;
    empty.type = kind->type;
    return Edit(context, empty, [&](const ReportTemplate& record) {
        return ValueOf(context.project.CreateReportTemplates({record})).front();
    });
}

// ---- a column ----

std::wstring NameOf(const ValueList& properties, int id) {
    const auto found =
        std::find_if(properties.begin(), properties.end(), [&](const auto& property) { return property.second == id; });
    if (found == properties.end()) return L"Property " + std::to_wstring(id);
    return std::wstring(std::wstring_view(found->first));
}

std::optional<std::size_t> ChooseColumn(DialogContext& context, const ReportDefinitionType& definition,
                                        const ValueList& properties) {
    std::vector<ustr> names;
    for (std::int16_t i = 0; i < definition.columnCount; ++i)
        names.emplace_back(NameOf(properties, definition.columns[i].propId));
    return Choose(context, L"Edit report column", L"Column:", names);
}

Outcome EditColumn(DialogContext& context) {
    const auto records = ValueOf(context.project.ReportTemplates());
    const ValueList properties = ValueOf(ReportProperties(context.project));
    const ReportTemplate* chosen = ChooseTemplate(context, L"Edit report column", records);
    if (!chosen) return Outcome::Cancelled;
    const Kind kind = KindOf(*chosen);
    ReportDefinitionType definition = ToDefinition(*chosen);
    const auto index = ChooseColumn(context, definition, properties);
    if (!index) return Outcome::Cancelled;

    oce_columntype& column = definition.columns[*index];
    context.reporter.Before(ToText(column) + L"\r\n");
    const std::wstring name = NameOf(properties, column.propId);
    if (!::ReportTemplate::EditColumn(context.parent, &column, name.c_str(), kind.type)) return Outcome::Cancelled;
    return StoreEntered(context, [&] {
        Check(context.project.UpdateReportTemplate(ToRecord(definition, kind.app, kind.type)));
        context.reporter.After(ToText(column) + L"\r\n");
    });
}

// ---- files ----

Outcome Export(DialogContext& context) {
    const auto records = ValueOf(context.project.ReportTemplates());
    const auto kind = ChooseKind(context, L"Export report templates", records);
    if (!kind) return Outcome::Cancelled;
    std::vector<ReportTemplate> exported;
    std::copy_if(records.begin(), records.end(), std::back_inserter(exported),
                 [&](const ReportTemplate& record) { return IsOf(record, *kind); });
    context.reporter.Before(NamesOf(exported));
    std::vector<ReportDefinitionType> definitions;
    std::transform(exported.begin(), exported.end(), std::back_inserter(definitions), ToDefinition);
    const int count = static_cast<int>(definitions.size());
    if (!::ReportTemplate::ExportToXml(context.parent, kind->app, kind->type, definitions.data(), count,
                                       sizeof(ReportDefinitionType))) {
        return Outcome::Cancelled;
    }
    context.reporter.Log(L"exported " + std::to_wstring(count) + L" report templates");
    return Outcome::Confirmed;
}

/// How many templates of a file are imported at the most.
constexpr std::size_t kMostImported = 500;

/// The templates of a file that the user chooses; none when nothing was imported.
std::vector<ReportTemplate> ImportedTemplates(HWND parent, const Kind& kind) {
    // The import does not say how many it took; no template of a file has fewer than no columns.
    constexpr std::int16_t kNotTaken = -1;
    std::vector<ReportDefinitionType> definitions(kMostImported);
    for (ReportDefinitionType& definition : definitions)
        definition.columnCount = kNotTaken;
    std::vector<ReportTemplate> records;
    if (!::ReportTemplate::ImportFromXml(parent, kind.app, kind.type, definitions.data(),
                                         static_cast<int>(kMostImported), sizeof(ReportDefinitionType))) {
        return records;
    }
    for (const ReportDefinitionType& definition : definitions) {
        if (definition.columnCount != kNotTaken) records.push_back(ToRecord(definition, kind.app, kind.type));
    }
    return records;
}

Outcome Import(DialogContext& context) {
    const auto kind = ChooseKind(context, L"Import report templates", ValueOf(context.project.ReportTemplates()));
    if (!kind) return Outcome::Cancelled;
    const std::vector<ReportTemplate> imported = ImportedTemplates(context.parent, *kind);
    if (imported.empty()) return Outcome::Cancelled;
    return StoreEntered(context, [&] {
        const auto stored = ValueOf(context.project.CreateReportTemplates(imported));
        context.reporter.After(NamesOf(stored));
        context.reporter.Log(L"imported " + std::to_wstring(stored.size()) + L" report templates, " +
                             std::to_wstring(stored.front().id) + L" to " + std::to_wstring(stored.back().id));
        if (stored.size() == kMostImported) context.reporter.Log(L"the file may hold more, which were left out");
    });
}

// ---- warnings ----

void Warn(DialogContext& context) {
    Check(RaiseWarnings(context.project, context.app));
    context.reporter.Log(L"raised " + std::to_wstring(kWarningCount) + L" warnings in " +
                         std::to_wstring(kWarningCategoryCount) + L" categories");
}

Outcome ShowWarnings(DialogContext& context) {
    Warn(context);
    return WarningReport::ShowReport(context.parent, context.app) ? Outcome::Confirmed : Outcome::Failed;
}

Outcome NotifyOfWarnings(DialogContext& context) {
    if (!context.parent) {
        throw Failure{FailureKind::BadInput, L"The balloon needs the host's window: open it there."};
    }
    Warn(context);
    WarningReport::ShowNotification(context.parent, context.app);
    return Outcome::Confirmed;
}

// ---- tour ----

// Places in the tab order.
constexpr int kFirstEdit = 0;
constexpr int kFirstList = 0;

void TourEditTemplate(TourSteps& steps) {
    constexpr int kAttributeSearch = 3;
    steps.Open()
        .Picture(L"choose")
        .Confirm()
        .Open()
        .Picture()
        .Type(WC_EDITW, kAttributeSearch, L"pressure loss")
        .DoubleClickInList(kFirstList, L"Pressure loss per metre")
        .Picture(L"search")
        .Type(WC_EDITW, kAttributeSearch, L"")
        .CheckInTree(L"Silencers")
        .Picture(L"groups")
        .Confirm();
}

void TourNewTemplate(TourSteps& steps) {
    constexpr int kDescription = 1, kObjectSearch = 2;
    steps.Open()
        .Type(WC_EDITW, kFirstEdit, L"hpv legend")
        .Picture(L"choose")
        .Confirm()
        .Open()
        .Type(WC_EDITW, kFirstEdit, L"Fire safety legend")
        .Type(WC_EDITW, kDescription, L"Symbols of fire and smoke dampers")
        .Type(WC_EDITW, kObjectSearch, L"smoke")
        .CheckInTree(L"Fire and smoke dampers")
        .DoubleClickInList(kFirstList, L"Name")
        .Picture()
        .Confirm();
}

void TourColumn(TourSteps& steps) {
    constexpr int kHeader2 = 3;
    steps.Open()
        .Confirm()
        .Open()
        .Picture(L"choose")
        .Confirm()
        .Open()
        .Type(WC_EDITW, kHeader2, L"code")
        .Picture()
        .Confirm();
}

/// Where the tour's export goes and its import comes from.
std::wstring ExchangeFile(const TourSteps& steps) {
    return steps.Folder() + L"\\report-templates.xml";
}

void TourExport(TourSteps& steps) {
    DeleteFileW(ExchangeFile(steps).c_str());  // of a tour before
    steps.Open().Picture().Confirm().Open().ChooseFile(ExchangeFile(steps));
}

void TourImport(TourSteps& steps) {
    steps.Open().Picture().Confirm().Open().ChooseFile(ExchangeFile(steps));
}

void TourWarnings(TourSteps& steps) {
    steps.Open().Picture().Type(WC_EDITW, kFirstEdit, L"sound level office").Picture(L"search").Cancel();
}

void TourNotification(TourSteps& steps) {
    // What the system posts when the user clicks the balloon.
    constexpr UINT kTrayMessage = 33768;
    steps.PostToHidden(kTrayMessage, 0, MAKELPARAM(NIN_BALLOONUSERCLICK, 0)).Open().Picture().Cancel().Return();
}

constexpr DialogEntry kDialogs[] = {
    {L"Reports", L"report-template-edit",   L"Edit report template",
     L"Edits the template of a report or legend: parts, attributes, columns.",                                        EditTemplate,     TourEditTemplate},
    {L"Reports", L"report-template-new",    L"New report template",     L"Makes a new template of a kind of report.",
     NewTemplate,                                                                                                                       TourNewTemplate },
    {L"Reports", L"report-column",          L"Edit report column",      L"Edits one column of a template.",           EditColumn,       TourColumn      },
    {L"Reports", L"report-template-export", L"Export report templates",
     L"Writes the templates of a kind of report to an XML file.",                                                     Export,           TourExport      },
    {L"Reports", L"report-template-import", L"Import report templates",
     L"Adds the templates of a kind of report from an XML file.",                                                     Import,           TourImport      },
    {L"Reports", L"warning-report",         L"Warning report",
     L"Shows warnings about the project's parts, to search and zoom to.",                                             ShowWarnings,     TourWarnings    },
    {L"Reports", L"warning-notification",   L"Warning notification",
     L"Tells of the warnings with a balloon, which opens the report.",                                                NotifyOfWarnings, TourNotification},
};

}  // namespace

std::span<const DialogEntry> ReportDialogs() {
    return kDialogs;
}

}  // namespace ochost
