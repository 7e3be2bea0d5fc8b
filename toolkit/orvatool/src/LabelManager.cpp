#include <orvatool/LabelManager.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace LabelManager {
namespace {

constexpr wchar_t kSeparator = L',';
constexpr wchar_t kJoint[] = L", ";

std::wstring_view Trimmed(std::wstring_view text) {
    constexpr wchar_t kBlanks[] = L" \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::wstring_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::unordered_set<std::wstring_view> Views(const std::vector<ustr>& labels) {
    return {labels.begin(), labels.end()};
}

}  // namespace

Labels::Labels() = default;
Labels::Labels(const wchar_t* text) {
    FromString(text);
}
Labels::Labels(const Labels&) = default;
Labels::Labels(Labels&&) noexcept = default;
Labels& Labels::operator=(const Labels&) = default;
Labels& Labels::operator=(Labels&&) noexcept = default;
Labels::~Labels() = default;

void Labels::FromString(const wchar_t* text) {
    std::vector<ustr> labels;
    std::unordered_set<std::wstring_view> seen;
    std::wstring_view rest = text ? std::wstring_view(text) : std::wstring_view();
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(kSeparator), rest.size());
        const std::wstring_view label = Trimmed(rest.substr(0, end));
        if (!label.empty() && seen.insert(label).second) labels.emplace_back(label);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    labels_ = std::move(labels);
}

ustr Labels::ToString() const {
    ustr text;
    for (const ustr& label : labels_) {
        if (!text.empty()) text.append(kJoint);
        text.append(label);
    }
    return text;
}

void Labels::Add(const Labels& labels) {
    if (&labels == this) return;
    std::vector<ustr> added;
    const auto present = Views(labels_);
    for (const ustr& label : labels.labels_) {
        if (!present.contains(label)) added.push_back(label);
    }
    labels_.insert(labels_.end(), std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
}

// What is added may be a text with several labels.
void Labels::Add(const ustr& label) {
    Add(Labels(label.c_str()));
}

bool Labels::Remove(const Labels& labels) {
    const Labels removed = labels;  // may be these
    const auto goes = Views(removed.labels_);
    return std::erase_if(labels_, [&](const ustr& label) { return goes.contains(label); }) > 0;
}

bool Labels::operator==(const Labels&) const = default;

}  // namespace LabelManager
