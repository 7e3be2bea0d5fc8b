#pragma once

#include <occommonui/ReportDefinitionType.h>
#include <orvaspace/ustr.h>

// How wide the columns of a report can be, in its unit (HasWidthsInCharacters), and how widths are shown.

inline constexpr int kWidestColumn = 30000;

/// The least width of a column that shows this property.
int NarrowestColumn(ReportType type, int propId);

/// The width that a column gets when it is added.
int NewColumnWidth(ReportType type, int propId);

/// A width as the sum counts it: records of unknown origin may hold what is no number, which is 0.
double UsableWidth(float width);

/// A width as a whole number.
ustr WidthText(double width);
