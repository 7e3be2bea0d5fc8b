#pragma once

#include <occommonui/ReportDefinitionType.h>

#include "host/ProjectRecords.h"

namespace ochost {

/// A report template in the form in which dialogs take it. What exceeds the form's limits is cut.
ReportDefinitionType ToDefinition(const ReportTemplate& record);

/// And back, with what the definition does not have: the application and the report's type.
ReportTemplate ToRecord(const ReportDefinitionType& definition, std::int32_t app, std::int32_t type);

}  // namespace ochost
