#include "SimpleReportFile.h"

#include <orvaspace/File.h>

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <new>
#include <string_view>

#include "Cells.h"
#include "Numbers.h"

namespace {

constexpr char kUtf8Mark[] = "\xEF\xBB\xBF";
constexpr std::size_t kMostSheetName = 31;
constexpr std::size_t kMostCell = 32'767;  // what a cell of a spreadsheet holds
constexpr std::size_t kMostDigits = 10;    // of a number that a spreadsheet shows as it is written
constexpr wchar_t kReplacement = 0xFFFD;   // for half a character

constexpr char kWorkbookStart[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
    "<?mso-application progid=\"Excel.Sheet\"?>\r\n"
    "<Workbook xmlns=\"urn:schemas-microsoft-com:office:spreadsheet\""
    " xmlns:ss=\"urn:schemas-microsoft-com:office:spreadsheet\">\r\n"
    "<Styles><Style ss:ID=\"Heading\"><Font ss:Bold=\"1\"/></Style></Styles>\r\n";
constexpr char kWorkbookEnd[] =
    "</Table>\r\n"
    "<WorksheetOptions xmlns=\"urn:schemas-microsoft-com:office:excel\"><FreezePanes/><FrozenNoSplit/>"
    "<SplitHorizontal>1</SplitHorizontal><TopRowBottomPane>1</TopRowBottomPane><ActivePane>2</ActivePane>"
    "</WorksheetOptions>\r\n"
    "</Worksheet>\r\n"
    "</Workbook>\r\n";

bool IsHighSurrogate(wchar_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}
bool IsLowSurrogate(wchar_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

// The text with halves of characters replaced: no strict reader takes them.
ustr WholeCharacters(std::wstring_view text) {
    ustr whole(text);
    for (std::size_t i = 0; i < whole.size(); ++i) {
        if (IsHighSurrogate(whole[i]) && IsLowSurrogate(whole[i + 1])) {
            ++i;
        } else if (IsHighSurrogate(whole[i]) || IsLowSurrogate(whole[i])) {
            whole[i] = kReplacement;
        }
    }
    return whole;
}

void AppendUtf8(std::string& bytes, std::wstring_view text) {
    bytes += std::string_view(orvaspace::ToUtf8(WholeCharacters(text)));
}

bool HasXmlForm(wchar_t c) {
    return c == L'\t' || c == L'\n' || (c >= L' ' && c != 0xFFFE && c != 0xFFFF);
}

// For the content of elements and attributes. What XML has no way to write is left out.
void AppendXml(std::string& xml, std::wstring_view text) {
    ustr written;
    for (const wchar_t c : WholeCharacters(text)) {
        if (HasXmlForm(c)) written.append(c);
    }
    for (const char c : orvaspace::ToUtf8(written)) {
        switch (c) {
            case '&':
                xml += "&amp;";
                break;
            case '<':
                xml += "&lt;";
                break;
            case '>':
                xml += "&gt;";
                break;
            case '"':
                xml += "&quot;";
                break;
            case '\t':
            case '\n':
                xml.append("&#").append(std::to_string(static_cast<int>(c))).append(";");
                break;
            default:
                xml.push_back(c);
        }
    }
}

// As much as a cell holds. A line break is a line feed to spreadsheets.
ustr CellContent(std::wstring_view text) {
    ustr content;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool inPair = text[i] == L'\r' && text.substr(i + 1).starts_with(L'\n');
        if (!inPair) content.append(text[i] == L'\r' ? L'\n' : text[i]);
    }
    content.truncate(kMostCell);
    return content;
}

bool IsDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

// Takes the digits that `text` begins with and returns how many there are.
std::size_t TakeDigits(std::wstring_view& text) {
    const auto end = std::find_if_not(text.begin(), text.end(), IsDigit);
    const auto size = static_cast<std::size_t>(end - text.begin());
    text.remove_prefix(size);
    return size;
}

// Whether a spreadsheet that takes the text as a number shows the same text again.
bool IsPlainNumber(std::wstring_view text, std::wstring_view separator) {
    const bool negative = !text.empty() && text[0] == L'-';
    if (negative) text.remove_prefix(1);
    if (text == L"0") return !negative;
    const bool leadingZero = text.size() > 1 && text[0] == L'0' && IsDigit(text[1]);
    std::size_t digits = TakeDigits(text);
    if (digits == 0 || leadingZero) return false;
    if (!text.empty()) {
        if (!text.starts_with(separator) || text.back() == L'0') return false;
        text.remove_prefix(separator.size());
        const std::size_t decimals = TakeDigits(text);
        if (decimals == 0) return false;
        digits += decimals;
    }
    return text.empty() && digits <= kMostDigits;
}

// Builds the rows of a sheet.
class SheetWriter {
public:
    explicit SheetWriter(std::string& xml) : xml_(xml) {}

    void StartRow(const char* attributes) { xml_.append("<Row").append(attributes).append(">"); }
    void EndRow() { xml_ += "</Row>\r\n"; }
    void Text(std::wstring_view text) {
        xml_ += "<Cell><Data ss:Type=\"String\">";
        AppendXml(xml_, CellContent(text));
        xml_ += "</Data></Cell>";
    }
    void Cell(std::wstring_view text) {
        if (text.empty()) {
            xml_ += "<Cell/>";
        } else if (IsPlainNumber(text, separator_)) {
            Number(text);
        } else {
            Text(text);
        }
    }

private:
    void Number(std::wstring_view text) {
        xml_ += "<Cell><Data ss:Type=\"Number\">";
        for (const wchar_t c : text) {
            if (IsDigit(c) || c == L'-') {
                xml_.push_back(static_cast<char>(c));
            } else if (xml_.back() != '.') {  // of a separator of several characters one point
                xml_.push_back('.');
            }
        }
        xml_ += "</Data></Cell>";
    }

    std::string& xml_;
    const std::wstring separator_ = DecimalSeparator();
};

// What a spreadsheet takes as the name of a sheet.
ustr SheetName(std::wstring_view title) {
    ustr name;
    for (const wchar_t c : title) {
        if (c >= L' ' && !std::wcschr(L"[]:*?/\\", c)) name.append(c);
    }
    name.truncate(kMostSheetName);
    while (!name.empty() && name[0] == L'\'')
        name.erase(0, 1);
    while (!name.empty() && name[name.size() - 1] == L'\'')
        name.truncate(name.size() - 1);
    return name.empty() ? ustr(L"Sheet1") : name;
}

void AppendColumns(std::string& xml, const SimpleReport& report) {
    for (const SimpleReport::Column& column : report.Columns()) {
        const int hundredths = std::max(column.width, 0) * 75;  // of a point
        xml.append("<Column ss:AutoFitWidth=\"0\" ss:Width=\"").append(std::to_string(hundredths / 100));
        if (hundredths % 100) xml.append(".").append(std::to_string(hundredths % 100));
        xml += "\"/>";
    }
    xml += "\r\n";
}

bool EndsInXml(std::wstring_view path) {
    constexpr std::wstring_view kExtension = L".xml";
    return path.size() >= kExtension.size() &&
           _wcsicmp(path.substr(path.size() - kExtension.size()).data(), kExtension.data()) == 0;
}

}  // namespace

std::string ReportAsText(const SimpleReport& report, const std::vector<int>& rows) {
    std::string bytes = kUtf8Mark;
    const int columns = static_cast<int>(report.Columns().size());
    ustr line;
    const auto addLine = [&](auto textOf) {
        line.clear();
        for (int column = 0; column < columns; ++column) {
            if (column > 0) line.append(L'\t');
            AppendCell(line, textOf(column));
        }
        AppendUtf8(bytes, line);
        bytes += "\r\n";
    };
    addLine([&](int column) -> const ustr& { return report.Columns()[static_cast<std::size_t>(column)].text; });
    for (const int row : rows)
        addLine([&](int column) -> const ustr& { return report.Text(row, column); });
    return bytes;
}

std::string ReportAsWorkbook(const SimpleReport& report, const std::vector<int>& rows) {
    std::string xml = kWorkbookStart;
    xml += "<Worksheet ss:Name=\"";
    AppendXml(xml, SheetName(report.Title()));
    xml += "\">\r\n<Table>\r\n";
    AppendColumns(xml, report);
    SheetWriter sheet(xml);
    sheet.StartRow(" ss:StyleID=\"Heading\"");
    for (const SimpleReport::Column& column : report.Columns())
        sheet.Text(column.text);
    sheet.EndRow();
    for (const int row : rows) {
        sheet.StartRow("");
        for (int column = 0; column < static_cast<int>(report.Columns().size()); ++column)
            sheet.Cell(report.Text(row, column));
        sheet.EndRow();
    }
    xml += kWorkbookEnd;
    return xml;
}

std::uint32_t WriteReport(const wchar_t* path, const SimpleReport& report, const std::vector<int>& rows) {
    try {
        const auto make = EndsInXml(path) ? ReportAsWorkbook : ReportAsText;
        return orvaspace::WriteWholeFile(path, make(report, rows));
    } catch (const std::bad_alloc&) {
        return ERROR_OUTOFMEMORY;
    }
}
