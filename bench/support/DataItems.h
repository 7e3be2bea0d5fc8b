#pragma once

#include <orvatool/TreeInsertList.h>

/// The rows as data items of the update dialog: the data of each is its value.
inline TREE_INSERTLIST2 DataItems(const TREE_INSERTLIST& rows) {
    TREE_INSERTLIST2 items;
    items.reserve(rows.size());
    for (const TREE_INSERTITEM& row : rows) {
        TREE_INSERTITEM2 item;
        static_cast<TREE_INSERTITEM&>(item) = row;
        item.data = row.value;
        items.push_back(item);
    }
    items.finalize();
    return items;
}
