#pragma once

#include <occommonui/ObjectSelection.h>

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <utility>

#include "DialogTables.h"
#include "HostCallback.h"

// How filter rules read.

/// The parts of a rule: the columns of the lists, and the labels of the controls that edit them.
inline constexpr ColumnRow kPropertyColumn{kLibraryTexts, 36677, L"Property", 140, LVCFMT_LEFT};
inline constexpr ColumnRow kOperatorColumn{kLibraryTexts, 36678, L"Operator", 150, LVCFMT_LEFT};
inline constexpr ColumnRow kValueColumn{kLibraryTexts, 36679, L"Value", 110, LVCFMT_LEFT};

constexpr TextRow LabelOf(int ctrlId, const ColumnRow& column) {
    return {ctrlId, column.app, column.textId, column.text};
}

using Criterion = ObjectSelection::Property::Criterion;

/// Whether the operation compares with a value.
bool NeedsValue(short operation);

/// The operation's name; one that is not known is named by its code.
ustr OperationName(short operation);

/// The rule in words: "Air flow: greater than 100 l/s and less than 200 l/s (tolerance 5)". Of very many criteria only
/// the first are told.
ustr RuleSentence(const ustr& property, const ObjectSelection::Property& rule,
                  const std::function<ustr(const Criterion&)>& valueText);

/// What the host calls properties and values.
class HostTexts {
public:
    HostTexts() = default;
    explicit HostTexts(HostCallback host) : host_(std::move(host)) {}

    /// The property's name, asked for once.
    ustr PropertyName(std::int32_t propId);
    /// A value as users read it; empty when the operation needs none.
    ustr ValueText(std::int32_t propId, const Criterion& criterion) const;

private:
    HostCallback host_;
    std::unordered_map<std::int32_t, ustr> names_;
};
