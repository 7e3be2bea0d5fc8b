#include "RuleTexts.h"

#include <algorithm>
#include <cstddef>

#include "CommonTexts.h"
#include "UserNumber.h"

namespace {

constexpr std::size_t kMostTold = 8;
constexpr std::size_t kMostNames = 10'000;

// As it reads within a sentence.
ustr LowerFirst(ustr text) {
    if (!text.empty()) CharLowerBuffW(text.data(), 1);
    return text;
}

ustr Phrase(const Criterion& criterion, const ustr& value) {
    ustr phrase = LowerFirst(OperationName(criterion.operation));
    if (NeedsValue(criterion.operation)) phrase.append(L' ').append(value);
    return phrase;
}

ustr Joined(const ustr& first, const ustr& second, bool all) {
    const ustr format =
        all ? Lng::text(kLibraryTexts, 25959, L"%s and %s") : Lng::text(kLibraryTexts, 25960, L"%s or %s");
    return ustr().format(format.c_str(), first.c_str(), second.c_str());
}

ustr Condition(const ObjectSelection::Property& rule, const std::function<ustr(const Criterion&)>& valueText) {
    ustr condition;
    const std::size_t count = rule.criteria.size();
    for (std::size_t i = 0; i < std::min(count, kMostTold); ++i) {
        const ustr phrase = Phrase(rule.criteria[i], valueText(rule.criteria[i]));
        condition = i == 0 ? phrase : Joined(condition, phrase, rule.matchAll);
    }
    if (count <= kMostTold) return condition;
    return ustr().format(Lng::text(kLibraryTexts, 25961, L"%s ... (%d in all)").c_str(), condition.c_str(),
                         static_cast<int>(count));
}

}  // namespace

bool NeedsValue(short operation) {
    using ObjectSelection::Property;
    return operation != Property::IsEmpty && operation != Property::IsNotEmpty;
}

ustr OperationName(short operation) {
    ustr name = ObjectSelection::Property::GetOperationTypeName(operation);
    if (!name.empty()) return name;
    return ustr().format(Lng::text(kLibraryTexts, 25957, L"Unknown operation %d").c_str(), int{operation});
}

ustr RuleSentence(const ustr& property, const ObjectSelection::Property& rule,
                  const std::function<ustr(const Criterion&)>& valueText) {
    if (rule.criteria.empty()) return property;
    const ustr condition = Condition(rule, valueText);
    ustr sentence =
        ustr().format(Lng::text(kLibraryTexts, 25958, L"%s: %s").c_str(), property.c_str(), condition.c_str());
    if (rule.tolerance > 0) {
        sentence = ustr().format(Lng::text(kLibraryTexts, 25962, L"%s (tolerance %s)").c_str(), sentence.c_str(),
                                 UserNumber::Shown(rule.tolerance).c_str());
    }
    if (rule.caseSensitive)
        sentence = ustr().format(Lng::text(kLibraryTexts, 25963, L"%s (case sensitive)").c_str(), sentence.c_str());
    return sentence;
}

ustr HostTexts::PropertyName(std::int32_t propId) {
    if (const auto known = names_.find(propId); known != names_.end()) return known->second;
    ustr name;
    host_.AskFor(name, ObjectSelection::Dlg::GetPropertyName, static_cast<std::uint64_t>(propId),
                 HostCallback::LParam(&name));
    if (name.empty()) name = UnknownPropertyText(propId);
    if (names_.size() >= kMostNames) names_.clear();
    return names_.emplace(propId, name).first->second;
}

ustr HostTexts::ValueText(std::int32_t propId, const Criterion& criterion) const {
    if (!NeedsValue(criterion.operation)) return ustr();
    ObjectSelection::Dlg::ValueText value{criterion.value.c_str(), criterion.value};
    host_.AskFor(value, ObjectSelection::Dlg::GetValueText, static_cast<std::uint64_t>(propId),
                 HostCallback::LParam(&value));
    return value.text;
}
