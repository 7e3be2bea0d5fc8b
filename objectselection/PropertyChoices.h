#pragma once

#include <occommonui/ObjectSelection.h>

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "HostCallback.h"

/// The values that a property can have, as the host lists them.
class PropertyChoices {
public:
    using Entry = ObjectSelection::Dlg::ValueEntry;

    /// Asks the host. Every entry has a value and a text then.
    static PropertyChoices Ask(const HostCallback& host, std::int32_t propId);

    /// Adds a value that the host does not list; false when there is nothing to add.
    bool Add(const ustr& value, const ustr& text);

    const std::vector<Entry>& Entries() const { return entries_; }
    bool IsEmpty() const { return entries_.empty(); }
    /// The place of a value, -1 when it is not among them.
    int IndexOf(const ustr& value) const;
    /// The text of a value, null when it is not among them.
    const ustr* TextOf(const ustr& value) const;

private:
    std::vector<Entry> entries_;
    std::unordered_map<ustr, std::size_t> byValue_;
};
