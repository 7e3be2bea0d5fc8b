#include "host/ReportTemplateData.h"

#include <unordered_map>
#include <unordered_set>

#include "host/DataText.h"
#include "host/DataWords.h"

namespace ochost {
namespace {

constexpr Word kTypes[] = {
    {L"legend", 0},
    {L"bill",   1},
    {L"export", 2},
    {L"text",   3},
};

constexpr Word kAlignments[] = {
    {L"left",   0},
    {L"centre", 1},
    {L"right",  2},
};

constexpr Word kAnswers[] = {
    {L"no",  0},
    {L"yes", 1},
};

std::unordered_map<std::wstring, Id> GroupsByPath(const std::vector<PartGroup>& groups) {
    std::unordered_map<std::wstring, Id> ids;
    std::vector<std::wstring> paths;
    for (const PartGroup& group : groups) {
        paths.resize(static_cast<size_t>(group.level));
        paths.push_back(paths.empty() ? group.name : paths.back() + L"/" + group.name);
        ids.emplace(paths.back(), group.id);
    }
    return ids;
}

std::unordered_set<int> PropertyIds(const ProjectContent& project) {
    std::unordered_set<int> ids;
    for (const Property& property : project.properties)
        ids.insert(property.id);
    for (const CustomProperty& property : project.customProperties)
        ids.insert(ColumnIdOf(property));
    return ids;
}

ReportTemplate ToTemplate(const DataRecord& record, const std::unordered_map<std::wstring, Id>& groups) {
    ReportTemplate made;
    made.name = record.Text(0);
    made.app = NumberOf(record, 1, kApplications);
    made.type = NumberOf(record, 2, kTypes);
    const std::wstring separator = record.Text(3);
    if (separator.size() > 1) record.Refuse(L"the separator is more than one character");
    if (!separator.empty()) made.separator = separator.front();
    for (const std::wstring& path : record.List(4)) {
        const auto group = groups.find(path);
        if (group == groups.end()) record.Refuse(L"there is no part group \"" + path + L"\"");
        made.groups.push_back(static_cast<std::int32_t>(group->second));
    }
    made.description = record.Text(5);
    return made;
}

ReportColumn ToColumn(const DataRecord& record, const std::unordered_set<int>& properties) {
    if (!properties.contains(record.Integer(1))) record.Refuse(L"there is no property " + record.Text(1));
    ReportColumn made;
    made.property = static_cast<std::int16_t>(record.Integer(1));
    made.width = static_cast<float>(record.Integer(2));
    made.align = static_cast<std::uint8_t>(NumberOf(record, 3, kAlignments));
    made.subRow = static_cast<std::uint8_t>(record.Integer(4));
    made.header1 = record.Text(5);
    made.header2 = record.Text(6);
    made.showUnits = NumberOf(record, 7, kAnswers) != 0;
    return made;
}

}  // namespace

std::vector<ReportTemplate> ReadReportTemplates(const TextSource& texts, const ProjectContent& project) {
    std::vector<ReportTemplate> templates;
    std::unordered_map<std::wstring, size_t> indices;
    const auto groups = GroupsByPath(project.partGroups);
    for (const DataRecord& record : ReadData(texts, "report_templates", 6)) {
        ReportTemplate& made = templates.emplace_back(ToTemplate(record, groups));
        made.id = static_cast<std::int32_t>(templates.size());
        if (!indices.emplace(made.name, templates.size() - 1).second) record.Refuse(L"there are two of this name");
    }
    const auto properties = PropertyIds(project);
    for (const DataRecord& record : ReadData(texts, "report_columns", 8)) {
        const auto found = indices.find(record.Text(0));
        if (found == indices.end()) record.Refuse(L"there is no report template \"" + record.Text(0) + L"\"");
        templates[found->second].columns.push_back(ToColumn(record, properties));
    }
    return templates;
}

}  // namespace ochost
