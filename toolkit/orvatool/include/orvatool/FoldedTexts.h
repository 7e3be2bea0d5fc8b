#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/String.h>

#include <cstddef>
#include <iterator>
#include <string_view>
#include <vector>

/// Texts in the form in which searches compare (String::Fold), in one block of memory, so that going through very many
/// of them is fast.
class FoldedTexts {
public:
    /// Folds the text of every item of a range; `textOf` gives it as something that a wstring_view is made from.
    template <class Range, class TextOf>
    void Assign(const Range& items, TextOf textOf) {
        block_.clear();
        ends_.clear();
        ends_.reserve(std::size(items));
        ustr batch;
        for (const auto& item : items) {
            // A line break separates the texts of a batch, so it stands for nothing else.
            for (const wchar_t c : std::wstring_view(textOf(item)))
                batch.append(c == L'\n' ? L' ' : c);
            batch.append(L'\n');
            if (batch.size() >= kBatch) AddBatch(batch);
        }
        AddBatch(batch);
    }

    std::size_t size() const { return ends_.size(); }
    std::wstring_view operator[](std::size_t index) const {
        const std::size_t start = index == 0 ? 0 : ends_[index - 1];
        return std::wstring_view(block_).substr(start, ends_[index] - start);
    }

private:
    static constexpr std::size_t kBatch = 16384;

    void AddBatch(ustr& batch) {
        const ustr folded = String::Fold(batch);
        for (const wchar_t c : folded) {
            if (c == L'\n') {
                ends_.push_back(block_.size());
            } else {
                block_.append(c);
            }
        }
        batch.clear();
    }

    ustr block_;
    std::vector<std::size_t> ends_;
};
