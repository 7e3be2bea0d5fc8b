#pragma once

#include <cstddef>
#include <string>

#include "host/DataText.h"

namespace ochost {

/// A word of the data files and the number that it stands for.
struct Word {
    const wchar_t* name;
    int number;
};

inline constexpr Word kApplications[] = {
    {L"hpv",        1},
    {L"electrical", 2},
    {L"schematics", 6},
    {L"automation", 7},
};

/// The number of the word in the field; one that is none of `words` is refused.
template <std::size_t n>
int NumberOf(const DataRecord& record, std::size_t field, const Word (&words)[n]) {
    const std::wstring name = record.Text(field);
    for (const Word& word : words) {
        if (name == word.name) return word.number;
    }
    record.Refuse(L"\"" + name + L"\" is unknown here");
}

}  // namespace ochost
