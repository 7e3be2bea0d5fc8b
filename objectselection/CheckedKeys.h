#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Gw.h>
#include <orvatool/TreeInsertList.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

// Between the keys that a selection holds and the rows of a tree with check boxes. Each key may have several rows or
// none. A row without a key is a heading.

inline bool HasKey(const TREE_INSERTITEM& row) {
    return row.value >= 1 && row.value <= std::numeric_limits<std::int32_t>::max();
}
inline bool KeyOf(const TREE_INSERTITEM& row, std::int32_t& key) {
    if (!HasKey(row)) return false;
    key = static_cast<std::int32_t>(row.value);
    return true;
}
/// By name.
inline bool KeyOf(const TREE_INSERTITEM& row, astr& key) {
    if (!HasKey(row)) return false;
    key = orvaspace::ToUtf8(row.text);
    return true;
}

/// Keys in order, each once. Sorted rather than hashed: one piece of memory instead of one for each key.
template <class Key>
class KeySet {
public:
    explicit KeySet(std::vector<Key> keys) : keys_(std::move(keys)) {
        std::sort(keys_.begin(), keys_.end());
        keys_.erase(std::unique(keys_.begin(), keys_.end()), keys_.end());
    }
    static KeySet Of(const TREE_INSERTLIST& rows) {
        std::vector<Key> keys;
        keys.reserve(rows.size());
        Key key{};
        for (const TREE_INSERTITEM& row : rows) {
            if (KeyOf(row, key)) keys.push_back(key);
        }
        return KeySet(std::move(keys));
    }

    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    std::size_t size() const { return keys_.size(); }
    /// Its place among the keys.
    std::size_t Find(const Key& key) const {
        const auto found = std::lower_bound(keys_.begin(), keys_.end(), key);
        return found != keys_.end() && *found == key ? static_cast<std::size_t>(found - keys_.begin()) : kNone;
    }
    bool Contains(const Key& key) const { return Find(key) != kNone; }

private:
    std::vector<Key> keys_;
};

/// The check states that show these keys: a row is checked when its key is among them or the row above it is checked.
template <class Key>
std::vector<int> StatesOf(const TREE_INSERTLIST& rows, const std::vector<Key>& keys) {
    const KeySet<Key> wanted(keys);
    std::vector<int> states;
    states.reserve(rows.size());
    std::vector<int> path;  // the states of the rows above
    Key key{};
    for (const TREE_INSERTITEM& row : rows) {
        path.resize(std::min(static_cast<std::size_t>(std::max(row.level, 0)), path.size()));
        const bool above = !path.empty() && path.back() == kTreeChecked;
        const bool on = above || (KeyOf(row, key) && wanted.Contains(key));
        states.push_back(on ? kTreeChecked : kTreeUnchecked);
        path.push_back(states.back());
    }
    return states;
}

/// The keys of the rows that are checked. Those of `before` keep their order, and stay where they have no row.
template <class Key>
std::vector<Key> CheckedKeys(const TREE_INSERTLIST& rows, const std::vector<int>& states,
                             const std::vector<Key>& before) {
    const auto listed = KeySet<Key>::Of(rows);
    std::vector<bool> checked(listed.size(), false);
    Key key{};
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (states[row] == kTreeChecked && KeyOf(rows[row], key)) checked[listed.Find(key)] = true;
    }
    std::vector<Key> keys;
    std::vector<bool> taken(listed.size(), false);
    for (const Key& known : before) {
        const std::size_t at = listed.Find(known);
        if (at == listed.kNone || checked[at]) keys.push_back(known);
        if (at != listed.kNone) taken[at] = true;
    }
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (states[row] != kTreeChecked || !KeyOf(rows[row], key)) continue;
        const std::size_t at = listed.Find(key);
        if (!taken[at]) keys.push_back(key);
        taken[at] = true;
    }
    return keys;
}
