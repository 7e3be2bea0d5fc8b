#pragma once

#include <orvatool/SimpleReport.h>

#include <cstdint>
#include <string>
#include <vector>

// A report as the files that users take elsewhere: a line of headings and `rows` of the report, in that order.

/// Tab separated text: UTF-8 with its mark, lines that end with CR LF.
std::string ReportAsText(const SimpleReport& report, const std::vector<int>& rows);

/// A workbook in the XML that spreadsheet programs read (SpreadsheetML of 2003), with one sheet named after the title.
std::string ReportAsWorkbook(const SimpleReport& report, const std::vector<int>& rows);

/// Writes a workbook when the path ends in ".xml" and text otherwise. 0, or the system's error code and the file is as
/// it was.
std::uint32_t WriteReport(const wchar_t* path, const SimpleReport& report, const std::vector<int>& rows);
