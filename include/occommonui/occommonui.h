#pragma once

#include <occommonui/CustomProperty.h>
#include <occommonui/ObjectSelection.h>
#include <occommonui/ObjectSelectionCmd.h>
#include <occommonui/ReportDefinitionType.h>
#include <occommonui/ReportFilter.h>
#include <occommonui/ReportTemplate.h>
#include <occommonui/UpdateDwgData.h>
#include <occommonui/Version.h>
#include <occommonui/WarningReport.h>
