#include <occommonui/ReportFilter.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

struct NameText {
    Lng::AppID app;
    int textId;
    const wchar_t* text;
};

ustr TextOf(const NameText& name) {
    return Lng::text(name.app, name.textId, name.text);
}

struct OutputRow {
    ReportFilter::OutputType type;
    bool isText;
    const NameText* name;       // null: it has no name and is not on offer
    const wchar_t* nameSuffix;  // the same in every language
    const wchar_t* extension;
};

constexpr NameText kDialog{kSharedTexts, 60046, L"Dialog"};
constexpr NameText kBlock{kSharedTexts, 60047, L"Block in drawing"};
constexpr NameText kClipboard{kSharedTexts, 60050, L"Clipboard"};
constexpr NameText kTextFile{kSharedTexts, 60051, L"Text file (tab delimited)"};
constexpr NameText kExcelFile{kSharedTexts, 60056, L"Excel file"};

// In the order in which users choose from them.
using F = ReportFilter;
constexpr OutputRow kOutputs[] = {
    {F::Dialog,    false, &kDialog,    L"",       nullptr},
    {F::Block,     false, &kBlock,     L"",       nullptr},
    {F::Clipboard, false, &kClipboard, L"",       nullptr},
    {F::TextFile,  true,  &kTextFile,  L"",       L".txt"},
    {F::ExcelFile, true,  &kExcelFile, L" (xml)", L".xml"},
    {F::OtherText, true,  nullptr,     L"",       nullptr},
};

// By ReportType.
constexpr const char* kConfBaseNames[] = {"LG-", "BM-", "EX-", "TB-"};

// By the part of the alignment.
constexpr NameText kVerticalNames[] = {
    {kLibraryTexts, 20988, L"Top"   },
    {kLibraryTexts, 20989, L"Middle"},
    {kLibraryTexts, 20990, L"Bottom"},
};
constexpr NameText kHorizontalNames[] = {
    {kLibraryTexts, 20985, L"Left"  },
    {kLibraryTexts, 20986, L"Center"},
    {kLibraryTexts, 20987, L"Right" },
};
constexpr int kAlignments = 3;  // in each direction
static_assert(std::size(kVerticalNames) == kAlignments && std::size(kHorizontalNames) == kAlignments);

const OutputRow* FindOutput(ReportFilter::OutputType type) {
    const auto* row = std::find_if(std::begin(kOutputs), std::end(kOutputs),
                                   [type](const OutputRow& output) { return output.type == type; });
    return row == std::end(kOutputs) ? nullptr : row;
}

ustr NameOf(const OutputRow& output) {
    return output.name ? TextOf(*output.name) + output.nameSuffix : ustr();
}

}  // namespace

ReportFilter::ReportFilter() = default;
ReportFilter::ReportFilter(const ReportFilter&) = default;
ReportFilter::ReportFilter(ReportFilter&&) noexcept = default;
ReportFilter& ReportFilter::operator=(const ReportFilter&) = default;
ReportFilter& ReportFilter::operator=(ReportFilter&&) noexcept = default;
ReportFilter::~ReportFilter() = default;

void ReportFilter::reset(bool copyFirst) {
    ReportFilter initial;
    initial.First = First;
    initial.Second = copyFirst ? First : Second;
    *this = std::move(initial);
}

ustr ReportFilter::ReportOutputTypeName(OutputType type) {
    const OutputRow* output = FindOutput(type);
    return output ? NameOf(*output) : ustr();
}

const wchar_t* ReportFilter::ReportOutputTypeFileExtension(OutputType type) {
    const OutputRow* output = FindOutput(type);
    return output ? output->extension : nullptr;
}

bool ReportFilter::IsTextReportOutputType(OutputType type) {
    const OutputRow* output = FindOutput(type);
    return output && output->isText;
}

const char* ReportFilter::GetReportConfBaseName(::ReportType type) {
    const auto at = static_cast<std::size_t>(type);
    return at < std::size(kConfBaseNames) ? kConfBaseNames[at] : nullptr;
}

ValueList ReportFilter::GetOutputTypeValues() {
    ValueList values;
    for (const OutputRow& output : kOutputs) {
        if (output.name) values.emplace_back(NameOf(output), output.type);
    }
    return values;
}

ustr ReportFilter::AlignmentName(bool vertical) const {
    const auto& names = vertical ? kVerticalNames : kHorizontalNames;
    const int part = vertical ? Alignment / kAlignments : Alignment % kAlignments;
    return part >= 0 && part < kAlignments ? TextOf(names[part]) : ustr();
}
