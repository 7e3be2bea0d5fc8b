#pragma once

#include <orvaspace/ustr.h>

#include <cstddef>
#include <optional>
#include <vector>

#include "host/DialogCatalog.h"

namespace ochost {

/// Asks which of the names is meant, proposing the first: its index; none when the user cancels.
std::optional<std::size_t> Choose(const DialogContext& context, const wchar_t* title, const wchar_t* prompt,
                                  const std::vector<ustr>& names);

/// Asks which of the records is meant, by name; null when the user cancels.
template <class Record>
const Record* ChooseRecord(const DialogContext& context, const wchar_t* title, const wchar_t* prompt,
                           const std::vector<Record>& records) {
    std::vector<ustr> names;
    names.reserve(records.size());
    for (const Record& record : records)
        names.emplace_back(record.name);
    const auto chosen = Choose(context, title, prompt, names);
    return chosen ? &records[*chosen] : nullptr;
}

}  // namespace ochost
