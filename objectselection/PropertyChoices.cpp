#include "PropertyChoices.h"

PropertyChoices PropertyChoices::Ask(const HostCallback& host, std::int32_t propId) {
    PropertyChoices choices;
    std::vector<Entry>& entries = choices.entries_;
    host.AskFor(entries, ObjectSelection::Dlg::GetPropertyValues, static_cast<std::uint64_t>(propId),
                HostCallback::LParam(&entries));
    std::erase_if(entries, [](const Entry& entry) { return entry.value.empty(); });  // operations ask for that
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].text.empty()) entries[i].text = entries[i].value;
        choices.byValue_.emplace(entries[i].value, i);
    }
    return choices;
}

bool PropertyChoices::Add(const ustr& value, const ustr& text) {
    if (value.empty() || !byValue_.emplace(value, entries_.size()).second) return false;
    entries_.push_back({value, text, 0});
    return true;
}

int PropertyChoices::IndexOf(const ustr& value) const {
    const auto found = byValue_.find(value);
    return found == byValue_.end() ? -1 : static_cast<int>(found->second);
}

const ustr* PropertyChoices::TextOf(const ustr& value) const {
    const int index = IndexOf(value);
    return index < 0 ? nullptr : &entries_[static_cast<std::size_t>(index)].text;
}
