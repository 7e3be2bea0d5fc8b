#include <orvatool/ObjectSelection.h>

#include <windows.h>

#include <orvatool/Lng.h>
#include <orvatool/String.h>

#include <algorithm>
#include <cmath>
#include <compare>
#include <iterator>
#include <limits>
#include <optional>

#include "Numbers.h"

namespace ObjectSelection {
namespace {

constexpr std::wstring_view kBlanks = L" \t\r\n\u00a0";

// A value, and what a criterion of the rule asks for.
struct Comparison {
    std::wstring_view value;
    std::wstring_view wanted;
    const Property& rule;
};

// Character by character, as the system compares file names.
int CompareCharacters(std::wstring_view a, std::wstring_view b, bool caseSensitive) {
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                                !caseSensitive) -
           CSTR_EQUAL;
}

std::partial_ordering TextOrder(const Comparison& c) {
    const int exact = CompareCharacters(c.value, c.wanted, c.rule.caseSensitive);
    const int sorted = exact == 0 ? 0 : String::CompareForUser(c.value, c.wanted);
    return (sorted != 0 ? sorted : exact) <=> 0;
}

// None unless both are numbers.
std::optional<std::partial_ordering> NumberOrder(const Comparison& c) {
    const std::optional<double> wanted = NumberOf(c.wanted, L".");
    const std::optional<double> value = wanted ? NumberOf(c.value, L".") : std::nullopt;
    if (!value) return std::nullopt;
    const double tolerance = std::max(0.0, c.rule.tolerance);
    const double rounding =
        2 * std::numeric_limits<double>::epsilon() * std::max({std::abs(*value), std::abs(*wanted), tolerance});
    if (std::abs(*value - *wanted) <= tolerance + rounding) return std::partial_ordering::equivalent;
    return *value <=> *wanted;
}

bool IsEmpty(const Comparison& c) {
    return c.value.find_first_not_of(kBlanks) == std::wstring_view::npos;
}

std::partial_ordering Order(const Comparison& c) {
    if (IsEmpty(c)) return std::partial_ordering::unordered;
    const auto byNumber = NumberOrder(c);
    return byNumber ? *byNumber : TextOrder(c);
}

bool Finds(const Comparison& c, DWORD where) {
    return c.wanted.empty() ||
           FindStringOrdinal(where, c.value.data(), static_cast<int>(c.value.size()), c.wanted.data(),
                             static_cast<int>(c.wanted.size()), !c.rule.caseSensitive) >= 0;
}

bool IsEqual(const Comparison& c) {
    const auto byNumber = NumberOrder(c);
    return byNumber ? std::is_eq(*byNumber) : CompareCharacters(c.value, c.wanted, c.rule.caseSensitive) == 0;
}
bool IsNotEqual(const Comparison& c) {
    return !IsEqual(c);
}
bool IsLess(const Comparison& c) {
    return std::is_lt(Order(c));
}
bool IsLessOrEqual(const Comparison& c) {
    return std::is_lteq(Order(c));
}
bool IsGreater(const Comparison& c) {
    return std::is_gt(Order(c));
}
bool IsGreaterOrEqual(const Comparison& c) {
    return std::is_gteq(Order(c));
}
bool Contains(const Comparison& c) {
    return Finds(c, FIND_FROMSTART);
}
bool ContainsNot(const Comparison& c) {
    return !Contains(c);
}
bool Begins(const Comparison& c) {
    return Finds(c, FIND_STARTSWITH);
}
bool Ends(const Comparison& c) {
    return Finds(c, FIND_ENDSWITH);
}
bool IsNotEmpty(const Comparison& c) {
    return !IsEmpty(c);
}

struct OperationRow {
    short operation;
    Lng::AppID app;
    int textId;
    const wchar_t* name;
    bool (*holds)(const Comparison& c);
};
constexpr OperationRow kOperations[] = {
    {Property::Equal,          kSharedTexts, 90040, L"Equal to",                 IsEqual         },
    {Property::NotEqual,       kSharedTexts, 90041, L"Not equal to",             IsNotEqual      },
    {Property::Less,           kSharedTexts, 90042, L"Less than",                IsLess          },
    {Property::LessOrEqual,    kSharedTexts, 90043, L"Less than or equal to",    IsLessOrEqual   },
    {Property::Greater,        kSharedTexts, 90044, L"Greater than",             IsGreater       },
    {Property::GreaterOrEqual, kSharedTexts, 90045, L"Greater than or equal to", IsGreaterOrEqual},
    {Property::Contains,       kSharedTexts, 90046, L"Contains",                 Contains        },
    {Property::NotContains,    kSharedTexts, 90047, L"Does not contain",         ContainsNot     },
    {Property::BeginsWith,     kSharedTexts, 90048, L"Begins with",              Begins          },
    {Property::EndsWith,       kSharedTexts, 90049, L"Ends with",                Ends            },
    {Property::IsEmpty,        kSharedTexts, 90050, L"Is empty",                 IsEmpty         },
    {Property::IsNotEmpty,     kSharedTexts, 90051, L"Is not empty",             IsNotEmpty      },
};

const OperationRow* FindOperation(short operation) {
    const auto row = std::find_if(std::begin(kOperations), std::end(kOperations),
                                  [operation](const OperationRow& r) { return r.operation == operation; });
    return row == std::end(kOperations) ? nullptr : row;
}

}  // namespace

bool DrawingRef::IsSame(const DrawingRef& other) const {
    if (id != 0 && other.id != 0) return id == other.id;
    if (path.empty() && id != other.id) return false;
    return CompareCharacters(path, other.path, false) == 0;
}

Property::Property() = default;
Property::Property(const Property&) = default;
Property::Property(Property&&) noexcept = default;
Property& Property::operator=(const Property&) = default;
Property& Property::operator=(Property&&) noexcept = default;
Property::~Property() = default;
bool Property::operator==(const Property&) const = default;

ustr Property::GetOperationTypeName(short operation) {
    const OperationRow* row = FindOperation(operation);
    return row ? Lng::text(row->app, row->textId, row->name) : ustr();
}

bool Property::Matches(std::wstring_view value) const {
    if (value.empty()) value = L"";  // the system takes no null
    const auto holds = [this, value](const Criterion& criterion) {
        const OperationRow* row = FindOperation(criterion.operation);
        return row && row->holds({value, criterion.value, *this});
    };
    if (matchAll) return std::all_of(criteria.begin(), criteria.end(), holds);
    return criteria.empty() || std::any_of(criteria.begin(), criteria.end(), holds);
}

Data::Data() = default;
Data::Data(const Data&) = default;
Data::Data(Data&&) noexcept = default;
Data& Data::operator=(const Data&) = default;
Data& Data::operator=(Data&&) noexcept = default;
Data::~Data() = default;
bool Data::operator==(const Data&) const = default;

RecordData::RecordData() = default;
RecordData::RecordData(const RecordData&) = default;
RecordData::RecordData(RecordData&&) noexcept = default;
RecordData& RecordData::operator=(const RecordData&) = default;
RecordData& RecordData::operator=(RecordData&&) noexcept = default;
RecordData::~RecordData() = default;
bool RecordData::operator==(const RecordData&) const = default;

}  // namespace ObjectSelection
