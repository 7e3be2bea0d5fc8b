#pragma once

#include "host/ProjectGenerator.h"
#include "host/ProjectRecords.h"

namespace ochost {

/// The report templates of the data files, for a project with these part groups, properties and custom properties.
/// What does not fit is thrown as a Failure that names file and line.
std::vector<ReportTemplate> ReadReportTemplates(const TextSource& texts, const ProjectContent& project);

}  // namespace ochost
